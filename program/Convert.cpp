// Writes a mesh in another format, reads the result back, and says what the format has cost.

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <unordered_map>
#include <vector>

#include "Commands.h"
#include "Failure.h"
#include "ModelFile.h"
#include "PlainCsm.h"
#include "Table.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kShortHeader = 80;
constexpr std::size_t kLongHeader = 4096;

// The header as it will stand in the file: padded to one of the two lengths that can be read back.
std::string PaddedHeader(std::string const& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw Failure(file, "cannot be read");
    std::string header(std::istreambuf_iterator<char>(stream), {});
    if (header.size() > kLongHeader) throw Failure(file, "a header has at most 4096 bytes");
    std::string const text = header.substr(0, std::min(kShortHeader - 1, header.find('\0')));
    auto const holds = [&text](char const* pTag) { return text.find(pTag) != std::string::npos; };
    bool const bLong = holds("CSM5.0");
    if (!bLong && !holds("CSM3.0") && !holds("CSM4.0")) {
        throw Failure(file, "a header holds CSM3.0, CSM4.0 or CSM5.0 in its first 79 bytes");
    }
    if (!bLong && header.size() > kShortHeader)
        throw Failure(file, "a header of more than 80 bytes holds CSM5.0");
    header.resize(bLong ? kLongHeader : kShortHeader);
    return header;
}

void WriteStrips(CSTLModel& model, ConvertOptions const& options) {
    std::string header;
    if (!options.header.empty()) header = PaddedHeader(options.header);
    WriteWhole(options.output, [&](fs::path const& path) {
        return model.ExtractFacetForCSM(1, WidePath(path).Get(), options.bFloats ? 0 : 1,
                                        header.empty() ? nullptr : header.data(),
                                        static_cast<int>(header.size())) == 1;
    });
}

void Write(CSTLModel& model, bool bStl, ConvertOptions const& options) {
    if (bStl) {
        WriteModel(model, options.output);
    } else if (options.bRing) {
        WriteWhole(options.output,
                   [&model](fs::path const& path) { return model.SaveCSMFile1(WidePath(path).Get()) == 1; });
    } else if (options.bPlain) {
        constexpr long long kHeader = 88;
        constexpr long long kRecord = 12;
        WriteWhole(
            options.output,
            [&model](fs::path const& path) { return SavePlainCsm(model, WidePath(path).Get()) == 1; },
            kHeader + kRecord * (static_cast<long long>(model.m_VertexTree.m_nCount) + model.GetFacetsNum()));
    } else {
        WriteStrips(model, options);
    }
}

std::string ExtensionOf(std::string const& file) {
    std::string extension = fs::path(file).extension().string();
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension;
}

bool IsCli(ConvertOptions const& options) {
    if (ExtensionOf(options.output) != ".cli") {
        if (!options.mode.empty()) throw UsageError(options.output + ": --mode is for .cli");
        return false;
    }
    if (options.bFloats || options.bRing || options.bPlain || !options.header.empty())
        throw UsageError(options.output + ": --floats, --ring, --plain and --header are for .csm");
    return true;
}

bool IsStl(ConvertOptions const& options) {
    std::string const extension = ExtensionOf(options.output);
    bool const bCsmOption = options.bFloats || options.bRing || options.bPlain || !options.header.empty();
    if (extension == ".csm") return false;
    if (extension != ".stl") throw UsageError(options.output + ": can write .stl, .csm and .cli");
    if (bCsmOption)
        throw UsageError(options.output + ": --floats, --ring, --plain and --header are for .csm");
    return true;
}

// Calls visit(vertex) once for every vertex that facets use.
template <class Visit>
void ForEachVertex(CSTLModel const& model, Visit const& visit) {
    auto const& surfaces = model.m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.GetSize(); ++i) {
        for (int k = 0; k < surfaces[i]->m_aFacet.GetSize(); ++k) {
            CFacet const& facet = *surfaces[i]->m_aFacet[k];
            for (tagVertexNode const* p : {facet.m_pVertex1, facet.m_pVertex2, facet.m_pVertex3}) {
                if (p->m_ppFacet[0] == &facet) visit(*p);
            }
        }
    }
}

