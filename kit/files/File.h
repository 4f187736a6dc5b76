#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace varnet {

// One door to the file system: names in any alphabet, positions in 64 bits.

struct StreamCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePointer = std::unique_ptr<std::FILE, StreamCloser>;

/// As std::fopen, with a path in any alphabet. Null on failure, with errno.
FilePointer OpenFile(std::filesystem::path const& path, char const* mode);

/// What a number of errno means, for messages.
std::string ReasonOf(int error);

/// The path as UTF-8, for messages.
std::string TextOf(std::filesystem::path const& path);

/// A file that is read at any place.
class SeekableFile {
public:
    /// Throws Error of kind kFile where there is no such file, where it is a folder, or may not be read.
    explicit SeekableFile(std::filesystem::path const& path);

    std::filesystem::path const& Path() const { return m_Path; }
    std::uint64_t Size() const { return m_Size; }
    /// Reads up to bytes.size() bytes from a place, and says how many there were. Throws Error of kind kFile
    /// when the system reports a failure.
    std::size_t ReadAt(std::uint64_t place, std::span<char> bytes);

private:
    std::filesystem::path m_Path;
    FilePointer m_File;
    std::uint64_t m_Size = 0;
    std::uint64_t m_Place = 0;  // where the system's position is
};

/// A file under way to its place.
///
/// What is written goes to a file of another name in the same folder, which takes the place of the target on
/// Commit, with the owner and the mode that the target had. Links keep pointing: what they point to is
/// replaced. Devices and pipes, and "-" for standard output, are written to directly. Without a Commit
/// nothing is left.
class OutputFile {
public:
    /// Throws Error of kind kFile when the file cannot be created, or is a folder.
    explicit OutputFile(std::filesystem::path const& target);
    OutputFile(OutputFile const&) = delete;
    OutputFile& operator=(OutputFile const&) = delete;
    ~OutputFile();

    /// Throws Error of kind kFile when the system does not take the bytes.
    void Write(std::string_view bytes);
    /// Bytes written so far.
    std::uint64_t Size() const { return m_Written; }
    /// Writes over bytes that are there already, near the beginning. Only where IsReplacing.
    void Overwrite(std::uint64_t place, std::span<char const> bytes);
    /// Whether the target is a plain file, which the finished one replaces.
    bool IsReplacing() const { return m_Replacing; }

    /// For writers that open a file by its name: closes it, so that they may write to this path instead of
    /// Write being called.
    std::filesystem::path const& PathForWriter();

    /// Puts the file in its place. Throws Error of kind kFile when it could not be written whole.
    void Commit();

private:
    [[noreturn]] void Fail(int error);

    std::filesystem::path m_Shown;    // as it was asked for
    std::filesystem::path m_Target;   // behind links
    std::filesystem::path m_Partial;  // empty where the target is written to directly
    FilePointer m_Owned;
    std::FILE* m_File = nullptr;
    std::uint64_t m_Written = 0;
    bool m_Replacing = true;
    bool m_Done = false;
};

/// The bytes of a whole file. Throws Error of kind kFile; of kind kContent where it has more than most bytes.
std::vector<char> ReadWhole(std::filesystem::path const& path, std::uint64_t most);

/// Writes a whole file, as OutputFile does.
void WriteWhole(std::filesystem::path const& path, std::string_view bytes);

}  // namespace varnet
