// ASCII STL, word by word.

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "part/FacetSink.h"
#include "part/MeshReaders.h"

namespace varnet {

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20;

// The words of an average facet take about so many bytes.
constexpr std::size_t kBytesPerFacet = 256;

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\v' || c == '\f'; }

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// Compares a word in any case of letters with one in small letters.
bool Is(std::string_view word, std::string_view small) {
    return word.size() == small.size() &&
           std::equal(word.begin(), word.end(), small.begin(), [](char a, char b) { return Lower(a) == b; });
}

// Lines of a file, whatever ends them: LF, CR LF or CR. One is good until the next.
class Lines {
public:
    explicit Lines(InputFile& file) : m_File(file), m_Buffer(kBlock) {}

    bool Next(std::string_view& line) {
        for (std::size_t looked = m_Begin;;) {
            char const* const end = FindEnd(m_Buffer.data() + looked, m_Buffer.data() + m_End);
            if (end != nullptr) {
                auto const at = static_cast<std::size_t>(end - m_Buffer.data());
                line = {m_Buffer.data() + m_Begin, at - m_Begin};
                m_Begin = at + 1;
                bool const second = *end == '\n' && m_AfterReturn && line.empty();
                m_AfterReturn = *end == '\r';
                if (!second) return true;
                looked = m_Begin;
                continue;
            }
            looked = m_End - m_Begin;
            if (!Fill()) {
                line = {m_Buffer.data() + m_Begin, m_End - m_Begin};
                m_Begin = m_End;
                return !line.empty();
            }
        }
    }

private:
    static char const* FindEnd(char const* begin, char const* end) {
        while (begin != end && *begin != '\n' && *begin != '\r') ++begin;
        return begin == end ? nullptr : begin;
    }

    // Moves what is left to the front, and reads on behind it.
    bool Fill() {
        std::memmove(m_Buffer.data(), m_Buffer.data() + m_Begin, m_End - m_Begin);
        m_End -= m_Begin;
        m_Begin = 0;
        if (m_End == m_Buffer.size()) m_Buffer.resize(2 * m_Buffer.size());
        std::size_t const read = m_File.Read(std::span(m_Buffer).subspan(m_End));
        m_End += read;
        return read != 0;
    }

    InputFile& m_File;
    std::vector<char> m_Buffer;
    std::size_t m_Begin = 0;
    std::size_t m_End = 0;
    bool m_AfterReturn = false;  // the LF that follows belongs to the line that has ended
};

std::string_view NextWord(std::string_view& text) {
    std::size_t begin = 0;
    while (begin < text.size() && IsBlank(text[begin])) ++begin;
    std::size_t end = begin;
    while (end < text.size() && !IsBlank(text[end])) ++end;
    std::string_view const word = text.substr(begin, end - begin);
    text.remove_prefix(end);
    return word;
}

bool ParseNumber(std::string_view word, double& value) {
    if (word.starts_with('+')) word.remove_prefix(1);
    auto const result = std::from_chars(word.data(), word.data() + word.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        // Either far too large, which is no coordinate, or so small that it is 0.
        bool const small =
            word.find("e-") != std::string_view::npos || word.find("E-") != std::string_view::npos;
        value = small ? 0.0 : HUGE_VAL;
        return true;
    }
    return result.ec == std::errc() && result.ptr == word.data() + word.size();
}

class FacetWords {
public:
    FacetWords(RawMesh& raw, FacetSink& sink) : m_Raw(raw), m_Sink(sink) {}

    void TakeLine(std::string_view line) {
        ++m_Line;
        for (std::string_view word = NextWord(line); !word.empty(); word = NextWord(line)) {
            if (Is(word, "vertex")) {
                TakeVertex(line);
            } else if (Is(word, "endloop") || Is(word, "endfacet")) {
                EndFacet();
            } else if (Is(word, "facet")) {
                BeginFacet(line);
            } else if (Is(word, "solid")) {
                if (m_Raw.header.empty()) m_Raw.header = NameBehind(line);
                return;
            } else if (!Is(word, "outer") && !Is(word, "loop")) {
                return;
            }
        }
    }
    void End() {
        if (m_Count != 0 || m_Bad) Lose();
    }

