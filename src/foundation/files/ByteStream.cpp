#include "foundation/files/ByteStream.h"

namespace varnet {

bool ByteReader::Refill() {
    if (m_bEndOfFile) return false;
    std::memmove(m_Block.get(), m_Block.get() + m_nNext, Held());
    m_nEnd = Held();
    m_nNext = 0;
    std::size_t const nWanted = kBlockSize - m_nEnd;
    std::size_t const nRead = std::fread(m_Block.get() + m_nEnd, 1, nWanted, m_pFile);
    m_nEnd += nRead;
    m_bEndOfFile = nRead < nWanted;
    return nRead > 0;
}

std::optional<std::string_view> ByteReader::NextLine(std::size_t nMost) {
    VARNET_REQUIRE(nMost <= kLongestLine);
    if (Held() < nMost) Refill();
    if (Held() == 0) return std::nullopt;
    std::size_t nLength = std::min(nMost, Held());
    char const* const pStart = m_Block.get() + m_nNext;
    if (void const* const pLineEnd = std::memchr(pStart, '\n', nLength)) {
        nLength = static_cast<std::size_t>(static_cast<char const*>(pLineEnd) - pStart) + 1;
    }
    m_nLineStart = m_nNext;
    m_nNext += nLength;
    return std::string_view(pStart, nLength);
}

}  // namespace varnet
