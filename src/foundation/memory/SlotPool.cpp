#include "foundation/memory/SlotPool.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "foundation/memory/LargePages.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace varnet {

#if VARNET_ADDRESS_SANITIZER

void* AllocateFacetSlot() { return ::operator new(kFacetSlotSize); }
void FreeFacetSlot(void* pSlot) noexcept { ::operator delete(pSlot); }
void* AllocateVertexSlot() { return ::operator new(kVertexSlotSize + kVertexAnnexSize); }
void FreeVertexSlot(void* pSlot) noexcept { ::operator delete(pSlot); }

#else

namespace {

using slot_layout::kChunkSize;
using slot_layout::kFirstSlot;

// A thread that needs more than a few chunks gets them by the region, which is a large page.
constexpr std::size_t kChunksPerRegion = kLargePage / kChunkSize;
constexpr int kSingleChunks = 4;

// Added to a chunk's count while a thread still hands out slots from it.
constexpr std::int64_t kOpen = std::int64_t{1} << 40;

// Slots held by objects, and chunks held by threads or objects, are counted; the last one gives the memory
// back.
struct Chunk {
    std::atomic<std::int64_t> nSlotsHeld{kOpen};
    Chunk* pRegion = this;  // the first chunk of the region; itself for a single chunk
    bool bSingle = false;
    std::atomic<std::size_t> nChunksHeld{1};  // of the region, in its first chunk
};

void* AllocateChunk() {
#if defined(_WIN32)
    void* const pMemory = _aligned_malloc(kChunkSize, kChunkSize);
#else
    void* const pMemory = std::aligned_alloc(kChunkSize, kChunkSize);
#endif
    if (pMemory == nullptr) throw std::bad_alloc();
    return pMemory;
}

void FreeChunk(void* pMemory) noexcept {
#if defined(_WIN32)
    _aligned_free(pMemory);
#else
    std::free(pMemory);
#endif
}

void ReleaseChunks(Chunk* pRegion, std::size_t nChunks) noexcept {
    if (pRegion->nChunksHeld.fetch_sub(nChunks, std::memory_order_acq_rel) != nChunks) return;
    if (pRegion->bSingle) {
        FreeChunk(pRegion);
    } else {
        GiveLargePage(pRegion);
    }
}

void ReleaseSlots(Chunk* pChunk, std::int64_t nSlots) noexcept {
    if (pChunk->nSlotsHeld.fetch_sub(nSlots, std::memory_order_acq_rel) == nSlots)
        ReleaseChunks(pChunk->pRegion, 1);
}

// One thread's open chunk for slots of one size, and what is left of its open region.
template <std::size_t kSlotSize, std::size_t kAnnexSize>
class SlotPool {
public:
    void* Allocate() {
        if (m_nNext >= kSlotsEnd) TakeNextChunk();
        void* const pSlot = reinterpret_cast<char*>(m_pChunk) + m_nNext;
        m_nNext += kSlotSize;
        return pSlot;
    }

    static void Free(void* pSlot) noexcept {
        if (pSlot == nullptr) return;
        auto const nAddress = reinterpret_cast<std::uintptr_t>(pSlot);
        ReleaseSlots(reinterpret_cast<Chunk*>(nAddress & ~(kChunkSize - 1)), 1);
    }

private:
    static constexpr std::size_t kSlotsEnd = slot_layout::SlotsEnd(kSlotSize, kAnnexSize);
    static constexpr std::size_t kNoChunk = kChunkSize;
    static_assert(sizeof(Chunk) <= kFirstSlot);

    void TakeNextChunk() {
        CloseOnExit();
        CloseChunk();
        OpenChunk();
    }

    // When the thread ends, it lets go of what it has not handed out.
#if !defined(_WIN32)
    void CloseOnExit() { thread_local Closer const closer{this}; }

    struct Closer {
        explicit Closer(SlotPool* pClosed) : pPool(pClosed) {}
        Closer(Closer const&) = delete;
        Closer& operator=(Closer const&) = delete;
        ~Closer() { pPool->Close(); }
        SlotPool* pPool;
    };
#else
    void CloseOnExit() {}
#endif

