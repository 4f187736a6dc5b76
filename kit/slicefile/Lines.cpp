#include "slicefile/Lines.h"

#include <charconv>
#include <cstring>

namespace varnet {

namespace {

// The header is small; what follows may be large.
constexpr std::size_t kFirstBlock = std::size_t{1} << 12;
constexpr std::size_t kBlock = std::size_t{1} << 18;

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }
bool IsSeparator(char c) { return IsBlank(c) || c == ','; }

}  // namespace

std::optional<Line> LineReader::Next() {
    std::size_t looked = m_Used;
    for (;;) {
        char const* const start = m_Buffer.data() + m_Used;
        void const* const end = m_Buffer.size() > looked
                                    ? std::memchr(m_Buffer.data() + looked, '\n', m_Buffer.size() - looked)
                                    : nullptr;
        std::size_t const unused = m_Buffer.size() - m_Used;
        if (end == nullptr && !m_AtEnd && unused < m_Longest) {
            looked = unused;
            m_AtEnd = !Fill();
            continue;
        }
        if (end == nullptr && unused == 0) return std::nullopt;
        std::size_t const length =
            end != nullptr ? static_cast<std::size_t>(static_cast<char const*>(end) - start) : unused;
        Line line{{start, length}, m_Number, m_Place};
        m_Number += end != nullptr ? 1 : 0;
        if (line.text.ends_with('\r')) line.text.remove_suffix(1);
        std::size_t const taken = length + (end != nullptr ? 1 : 0);
        m_Used += taken;
        m_Place += taken;
        return line;
    }
}

// Adds a block behind what is not used yet, which moves to the front.
bool LineReader::Fill() {
    m_Buffer.erase(m_Buffer.begin(), m_Buffer.begin() + static_cast<std::ptrdiff_t>(m_Used));
    m_Used = 0;
    std::size_t const kept = m_Buffer.size();
    m_Buffer.resize(kept + (m_Buffer.capacity() < kFirstBlock ? kFirstBlock : kBlock));
    std::size_t const read = m_File.ReadAt(m_Place + kept, std::span(m_Buffer).subspan(kept));
    m_Buffer.resize(kept + read);
    return read > 0;
}

std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
    return text;
}

std::string InCapitals(std::string_view text) {
    std::string capitals(text);
    for (char& c : capitals) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return capitals;
}

std::optional<double> NumberScanner::Next() {
    while (!m_Rest.empty() && IsSeparator(m_Rest.front())) m_Rest.remove_prefix(1);
    if (m_Rest.empty()) return std::nullopt;
    char const* begin = m_Rest.data();
    char const* const end = begin + m_Rest.size();
    if (*begin == '+') ++begin;
    double value = 0.0;
    auto const [behind, error] = std::from_chars(begin, end, value);
    if (error == std::errc::invalid_argument || (behind != end && !IsSeparator(*behind))) {
        m_Bad = true;
        return std::nullopt;
    }
    m_Rest.remove_prefix(static_cast<std::size_t>(behind - m_Rest.data()));
    return value;
}

}  // namespace varnet
