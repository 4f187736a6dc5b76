#include "page/PageText.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <memory>
#include <new>

namespace varnet {

std::string Base64(std::string_view bytes) {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t triple = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            triple = triple << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text.push_back(i + k <= bytes.size() ? kDigits[triple >> (18 - 6 * k) & 63] : '=');
        }
    }
    return text;
}

std::string Deflated(std::string_view bytes) {
    constexpr int kRaw = -15;  // windowBits: no header and no sum at the end
    constexpr int kMemory = 9;
    constexpr std::size_t kPiece = std::size_t{1} << 30;  // zlib counts in 32 bits
    z_stream stream{};
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kRaw, kMemory, Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::bad_alloc();
    std::unique_ptr<z_stream, decltype(&deflateEnd)> const end(&stream, &deflateEnd);
    std::string packed;
    std::array<char, 65536> out{};
    do {
        std::size_t const piece = std::min(kPiece, bytes.size());
        // zlib does not write to its input, and takes it as not constant all the same.
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
        stream.avail_in = static_cast<uInt>(piece);
        bytes.remove_prefix(piece);
        do {
            stream.next_out = reinterpret_cast<Bytef*>(out.data());
            stream.avail_out = static_cast<uInt>(out.size());
            deflate(&stream, bytes.empty() ? Z_FINISH : Z_NO_FLUSH);
            packed.append(out.data(), out.size() - stream.avail_out);
        } while (stream.avail_out == 0);
    } while (!bytes.empty());
    return packed;
}

namespace {

// The length of the UTF-8 sequence that the text begins with; 0 where there is none that is right.
std::size_t SequenceLength(std::string_view text) {
    auto const byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    unsigned char const lead = byte(0);
    if (lead < 0x80) return 1;
    std::size_t const length = lead >= 0xC2 && lead < 0xE0   ? 2
                               : lead >= 0xE0 && lead < 0xF0 ? 3
                               : lead >= 0xF0 && lead < 0xF5 ? 4
                                                             : 0;
    if (length == 0 || text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
    }
    // Longer than needed, surrogates, beyond U+10FFFF.
    if (lead == 0xE0 && byte(1) < 0xA0) return 0;
    if (lead == 0xED && byte(1) > 0x9F) return 0;
    if (lead == 0xF0 && byte(1) < 0x90) return 0;
    if (lead == 0xF4 && byte(1) > 0x8F) return 0;
    return length;
}

}  // namespace

std::string ValidUtf8(std::string_view text) {
    std::string valid;
    while (!text.empty()) {
        std::size_t const length = SequenceLength(text);
        valid.append(length > 0 ? text.substr(0, length) : std::string_view("\xEF\xBF\xBD"));
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return valid;
}

void Json::Comma() {
    if (m_NeedsComma) m_Document += ',';
    m_NeedsComma = true;
}

Json& Json::Open(char bracket) {
    Comma();
    m_Document += bracket;
    m_NeedsComma = false;
    return *this;
}

Json& Json::Close(char bracket) {
    m_Document += bracket;
    m_NeedsComma = true;
    return *this;
}

Json& Json::Name(char const* name) {
    Text(name);
    m_Document += ':';
    m_NeedsComma = false;
    return *this;
}

Json& Json::Text(std::string_view text) {
    constexpr char kHex[] = "0123456789abcdef";
    Comma();
    m_Document += '"';
    for (char const c : ValidUtf8(text)) {
        auto const code = static_cast<unsigned char>(c);
        if (code < 0x20 || c == '<' || c == 0x7F) {
            m_Document.append("\\u00").append(1, kHex[code >> 4]).append(1, kHex[code & 15]);
            continue;
        }
        if (c == '"' || c == '\\') m_Document += '\\';
        m_Document += c;
    }
    m_Document += '"';
    return *this;
}

Json& Json::Number(double value) {
    if (!std::isfinite(value)) {
        Comma();
        m_Document += "null";
        return *this;
    }
    Comma();
    std::array<char, 40> text{};
    auto const end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, 7);
    m_Document.append(text.data(), end.ptr);
    return *this;
}

Json& Json::Exact(double value) {
    if (!std::isfinite(value)) return Number(value);
    Comma();
    std::array<char, 40> text{};
    auto const end = std::to_chars(text.data(), text.data() + text.size(), value);
    m_Document.append(text.data(), end.ptr);
    return *this;
}

Json& Json::Whole(std::int64_t value) {
    Comma();
    m_Document += std::to_string(value);
    return *this;
}

Json& Json::Truth(bool value) {
    Comma();
    m_Document += value ? "true" : "false";
    return *this;
}

}  // namespace varnet
