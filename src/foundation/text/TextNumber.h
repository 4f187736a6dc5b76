#pragma once

#include <string_view>

namespace varnet {

// Numbers at the start of a text, taken as the C runtime's atof and atoi take them in the classic locale,
// whatever the locale of the process. The text ends at a zero byte.

/// The longest start of the text that is a number: blanks in front, optional sign, then digits with at most
/// one point and optional exponent, a hexadecimal number with "0x", "inf", "infinity" or "nan", in any case.
/// 0.0 where there is none. A value too large is infinite, one too small a denormal or zero.
double TextToDouble(std::string_view text);

/// Blanks in front, optional sign, decimal digits; what follows is ignored. 0 where there are no digits. A
/// value too large in either direction becomes the nearest that there is.
int TextToInt(std::string_view text);

}  // namespace varnet
