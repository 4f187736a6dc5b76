#include "slicefile/TextLayer.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace varnet {

namespace {

// A closed path ends where it begins; in text that is so up to this, on each axis.
constexpr double kSamePoint = 1e-4;

constexpr double kLargestInt = 2147483647.0;

// Comments stand between pairs of slashes, or run to the end of the line.
std::string_view WithoutComments(std::string_view text) {
    text = Trimmed(text);
    while (text.starts_with("//")) {
        std::size_t const end = text.find("//", 2);
        text = end == std::string_view::npos ? std::string_view() : Trimmed(text.substr(end + 2));
    }
    std::size_t const slash = text.find('/');
    if (slash == std::string_view::npos) return text;
    return Trimmed(text.substr(0, text.find("//", slash + 1)));
}

bool IsNumeric(char c) { return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.'; }

bool Holds(std::string_view text, std::string_view word) { return text.find(word) != std::string_view::npos; }

}  // namespace

TextLine KindOf(std::string_view& text) {
    bool const hadText = !Trimmed(text).empty();
    text = WithoutComments(text);
    if (text.empty()) return hadText ? TextLine::kComment : TextLine::kBlank;
    if (IsNumeric(text.front())) return TextLine::kNumbers;
    std::string const word = InCapitals(text.substr(0, std::min(kColumnsForWords, text.find('/'))));
    if (Holds(word, "GEOMETRYEND")) return TextLine::kGeometryEnd;
    if (Holds(word, "GEOMETRYSTART")) return TextLine::kGeometryStart;
    if (Holds(word, "LAYERS")) return TextLine::kUnknown;
    if (Holds(word, "LAYER")) return TextLine::kLayer;
    if (Holds(word, "POLYLINE")) return TextLine::kPolyline;
    if (Holds(word, "HATCH")) return TextLine::kHatches;
    return TextLine::kUnknown;
}

void AddPath(Layer& layer, std::vector<Point2>& points, std::int64_t id, std::int64_t direction) {
    Contour contour;
    contour.id = static_cast<std::int32_t>(std::clamp<std::int64_t>(
        id, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
    contour.closed = direction < 2;
    contour.level = direction == 0 ? 1 : 0;
    auto const same = [](Point2 const& a, Point2 const& b) {
        return std::fabs(a.x - b.x) < kSamePoint && std::fabs(a.y - b.y) < kSamePoint;
    };
    if (contour.closed && points.size() > 1 && same(points.front(), points.back())) points.pop_back();
    layer.AddContour(points, contour);
}

void TextLayerParser::Take(Line const& line) {
    std::string_view text = line.text;
    TextLine const kind = KindOf(text);
    switch (kind) {
        case TextLine::kLayer:
        case TextLine::kPolyline:
        case TextLine::kHatches: {
            EndCommand(false);
            std::size_t const slash = text.find('/');
            Begin(kind, slash == std::string_view::npos ? std::string_view() : text.substr(slash + 1), line);
            break;
        }
        case TextLine::kNumbers: {
            if (!m_Command) throw Error::AtLine(m_File, line.number, "numbers without a command");
            NumberScanner numbers(text);
            TakeNumbers(numbers, line);
            break;
        }
        default:
            EndCommand(false);
    }
}

void TextLayerParser::Begin(TextLine kind, std::string_view parameters, Line const& line) {
    NumberScanner numbers(parameters);
    auto const next = [&](char const* what) {
        std::optional<double> const value = numbers.Next();
        if (!value) throw Error::AtLine(m_File, line.number, std::string(what) + " is missing or no number");
        if (!std::isfinite(*value))
            throw Error::AtLine(m_File, line.number, std::string(what) + " is not finite");
        return *value;
    };
    auto const nextWhole = [&](char const* what) {
        return static_cast<std::int64_t>(std::clamp(next(what), -kLargestInt, kLargestInt));
    };
    if (kind == TextLine::kLayer) {
        m_Layer.z = next("the height") * m_Units;
        return;
    }
    bool const isPath = kind == TextLine::kPolyline;
    m_Command = isPath ? SliceCommand::kPolyline : SliceCommand::kHatches;
    m_CommandLine = line.number;
    m_Id = nextWhole("the id");
    m_Direction = isPath ? nextWhole("the direction") : 0;
    m_Announced = nextWhole("the count");
    m_Numbers.clear();
    TakeNumbers(numbers, line);
}

void TextLayerParser::TakeNumbers(NumberScanner& numbers, Line const& line) {
    while (std::optional<double> const value = numbers.Next()) {
        if (!std::isfinite(*value)) throw Error::AtLine(m_File, line.number, "a coordinate is not finite");
        m_Numbers.push_back(*value * m_Units);
    }
    if (numbers.Bad()) throw Error::AtLine(m_File, line.number, "a coordinate is no number");
}

void TextLayerParser::EndCommand(bool isCut) {
    if (!m_Command) return;
    std::size_t const reals = *m_Command == SliceCommand::kPolyline ? 2 : 4;
    if (m_Numbers.size() % reals != 0) {
        throw Error::AtLine(m_File, m_CommandLine, "a coordinate of the last point is missing");
    }
    auto const items = static_cast<std::int64_t>(m_Numbers.size() / reals);
    if (items != m_Announced) ++m_WrongCounts;
    if (isCut && items < m_Announced) {
        throw Error::AtLine(m_File, m_CommandLine,
                            "the file ends within this command: " + std::to_string(items) + " of " +
                                std::to_string(m_Announced) + " points are there");
    }
    if (*m_Command == SliceCommand::kPolyline) {
        std::vector<Point2> points;
        points.reserve(m_Numbers.size() / 2);
        for (std::size_t i = 0; i < m_Numbers.size(); i += 2)
            points.push_back({m_Numbers[i], m_Numbers[i + 1]});
        AddPath(m_Layer, points, m_Id, m_Direction);
    } else {
        std::vector<Stroke> strokes;
        strokes.reserve(m_Numbers.size() / 4);
        for (std::size_t i = 0; i < m_Numbers.size(); i += 4) {
            strokes.push_back({{m_Numbers[i], m_Numbers[i + 1]}, {m_Numbers[i + 2], m_Numbers[i + 3]}});
        }
        m_Layer.AddChain(strokes, static_cast<std::int32_t>(m_Id));
    }
    m_Command.reset();
}

Layer TextLayerParser::Finish(bool isCut) {
    EndCommand(isCut);
    Layer layer = std::move(m_Layer);
    m_Layer = Layer();
    return layer;
}

}  // namespace varnet
