#pragma once

#include "foundation/memory/AddressSanitizer.h"

#if VARNET_ADDRESS_SANITIZER
#include <sanitizer/lsan_interface.h>
#endif

namespace varnet {

/// Says that the object, and what it owns, stays allocated on purpose once nothing of the library refers to
/// it: a leak checker does not report it. A host that still holds it may destroy it.
inline void LeaveAllocated([[maybe_unused]] void const* pObject) noexcept {
#if VARNET_ADDRESS_SANITIZER
    __lsan_ignore_object(pObject);
#endif
}

}  // namespace varnet
