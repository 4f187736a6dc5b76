#include "varnet/SliceFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>

#include "files/File.h"
#include "slicefile/BinaryLayer.h"
#include "slicefile/Lines.h"
#include "slicefile/TextLayer.h"
#include "slicefile/Words.h"

namespace varnet {

char const* NameOf(SliceMode mode) {
    constexpr std::array<char const*, 3> kNames = {"CLI slices, text", "CLI slices, binary",
                                                   "CLI slices, disguised"};
    return kNames[static_cast<std::size_t>(mode) - 1];
}

// The open file, and where its layers are.
class SliceFile::Work {
public:
    Work(std::filesystem::path const& path, SliceReadSettings const& settings)
        : m_File(path), m_Settings(settings) {
        ReadHeader();
        if (m_Header.mode == SliceMode::kText) {
            IndexText();
        } else {
            ChooseStart();
        }
        if (m_Header.announcedLayers &&
            *m_Header.announcedLayers != static_cast<std::int64_t>(m_Layers.size())) {
            m_Report.notes.push_back("the header announces " + std::to_string(*m_Header.announcedLayers) +
                                     " layers, and there are " + std::to_string(m_Layers.size()));
        }
        AddNotes();
    }

    Layer LayerAt(std::int64_t number) const;

    struct Place {
        std::uint64_t byte;
        std::uint64_t line;  // in text
    };

    mutable SeekableFile m_File;
    mutable std::mutex m_Mutex;  // of the file's position
    SliceReadSettings m_Settings;
    SliceHeader m_Header;
    SliceFileReport m_Report;
    std::vector<Place> m_Layers;
    std::uint64_t m_End = 0;  // of the last layer

private:
    void ReadHeader();
    void Apply(Line const& line);
    void IndexText();
    void ChooseStart();
    bool IsStray(std::uint64_t from);
    void AddNotes();
    BinaryForm Form() const {
        return {m_Header.mode == SliceMode::kDisguised, m_Header.aligned, m_Header.units, m_Start};
    }

