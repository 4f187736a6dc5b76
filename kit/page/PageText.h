#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace varnet {

// The forms in which a page holds its data.

/// Base64 with padding, as RFC 4648 has it.
std::string Base64(std::string_view bytes);

/// Raw DEFLATE, RFC 1951. Throws std::bad_alloc.
std::string Deflated(std::string_view bytes);

/// Appends a number in groups of seven bits, the lowest first; all groups but the last have the top bit set.
inline void AddVarint(std::string& bytes, std::uint64_t value) {
    for (; value >= 0x80; value >>= 7) bytes.push_back(static_cast<char>(value | 0x80));
    bytes.push_back(static_cast<char>(value));
}

/// Small numbers of either sign as small numbers: 0, -1, 1, -2 become 0, 1, 2, 3.
inline std::uint64_t Zigzag(std::int64_t value) {
    return (static_cast<std::uint64_t>(value) << 1) ^ static_cast<std::uint64_t>(value >> 63);
}

/// Appends 32 bits, the lowest first.
inline void AddWord(std::string& bytes, std::uint32_t value) {
    for (int const shift : {0, 8, 16, 24}) bytes.push_back(static_cast<char>(value >> shift & 0xFF));
}

/// Coordinates of 16 bits on one axis, each as its difference to the one before, modulo 65536, as a small
/// number. Low and high bytes are kept apart: most high bytes are 0, and compress to nothing.
class DeltaAxis {
public:
    void Add(std::uint16_t value) {
        auto const delta = static_cast<std::int16_t>(static_cast<std::uint16_t>(value - m_Last));
        auto const code = static_cast<std::uint16_t>(Zigzag(delta));
        m_Low.push_back(static_cast<char>(code & 0xFF));
        m_High.push_back(static_cast<char>(code >> 8));
        m_Last = value;
    }
    /// The next difference is to 0.
    void Restart() { m_Last = 0; }
    std::size_t Size() const { return m_Low.size(); }
    /// All low bytes, then all high bytes.
    void AppendTo(std::string& bytes) const { bytes.append(m_Low).append(m_High); }
    void Clear() {
        m_Low.clear();
        m_High.clear();
        m_Last = 0;
    }

private:
    std::string m_Low;
    std::string m_High;
    std::uint16_t m_Last = 0;
};

/// A stretch of an axis in 65535 steps.
struct Grid16 {
    double from = 0.0;
    double to = 0.0;
    /// The nearest step, for values in the stretch; the nearest end for others.
    std::uint16_t At(double value) const {
        double const share = to > from ? (value - from) / (to - from) : 0.0;
        return static_cast<std::uint16_t>(share <= 0.0   ? 0.0
                                          : share >= 1.0 ? 65535.0
                                                         : share * 65535.0 + 0.5);
    }
};

/// A JSON document under way. The caller opens, names and closes in a right order; commas come by
/// themselves.
class Json {
public:
    Json& Open(char bracket);   ///< '{' or '['
    Json& Close(char bracket);  ///< '}' or ']'
    Json& Name(char const* name);
    /// Text that is no UTF-8 has its wrong bytes replaced by U+FFFD. '<' is written as \u003c, so that the
    /// document may stand in a script element.
    Json& Text(std::string_view text);
    /// Seven digits; null where it is not finite.
    Json& Number(double value);
    /// All digits that it takes to give the same double.
    Json& Exact(double value);
    Json& Whole(std::int64_t value);
    Json& Truth(bool value);
    std::string const& Document() const { return m_Document; }

private:
    void Comma();
    std::string m_Document;
    bool m_NeedsComma = false;
};

/// The text with bytes that are no UTF-8 replaced by U+FFFD.
std::string ValidUtf8(std::string_view text);

}  // namespace varnet
