#include "Table.h"

#include <algorithm>
#include <array>
#include <cstdio>

void Table::Print() const {
    std::size_t nWidth = 0;
    for (auto const& [label, value] : m_Rows) nWidth = std::max(nWidth, label.size());
    std::printf("%s\n", m_Title.c_str());
    for (auto const& [label, value] : m_Rows) {
        std::printf("  %-*s  %s\n", static_cast<int>(nWidth), label.c_str(), value.c_str());
    }
}

std::string Count(long long nCount) {
    std::string text = std::to_string(nCount);
    std::size_t const nFirst = text[0] == '-' ? 1 : 0;
    for (std::size_t i = text.size(); i > nFirst + 3;) {
        i -= 3;
        text.insert(i, 1, ',');
    }
    return text;
}

std::string Number(double dValue) { return Rounded(dValue, 10); }

std::string Rounded(double dValue, int nDigits) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*g", nDigits, dValue);
    return text.data();
}
