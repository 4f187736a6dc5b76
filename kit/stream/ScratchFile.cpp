#include "stream/ScratchFile.h"

#include <cerrno>
#include <string>

#include "varnet/Error.h"

#if defined(_WIN32)
#include <process.h>
#else
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>
#endif

namespace varnet {

namespace fs = std::filesystem;

namespace {

#if defined(_WIN32)

FilePointer MakeNameless(fs::path const& folder) {
    constexpr int kTries = 100;
    for (int i = 0; i < kTries; ++i) {
        fs::path const path =
            folder / ("varnet-" + std::to_string(_getpid()) + '-' + std::to_string(i) + ".tmp");
        std::error_code ignored;
        if (fs::exists(path, ignored)) continue;
        // T: kept in memory where there is room; D: removed when it is closed.
        if (FilePointer file = OpenFile(path, "w+bTD")) return file;
        if (errno != EEXIST && errno != EACCES) break;
    }
    return nullptr;
}

#else

// Where the file system cannot make a file without a name, its name is taken away at once.
FilePointer MakeNameless(fs::path const& folder) {
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
    FilePointer file(fdopen(descriptor, "w+b"));
    if (file == nullptr) close(descriptor);
    return file;
}

#endif

}  // namespace

ScratchFile::ScratchFile(fs::path const& folder) : m_Folder(folder) {
    errno = 0;
    m_File = MakeNameless(folder);
    if (m_File == nullptr) Fail("no temporary file can be made here");
    // Blocks are large; what is read here and there would be read twice.
    std::setvbuf(m_File.get(), nullptr, _IONBF, 0);
}

void ScratchFile::Append(std::span<char const> bytes) {
    errno = 0;
    if (SeekTo(m_File.get(), m_Size) != 0 ||
        std::fwrite(bytes.data(), 1, bytes.size(), m_File.get()) != bytes.size()) {
        Fail("a temporary file could not be written");
    }
    m_Size += bytes.size();
}

void ScratchFile::ReadAt(std::uint64_t place, std::span<char> bytes) {
    errno = 0;
    if (SeekTo(m_File.get(), place) != 0 ||
        std::fread(bytes.data(), 1, bytes.size(), m_File.get()) != bytes.size()) {
        Fail("a temporary file could not be read");
    }
}

void ScratchFile::Fail(char const* what) const {
    std::string const reason = errno == 0 ? "" : ": " + ReasonOf(errno);
    throw Error(ErrorKind::kFile, m_Folder, what + reason);
}

}  // namespace varnet
