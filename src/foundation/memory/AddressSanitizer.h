#pragma once

// Whether this is built with the address sanitizer, which sees each block of the heap, and the leaks among
// them.
#if defined(__SANITIZE_ADDRESS__)
#define VARNET_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VARNET_ADDRESS_SANITIZER 1
#endif
#endif

#if !defined(VARNET_ADDRESS_SANITIZER)
#define VARNET_ADDRESS_SANITIZER 0
#endif
