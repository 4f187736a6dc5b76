#pragma once

#include <cstddef>

namespace varnet {

/// The most characters that WriteFixed writes: sign, 309 digits, point, three digits.
inline constexpr std::size_t kLongestFixed = 314;

/// Writes a number with nDigits digits behind the point, 2 or 3, as the C runtime prints it with "%.2f" or
/// "%.3f" in the classic locale, whatever the locale of the process: the exact value rounded to nearest, ties
/// to even, with a sign also for -0.0; "inf" and "nan". Returns the place behind the last character.
char* WriteFixed(char* pTo, double dValue, int nDigits);

}  // namespace varnet
