#include "foundation/text/TextScanner.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <system_error>
#include <type_traits>

#include "foundation/text/ExactDecimal.h"

namespace varnet {

namespace {

constexpr int kLongestWord = 79;

bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Where a number starts and ends in a line, and its digits as far as they fit.
struct NumberText {
    char const* pFirst;  // behind a plus sign
    char const* pEnd;
    bool bNegative = false;
    bool bComplete = false;       // it has digits, and an exponent that has begun has digits too
    std::uint64_t nMantissa = 0;  // all digits, when nDigits is at most 19
    int nDigits = 0;              // behind leading zeros
    std::int64_t nExponent = 0;   // of ten, for the mantissa taken as a whole number
    bool bHasExponent = false;
};

constexpr int kMantissaDigits = 19;  // always fit in 64 bits
constexpr std::int64_t kHugeExponent = 100000;

bool IsHexDigit(char c) { return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

// Whether the text behind a sign starts as a hexadecimal number does.
bool IsHexadecimal(char const* p, char const* pEnd) {
    return pEnd - p > 2 && p[0] == '0' && (p[1] == 'x' || p[1] == 'X') && IsHexDigit(p[2]);
}

// Goes as far as a number can go on, as stream extraction does.
NumberText ScanNumber(char const* p, char const* pEnd) {
    NumberText number{};
    number.pFirst = p;
    if (p != pEnd && (*p == '+' || *p == '-')) {
        number.bNegative = *p == '-';
        ++p;
        if (!number.bNegative) number.pFirst = p;
    }
    number.pEnd = p;
    if (IsHexadecimal(p, pEnd)) return number;
    bool bAnyDigit = false;
    bool bPoint = false;
    for (; p != pEnd; ++p) {
        if (IsDigit(*p)) {
            bAnyDigit = true;
            if (number.nDigits > 0 || *p != '0') ++number.nDigits;
            if (number.nDigits <= kMantissaDigits) {
                number.nMantissa = number.nMantissa * 10 + static_cast<std::uint64_t>(*p - '0');
                if (bPoint) --number.nExponent;
            } else if (!bPoint) {
                ++number.nExponent;
            }
        } else if (*p == '.' && !bPoint) {
            bPoint = true;
        } else {
            break;
        }
    }
    number.bComplete = bAnyDigit;
    if (bAnyDigit && p != pEnd && (*p == 'e' || *p == 'E')) {
        ++p;
        bool bNegative = false;
        if (p != pEnd && (*p == '+' || *p == '-')) bNegative = *p++ == '-';
        number.bComplete = p != pEnd && IsDigit(*p);
        std::int64_t nExponent = 0;
        for (; p != pEnd && IsDigit(*p); ++p) {
            if (nExponent < kHugeExponent) nExponent = nExponent * 10 + (*p - '0');
        }
        number.nExponent += bNegative ? -nExponent : nExponent;
    }
    number.pEnd = p;
    return number;
}

// The value, where it can be had at once.
bool FromFewDigits(NumberText const& number, double& dValue) {
    if (number.nDigits > kMantissaDigits) return false;
    std::optional<double> const magnitude = FromExactParts(number.nMantissa, number.nExponent);
    if (magnitude) dValue = number.bNegative ? -*magnitude : *magnitude;
    return magnitude.has_value();
}

}  // namespace

void TextScanner::SkipBlanks() {
    while (m_pNext != m_pEnd && IsBlank(*m_pNext)) ++m_pNext;
}

bool TextScanner::SkipWord() {
    if (m_bFailed) return false;
    SkipBlanks();
    char const* const pStart = m_pNext;
    while (m_pNext != m_pEnd && m_pNext - pStart < kLongestWord && *m_pNext != '\0' && !IsBlank(*m_pNext)) {
        ++m_pNext;
    }
    m_bFailed = m_pNext == pStart;
    return !m_bFailed;
}

bool TextScanner::Number(double& dValue) { return Extract(dValue); }

bool TextScanner::Number(float& fValue) { return Extract(fValue); }

template <class Real>
bool TextScanner::Extract(Real& value) {
    if (m_bFailed) return false;
    SkipBlanks();
    NumberText const number = ScanNumber(m_pNext, m_pEnd);
    m_pNext = number.pEnd;
    m_bFailed = true;
    if (!number.bComplete) return false;

    if constexpr (std::is_same_v<Real, double>) {
        if (FromFewDigits(number, value)) {
            m_bFailed = false;
            return true;
        }
    }
    Real parsed{};
    std::errc const error = std::from_chars(number.pFirst, number.pEnd, parsed).ec;
    if (error == std::errc::result_out_of_range) {
        // Too large fails, too small is zero. The value lies far above 1 in the one case and far below in the
        // other.
        if (std::min(number.nDigits, kMantissaDigits) + number.nExponent > 0) return false;
        parsed = number.bNegative ? -Real{0} : Real{0};
    }
    value = parsed;
    m_bFailed = false;
    return true;
}

}  // namespace varnet
