#include "stream/ScratchFile.h"

#include <cerrno>
#include <string>

#include "files/System.h"
#include "varnet/Error.h"

namespace varnet {

namespace fs = std::filesystem;

ScratchFile::ScratchFile(fs::path const& folder) : m_Folder(folder) {
    errno = 0;
    m_File = FilePointer(system::OpenNameless(folder));
    if (m_File == nullptr) Fail("no temporary file can be made here");
    // Blocks are large; what is read here and there would be read twice.
    std::setvbuf(m_File.get(), nullptr, _IONBF, 0);
}

void ScratchFile::Append(std::span<char const> bytes) {
    errno = 0;
    if (!system::Seek(m_File.get(), m_Size) ||
        std::fwrite(bytes.data(), 1, bytes.size(), m_File.get()) != bytes.size()) {
        Fail("a temporary file could not be written");
    }
    m_Size += bytes.size();
}

void ScratchFile::ReadAt(std::uint64_t place, std::span<char> bytes) {
    errno = 0;
    if (!system::Seek(m_File.get(), place) ||
        std::fread(bytes.data(), 1, bytes.size(), m_File.get()) != bytes.size()) {
        Fail("a temporary file could not be read");
    }
}

void ScratchFile::Fail(char const* what) const {
    std::string const reason = errno == 0 ? "" : ": " + ReasonOf(errno);
    throw Error(ErrorKind::kFile, m_Folder, what + reason);
}

}  // namespace varnet
