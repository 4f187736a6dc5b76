#pragma once

#include <cstddef>
#include <string_view>

namespace varnet {

/// Whether the line holds the word, which is given in capitals, in any case, ahead of its first zero byte.
inline bool HoldsWord(std::string_view line, std::string_view capitals) {
    auto const toUpper = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; };
    line = line.substr(0, line.find('\0'));
    for (std::size_t i = 0; i + capitals.size() <= line.size(); ++i) {
        std::size_t k = 0;
        while (k < capitals.size() && toUpper(line[i + k]) == capitals[k]) ++k;
        if (k == capitals.size()) return true;
    }
    return false;
}

}  // namespace varnet
