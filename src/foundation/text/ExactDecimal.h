#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace varnet {

// Decimal numbers of few digits, without the machinery that many digits need.

/// The double nearest to nDigits times ten to the power of nExponent, where both parts are exact doubles, so
/// that one multiplication or division rounds correctly (W. D. Clinger, "How to read floating point numbers
/// accurately", 1990). Nothing where they are not.
inline std::optional<double> FromExactParts(std::uint64_t nDigits, std::int64_t nExponent) {
    static constexpr std::array<double, 23> kPowers = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                       1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                       1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr std::uint64_t kLargestExact = std::uint64_t{1} << 53;
    constexpr std::int64_t kLargestPower = 22;
    if (nDigits > kLargestExact) return std::nullopt;
    if (nExponent > kLargestPower || nExponent < -kLargestPower) return std::nullopt;
    double const dDigits = static_cast<double>(nDigits);
    return nExponent < 0 ? dDigits / kPowers[static_cast<std::size_t>(-nExponent)]
                         : dDigits * kPowers[static_cast<std::size_t>(nExponent)];
}

/// Takes a number such as "-12.345" from the start of a text: a minus sign or none, digits with at most one
/// point, and nothing else. Returns the place of the first character that cannot go on with it; null, with
/// the value untouched, where there is no digit, or where the digits are too many to be exact.
inline char const* TakePlainNumber(char const* p, char const* pEnd, double& dValue) {
    constexpr std::ptrdiff_t kMostCharacters =
        19;  // digits that always fit in 64 bits, or one less and a point
    bool const bNegative = p != pEnd && *p == '-';
    if (bNegative) ++p;
    auto const digitAt = [pEnd](char const* q) {
        return q != pEnd ? static_cast<unsigned>(static_cast<unsigned char>(*q)) - '0' : 10u;
    };
    char const* const pFirst = p;
    std::uint64_t nDigits = 0;
    for (unsigned n = digitAt(p); n < 10; n = digitAt(++p)) nDigits = nDigits * 10 + n;
    std::ptrdiff_t nBehindPoint = 0;
    if (p != pEnd && *p == '.') {
        char const* const pPoint = p++;
        for (unsigned n = digitAt(p); n < 10; n = digitAt(++p)) nDigits = nDigits * 10 + n;
        nBehindPoint = p - pPoint - 1;
        if (p - pFirst == 1) return nullptr;
    }
    if (p == pFirst || p - pFirst > kMostCharacters) return nullptr;
    std::optional<double> const magnitude = FromExactParts(nDigits, -static_cast<std::int64_t>(nBehindPoint));
    if (!magnitude) return nullptr;
    dValue = bNegative ? -*magnitude : *magnitude;
    return p;
}

}  // namespace varnet
