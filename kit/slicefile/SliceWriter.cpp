#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <random>

#include "files/File.h"
#include "slicefile/TextLayer.h"
#include "slicefile/Words.h"
#include "varnet/SliceFile.h"

namespace varnet {

namespace {

constexpr int kHeightDigits = 2;
constexpr int kCoordinateDigits = 3;

// Classic readers take a longer line for two.
constexpr std::size_t kLongestLine = 10239;

// The direction as files state it: holes run clockwise.
std::int32_t DirectionOf(Contour const& contour) { return !contour.closed ? 2 : contour.IsHole() ? 0 : 1; }

// A path with its first point again at the end, where it is closed.
template <class Visit>
void ForEachPoint(Layer const& layer, std::size_t i, Visit const& visit) {
    std::span<Point2 const> const points = layer.ContourPoints(i);
    for (Point2 const& point : points) visit(point);
    if (layer.contours[i].closed && !points.empty()) visit(points.front());
}

std::size_t PointCount(Layer const& layer, std::size_t i) {
    std::size_t const points = layer.ContourPoints(i).size();
    return points + (layer.contours[i].closed && points > 0 ? 1 : 0);
}

// ---- lines of text

void AddNumber(std::string& text, std::int64_t value) {
    std::array<char, 24> digits;
    text.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr);
}

void AddNumber(std::string& text, double value, int decimals) {
    std::array<char, 400> digits;
    char* const end = digits.data() + digits.size();
    text.append(digits.data(),
                std::to_chars(digits.data(), end, value, std::chars_format::fixed, decimals).ptr);
}

void AddPoint(std::string& text, Point2 const& point) {
    text.push_back(' ');
    AddNumber(text, point.x, kCoordinateDigits);
    text.push_back(' ');
    AddNumber(text, point.y, kCoordinateDigits);
}

// Gives the number of paths that classic readers take for two.
std::int64_t AddTextLayer(std::string& text, Layer const& layer) {
    std::int64_t tooLong = 0;
    text.append("$$LAYER/");
    AddNumber(text, layer.z, kHeightDigits);
    text.append(" \n");
    for (std::size_t i = 0; i < layer.ContourCount(); ++i) {
        if (layer.ContourPoints(i).empty()) continue;
        std::size_t const start = text.size();
        text.append("$$POLYLINE/");
        AddNumber(text, layer.contours[i].id);
        text.push_back(' ');
        AddNumber(text, DirectionOf(layer.contours[i]));
        text.push_back(' ');
        AddNumber(text, static_cast<std::int64_t>(PointCount(layer, i)));
        text.push_back(' ');
        ForEachPoint(layer, i, [&text](Point2 const& point) { AddPoint(text, point); });
        text.push_back('\n');
        if (text.size() - start > kLongestLine) ++tooLong;
    }
    for (std::size_t i = 0; i < layer.ChainCount(); ++i) {
        std::span<Stroke const> const strokes = layer.ChainStrokes(i);
        if (strokes.empty()) continue;
        text.append("$$HATCHES/");
        AddNumber(text, layer.chainIds[i]);
        text.push_back(' ');
        AddNumber(text, static_cast<std::int64_t>(strokes.size()));
        text.append("    ");
        for (Stroke const& stroke : strokes) {
            AddPoint(text, stroke.from);
            AddPoint(text, stroke.to);
        }
        text.push_back('\n');
    }
    return tooLong;
}

// ---- binary commands

// Puts commands together, plain ones or disguised by offsets from a generator.
class CommandWriter {
public:
    CommandWriter(std::string& bytes, std::mt19937_64* random) : m_Bytes(bytes), m_Random(random) {}