    bool m_HasMode = false;
    std::uint64_t m_Start = 0;  // of the geometry
    std::uint64_t m_StartLine = 0;
};

// ---- the header

namespace {

// The range that SliceWriter states: "$$USERDATA/varnet,9,1:50/200".
std::optional<LayerRange> RangeOf(std::string_view text) {
    constexpr std::string_view kMark = "$$USERDATA/varnet,";
    if (!text.starts_with(kMark)) return std::nullopt;
    std::string numbers(text.substr(kMark.size()));
    for (char& c : numbers) c = c == ':' || c == '/' ? ' ' : c;
    NumberScanner scanner(numbers);
    scanner.Next();  // the length
    std::array<std::int64_t, 3> range{};
    for (std::int64_t& n : range) {
        double const value = scanner.Next().value_or(0.0);
        if (!(value >= 1.0 && value < 1e15)) return std::nullopt;
        n = static_cast<std::int64_t>(value);
    }
    return LayerRange{range[0], range[1], range[2]};
}

}  // namespace

void SliceFile::Work::ReadHeader() {
    constexpr std::uint64_t kLongestPreface = std::uint64_t{1} << 20;
    // Behind the header of a binary file there need be no line end for gigabytes.
    constexpr std::size_t kLongestLine = std::size_t{1} << 20;
    LineReader lines(m_File, 0, 1, kLongestLine);
    bool begun = false;
    while (std::optional<Line> const line = lines.Next()) {
        if (!begun) {
            begun = line->text.find(kHeaderStartWord) != std::string_view::npos;
            if (!begun && line->place > kLongestPreface) break;
            continue;
        }
        std::size_t const end =
            line->text.substr(0, kColumnsForWords + kHeaderEndWord.size()).find(kHeaderEndWord);
        if (end == std::string_view::npos) {
            Apply(*line);
            continue;
        }
        m_Start = line->place + end + kHeaderEndWord.size();
        m_StartLine = line->number;
        if (m_HasMode) return;
        throw Error::AtLine(m_File.Path(), line->number, "the header names no mode ($$ASCII or $$BINARY)");
    }
    if (!begun)
        throw Error(ErrorKind::kContent, m_File.Path(), "not a CLI slice file: it has no $$HEADERSTART");
    throw Error(ErrorKind::kContent, m_File.Path(), "the header has no $$HEADEREND");
}

void SliceFile::Work::Apply(Line const& line) {
    std::string_view const text = Trimmed(line.text);
    std::string_view const word = text.substr(0, std::min(text.find('/'), kColumnsForWords));
    NumberScanner numbers(text.size() > word.size() ? text.substr(word.size() + 1) : std::string_view());
    auto const is = [word](std::string_view name) { return word.find(name) != std::string_view::npos; };
    auto const mode = [this](SliceMode value) {
        m_Header.mode = value;
        m_HasMode = true;
    };
    if (is("$$BINARY")) {
        mode(SliceMode::kBinary);
    } else if (is("$$COC")) {
        mode(SliceMode::kDisguised);
    } else if (is("$$ASCII")) {
        mode(SliceMode::kText);
    } else if (is("$$UNITS")) {
        m_Header.units = numbers.Next().value_or(0.0);
        if (!(m_Header.units > 0.0) || !std::isfinite(m_Header.units)) {
            throw Error::AtLine(m_File.Path(), line.number, "$$UNITS is no number above 0");
        }
    } else if (is("$$VERSION")) {
        m_Header.version = static_cast<std::int32_t>(std::clamp(numbers.Next().value_or(0.0), 0.0, 1e9));
    } else if (is("$$ALIGN")) {
        m_Header.aligned = true;
    } else if (is("$$LAYERS")) {
        double const layers = numbers.Next().value_or(-1.0);
        if (layers >= 0.0 && layers < 1e15) m_Header.announcedLayers = static_cast<std::int64_t>(layers);
    } else if (is("$$USERDATA")) {
        m_Header.range = RangeOf(text);
    } else if (is("$$DIMENSION")) {
        std::array<double, 6> d{};
        for (double& value : d) value = numbers.Next().value_or(std::nan("")) * m_Header.units;
        if (std::all_of(d.begin(), d.end(), [](double value) { return std::isfinite(value); })) {
            m_Header.dimension = Box3{{d[0], d[1], d[2]}, {d[3], d[4], d[5]}};
        }
    }
}

// ---- where the layers are

// Every line is read once, so that an opened file is known to be whole.
void SliceFile::Work::IndexText() {
    constexpr std::uint64_t kBetweenCalls = 1024;
    LineReader lines(m_File, m_Start, m_StartLine);
    TextLayerParser parser(m_File.Path(), m_Header.units);
    bool ended = false;
    m_End = m_Start;
    try {
        while (std::optional<Line> const line = lines.Next()) {
            if (m_Settings.progress && line->number % kBetweenCalls == 0 &&
                !m_Settings.progress(static_cast<double>(line->place) / static_cast<double>(m_File.Size()))) {
                throw Error(ErrorKind::kCancelled, m_File.Path(), "reading was stopped");
            }
            std::string_view text = line->text;
            TextLine const kind = KindOf(text);
            m_Report.blankLines += kind == TextLine::kBlank && line->number > m_StartLine ? 1 : 0;
            m_Report.comments += kind == TextLine::kComment ? 1 : 0;
            m_Report.unknownCommands += kind == TextLine::kUnknown ? 1 : 0;
            ended = ended || kind == TextLine::kGeometryEnd;
            if (ended) continue;
            if (kind == TextLine::kLayer) {
                parser.Finish(false);
                m_Layers.push_back(m_Layers.empty() ? Place{m_Start, m_StartLine}
                                                    : Place{line->place, line->number});
            }
            parser.Take(*line);
            m_End = lines.Place();
        }
        parser.Finish(!ended);
    } catch (Error const& error) {
        if (error.Kind() != ErrorKind::kContent || !m_Settings.partial) throw;
        m_Report.broken = error.what();
        if (!m_Layers.empty()) {
            m_End = m_Layers.back().byte;
            m_Layers.pop_back();
        }
    }
    m_Report.wrongCounts = parser.WrongCounts();
    m_Report.endMissing = !ended && !m_Report.broken;
}

// Some writers put a line end behind the header, which is no part of the geometry.
void SliceFile::Work::ChooseStart() {
    std::array<char, 2> next{};
    std::size_t const read = m_File.ReadAt(m_Start, next);
    std::vector<std::uint64_t> starts{m_Start};
    if (read > 0 && next[0] == '\n') starts.push_back(m_Start + 1);
    if (read > 1 && next[0] == '\r' && next[1] == '\n') starts.push_back(m_Start + 2);
    std::uint64_t const asStated = m_Start;
    BinaryIndex best;
    std::uint64_t bestStart = m_Start;
    for (std::uint64_t const start : starts) {
        m_Start = start;
        BinaryIndex index = IndexBinary(m_File, Form(), m_Settings.progress);
        bool const better = start == starts.front() || index.places.size() > best.places.size() ||
                            (best.broken && !index.broken);
        if (!better) continue;
        best = std::move(index);
        bestStart = start;
    }
    m_Start = bestStart;
    m_End = best.end;
    m_Report.strayBytes = static_cast<std::int64_t>(m_Start - asStated);
    for (std::uint64_t const place : best.places) m_Layers.push_back({place, 0});
    if (!best.broken || IsStray(best.end)) return;
    Error const error = Error::AtByte(m_File.Path(), best.end, *best.broken);
    if (!m_Settings.partial) throw error;
    m_Report.broken = error.what();
}

// Whether there are only line ends, blanks and zeros from a place on. They are counted.
bool SliceFile::Work::IsStray(std::uint64_t from) {
    constexpr std::uint64_t kMost = 4096;
    constexpr std::string_view kStray("\0\r\n \t\x1A", 6);
    if (m_File.Size() - from > kMost) return false;
    std::string rest(static_cast<std::size_t>(m_File.Size() - from), ' ');
    rest.resize(m_File.ReadAt(from, rest));
    if (rest.find_first_not_of(kStray) != std::string::npos) return false;
    m_Report.strayBytes += static_cast<std::int64_t>(rest.size());
    return true;
}

void SliceFile::Work::AddNotes() {
    auto const add = [this](std::int64_t count, char const* what) {
        if (count > 0) m_Report.notes.push_back(std::to_string(count) + " " + what);
    };
    add(m_Report.blankLines, "blank lines were passed over");
    add(m_Report.comments, "comments were passed over");
    add(m_Report.unknownCommands, "commands that are not known were passed over");
    add(m_Report.wrongCounts, "paths have another number of points than they announce");
    add(m_Report.strayBytes, "bytes between or behind the layers were passed over");
    if (m_Report.endMissing) m_Report.notes.push_back("the file has no $$GEOMETRYEND");
    if (m_Report.broken) m_Report.notes.push_back(*m_Report.broken);
}

// ---- layers

Layer SliceFile::Work::LayerAt(std::int64_t number) const {
    if (number < 1 || number > static_cast<std::int64_t>(m_Layers.size())) {
        throw Error(ErrorKind::kArgument, "there is no layer " + std::to_string(number) + ": the file has " +
                                              std::to_string(m_Layers.size()));
    }
    auto const i = static_cast<std::size_t>(number - 1);
    Place const place = m_Layers[i];
    std::uint64_t const end = i + 1 < m_Layers.size() ? m_Layers[i + 1].byte : m_End;
    std::vector<char> bytes(static_cast<std::size_t>(end - place.byte));
    {
        std::lock_guard const lock(m_Mutex);
        bytes.resize(m_File.ReadAt(place.byte, bytes));
    }
    Layer layer;
    if (m_Header.mode == SliceMode::kText) {
        TextLayerParser parser(m_File.Path(), m_Header.units);
        std::string_view rest(bytes.data(), bytes.size());
        for (std::uint64_t line = place.line; !rest.empty(); ++line) {
            std::size_t const length = std::min(rest.find('\n'), rest.size());
            parser.Take({rest.substr(0, length), line, place.byte});
            rest.remove_prefix(std::min(length + 1, rest.size()));
        }
        layer = parser.Finish(false);
    } else {
        layer = ParseBinaryLayer(bytes, Form(), m_File.Path(), place.byte);
    }
    layer.number = static_cast<std::int32_t>(std::min<std::int64_t>(number, 2147483647));
    layer.cutHeight = layer.z;
    return layer;
}

SliceFile::SliceFile(std::filesystem::path const& path, SliceReadSettings const& settings)
    : m_Work(std::make_unique<Work>(path, settings)) {}
SliceFile::~SliceFile() = default;
SliceFile::SliceFile(SliceFile&& other) noexcept = default;
SliceFile& SliceFile::operator=(SliceFile&& other) noexcept = default;

bool SliceFile::IsOne(std::filesystem::path const& path) {
    constexpr std::size_t kLookedAt = 4096;
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return false;
    FilePointer const file = OpenFile(path, "rb");
    if (file == nullptr) return false;
    std::string start(kLookedAt, '\0');
    start.resize(std::fread(start.data(), 1, start.size(), file.get()));
    return start.find(kHeaderStartWord) != std::string::npos;
}

std::filesystem::path const& SliceFile::Path() const { return m_Work->m_File.Path(); }
std::uint64_t SliceFile::Size() const { return m_Work->m_File.Size(); }
SliceHeader const& SliceFile::Header() const { return m_Work->m_Header; }
SliceFileReport const& SliceFile::Report() const { return m_Work->m_Report; }
std::int64_t SliceFile::LayerCount() const { return static_cast<std::int64_t>(m_Work->m_Layers.size()); }
Layer SliceFile::LayerAt(std::int64_t number) const { return m_Work->LayerAt(number); }

std::uint64_t SliceFile::GeometryBegin() const {
    return m_Work->m_Layers.empty() ? m_Work->m_End : m_Work->m_Layers.front().byte;
}
std::uint64_t SliceFile::GeometryEnd() const { return m_Work->m_End; }

}  // namespace varnet
