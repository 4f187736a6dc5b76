#pragma once

#if defined(__SANITIZE_ADDRESS__)
#define VARNET_LEAK_CHECKER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VARNET_LEAK_CHECKER 1
#endif
#endif

#if defined(VARNET_LEAK_CHECKER)
#include <sanitizer/lsan_interface.h>
#endif

/// Says that the object, and what it owns, stays allocated on purpose once nothing of the library refers to
/// it: a leak checker does not report it. A host that still holds it may destroy it.
inline void LeaveAllocated([[maybe_unused]] void const* pObject) noexcept {
#if defined(VARNET_LEAK_CHECKER)
    __lsan_ignore_object(pObject);
#endif
}