    void Begin(SliceCommand command) {
        if (m_Random == nullptr) {
            constexpr std::array<std::uint16_t, 3> kWords = {127, 130, 132};
            Add(kWords[static_cast<std::size_t>(command)]);
            return;
        }
        m_Offset = static_cast<std::int32_t>((*m_Random)() % kDisguiseCount);
        Add(static_cast<std::uint16_t>(m_Offset * kDisguiseStride + static_cast<std::int32_t>(command) + 1));
    }
    void Whole(std::int64_t value) { Add(static_cast<std::int32_t>(value)); }
    void Real(double value) { Add(static_cast<float>(value + m_Offset)); }
    void Point(Point2 const& point) {
        Real(point.x);
        Real(point.y);
    }
    // As many bytes as the offset is high follow a disguised height.
    void Noise() {
        for (std::int32_t i = 0; i < m_Offset; ++i)
            m_Bytes.push_back(static_cast<char>((*m_Random)() & 0xFF));
    }

private:
    template <class Number>
    void Add(Number number) {
        std::array<char, sizeof(Number)> bytes;
        std::memcpy(bytes.data(), &number, sizeof number);
        m_Bytes.append(bytes.data(), bytes.size());
    }

    std::string& m_Bytes;
    std::mt19937_64* m_Random;
    std::int32_t m_Offset = 0;
};

void AddBinaryLayer(std::string& bytes, Layer const& layer, std::mt19937_64* random) {
    CommandWriter writer(bytes, random);
    writer.Begin(SliceCommand::kLayer);
    writer.Real(layer.z);
    writer.Noise();
    for (std::size_t i = 0; i < layer.ContourCount(); ++i) {
        writer.Begin(SliceCommand::kPolyline);
        writer.Whole(layer.contours[i].id);
        writer.Whole(DirectionOf(layer.contours[i]));
        writer.Whole(static_cast<std::int64_t>(PointCount(layer, i)));
        ForEachPoint(layer, i, [&writer](Point2 const& point) { writer.Point(point); });
    }
    for (std::size_t i = 0; i < layer.ChainCount(); ++i) {
        writer.Begin(SliceCommand::kHatches);
        writer.Whole(layer.chainIds[i]);
        writer.Whole(static_cast<std::int64_t>(layer.ChainStrokes(i).size()));
        for (Stroke const& stroke : layer.ChainStrokes(i)) {
            writer.Point(stroke.from);
            writer.Point(stroke.to);
        }
    }
}

std::string HeaderOf(SliceMode mode, std::int64_t layers, std::optional<LayerRange> const& range) {
    constexpr std::array<char const*, 3> kModes = {"$$ASCII", "$$BINARY", "$$COC"};
    std::string header(kHeaderStartWord);
    header.append("\n").append(kModes[static_cast<std::size_t>(mode) - 1]);
    header.append("\n$$UNITS/1\n$$VERSION/200\n$$LAYERS/").append(std::to_string(layers)).append("\n");
    if (range) {
        std::string const text = std::to_string(range->first) + ":" + std::to_string(range->last) + "/" +
                                 std::to_string(range->whole);
        header.append("$$USERDATA/varnet,")
            .append(std::to_string(text.size()))
            .append(",")
            .append(text)
            .append("\n");
    }
    header.append(kHeaderEndWord);
    if (mode == SliceMode::kText) header.append("\n").append(kGeometryStartWord).append("\n");
    return header;
}

}  // namespace

