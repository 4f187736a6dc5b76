#include "foundation/text/TextNumber.h"

#include <charconv>
#include <cstddef>
#include <limits>
#include <optional>
#include <system_error>

namespace varnet {

namespace {

std::string_view FromSign(std::string_view text) {
    text = text.substr(0, text.find('\0'));
    std::size_t const nStart = text.find_first_not_of(" \t\n\v\f\r");
    return nStart == std::string_view::npos ? std::string_view() : text.substr(nStart);
}

// Takes a sign from the start of the text. True for a minus.
bool TakeSign(std::string_view& text) {
    if (text.empty() || (text[0] != '+' && text[0] != '-')) return false;
    bool const bNegative = text[0] == '-';
    text.remove_prefix(1);
    return bNegative;
}

bool IsHexadecimal(std::string_view text) {
    return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') &&
           std::string_view("0123456789abcdefABCDEF.").find(text[2]) != std::string_view::npos;
}

// The value of a number that has turned out to be beyond what a double holds: it lies far above or far below
// 1, which the place of its first digit and its exponent tell.
double BeyondRange(std::string_view number, std::chars_format format) {
    bool const bHexadecimal = format == std::chars_format::hex;
    std::size_t const nExponent = number.find_first_of(bHexadecimal ? "pP" : "eE");
    std::string_view const digits = number.substr(0, nExponent);
    std::size_t const nPoint = digits.find('.') == std::string_view::npos ? digits.size() : digits.find('.');
    std::size_t const nFirst = digits.find_first_not_of("0.");
    long long nPlace = static_cast<long long>(nPoint) - static_cast<long long>(nFirst);
    if (bHexadecimal) nPlace *= 4;
    if (nExponent != std::string_view::npos) {
        constexpr long long kHuge = 1'000'000'000;
        long long nValue = 0;
        std::string_view exponent = number.substr(nExponent + 1);
        bool const bNegative = TakeSign(exponent);
        for (char const c : exponent) nValue = nValue < kHuge ? nValue * 10 + (c - '0') : nValue;
        nPlace += bNegative ? -nValue : nValue;
    }
    return nPlace > 0 ? std::numeric_limits<double>::infinity() : 0.0;
}

// The number at the start of a text without a sign; nothing where there is none.
std::optional<double> Magnitude(std::string_view text, std::chars_format format) {
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) return std::nullopt;
    double dValue = 0.0;
    auto const [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), dValue, format);
    if (error == std::errc::invalid_argument) return std::nullopt;
    if (error != std::errc::result_out_of_range) return dValue;
    return BeyondRange(text.substr(0, static_cast<std::size_t>(pEnd - text.data())), format);
}

}  // namespace

double TextToDouble(std::string_view text) {
    text = FromSign(text);
    bool const bNegative = TakeSign(text);
    std::optional<double> const magnitude = IsHexadecimal(text)
                                                ? Magnitude(text.substr(2), std::chars_format::hex)
                                                : Magnitude(text, std::chars_format::general);
    if (!magnitude) return 0.0;
    return bNegative ? -*magnitude : *magnitude;
}

int TextToInt(std::string_view text) {
    text = FromSign(text);
    bool const bNegative = TakeSign(text);
    constexpr long long kBeyond = 1LL << 32;
    long long nValue = 0;
    for (char const c : text) {
        if (c < '0' || c > '9') break;
        if (nValue < kBeyond) nValue = nValue * 10 + (c - '0');
    }
    if (bNegative) nValue = -nValue;
    if (nValue > std::numeric_limits<int>::max()) return std::numeric_limits<int>::max();
    if (nValue < std::numeric_limits<int>::min()) return std::numeric_limits<int>::min();
    return static_cast<int>(nValue);
}

}  // namespace varnet
