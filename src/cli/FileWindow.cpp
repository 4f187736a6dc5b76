#include "cli/FileWindow.h"

#include <algorithm>
#include <cstring>

#include "foundation/Require.h"
#include "foundation/files/FilePosition.h"

namespace varnet {

FileWindow::FileWindow(FILE* pFile)
    : m_pFile(pFile),
      m_nStart(pFile != nullptr ? FilePosition(pFile) : -1),
      m_bEndOfFile(pFile == nullptr),
      m_Buffer(std::make_unique_for_overwrite<char[]>(kLongest + kLargestBlock)) {}

// Brings what is held to the start of the buffer, and reads more behind it.
void FileWindow::Read(std::size_t nSize) {
    std::memmove(m_Buffer.get(), m_Buffer.get() + m_nNext, Held());
    m_nEnd = Held();
    m_nNext = 0;
    std::size_t const nRead = std::fread(m_Buffer.get() + m_nEnd, 1, nSize, m_pFile);
    m_nEnd += nRead;
    m_nRead += static_cast<std::int64_t>(nRead);
    m_bEndOfFile = nRead < nSize;
}

// True when so many bytes are held.
bool FileWindow::Hold(std::size_t nSize) {
    while (Held() < nSize && !m_bEndOfFile) {
        if (m_nStart < 0) {
            Read(nSize - Held());
        } else {
            Read(m_nBlock);
            m_nBlock = std::min(2 * m_nBlock, kLargestBlock);
        }
    }
    return Held() >= nSize;
}

void FileWindow::ReadLineOfPipe(std::size_t nMost) {
    m_nNext = 0;
    m_nEnd = 0;
    while (m_nEnd < nMost && !m_bEndOfFile) {
        int const c = std::getc(m_pFile);
        m_bEndOfFile = c == EOF;
        if (m_bEndOfFile) break;
        m_Buffer[m_nEnd++] = static_cast<char>(c);
        ++m_nRead;
        if (c == '\n') break;
    }
}

std::optional<std::string_view> FileWindow::NextLine(std::size_t nMost) {
    VARNET_REQUIRE(nMost <= kLongest);
    if (m_nStart < 0 && !m_bEndOfFile) ReadLineOfPipe(nMost);
    std::size_t nSearched = 0;
    std::size_t nLength = 0;
    for (;;) {
        std::size_t const nHeld = std::min(nMost, Held());
        char const* const pLine = m_Buffer.get() + m_nNext;
        void const* const pLineEnd = std::memchr(pLine + nSearched, '\n', nHeld - nSearched);
        nLength = pLineEnd != nullptr
                      ? static_cast<std::size_t>(static_cast<char const*>(pLineEnd) - pLine) + 1
                      : nHeld;
        if (pLineEnd != nullptr || nHeld == nMost || m_bEndOfFile || m_nStart < 0) break;
        nSearched = nHeld;
        Hold(nHeld + 1);
    }
    if (nLength == 0) return std::nullopt;
    std::string_view const line(m_Buffer.get() + m_nNext, nLength);
    m_nNext += nLength;
    return line;
}

unsigned char const* FileWindow::Take(std::size_t nSize) {
    VARNET_REQUIRE(nSize <= kLongest);
    if (!Hold(nSize)) {
        PassAll();
        return nullptr;
    }
    char const* const pBytes = m_Buffer.get() + m_nNext;
    m_nNext += nSize;
    return reinterpret_cast<unsigned char const*>(pBytes);
}

std::span<unsigned char const> FileWindow::TakeItems(std::size_t nSize, std::size_t nMost) {
    VARNET_REQUIRE(nSize > 0 && nSize <= kLongest && nMost > 0);
    if (!Hold(nSize)) {
        PassAll();
        return {};
    }
    std::size_t const nBytes = std::min(nMost, Held() / nSize) * nSize;
    char const* const pBytes = m_Buffer.get() + m_nNext;
    m_nNext += nBytes;
    return {reinterpret_cast<unsigned char const*>(pBytes), nBytes};
}

bool FileWindow::CanHold(std::uint64_t nBytes) {
    if (nBytes <= Held()) return true;
    if (m_nStart < 0) return m_pFile != nullptr;
    if (m_nLength == -2) m_nLength = FileLength(m_pFile);
    std::int64_t const nLeft = m_nLength - m_nStart - Position();
    return nLeft > 0 && nBytes <= static_cast<std::uint64_t>(nLeft);
}

void FileWindow::Leave(std::int64_t nPosition) {
    if (m_nStart >= 0) {
        if (nPosition != m_nRead) SetFilePosition(m_pFile, m_nStart + nPosition);
        return;
    }
    for (std::size_t i = m_nEnd; i > 0 && m_nRead > nPosition; --i, --m_nRead) {
        if (std::ungetc(static_cast<unsigned char>(m_Buffer[i - 1]), m_pFile) == EOF) break;
    }
}

void FileWindow::LeaveAtEnd() {
    if (m_nStart >= 0) Leave(std::max(m_nRead, FileLength(m_pFile) - m_nStart));
}

}  // namespace varnet
