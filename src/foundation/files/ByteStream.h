#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>

#include "foundation/Require.h"

namespace varnet {

// Files byte by byte and line by line, at the speed of large blocks.

/// Gathers bytes and writes them block by block; the last ones when it goes. The file stays the caller's.
class ByteWriter {
public:
    explicit ByteWriter(FILE* pFile)
        : m_pFile(pFile), m_Block(std::make_unique_for_overwrite<unsigned char[]>(kBlockSize)) {}
    ByteWriter(ByteWriter const&) = delete;
    ByteWriter& operator=(ByteWriter const&) = delete;
    ~ByteWriter() { Flush(); }

    /// Room for nSize bytes, which the caller fills before the next call. nSize is at most kLongest.
    unsigned char* Room(std::size_t nSize) {
        VARNET_REQUIRE(nSize <= kLongest);
        if (kBlockSize - m_nUsed < nSize) Flush();
        unsigned char* const pRoom = m_Block.get() + m_nUsed;
        m_nUsed += nSize;
        if constexpr (kRequirementsChecked) m_nRoom = nSize;
        return pRoom;
    }

    /// Takes back the last nSize bytes of the room that was given last: they were not needed.
    void TakeBack(std::size_t nSize) {
        VARNET_REQUIRE(nSize <= m_nRoom);
        m_nUsed -= nSize;
        if constexpr (kRequirementsChecked) m_nRoom = 0;
    }

    static constexpr std::size_t kLongest = 4096;

private:
    static constexpr std::size_t kBlockSize = 16 * kLongest;

    void Flush() {
        std::fwrite(m_Block.get(), 1, m_nUsed, m_pFile);
        m_nUsed = 0;
    }

    FILE* m_pFile;
    std::unique_ptr<unsigned char[]> m_Block;
    std::size_t m_nUsed = 0;
    std::size_t m_nRoom = 0;  // that can be taken back; for the check alone
};

/// Hands out a file from its present position on: byte by byte, in pieces, or line by line without copying.
/// Only the reader knows then where the file is; the file stays the caller's.
class ByteReader {
public:
    explicit ByteReader(FILE* pFile)
        : m_pFile(pFile), m_Block(std::make_unique_for_overwrite<char[]>(kBlockSize)) {}

    static constexpr int kEnd = -1;

    /// The next byte, or kEnd.
    int Next() {
        if (m_nNext == m_nEnd && !Refill()) return kEnd;
        return static_cast<unsigned char>(m_Block[m_nNext++]);
    }

    /// Copies the next nSize bytes, or as many as there are, and returns how many. Behind them, what pBytes
    /// held before stays.
    std::size_t Take(unsigned char* pBytes, std::size_t nSize) {
        if (Held() >= nSize) {
            std::memcpy(pBytes, m_Block.get() + m_nNext, nSize);
            m_nNext += nSize;
            return nSize;
        }
        std::size_t nTaken = 0;
        while (nTaken < nSize && (Held() != 0 || Refill())) {
            std::size_t const n = std::min(nSize - nTaken, Held());
            std::memcpy(pBytes + nTaken, m_Block.get() + m_nNext, n);
            m_nNext += n;
            nTaken += n;
        }
        return nTaken;
    }

    /// The next line with its line end, or a piece of nMost characters of a longer line; nothing at the end
    /// of the file. The text is good until the next call. nMost is at most kLongestLine.
    std::optional<std::string_view> NextLine(std::size_t nMost);

    /// Makes the piece that NextLine gave last the next one again. Nothing else may have been read since.
    void UnreadLine() { m_nNext = m_nLineStart; }

    static constexpr std::size_t kLongestLine = std::size_t{16} * 1024;

private:
    static constexpr std::size_t kBlockSize = 4 * kLongestLine;

    std::size_t Held() const { return m_nEnd - m_nNext; }
    // Keeps what is held, and reads as much behind it as there is room for. False where nothing came.
    bool Refill();

    FILE* m_pFile;
    std::unique_ptr<char[]> m_Block;
    bool m_bEndOfFile = false;
    std::size_t m_nLineStart = 0;
    std::size_t m_nNext = 0;
    std::size_t m_nEnd = 0;
};

}  // namespace varnet
