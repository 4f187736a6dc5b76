#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>

namespace varnet {

// A path in the interface is a char* that holds a zero-terminated string of 16-bit characters (UTF-16 in the
// byte order of the machine, at any alignment).

struct FileCloser {
    void operator()(FILE* pFile) const noexcept { std::fclose(pFile); }
};

/// An open file that is closed with the handle. Null when it could not be opened.
using File = std::unique_ptr<FILE, FileCloser>;

inline constexpr std::size_t kUnlimitedPath = std::numeric_limits<std::size_t>::max();

/// Opens the file that the path names, with a mode of fopen: "r", "rb", "w" or "wb". Null for a null path, a
/// path that names no file that can be opened so, and a directory; for reading, also what is no plain file,
/// since pipes and devices may never end; for writing, also a pipe that nobody reads. The path ends at its
/// zero character, or after nMaxBytes where it has none.
///
/// Where the system names files by bytes, the path is turned into UTF-8. Half of a surrogate pair that stands
/// alone is turned into three bytes as any other character, so that different paths name different files.
/// On Windows paths of any length are taken, and no mode translates line ends.
File OpenPath(char const* pszPath, char const* pMode, std::size_t nMaxBytes = kUnlimitedPath);

/// The size of an open file in bytes; the position stays. -1 for a null file, 0 when the file has no position
/// that can be set, and the largest 32-bit number for a file that is larger.
std::int32_t FileSize(FILE* pFile);

}  // namespace varnet
