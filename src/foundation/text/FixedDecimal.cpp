#include "foundation/text/FixedDecimal.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>

#include "foundation/Require.h"

namespace varnet {

namespace {

constexpr int kMantissaBits = 52;
constexpr int kExponentBias = 1023;
constexpr int kNotFinite = 0x7FF;
constexpr std::uint64_t kImplicitBit = std::uint64_t{1} << kMantissaBits;

// Of nNumerator over two to the power of nShift, from 1 to 63, the nearest whole number, ties to even.
std::uint64_t ShiftedToNearest(std::uint64_t nNumerator, int nShift) {
    std::uint64_t const nQuotient = nNumerator >> nShift;
    std::uint64_t const nRest = nNumerator & ((std::uint64_t{1} << nShift) - 1);
    std::uint64_t const nHalf = std::uint64_t{1} << (nShift - 1);
    bool const bUp = nRest > nHalf || (nRest == nHalf && nQuotient % 2 != 0);
    return nQuotient + (bUp ? 1 : 0);
}

}  // namespace

// Standard libraries name what is no number each in a way of its own. A number below 2^52 is a mantissa of 53
// bits over a power of two. A thousand times the mantissa fits in 64 bits, so that whole-number arithmetic
// rounds it exactly.
char* WriteFixed(char* pTo, double dValue, int nDigits) {
    VARNET_REQUIRE(nDigits == 2 || nDigits == 3);
    std::uint64_t const nBits = std::bit_cast<std::uint64_t>(dValue);
    int const nExponent = static_cast<int>(nBits >> kMantissaBits & kNotFinite);
    int const nShift = kMantissaBits + kExponentBias - nExponent;
    if (nExponent == kNotFinite) {
        if (nBits >> 63 != 0) *pTo++ = '-';
        return std::copy_n((nBits & (kImplicitBit - 1)) == 0 ? "inf" : "nan", 3, pTo);
    }
    if (nShift <= 0)
        return std::to_chars(pTo, pTo + kLongestFixed, dValue, std::chars_format::fixed, nDigits).ptr;

    std::uint64_t const nScale = nDigits == 2 ? 100 : 1000;
    // Beyond 63 places, a denormal included, the number is less than half of the last digit.
    std::uint64_t const nMantissa = (nBits & (kImplicitBit - 1)) | kImplicitBit;
    std::uint64_t const nScaled = nShift < 64 ? ShiftedToNearest(nMantissa * nScale, nShift) : 0;
    if (nBits >> 63 != 0) *pTo++ = '-';
    pTo = std::to_chars(pTo, pTo + kLongestFixed, nScaled / nScale).ptr;
    *pTo++ = '.';
    std::uint64_t nBehind = nScaled % nScale;
    for (int i = nDigits - 1; i >= 0; --i) {
        pTo[i] = static_cast<char>('0' + nBehind % 10);
        nBehind /= 10;
    }
    return pTo + nDigits;
}

}  // namespace varnet
