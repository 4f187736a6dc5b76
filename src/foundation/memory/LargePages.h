#pragma once

#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

namespace varnet {

// Memory for what grows with a mesh, in pages larger than the usual ones where the system has them: fewer
// faults when it is first touched, and fewer misses of the address cache when it is walked in any order.

inline constexpr std::size_t kLargePage = std::size_t{2} * 1024 * 1024;

/// nSize bytes, a multiple of kLargePage and aligned to it, all zero. Throws std::bad_alloc.
void* AllocateLargePages(std::size_t nSize);
/// nSize as it was when they were taken.
void FreeLargePages(void* pMemory, std::size_t nSize) noexcept;

/// One large page with anything in it, most likely one that was given back before. Throws std::bad_alloc.
void* TakeLargePage();
/// Gives the page back. Some are kept for the next mesh; the system may have their memory meanwhile if it
/// needs it. They go for good when the library is unloaded.
void GiveLargePage(void* pPage) noexcept;

/// A table of records that all begin as zero bytes.
template <class Record>
class ZeroedTable {
    static_assert(std::is_trivially_default_constructible_v<Record> &&
                  std::is_trivially_destructible_v<Record>);

public:
    ZeroedTable() = default;
    explicit ZeroedTable(std::size_t nRecords) : m_pRecords(Allocate(nRecords)), m_nRecords(nRecords) {}
    ZeroedTable(ZeroedTable&& other) noexcept
        : m_pRecords(std::exchange(other.m_pRecords, nullptr)),
          m_nRecords(std::exchange(other.m_nRecords, 0)) {}
    ZeroedTable& operator=(ZeroedTable&& other) noexcept {
        std::swap(m_pRecords, other.m_pRecords);
        std::swap(m_nRecords, other.m_nRecords);
        return *this;
    }
    ~ZeroedTable() { Free(); }

    std::size_t size() const { return m_nRecords; }
    bool empty() const { return m_nRecords == 0; }
    Record* begin() { return m_pRecords; }
    Record* end() { return m_pRecords + m_nRecords; }
    Record const* begin() const { return m_pRecords; }
    Record const* end() const { return m_pRecords + m_nRecords; }
    Record& operator[](std::size_t i) { return m_pRecords[i]; }
    Record const& operator[](std::size_t i) const { return m_pRecords[i]; }

private:
    static std::size_t BytesOf(std::size_t nRecords) {
        std::size_t const nBytes = nRecords * sizeof(Record);
        return nBytes < kLargePage ? nBytes : (nBytes + kLargePage - 1) / kLargePage * kLargePage;
    }

    static Record* Allocate(std::size_t nRecords) {
        std::size_t const nBytes = BytesOf(nRecords);
        if (nBytes >= kLargePage) return static_cast<Record*>(AllocateLargePages(nBytes));
        void* const pMemory = ::operator new(nBytes, std::align_val_t(alignof(Record)));
        return static_cast<Record*>(std::memset(pMemory, 0, nBytes));
    }

    void Free() noexcept {
        std::size_t const nBytes = BytesOf(m_nRecords);
        if (nBytes >= kLargePage) {
            FreeLargePages(m_pRecords, nBytes);
        } else {
            ::operator delete(m_pRecords, std::align_val_t(alignof(Record)));
        }
    }

    Record* m_pRecords = nullptr;
    std::size_t m_nRecords = 0;
};

}  // namespace varnet
