#include "part/LargeBlocks.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <new>
#include <utility>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace varnet::large_blocks {

namespace {

// A sanitizer is to see each use of memory that has been given back.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kKeeps = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kKeeps = false;
#else
constexpr bool kKeeps = true;
#endif
#else
constexpr bool kKeeps = true;
#endif

void* Allocate(std::size_t size) {
    void* const block = ::operator new(size, std::align_val_t(kPage));
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    // What is refused is no loss.
    static_cast<void>(::madvise(block, size, MADV_HUGEPAGE));
#endif
    return block;
}

void Free(void* block) noexcept { ::operator delete(block, std::align_val_t(kPage)); }

// Whether the block may be kept: its content is not needed any more, but its memory stays while the system
// has enough. Memory that is kept elsewhere could not be had by others.
bool OfferToSystem([[maybe_unused]] void* block, [[maybe_unused]] std::size_t size) noexcept {
#if defined(__linux__) && defined(MADV_FREE)
    return ::madvise(block, size, MADV_FREE) == 0;
#else
    return false;
#endif
}

struct Block {
    void* memory = nullptr;
    std::size_t size = 0;
};

// A thread's turn, if no other thread has it.
class Turn {
public:
    explicit Turn(std::atomic<bool>& taken)
        : m_Taken(taken), m_Mine(!taken.exchange(true, std::memory_order_acquire)) {}
    Turn(Turn const&) = delete;
    Turn& operator=(Turn const&) = delete;
    ~Turn() {
        if (m_Mine) m_Taken.store(false, std::memory_order_release);
    }
    bool IsMine() const { return m_Mine; }

private:
    std::atomic<bool>& m_Taken;
    bool m_Mine;
};

// The blocks that wait, the one that came last in front; freed when the library is unloaded. Nobody waits for
// another thread: a process may have been forked while one was here.
class Store {
public:
    Store() = default;
    Store(Store const&) = delete;
    Store& operator=(Store const&) = delete;
    ~Store() {
        m_Closed = true;
        for (std::size_t i = 0; i < m_Count; ++i) Free(m_Blocks[i].memory);
    }

    // Null when there is none, or when another thread is here.
    void* Take(std::size_t size) noexcept {
        Turn const turn(m_Taken);
        if (!turn.IsMine()) return nullptr;
        auto const end = m_Blocks.begin() + static_cast<std::ptrdiff_t>(m_Count);
        auto const found =
            std::find_if(m_Blocks.begin(), end, [size](Block const& block) { return block.size == size; });
        if (found == end) return nullptr;
        void* const memory = found->memory;
        std::move(found + 1, end, found);
        --m_Count;
        m_Bytes -= size;
        return memory;
    }
    // The oldest ones make room. False when the block is not kept, as when another thread is here.
    bool Keep(Block const& block) noexcept {
        Turn const turn(m_Taken);
        if (!turn.IsMine() || m_Closed || block.size > kMostKept) return false;
        while (m_Count == m_Blocks.size() || m_Bytes + block.size > kMostKept) {
            Block const& oldest = m_Blocks[--m_Count];
            m_Bytes -= oldest.size;
            Free(oldest.memory);
        }
        auto const end = m_Blocks.begin() + static_cast<std::ptrdiff_t>(m_Count);
        std::move_backward(m_Blocks.begin(), end, end + 1);
        m_Blocks[0] = block;
        ++m_Count;
        m_Bytes += block.size;
        return true;
    }
    std::size_t Bytes() const { return m_Bytes; }

private:
    std::atomic<bool> m_Taken = false;
    std::array<Block, 16> m_Blocks;
    std::size_t m_Count = 0;
    std::atomic<std::size_t> m_Bytes = 0;
    bool m_Closed = false;
};

constinit Store s_Store;

}  // namespace

// Sizes are whole pages, four between a power of two and the next, so that what has grown with another part
// finds a block of that part.
std::size_t SizeFor(std::size_t bytes) {
    std::size_t const step = std::max(kPage, std::bit_floor(bytes) / 4);
    return (bytes + step - 1) / step * step;
}

void* Take(std::size_t bytes) {
    std::size_t const size = SizeFor(bytes);
    void* const kept = s_Store.Take(size);
    return kept != nullptr ? kept : Allocate(size);
}

void Give(void* block, std::size_t bytes) noexcept {
    std::size_t const size = SizeFor(bytes);
    if (!kKeeps || !OfferToSystem(block, size) || !s_Store.Keep({block, size})) Free(block);
}

std::size_t Kept() { return s_Store.Bytes(); }

}  // namespace varnet::large_blocks
