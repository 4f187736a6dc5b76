#include "foundation/text/TextLines.h"

#include <algorithm>
#include <cstring>

#include "foundation/Require.h"

namespace varnet {

std::optional<std::string_view> TextLines::Next(std::size_t nMost) {
    VARNET_REQUIRE(nMost <= kLongestPiece);
    if (m_nEnd - m_nNext < nMost && !m_bEndOfFile) Refill();
    if (m_nNext == m_nEnd) return std::nullopt;
    std::size_t nLength = std::min(nMost, m_nEnd - m_nNext);
    char const* const pStart = m_Buffer.data() + m_nNext;
    if (void const* const pLineEnd = std::memchr(pStart, '\n', nLength)) {
        nLength = static_cast<std::size_t>(static_cast<char const*>(pLineEnd) - pStart) + 1;
    }
    m_nPieceStart = m_nNext;
    m_nNext += nLength;
    return std::string_view(pStart, nLength);
}

void TextLines::Refill() {
    std::memmove(m_Buffer.data(), m_Buffer.data() + m_nNext, m_nEnd - m_nNext);
    m_nEnd -= m_nNext;
    m_nNext = 0;
    std::size_t const nWanted = m_Buffer.size() - m_nEnd;
    std::size_t const nRead = std::fread(m_Buffer.data() + m_nEnd, 1, nWanted, m_pFile);
    m_nEnd += nRead;
    m_bEndOfFile = nRead < nWanted;
}

}  // namespace varnet
