#pragma once

#include <string_view>

namespace varnet {

/// The numbers of a line of text behind its first "/", ended by blanks and commas. The text ends at a zero
/// byte.
///
/// A line end behind a blank is a token of its own, and counts as 0, as all that starts with no number does.
class LineTokens {
public:
    /// "/" characters that the line begins with do not count as the first one.
    explicit LineTokens(std::string_view line);

    /// The next token, as the C runtime's atoi and atof take it in the classic locale. False, with the
    /// number untouched, where there is no token left.
    bool Next(int& nValue);
    bool Next(double& dValue);

    /// How many characters are left.
    std::size_t Left() const { return static_cast<std::size_t>(m_pEnd - m_pNext); }

private:
    bool FindToken();
    std::string_view TakeToken();

    char const* m_pNext;
    char const* m_pEnd;
};

}  // namespace varnet
