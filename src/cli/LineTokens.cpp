#include "cli/LineTokens.h"

#include "foundation/text/ExactDecimal.h"
#include "foundation/text/TextNumber.h"

namespace varnet {

namespace {

bool IsSeparator(char c) { return c == ' ' || c == ','; }

}  // namespace

LineTokens::LineTokens(std::string_view line) : m_pNext(line.data()), m_pEnd(line.data()) {
    line = line.substr(0, line.find('\0'));
    std::size_t const nStart = line.find_first_not_of('/');
    if (nStart == std::string_view::npos) return;
    std::size_t const nSlash = line.find('/', nStart);
    if (nSlash == std::string_view::npos) return;
    m_pNext = line.data() + nSlash + 1;
    m_pEnd = line.data() + line.size();
}

bool LineTokens::FindToken() {
    while (m_pNext != m_pEnd && IsSeparator(*m_pNext)) ++m_pNext;
    return m_pNext != m_pEnd;
}

std::string_view LineTokens::TakeToken() {
    char const* const pStart = m_pNext;
    while (m_pNext != m_pEnd && !IsSeparator(*m_pNext)) ++m_pNext;
    return std::string_view(pStart, static_cast<std::size_t>(m_pNext - pStart));
}

bool LineTokens::Next(int& nValue) {
    if (!FindToken()) return false;
    nValue = TextToInt(TakeToken());
    return true;
}

bool LineTokens::Next(double& dValue) {
    if (!FindToken()) return false;
    // Nearly all numbers are plain ones and end where their token ends.
    char const* const pBehind = TakePlainNumber(m_pNext, m_pEnd, dValue);
    if (pBehind != nullptr && (pBehind == m_pEnd || IsSeparator(*pBehind))) {
        m_pNext = pBehind;
    } else {
        dValue = TextToDouble(TakeToken());
    }
    return true;
}

}  // namespace varnet
