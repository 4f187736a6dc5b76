#include "part/InputFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

#include "files/System.h"
#include "varnet/Error.h"

namespace varnet {

namespace fs = std::filesystem;

InputFile::InputFile(fs::path const& path) : m_Path(path) {
    std::error_code error;
    fs::path const place = system::AnyLength(path);
    fs::file_status const status = fs::status(place, error);
    if (!fs::exists(status)) throw Error(ErrorKind::kFile, path, "no such file");
    if (fs::is_directory(status)) throw Error(ErrorKind::kFile, path, "is a folder");
    errno = 0;
    m_File = OpenFile(place, "rb");
    if (m_File == nullptr) throw Error(ErrorKind::kFile, path, "cannot be opened: " + ReasonOf(errno));
    m_InMemory = !fs::is_regular_file(status);
    if (m_InMemory) {
        std::array<char, 4096> block;
        while (std::size_t const read = std::fread(block.data(), 1, block.size(), m_File.get())) {
            m_Bytes.append(block.data(), read);
        }
        m_Size = m_Bytes.size();
    } else {
        m_Size = fs::file_size(place);
    }
}

std::size_t InputFile::Read(std::span<char> block) {
    std::size_t read = 0;
    if (m_InMemory) {
        read = std::min<std::size_t>(block.size(), m_Bytes.size() - static_cast<std::size_t>(m_Position));
        std::memcpy(block.data(), m_Bytes.data() + m_Position, read);
    } else {
        errno = 0;
        read = std::fread(block.data(), 1, block.size(), m_File.get());
        if (std::ferror(m_File.get()) != 0) {
            throw Error(ErrorKind::kFile, m_Path, "cannot be read: " + ReasonOf(errno));
        }
    }
    m_Position += read;
    return read;
}

void InputFile::Seek(std::uint64_t position) {
    m_Position = std::min(position, m_Size);
    if (m_InMemory) return;
    std::clearerr(m_File.get());
    errno = 0;
    if (!system::Seek(m_File.get(), m_Position)) {
        throw Error(ErrorKind::kFile, m_Path, "cannot be read: " + ReasonOf(errno));
    }
}

}  // namespace varnet
