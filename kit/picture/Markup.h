#pragma once

#include <string>
#include <string_view>

namespace varnet {

/// The text with the characters that mean something in HTML and SVG written so that they stand for
/// themselves.
inline std::string EscapedMarkup(std::string_view text) {
    std::string escaped;
    for (char const c : text) {
        switch (c) {
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '&':
                escaped += "&amp;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            case '\'':
                escaped += "&#39;";
                break;
            default:
                escaped += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
        }
    }
    return escaped;
}

}  // namespace varnet