    std::int64_t Vertices() const { return m_Vertices; }
    std::int64_t Facets() const { return m_Facets; }
    /// Where the first facet is that did not come.
    std::uint64_t FirstLost() const { return m_FirstLost; }

private:
    static std::string NameBehind(std::string_view line) {
        while (!line.empty() && IsBlank(line.front())) line.remove_prefix(1);
        while (!line.empty() && IsBlank(line.back())) line.remove_suffix(1);
        return std::string(line);
    }

    void BeginFacet(std::string_view& line) {
        if (m_Count != 0 || m_Bad) Lose();
        m_Begin = m_Line;
        // The normal is made from the corners.
        std::string_view rest = line;
        if (Is(NextWord(rest), "normal")) {
            for (int i = 0; i < 3; ++i) NextWord(rest);
            line = rest;
        }
    }

    void TakeVertex(std::string_view& line) {
        ++m_Vertices;
        if (m_Count == 0 && !m_Bad && m_Begin == 0) m_Begin = m_Line;
        Point3 p;
        bool good = m_Count < 3;
        for (double* const value : {&p.x, &p.y, &p.z}) good = good && ParseNumber(NextWord(line), *value);
        if (good) {
            m_Corners[m_Count++] = p;
        } else {
            m_Bad = true;
        }
    }

    void EndFacet() {
        if (m_Count == 0 && !m_Bad) return;
        if (m_Count != 3 || m_Bad) {
            Lose();
            return;
        }
        m_Sink.Add(m_Corners[0], m_Corners[1], m_Corners[2]);
        ++m_Facets;
        m_Count = 0;
        m_Begin = 0;
    }

    void Lose() {
        if (m_FirstLost == 0) m_FirstLost = m_Begin;
        m_Count = 0;
        m_Bad = false;
        m_Begin = 0;
    }

    RawMesh& m_Raw;
    FacetSink& m_Sink;
    std::array<Point3, 3> m_Corners;
    std::size_t m_Count = 0;
    bool m_Bad = false;  // the facet under way has a corner that cannot be read, or too many
    std::uint64_t m_Line = 0;
    std::uint64_t m_Begin = 0;  // the line of the facet under way, 0 for none
    std::uint64_t m_FirstLost = 0;
    std::int64_t m_Vertices = 0;
    std::int64_t m_Facets = 0;
};

void NoteLost(FacetWords const& words, IntakeReport& report) {
    report.facetsInFile = (words.Vertices() + 2) / 3;
    std::int64_t const lost = report.facetsInFile - words.Facets();
    if (lost <= 0) return;
    std::string note = std::to_string(lost) + (lost == 1 ? " facet" : " facets") + " of " +
                       std::to_string(report.facetsInFile) + " could not be read";
    if (words.FirstLost() != 0) note += ", the first in line " + std::to_string(words.FirstLost());
    report.notes.push_back(note);
}

}  // namespace

RawMesh ReadAsciiStl(Reading& reading) {
    RawMesh raw;
    raw.format = MeshFormat::kAsciiStl;
    auto const size = static_cast<std::size_t>(reading.file.Size());
    FacetSink sink(raw, reading.report, reading.settings.scale, size / kBytesPerFacet);
    FacetWords words(raw, sink);
    Lines lines(reading.file);
    std::string_view line;
    for (std::size_t i = 0; lines.Next(line); ++i) {
        if (i % 4096 == 0) {
            double const share = static_cast<double>(reading.file.Position()) / static_cast<double>(size);
            reading.pace.At(std::min(share, 1.0));
        }
        words.TakeLine(line);
    }
    words.End();
    sink.Flush();
    NoteLost(words, reading.report);
    return raw;
}

}  // namespace varnet
