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
    fs::file_status const status = fs::status(system::AnyLength(path), error);
    if (!fs::exists(status) || fs::is_directory(status) || fs::is_regular_file(status)) {
        m_File.emplace(path);
        return;
    }
    errno = 0;
    FilePointer const file = OpenFile(path, "rb");
    if (file == nullptr) throw Error(ErrorKind::kFile, path, "cannot be opened: " + ReasonOf(errno));
    std::array<char, 4096> block;
    while (std::size_t const read = std::fread(block.data(), 1, block.size(), file.get()))
        m_Bytes.append(block.data(), read);
    if (std::ferror(file.get()) != 0) {
        throw Error(ErrorKind::kFile, path, "cannot be read: " + ReasonOf(errno));
    }
}

std::size_t InputFile::Read(std::span<char> block) {
    std::size_t read = 0;
    if (m_File) {
        read = m_File->ReadAt(m_Position, block);
    } else {
        read = std::min<std::size_t>(block.size(), m_Bytes.size() - static_cast<std::size_t>(m_Position));
        std::memcpy(block.data(), m_Bytes.data() + m_Position, read);
    }
    m_Position += read;
    return read;
}

}  // namespace varnet
