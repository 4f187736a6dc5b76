#pragma once

#include <cstdint>
#include <cstdio>

namespace varnet {

// Places in an open file, also where it is larger than a long counts.

/// The present position, in bytes from the start; -1 where the file has none, as a pipe.
std::int64_t FilePosition(FILE* pFile);

/// Goes to a position. False where the file has none.
bool SetFilePosition(FILE* pFile, std::int64_t nPosition);

/// The size of the file in bytes; the position stays. -1 where the file has none.
std::int64_t FileLength(FILE* pFile);

}  // namespace varnet
