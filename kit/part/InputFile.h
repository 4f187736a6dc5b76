#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

#include "files/File.h"

namespace varnet {

/// The bytes of a file, read from the start. What is no regular file, as a pipe, is taken into memory first.
class InputFile {
public:
    /// Throws an Error of kind kFile that says why it cannot be opened.
    explicit InputFile(std::filesystem::path const& path);

    std::filesystem::path const& Path() const { return m_Path; }
    std::uint64_t Size() const { return m_File ? m_File->Size() : m_Bytes.size(); }
    std::uint64_t Position() const { return m_Position; }
    /// Fills the block with the next bytes, and returns how many there were: fewer only at the end. Throws an
    /// Error of kind kFile when the system fails.
    std::size_t Read(std::span<char> block);
    /// Goes to this byte, or to the end where there is none.
    void Seek(std::uint64_t position) { m_Position = std::min(position, Size()); }

private:
    std::filesystem::path m_Path;
    std::optional<SeekableFile> m_File;  // none where the bytes are in memory
    std::string m_Bytes;
    std::uint64_t m_Position = 0;
};

}  // namespace varnet