Layer AsStored(Layer const& layer, SliceMode mode) {
    auto const stored = [mode](double value, int decimals) {
        if (mode != SliceMode::kText) return static_cast<double>(static_cast<float>(value));
        std::string text;
        AddNumber(text, value, decimals);
        double read = 0.0;
        std::from_chars(text.data(), text.data() + text.size(), read);
        return read;
    };
    auto const point = [&stored](Point2 const& p) {
        return Point2{stored(p.x, kCoordinateDigits), stored(p.y, kCoordinateDigits)};
    };
    Layer result;
    result.number = layer.number;
    result.z = stored(layer.z, kHeightDigits);
    result.cutHeight = layer.cutHeight;
    std::vector<Point2> points;
    for (std::size_t i = 0; i < layer.ContourCount(); ++i) {
        points.clear();
        ForEachPoint(layer, i, [&](Point2 const& p) { points.push_back(point(p)); });
        AddPath(result, points, layer.contours[i].id, DirectionOf(layer.contours[i]));
    }
    std::vector<Stroke> strokes;
    for (std::size_t i = 0; i < layer.ChainCount(); ++i) {
        strokes.clear();
        for (Stroke const& stroke : layer.ChainStrokes(i))
            strokes.push_back({point(stroke.from), point(stroke.to)});
        result.AddChain(strokes, layer.chainIds[i]);
    }
    return result;
}

class SliceWriter::Work {
public:
    Work(std::filesystem::path const& path, std::int64_t announced, SliceWriteSettings const& how)
        : file(path), layers(announced), settings(how), seed(how.seed ? *how.seed : std::random_device()()) {
        file.Write(HeaderOf(settings.mode, layers, settings.range));
    }

    void Write(Layer const& layer) {
        buffer.clear();
        if (settings.mode == SliceMode::kText) {
            tooLong += AddTextLayer(buffer, layer);
        } else if (settings.mode == SliceMode::kBinary) {
            AddBinaryLayer(buffer, layer, nullptr);
        } else {
            // A generator for each layer, so that a layer has the same bytes whatever is written with it.
            std::mt19937_64 random(seed * 0x9E3779B97F4A7C15u + static_cast<std::uint64_t>(layer.number));
            AddBinaryLayer(buffer, layer, &random);
        }
        file.Write(buffer);
        ++written;
    }

    OutputFile file;
    std::int64_t layers;
    SliceWriteSettings settings;
    std::uint64_t seed;
    std::int64_t written = 0;
    std::int64_t tooLong = 0;
    std::string buffer;
};

SliceWriter::SliceWriter(std::filesystem::path const& path, std::int64_t layers,
                         SliceWriteSettings const& settings)
    : m_Work(std::make_unique<Work>(path, layers, settings)) {}
SliceWriter::~SliceWriter() = default;
SliceWriter::SliceWriter(SliceWriter&& other) noexcept = default;
SliceWriter& SliceWriter::operator=(SliceWriter&& other) noexcept = default;

void SliceWriter::Write(Layer const& layer) { m_Work->Write(layer); }

void SliceWriter::Finish() {
    if (m_Work->written != m_Work->layers) {
        throw Error(ErrorKind::kArgument, std::to_string(m_Work->layers) + " layers were announced, and " +
                                              std::to_string(m_Work->written) + " were written");
    }
    if (m_Work->settings.mode == SliceMode::kText) m_Work->file.Write(std::string(kGeometryEndWord) + "\n");
    m_Work->file.Commit();
}

void SliceWriter::Copy(SliceFile const& file, std::function<void(double)> const& step) {
    SeekableFile bytes(file.Path());
    std::vector<char> block(std::size_t{1} << 20);
    std::uint64_t const begin = file.GeometryBegin();
    std::uint64_t const end = file.GeometryEnd();
    for (std::uint64_t place = begin; place < end;) {
        auto const size = static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), end - place));
        std::size_t const read = bytes.ReadAt(place, std::span(block).first(size));
        if (read == 0) throw Error(ErrorKind::kFile, file.Path(), "has become shorter while it was read");
        m_Work->file.Write({block.data(), read});
        place += read;
        step(static_cast<double>(place - begin) / static_cast<double>(end - begin));
    }
    m_Work->written += file.LayerCount();
}

std::int64_t SliceWriter::LayersWritten() const { return m_Work->written; }
std::uint64_t SliceWriter::BytesWritten() const { return m_Work->file.Size(); }
std::int64_t SliceWriter::TooLongForClassicReader() const { return m_Work->tooLong; }

}  // namespace varnet
