#include "foundation/SlotPool.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define VARNET_PLAIN_HEAP 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VARNET_PLAIN_HEAP 1
#endif
#endif

#if defined(VARNET_PLAIN_HEAP)

void* AllocateFacetSlot() { return ::operator new(kFacetSlotSize); }
void FreeFacetSlot(void* pSlot) noexcept { ::operator delete(pSlot); }
void* AllocateVertexSlot() { return ::operator new(kVertexSlotSize); }
void FreeVertexSlot(void* pSlot) noexcept { ::operator delete(pSlot); }

#else

namespace {

// Chunks are aligned to their size, so that a slot's address leads to its chunk.
constexpr std::size_t kChunkSize = std::size_t{256} * 1024;

// Added to a chunk's count while a thread still hands out slots from it.
constexpr std::int64_t kOpen = std::int64_t{1} << 40;

struct Chunk {
    std::atomic<std::int64_t> nHeld{kOpen};
};

void* AllocateChunkMemory() {
#if defined(_WIN32)
    void* const pMemory = _aligned_malloc(kChunkSize, kChunkSize);
#else
    void* const pMemory = std::aligned_alloc(kChunkSize, kChunkSize);
#endif
    if (pMemory == nullptr) throw std::bad_alloc();
    return pMemory;
}

void Release(Chunk* pChunk, std::int64_t nReturned) noexcept {
    if (pChunk->nHeld.fetch_sub(nReturned, std::memory_order_acq_rel) != nReturned) return;
    pChunk->~Chunk();
#if defined(_WIN32)
    _aligned_free(pChunk);
#else
    std::free(pChunk);
#endif
}

// One thread's open chunk for slots of one size.
template <std::size_t kSlotSize>
class SlotPool {
public:
    SlotPool() = default;
    SlotPool(SlotPool const&) = delete;
    SlotPool& operator=(SlotPool const&) = delete;
    ~SlotPool() { Close(); }

    void* Allocate() {
        if (m_nNext + kSlotSize > kChunkSize) {
            Close();
            Open();
        }
        void* const pSlot = reinterpret_cast<char*>(m_pChunk) + m_nNext;
        m_nNext += kSlotSize;
        return pSlot;
    }

    static void Free(void* pSlot) noexcept {
        if (pSlot == nullptr) return;
        auto const nAddress = reinterpret_cast<std::uintptr_t>(pSlot);
        Release(reinterpret_cast<Chunk*>(nAddress & ~(kChunkSize - 1)), 1);
    }

private:
    static constexpr std::size_t kFirstSlot = 64;
    static constexpr std::size_t kNoChunk = kChunkSize;

    void Open() {
        m_pChunk = ::new (AllocateChunkMemory()) Chunk;
        m_nNext = kFirstSlot;
    }

    void Close() noexcept {
        if (m_pChunk == nullptr) return;
        auto const nHandedOut = static_cast<std::int64_t>((m_nNext - kFirstSlot) / kSlotSize);
        Release(m_pChunk, kOpen - nHandedOut);
        m_pChunk = nullptr;
        m_nNext = kNoChunk;
    }

    Chunk* m_pChunk = nullptr;
    std::size_t m_nNext = kNoChunk;
};

thread_local SlotPool<kFacetSlotSize> t_FacetPool;
thread_local SlotPool<kVertexSlotSize> t_VertexPool;

}  // namespace

void* AllocateFacetSlot() { return t_FacetPool.Allocate(); }
void FreeFacetSlot(void* pSlot) noexcept { SlotPool<kFacetSlotSize>::Free(pSlot); }
void* AllocateVertexSlot() { return t_VertexPool.Allocate(); }
void FreeVertexSlot(void* pSlot) noexcept { SlotPool<kVertexSlotSize>::Free(pSlot); }

#endif
