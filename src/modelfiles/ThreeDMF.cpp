// 3DMF: a text of one vertex or one triangle a line, told by words wherever they stand in the line, with
// three values behind equals signs.

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "foundation/files/ByteStream.h"
#include "foundation/files/Path.h"
#include "foundation/text/TextNumber.h"
#include "foundation/text/TextSearch.h"
#include "mesh/FacetIntake.h"
#include "mesh/STLModel.h"

using namespace varnet;

namespace {

constexpr std::size_t kLongestLine = 10240;

// A line of a vertex has about this many bytes: a guess at how many vertices a file holds.
constexpr int kBytesPerVertex = 60;

// The next run of characters other than "=", which is taken from the line.
std::optional<std::string_view> NextPiece(std::string_view& line) {
    std::size_t const nStart = line.find_first_not_of('=');
    if (nStart == std::string_view::npos) return std::nullopt;
    line.remove_prefix(nStart);
    std::string_view const piece = line.substr(0, line.find('='));
    line.remove_prefix(piece.size());
    return piece;
}

// The values behind the first three equals signs, each without the quote that it opens with. Pieces that are
// missing leave theirs as they are.
template <class Value, class FromText>
void ParseValues(std::string_view line, std::array<Value, 3>& values, FromText const& fromText) {
    line = line.substr(0, line.find('\0'));
    NextPiece(line);
    for (Value& value : values) {
        std::optional<std::string_view> const piece = NextPiece(line);
        if (!piece) return;
        value = fromText(piece->substr(1));
    }
}

std::vector<CPoint3D> ReadVertices(ByteReader& lines, std::size_t nExpected) {
    std::vector<CPoint3D> points;
    points.reserve(nExpected);
    while (std::optional<std::string_view> const line = lines.NextLine(kLongestLine)) {
        if (HoldsWord(*line, "VERTEX")) {
            std::array<double, 3> values{};
            ParseValues(*line, values, TextToDouble);
            points.emplace_back(values[0], values[1], values[2]);
        } else if (HoldsWord(*line, "/VERTICES")) {
            break;
        }
    }
    return points;
}

// Adds the triangles. One that names a vertex that the file does not have is left out.
void ReadTriangles(ByteReader& lines, std::vector<CPoint3D> const& points, CSTLModel& model) {
    auto const isVertex = [&points](int n) { return n >= 0 && static_cast<std::size_t>(n) < points.size(); };
    FacetIntake intake(model, 2 * points.size());
    FacetQueue facets(intake, FacetIntake::OnStop::kGoOn);
    std::array<int, 3> numbers{};
    while (std::optional<std::string_view> const line = lines.NextLine(kLongestLine)) {
        if (HoldsWord(*line, "TRIANGLE ")) {
            ParseValues(*line, numbers, TextToInt);
            if (!std::all_of(numbers.begin(), numbers.end(), isVertex)) continue;
            tagFACET facet;
            for (std::size_t i = 0; i < 3; ++i) {
                facet.m_ptVertex[i] = points[static_cast<std::size_t>(numbers[i])];
            }
            facets.Add(facet);
        } else if (HoldsWord(*line, "/TRIANGLES")) {
            break;
        }
    }
    facets.Flush();
}

}  // namespace

int CSTLModel::Read3DMFModel(char* path) {
    File const file = OpenPath(path, "r");
    if (file == nullptr) return 0;
    auto const nExpected = static_cast<std::size_t>(FileSize(file.get()) / kBytesPerVertex);
    ByteReader lines(file.get());
    std::vector<CPoint3D> const points = ReadVertices(lines, nExpected);
    ReadTriangles(lines, points, *this);
    return 1;
}
