#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
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
    std::uint64_t Size() const { return m_Size; }
    std::uint64_t Position() const { return m_Position; }
    /// Fills the block with the next bytes, and returns how many there were: fewer only at the end. Throws an
    /// Error of kind kFile when the system fails.
    std::size_t Read(std::span<char> block);
    /// Goes back to this byte.
    void Seek(std::uint64_t position);

private:
    std::filesystem::path m_Path;
    FilePointer m_File;
    std::string m_Bytes;  // of what is no regular file
    bool m_InMemory = false;
    std::uint64_t m_Size = 0;
    std::uint64_t m_Position = 0;
};

}  // namespace varnet
