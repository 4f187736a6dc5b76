#include "files/System.h"

#include <cerrno>
#include <cstring>
#include <string>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <share.h>
#include <sys/stat.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace varnet::system {

namespace fs = std::filesystem;

std::string ReasonOf(std::error_code const& error) { return error.default_error_condition().message(); }

#if defined(_WIN32)

namespace {

// A folder's path may have 12 characters less than a file's 260, for a name in it.
constexpr std::size_t kLongPath = 248;

}  // namespace

// Behind the prefix the system takes a path literally: without dots, and with backslashes.
fs::path AnyLength(fs::path const& path) {
    std::wstring const& given = path.native();
    if (given.starts_with(LR"(\\?\)") || given.starts_with(LR"(\\.\)")) return path;
    DWORD const room = GetFullPathNameW(given.c_str(), 0, nullptr, nullptr);
    std::wstring whole(room, L'\0');
    whole.resize(room == 0 ? 0 : GetFullPathNameW(given.c_str(), room, whole.data(), nullptr));
    if (whole.size() < kLongPath) return path;
    bool const shared = whole.starts_with(LR"(\\)");
    return (shared ? LR"(\\?\UNC)" + whole.substr(1) : LR"(\\?\)" + whole);
}

// The system's own fopen knows no x.
std::FILE* Open(fs::path const& path, char const* mode) {
    int flags = _O_BINARY | _O_NOINHERIT;
    bool const plus = std::strchr(mode, '+') != nullptr;
    if (*mode == 'r') flags |= plus ? _O_RDWR : _O_RDONLY;
    if (*mode == 'w') flags |= (plus ? _O_RDWR : _O_WRONLY) | _O_CREAT | _O_TRUNC;
    if (std::strchr(mode, 'x') != nullptr) flags |= _O_EXCL;
    int handle = -1;
    errno = _wsopen_s(&handle, AnyLength(path).c_str(), flags, _SH_DENYNO, _S_IREAD | _S_IWRITE);
    if (handle < 0) return nullptr;
    std::string const plain = std::string(mode, 1) + (plus ? "+b" : "b");
    std::FILE* const file = _fdopen(handle, plain.c_str());
    if (file == nullptr) _close(handle);
    return file;
}

// Kept in memory where there is room, and removed when it is closed.
std::FILE* OpenNameless(fs::path const& folder) {
    constexpr int kTries = 100;
    constexpr int kFlags =
        _O_BINARY | _O_NOINHERIT | _O_RDWR | _O_CREAT | _O_EXCL | _O_SHORT_LIVED | _O_TEMPORARY;
    for (int i = 0; i < kTries; ++i) {
        fs::path const path =
            folder / ("varnet-" + std::to_string(_getpid()) + '-' + std::to_string(i) + ".tmp");
        int handle = -1;
        errno = _wsopen_s(&handle, AnyLength(path).c_str(), kFlags, _SH_DENYRW, _S_IREAD | _S_IWRITE);
        if (handle >= 0) {
            std::FILE* const file = _fdopen(handle, "w+b");
            if (file == nullptr) _close(handle);
            return file;
        }
        if (errno != EEXIST && errno != EACCES) return nullptr;
    }
    return nullptr;
}

bool Seek(std::FILE* file, std::uint64_t place) {
    return _fseeki64(file, static_cast<long long>(place), SEEK_SET) == 0;
}

int ProcessNumber() { return _getpid(); }

void TakeOver(fs::path const&, std::FILE*) {}

std::FILE* BinaryOutput() {
    std::fflush(stdout);
    _setmode(_fileno(stdout), _O_BINARY);
    return stdout;
}

#else

fs::path AnyLength(fs::path const& path) { return path; }

std::FILE* Open(fs::path const& path, char const* mode) { return std::fopen(path.c_str(), mode); }

// Where the file system cannot make a file without a name, its name is taken away at once.
std::FILE* OpenNameless(fs::path const& folder) {
    int descriptor = -1;
#if defined(O_TMPFILE)
    descriptor = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR);
#endif
    if (descriptor < 0) {
        std::string pattern = (folder / "varnet-XXXXXX").native();
        descriptor = mkstemp(pattern.data());
        if (descriptor >= 0) unlink(pattern.c_str());
    }
    if (descriptor < 0) return nullptr;
    std::FILE* const file = fdopen(descriptor, "w+b");
    if (file == nullptr) close(descriptor);
    return file;
}

bool Seek(std::FILE* file, std::uint64_t place) {
    return fseeko(file, static_cast<off_t>(place), SEEK_SET) == 0;
}

int ProcessNumber() { return getpid(); }

void TakeOver(fs::path const& other, std::FILE* file) {
    struct stat old {};
    if (stat(other.c_str(), &old) != 0) return;
    if (fchown(fileno(file), old.st_uid, old.st_gid) != 0) errno = 0;
    if (fchmod(fileno(file), old.st_mode & 07777) != 0) errno = 0;
}

std::FILE* BinaryOutput() { return stdout; }

#endif

}  // namespace varnet::system