// Points by the cells of a grid, to find the one nearest to another in its own cell and those around.
class PointGrid {
public:
    explicit PointGrid(double dCell) : m_dCell(dCell) {}

    void Add(CPoint3D const& p) { m_Cells[CellOf(p)].push_back(p); }

    /// The largest difference on any axis to the nearest point; nothing when none is within a cell's length.
    std::optional<double> DistanceTo(CPoint3D const& p) const {
        std::optional<double> nearest;
        Cell const middle = CellOf(p);
        for (int i = 0; i < 27; ++i) {
            auto const found =
                m_Cells.find({middle[0] + i % 3 - 1, middle[1] + i / 3 % 3 - 1, middle[2] + i / 9 - 1});
            if (found == m_Cells.end()) continue;
            for (CPoint3D const& q : found->second) {
                double const d = std::max({std::fabs(p.x - q.x), std::fabs(p.y - q.y), std::fabs(p.z - q.z)});
                if (d <= m_dCell && (!nearest || d < *nearest)) nearest = d;
            }
        }
        return nearest;
    }

private:
    using Cell = std::array<std::int64_t, 3>;
    struct Hash {
        std::size_t operator()(Cell const& cell) const {
            std::uint64_t n = 0;
            for (std::int64_t const i : cell) n = (n ^ static_cast<std::uint64_t>(i)) * 0x9E3779B97F4A7C15u;
            return static_cast<std::size_t>(n ^ n >> 32);
        }
    };

    Cell CellOf(CPoint3D const& p) const {
        auto const index = [this](double d) { return static_cast<std::int64_t>(std::floor(d / m_dCell)); };
        return {index(p.x), index(p.y), index(p.z)};
    }

    double m_dCell;
    std::unordered_map<Cell, std::vector<CPoint3D>, Hash> m_Cells;
};

// The largest difference of a coordinate between a vertex of the one model and the nearest of the other.
std::string LargestError(CSTLModel& model, CSTLModel const& back) {
    CPoint3D const size = model.m_VertexTree.m_BoundBox.Size();
    constexpr double kCoarsestGrid = 65536.0;
    double const dCell = 4.0 * (std::max({size.x, size.y, size.z, 0.0}) + 1.0) / kCoarsestGrid;
    PointGrid grid(dCell);
    ForEachVertex(back, [&grid](tagVertexNode const& p) { grid.Add(p); });
    double dLargest = 0.0;
    bool bMissing = false;
    ForEachVertex(model, [&](tagVertexNode const& p) {
        std::optional<double> const distance = grid.DistanceTo(p);
        bMissing = bMissing || !distance;
        dLargest = std::max(dLargest, distance.value_or(0.0));
    });
    if (bMissing) return "more than " + Number(dCell);
    return Number(dLargest);
}

}  // namespace

void RunConvert(ConvertOptions const& options) {
    if (IsCli(options)) return RunConvertSlices(options);
    bool const bStl = IsStl(options);
    CSTLModel model;
    FileKind const inputKind = ReadModel(options.input, model);
    auto const nInput = static_cast<long long>(fs::file_size(options.input));
    Write(model, bStl, options);
    CSTLModel back;
    FileKind const outputKind = ReadModel(options.output, back);

    auto const nOutput = static_cast<long long>(fs::file_size(options.output));
    double const dStl = 84.0 + 50.0 * model.GetFacetsNum();
    Table table(options.input + " -> " + options.output);
    table.Add("formats", std::string(NameOf(inputKind)) + " -> " + NameOf(outputKind));
    table.Add("bytes", Count(nInput) + " -> " + Count(nOutput));
    table.Add("facets", Count(model.GetFacetsNum()) + ", read back " + Count(back.GetFacetsNum()));
    table.Add("size, of binary STL", Number(static_cast<double>(nOutput) / dStl));
    table.Add("largest coordinate error, mm", LargestError(model, back));
    table.Print();
}
