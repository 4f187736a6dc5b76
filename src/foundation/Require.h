#pragma once

#include <cstdio>
#include <cstdlib>

// What a comment of the engine demands of its caller, VARNET_REQUIRE checks in builds without NDEBUG: the
// debug build, those with sanitizers, and the fuzzers. A release has no trace of it.

namespace varnet {

/// Whether requirements are checked: for what has to be kept for a check alone.
#if defined(NDEBUG)
inline constexpr bool kRequirementsChecked = false;
#else
inline constexpr bool kRequirementsChecked = true;
#endif

[[noreturn]] inline void RequirementFailed(char const* pCondition, char const* pFile, int nLine) {
    std::fprintf(stderr, "%s:%d: the caller must see to it that %s\n", pFile, nLine, pCondition);
    std::abort();
}

}  // namespace varnet

/// Ends the program with a message where the condition does not hold. The condition changes nothing.
#if defined(NDEBUG)
#define VARNET_REQUIRE(condition) static_cast<void>(sizeof((condition) ? 1 : 0))
#else
#define VARNET_REQUIRE(condition) \
    ((condition) ? static_cast<void>(0) : ::varnet::RequirementFailed(#condition, __FILE__, __LINE__))
#endif
