#pragma once

namespace varnet {

/// Brings the cache line at the address into the processor's cache. Any address will do, also null.
inline void Prefetch(void const* pMemory) {
#if defined(__GNUC__)
    __builtin_prefetch(pMemory);
    // A function that does nothing but this has no effect in the compiler's eyes, and its calls would be left
    // out.
    asm volatile("");
#else
    (void)pMemory;
#endif
}

}  // namespace varnet
