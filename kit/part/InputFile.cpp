#include "part/InputFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <system_error>

#include "varnet/Error.h"

namespace varnet {

namespace fs = std::filesystem;

InputFile::InputFile(fs::path const& path) : m_Path(path) {
    std::error_code error;
    fs::file_status const status = fs::status(path, error);
    if (!fs::exists(status)) throw Error(ErrorKind::kFile, path, "no such file");
    if (fs::is_directory(status)) throw Error(ErrorKind::kFile, path, "is a folder");
    errno = 0;
    m_Stream.open(path, std::ios::binary);
    if (!m_Stream) {
        throw Error(ErrorKind::kFile, path, std::string("cannot be opened: ") + std::strerror(errno));
    }
    m_InMemory = !fs::is_regular_file(status);
    if (m_InMemory) {
        m_Bytes.assign(std::istreambuf_iterator<char>(m_Stream), {});
        m_Size = m_Bytes.size();
    } else {
        m_Size = fs::file_size(path);
    }
}

std::size_t InputFile::Read(std::span<char> block) {
    std::size_t read = 0;
    if (m_InMemory) {
        read = std::min<std::size_t>(block.size(), m_Bytes.size() - static_cast<std::size_t>(m_Position));
        std::memcpy(block.data(), m_Bytes.data() + m_Position, read);
    } else {
        m_Stream.read(block.data(), static_cast<std::streamsize>(block.size()));
        if (m_Stream.bad()) throw Error(ErrorKind::kFile, m_Path, "cannot be read");
        read = static_cast<std::size_t>(m_Stream.gcount());
    }
    m_Position += read;
    return read;
}

void InputFile::Seek(std::uint64_t position) {
    m_Position = std::min(position, m_Size);
    if (m_InMemory) return;
    m_Stream.clear();
    m_Stream.seekg(static_cast<std::streamoff>(m_Position));
}

}  // namespace varnet
