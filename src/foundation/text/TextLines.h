#pragma once

#include <array>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <string_view>
#include <vector>

namespace varnet {

/// Reads a text file in large blocks, and hands it out line by line without copying.
class TextLines {
public:
    /// Reads from the file's present position on. The file stays the caller's.
    explicit TextLines(FILE* pFile) : m_pFile(pFile), m_Buffer(kBufferSize) {}

    /// The next line with its line end, or a piece of nMost characters of a longer line; nothing at the end
    /// of the file. The text is good until the next call. nMost is at most kLongestPiece.
    std::optional<std::string_view> Next(std::size_t nMost);

    /// Makes the piece that Next gave last the next one again.
    void Unread() { m_nNext = m_nPieceStart; }

    static constexpr std::size_t kLongestPiece = std::size_t{16} * 1024;

private:
    static constexpr std::size_t kBufferSize = 8 * kLongestPiece;

    void Refill();

    FILE* m_pFile;
    std::vector<char> m_Buffer;
    std::size_t m_nPieceStart = 0;
    std::size_t m_nNext = 0;
    std::size_t m_nEnd = 0;
    bool m_bEndOfFile = false;
};

}  // namespace varnet
