#pragma once

// std::from_chars for float and double, for standard libraries that have it for whole numbers alone: libc++
// up to 19. Missing.h includes this there. The end of the number is found by the grammar of the standard; the
// C library, which rounds right, makes the value, in the "C" locale whatever the process has set.

#include <cerrno>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <system_error>
#include <type_traits>

#include <locale.h>
#if defined(__APPLE__)
#include <xlocale.h>
#endif

namespace varnet_compat {

inline bool IsDigit(char c, bool hex) {
    bool const decimal = c >= '0' && c <= '9';
    return decimal || (hex && ((c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F')));
}

// Whether the text goes on with a word of small letters, in any case.
inline bool HasWord(char const* first, char const* last, char const* word) {
    for (; *word != '\0'; ++word, ++first) {
        if (first == last || (*first | 0x20) != *word) return false;
    }
    return true;
}

// Behind inf, infinity, nan or nan(...); null where none of these stands there.
inline char const* BehindWord(char const* first, char const* last) {
    if (HasWord(first, last, "infinity")) return first + 8;
    if (HasWord(first, last, "inf")) return first + 3;
    if (!HasWord(first, last, "nan")) return nullptr;
    char const* p = first + 3;
    if (p == last || *p != '(') return p;
    for (++p; p != last && *p != ')'; ++p) {
        bool const letter = (*p | 0x20) >= 'a' && (*p | 0x20) <= 'z';
        if (!letter && !IsDigit(*p, false) && *p != '_') return first + 3;
    }
    return p == last ? first + 3 : p + 1;
}

struct Extent {
    char const* end = nullptr;  // null: no number
    bool isZero = true;         // of all digits
    bool isWord = false;
};

inline char const* BehindExponent(char const* p, char const* last, bool hex) {
    if (p == last || (*p | 0x20) != (hex ? 'p' : 'e')) return p;
    char const* digit = p + 1;
    if (digit != last && (*digit == '+' || *digit == '-')) ++digit;
    if (digit == last || !IsDigit(*digit, false)) return p;
    while (digit != last && IsDigit(*digit, false)) ++digit;
    return digit;
}

// Of a number without its sign.
inline Extent ExtentOf(char const* first, char const* last, std::chars_format format) {
    Extent extent;
    if (char const* const word = BehindWord(first, last)) {
        extent.end = word;
        extent.isWord = true;
        return extent;
    }
    bool const hex = format == std::chars_format::hex;
    bool some = false;
    bool point = false;
    char const* p = first;
    for (; p != last; ++p) {
        if (IsDigit(*p, hex)) {
            some = true;
            extent.isZero = extent.isZero && *p == '0';
        } else if (*p == '.' && !point) {
            point = true;
        } else {
            break;
        }
    }
    if (!some) return extent;
    extent.end = format == std::chars_format::fixed ? p : BehindExponent(p, last, hex);
    if (format == std::chars_format::scientific && extent.end == p) extent.end = nullptr;
    return extent;
}

template <class Real>
Real ValueOf(char const* text) {
    static locale_t const plain = newlocale(LC_ALL_MASK, "C", nullptr);
    if constexpr (std::is_same_v<Real, float>) {
        return strtof_l(text, nullptr, plain);
    } else {
        return strtod_l(text, nullptr, plain);
    }
}

template <class Real>
std::from_chars_result FromChars(char const* first, char const* last, Real& value, std::chars_format format) {
    bool const negative = first != last && *first == '-';
    char const* const start = first + (negative ? 1 : 0);
    Extent const extent = ExtentOf(start, last, format);
    if (extent.end == nullptr) return {first, std::errc::invalid_argument};
    std::string text(negative ? "-" : "");
    if (format == std::chars_format::hex && !extent.isWord) text += "0x";
    text.append(start, extent.end);
    int const before = errno;
    Real const read = ValueOf<Real>(text.c_str());
    errno = before;
    bool const lost = !extent.isWord && (std::isinf(read) || (read == 0 && !extent.isZero));
    if (lost) return {extent.end, std::errc::result_out_of_range};
    value = read;
    return {extent.end, std::errc()};
}

}  // namespace varnet_compat

// A test that holds the above against a library that has both leaves these out.
#if !defined(VARNET_COMPAT_TESTED)

namespace std {

inline from_chars_result from_chars(char const* first, char const* last, float& value,
                                    chars_format format = chars_format::general) {
    return varnet_compat::FromChars(first, last, value, format);
}

inline from_chars_result from_chars(char const* first, char const* last, double& value,
                                    chars_format format = chars_format::general) {
    return varnet_compat::FromChars(first, last, value, format);
}

}  // namespace std

#endif
