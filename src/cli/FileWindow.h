#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace varnet {

/// Reads a caller's file from its present position on, ahead in blocks, and puts it where it is told to stand
/// when the work is done: the caller may go on with the file by any means.
///
/// The first block is small and each further one twice as large, so that reading many small layers one after
/// the other costs in proportion to the layers, and a large one is read in large blocks. A file without a
/// position, as a pipe, is read no further than is asked for.
///
/// Positions are counted in bytes from where the window was opened.
class FileWindow {
public:
    /// The file may be null: it then counts as empty.
    explicit FileWindow(FILE* pFile);
    FileWindow(FileWindow const&) = delete;
    FileWindow& operator=(FileWindow const&) = delete;

    /// The next line with its line end, or a piece of nMost characters of a longer line; nothing at the end
    /// of the file. nMost is at most kLongest. Good until the next call.
    std::optional<std::string_view> NextLine(std::size_t nMost);

    /// The next nSize bytes, nSize being at most kLongest. Nothing where there are fewer: all of them are
    /// passed over then. Good until the next call.
    unsigned char const* Take(std::size_t nSize);

    /// The next items of nSize bytes, from 1 to kLongest, as many as there are from one to nMost. None where
    /// there is no whole one left: all bytes are passed over then. Good until the next call.
    std::span<unsigned char const> TakeItems(std::size_t nSize, std::size_t nMost);

    /// Whether the file can hold so many bytes more. A file without a position can.
    bool CanHold(std::uint64_t nBytes);

    /// Where the next byte stands.
    std::int64_t Position() const { return m_nRead - static_cast<std::int64_t>(m_nEnd - m_nNext); }

    /// Ends the work: the file stands at this position. One without a position stands there too where the
    /// C runtime takes the bytes back that were read last; else it stands behind them.
    void Leave(std::int64_t nPosition);

    /// The same at the end of the file.
    void LeaveAtEnd();

    static constexpr std::size_t kLongest = std::size_t{16} * 1024;

private:
    static constexpr std::size_t kFirstBlock = 4096;
    static constexpr std::size_t kLargestBlock = std::size_t{64} * 1024;

    std::size_t Held() const { return m_nEnd - m_nNext; }
    bool Hold(std::size_t nSize);
    void Read(std::size_t nSize);
    void ReadLineOfPipe(std::size_t nMost);
    void PassAll() { m_nNext = m_nEnd; }

    FILE* m_pFile;
    std::int64_t m_nStart;        // of the window in the file; -1 where the file has no position
    std::int64_t m_nLength = -2;  // of the file; -2 until it is asked for
    std::int64_t m_nRead = 0;
    bool m_bEndOfFile = false;
    std::unique_ptr<char[]> m_Buffer;
    std::size_t m_nBlock = kFirstBlock;
    std::size_t m_nNext = 0;
    std::size_t m_nEnd = 0;
};

}  // namespace varnet
