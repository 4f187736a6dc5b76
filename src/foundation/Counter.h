#pragma once

#include <atomic>
#include <cstdint>

namespace varnet {

// The process-wide counters and the stop flags are plain 32-bit variables in the interface. The library
// touches them through these, so that several threads may work on different models.

inline std::int32_t AddToCounter(std::int32_t& nCounter, std::int32_t nStep) {
    return std::atomic_ref<std::int32_t>(nCounter).fetch_add(nStep, std::memory_order_relaxed);
}

inline std::int32_t LoadShared(std::int32_t const& nValue) {
    // atomic_ref of a const type comes only after C++20; loading does not write.
    return std::atomic_ref<std::int32_t>(const_cast<std::int32_t&>(nValue)).load(std::memory_order_relaxed);
}

inline void StoreShared(std::int32_t& nTarget, std::int32_t nValue) {
    std::atomic_ref<std::int32_t>(nTarget).store(nValue, std::memory_order_relaxed);
}

}  // namespace varnet