    // A chunk of the heap's own while there are few of them, else the next one of a region.
    void OpenChunk() {
        if (m_nChunksLeft == 0) OpenRegion();
        std::size_t const nIndex = m_nRegionChunks - m_nChunksLeft;
        char* const pPlace = reinterpret_cast<char*>(m_pRegion) + nIndex * kChunkSize;
        if (nIndex > 0) {
            m_pChunk = ::new (static_cast<void*>(pPlace)) Chunk;
            m_pChunk->pRegion = m_pRegion;
        } else {
            m_pChunk = m_pRegion;
        }
        m_nNext = kFirstSlot;
        if (--m_nChunksLeft == 0) m_pRegion = nullptr;
    }

    void OpenRegion() {
        bool const bSingle = m_nSingleChunks < kSingleChunks;
        if (bSingle) ++m_nSingleChunks;
        m_nRegionChunks = bSingle ? 1 : kChunksPerRegion;
        m_pRegion = ::new (bSingle ? AllocateChunk() : TakeLargePage()) Chunk;
        m_pRegion->bSingle = bSingle;
        m_pRegion->nChunksHeld.store(m_nRegionChunks, std::memory_order_relaxed);
        m_nChunksLeft = m_nRegionChunks;
    }

    void CloseChunk() noexcept {
        if (m_pChunk == nullptr) return;
        auto const nHandedOut = static_cast<std::int64_t>((m_nNext - kFirstSlot) / kSlotSize);
        ReleaseSlots(m_pChunk, kOpen - nHandedOut);
        m_pChunk = nullptr;
        m_nNext = kNoChunk;
    }

public:
    // Gives back what was not handed out. The pool can be used again.
    void Close() noexcept {
        CloseChunk();
        if (m_pRegion != nullptr) ReleaseChunks(m_pRegion, m_nChunksLeft);
        m_pRegion = nullptr;
        m_nChunksLeft = 0;
    }

private:
    Chunk* m_pChunk = nullptr;
    std::size_t m_nNext = kNoChunk;
    Chunk* m_pRegion = nullptr;
    std::size_t m_nRegionChunks = 0;
    std::size_t m_nChunksLeft = 0;
    int m_nSingleChunks = 0;
};

using FacetPool = SlotPool<kFacetSlotSize, 0>;
using VertexPool = SlotPool<kVertexSlotSize, kVertexAnnexSize>;

#if !defined(_WIN32)

constinit thread_local FacetPool t_FacetPool;
constinit thread_local VertexPool t_VertexPool;

FacetPool& OwnFacetPool() { return t_FacetPool; }
VertexPool& OwnVertexPool() { return t_VertexPool; }

#else

// mingw frees the variables of a thread before it destroys them: here the pools of a thread stand on the
// heap, and the system itself hands them over when the thread ends.
struct ThreadPools {
    FacetPool facets;
    VertexPool vertices;
};

class PoolIndex {
public:
    PoolIndex() : m_nIndex(FlsAlloc(CloseThread)) {}
    PoolIndex(PoolIndex const&) = delete;
    PoolIndex& operator=(PoolIndex const&) = delete;
    // The pools of threads that live on are closed, and stay: one of them may still be asked while the
    // process ends.
    ~PoolIndex() {
        s_bEnds.store(true);
        FlsFree(m_nIndex);
    }
    ThreadPools* Make() {
        auto* const pPools = new ThreadPools;
        if (m_nIndex != FLS_OUT_OF_INDEXES && FlsSetValue(m_nIndex, pPools) != 0) return pPools;
        delete pPools;
        throw std::bad_alloc();
    }

private:
    static void WINAPI CloseThread(void* pValue) noexcept {
        auto* const pPools = static_cast<ThreadPools*>(pValue);
        if (pPools == nullptr) return;
        pPools->facets.Close();
        pPools->vertices.Close();
        if (!s_bEnds.load()) delete pPools;
    }

    static inline std::atomic<bool> s_bEnds{false};
    DWORD m_nIndex;
};

constinit thread_local ThreadPools* t_pPools = nullptr;

ThreadPools& OwnPools() {
    if (t_pPools == nullptr) {
        static PoolIndex s_Index;
        t_pPools = s_Index.Make();
    }
    return *t_pPools;
}

FacetPool& OwnFacetPool() { return OwnPools().facets; }
VertexPool& OwnVertexPool() { return OwnPools().vertices; }

#endif

}  // namespace

void* AllocateFacetSlot() { return OwnFacetPool().Allocate(); }
void FreeFacetSlot(void* pSlot) noexcept { FacetPool::Free(pSlot); }
void* AllocateVertexSlot() { return OwnVertexPool().Allocate(); }
void FreeVertexSlot(void* pSlot) noexcept { VertexPool::Free(pSlot); }

#endif

}  // namespace varnet
