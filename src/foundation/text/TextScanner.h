#pragma once

#include <string_view>

namespace varnet {

/// Takes words and numbers from one line of text as classic stream extraction does, whatever the process's
/// locale.
///
/// Blanks in front are skipped. A failed extraction stores nothing, and every later one on the line fails
/// too. The text ends at a zero byte, as the line of a C string would.
class TextScanner {
public:
    explicit TextScanner(std::string_view text) : m_pNext(text.data()), m_pEnd(text.data() + text.size()) {}

    /// Passes over one word of at most 79 characters: the rest of a longer one is the next token.
    bool SkipWord();

    /// A decimal number: optional sign, digits with at most one point, optional exponent. The number ends at
    /// the first character that cannot go on with it ("1.5abc" gives 1.5, and what follows is the next
    /// token). Fails on a value out of range, on an exponent without digits, on a hexadecimal number, and on
    /// words such as "inf"; a value too small becomes a denormal or zero.
    bool Number(double& dValue);
    bool Number(float& fValue);

private:
    void SkipBlanks();
    template <class Real>
    bool Extract(Real& value);

    char const* m_pNext;
    char const* m_pEnd;
    bool m_bFailed = false;
};

}  // namespace varnet
