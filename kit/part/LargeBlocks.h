#pragma once

#include <cstddef>

namespace varnet {

/// Memory for what grows with a mesh, in large pages where the system has them. What is given back is kept
/// for the next block of about its size, and offered to the system meanwhile: fresh pages are cleared before
/// anybody may use them, which takes longer than much of what is done with them. Any thread may ask.
namespace large_blocks {

inline constexpr std::size_t kPage = std::size_t{1} << 21;

/// What is kept at most, in bytes.
inline constexpr std::size_t kMostKept = 32 * kPage;

/// The size of the block for so many bytes: a quarter more at most, or a page.
std::size_t SizeFor(std::size_t bytes);

/// A block for so many bytes, which may hold anything. Throws std::bad_alloc.
void* Take(std::size_t bytes);
/// Gives back the block that was taken for so many bytes.
void Give(void* block, std::size_t bytes) noexcept;

/// How many bytes are kept now.
std::size_t Kept();

}  // namespace large_blocks

}  // namespace varnet
