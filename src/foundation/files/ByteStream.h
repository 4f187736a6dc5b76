#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "foundation/Require.h"

namespace varnet {

// Binary files byte by byte, at the speed of large blocks.

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

/// Hands out the bytes of a file from its present position on. The file stays the caller's.
class ByteReader {
public:
    explicit ByteReader(FILE* pFile) : m_pFile(pFile), m_Block(kBlockSize) {}

    static constexpr int kEnd = -1;

    /// The next byte, or kEnd.
    int Next() {
        if (m_nNext == m_nEnd && !Refill()) return kEnd;
        return m_Block[m_nNext++];
    }

    /// Copies the next nSize bytes, or as many as there are, and returns how many. Behind them, what pBytes
    /// held before stays.
    std::size_t Take(unsigned char* pBytes, std::size_t nSize) {
        if (m_nEnd - m_nNext >= nSize) {
            std::memcpy(pBytes, m_Block.data() + m_nNext, nSize);
            m_nNext += nSize;
            return nSize;
        }
        std::size_t nTaken = 0;
        while (nTaken < nSize && (m_nNext != m_nEnd || Refill())) {
            std::size_t const n = std::min(nSize - nTaken, m_nEnd - m_nNext);
            std::memcpy(pBytes + nTaken, m_Block.data() + m_nNext, n);
            m_nNext += n;
            nTaken += n;
        }
        return nTaken;
    }

private:
    static constexpr std::size_t kBlockSize = std::size_t{1} << 16;

    bool Refill() {
        m_nNext = 0;
        m_nEnd = std::fread(m_Block.data(), 1, m_Block.size(), m_pFile);
        return m_nEnd > 0;
    }

    FILE* m_pFile;
    std::vector<unsigned char> m_Block;
    std::size_t m_nNext = 0;
    std::size_t m_nEnd = 0;
};

}  // namespace varnet
