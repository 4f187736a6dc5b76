#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "files/File.h"

namespace varnet {

/// Bytes that do not fit into memory, in a folder. Nobody else can read them, and they are gone when the
/// object or the process is, however that ends: on Linux and its like the file has no name, on Windows the
/// system removes it with its last handle.
class ScratchFile {
public:
    /// Throws Error of kind kFile where no file can be made in the folder.
    explicit ScratchFile(std::filesystem::path const& folder);

    std::uint64_t Size() const { return m_Size; }
    /// Throws Error of kind kFile, as where the disk is full.
    void Append(std::span<char const> bytes);
    /// All of the bytes from a place on, which have been written. Throws Error of kind kFile.
    void ReadAt(std::uint64_t place, std::span<char> bytes);

private:
    [[noreturn]] void Fail(char const* what) const;

    std::filesystem::path m_Folder;
    FilePointer m_File;
    std::uint64_t m_Size = 0;
};

}  // namespace varnet
