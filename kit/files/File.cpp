#include "files/File.h"

#include <cerrno>
#include <cstring>
#include <system_error>

#include "varnet/Error.h"

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <process.h>
#else
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace varnet {

namespace fs = std::filesystem;

namespace {

// Links in a row that are followed before a circle is assumed.
constexpr int kMostLinks = 40;

int ProcessNumber() {
#if defined(_WIN32)
    return _getpid();
#else
    return getpid();
#endif
}

// What a path names in the end, whether that is there or not.
fs::path BehindLinks(fs::path path) {
    std::error_code error;
    for (int i = 0; i < kMostLinks && fs::is_symlink(fs::symlink_status(path, error)); ++i) {
        fs::path const next = fs::read_symlink(path, error);
        if (error) break;
        path = next.is_absolute() ? next : path.parent_path() / next;
    }
    return path;
}

// A new file beside the target, whose name nobody else has.
FilePointer CreateBeside(fs::path const& target, fs::path& partial) {
    constexpr int kTries = 100;
    FilePointer file;
    for (int i = 0; i < kTries; ++i) {
        partial = target;
        partial += '.' + std::to_string(ProcessNumber());
        if (i > 0) partial += '-' + std::to_string(i);
        partial += ".part";
        errno = 0;
        file = OpenFile(partial, "wbx");
        if (file != nullptr || errno != EEXIST) return file;
    }
    return file;
}

#if !defined(_WIN32)
// The owner and the mode of a file that is replaced. An owner who may not be set is left out: the file is
// ours then.
void TakeOver(fs::path const& target, std::FILE* file) {
    struct stat old {};
    if (stat(target.c_str(), &old) != 0) return;
    if (fchown(fileno(file), old.st_uid, old.st_gid) != 0) errno = 0;
    if (fchmod(fileno(file), old.st_mode & 07777) != 0) errno = 0;
}
#endif

}  // namespace

FilePointer OpenFile(fs::path const& path, char const* mode) {
#if defined(_WIN32)
    return FilePointer(_wfopen(path.c_str(), std::wstring(mode, mode + std::strlen(mode)).c_str()));
#else
    return FilePointer(std::fopen(path.c_str(), mode));
#endif
}

std::string ReasonOf(int error) {
    switch (error) {
        case 0:
            return "could not be written whole";
        case ENOENT:
            return "no such file or folder";
        case ENOSPC:
            return "the disk is full";
        default:
            return std::generic_category().message(error);
    }
}

int SeekTo(std::FILE* file, std::uint64_t place) {
#if defined(_WIN32)
    return _fseeki64(file, static_cast<long long>(place), SEEK_SET);
#else
    return fseeko(file, static_cast<off_t>(place), SEEK_SET);
#endif
}

std::string TextOf(fs::path const& path) {
    std::u8string const text = path.u8string();
    return {text.begin(), text.end()};
}

// ---- reading

SeekableFile::SeekableFile(fs::path const& path) : m_Path(path) {
    std::error_code error;
    if (fs::is_directory(path, error)) throw Error(ErrorKind::kFile, path, "is a folder");
    errno = 0;
    m_File = OpenFile(path, "rb");
    if (m_File == nullptr) {
        throw Error(ErrorKind::kFile, path, errno == ENOENT ? "no such file" : ReasonOf(errno));
    }
    m_Size = fs::file_size(path, error);
    if (error || !fs::is_regular_file(path, error)) {
        throw Error(ErrorKind::kFile, path, "is no plain file (a pipe or a device cannot be read here)");
    }
}

std::size_t SeekableFile::ReadAt(std::uint64_t place, std::span<char> bytes) {
    if (place != m_Place && SeekTo(m_File.get(), place) != 0) {
        throw Error(ErrorKind::kFile, m_Path, "cannot be read: " + ReasonOf(errno));
    }
    std::size_t const read = std::fread(bytes.data(), 1, bytes.size(), m_File.get());
    m_Place = place + read;
    if (std::ferror(m_File.get()) != 0) {
        throw Error(ErrorKind::kFile, m_Path, "cannot be read: " + ReasonOf(errno));
    }
    std::clearerr(m_File.get());
    return read;
}

std::vector<char> ReadWhole(fs::path const& path, std::uint64_t most) {
    SeekableFile file(path);
    if (file.Size() > most) {
        throw Error(ErrorKind::kContent, path, "is larger than " + std::to_string(most) + " bytes");
    }
    std::vector<char> bytes(static_cast<std::size_t>(file.Size()));
    bytes.resize(file.ReadAt(0, bytes));
    return bytes;
}

// ---- writing

OutputFile::OutputFile(fs::path const& target) : m_Shown(target), m_Target(BehindLinks(target)) {
    std::error_code error;
    if (target == "-") {
        m_Replacing = false;
        m_File = stdout;
#if defined(_WIN32)
        _setmode(_fileno(stdout), _O_BINARY);
#endif
        return;
    }
    fs::file_status const status = fs::status(m_Target, error);
    if (fs::is_directory(status)) throw Error(ErrorKind::kFile, m_Shown, "is a folder");
    m_Replacing = !fs::exists(status) || fs::is_regular_file(status);
    m_Owned = m_Replacing ? CreateBeside(m_Target, m_Partial) : OpenFile(m_Target, "wb");
    if (m_Owned == nullptr) throw Error(ErrorKind::kFile, m_Shown, "cannot be created: " + ReasonOf(errno));
    m_File = m_Owned.get();
#if !defined(_WIN32)
    if (m_Replacing && fs::exists(status)) TakeOver(m_Target, m_File);
#endif
}

OutputFile::~OutputFile() {
    m_Owned.reset();
    std::error_code ignored;
    if (!m_Done && !m_Partial.empty()) fs::remove(m_Partial, ignored);
}

void OutputFile::Fail(int error) {
    throw Error(ErrorKind::kFile, m_Shown, "could not be written whole: " + ReasonOf(error));
}

void OutputFile::Write(std::string_view bytes) {
    errno = 0;
    if (std::fwrite(bytes.data(), 1, bytes.size(), m_File) != bytes.size()) Fail(errno);
    m_Written += bytes.size();
}

void OutputFile::Overwrite(std::uint64_t place, std::span<char const> bytes) {
    errno = 0;
    bool const done = std::fflush(m_File) == 0 && SeekTo(m_File, place) == 0 &&
                      std::fwrite(bytes.data(), 1, bytes.size(), m_File) == bytes.size() &&
                      std::fflush(m_File) == 0 && SeekTo(m_File, m_Written) == 0;
    if (!done) Fail(errno);
}

fs::path const& OutputFile::PathForWriter() {
    if (m_Target == "-") return m_Target = "/dev/stdout";
    m_Owned.reset();
    m_File = nullptr;
    return m_Replacing ? m_Partial : m_Target;
}

void OutputFile::Commit() {
    errno = 0;
    if (m_File != nullptr && std::fflush(m_File) != 0) Fail(errno);
    if (m_Owned != nullptr && std::fclose(m_Owned.release()) != 0) Fail(errno);
    m_File = nullptr;
    std::error_code error;
    if (!m_Partial.empty()) fs::rename(m_Partial, m_Target, error);
    if (error) throw Error(ErrorKind::kFile, m_Shown, "cannot be written: " + error.message());
    m_Done = true;
}

void WriteWhole(fs::path const& path, std::string_view bytes) {
    OutputFile file(path);
    file.Write(bytes);
    file.Commit();
}

}  // namespace varnet
