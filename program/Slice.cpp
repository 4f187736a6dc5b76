#include "Slice.h"

#include <atomic>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

#include "Commands.h"
#include "Failure.h"
#include "ModelFile.h"
#include "Progress.h"
#include "Support.h"
#include "Table.h"

namespace {

namespace fs = std::filesystem;

// Readers of text take a longer line for two.
constexpr std::size_t kLongestLine = 10239;

// The characters of a number with three decimals, and the blank in front of it.
std::size_t CharactersOf(double d) {
    int const nCharacters = std::snprintf(nullptr, 0, " %.3f", d);
    return static_cast<std::size_t>(nCharacters);
}

// The numbers in front of the points take some dozens of characters.
bool IsTooLongForText(tagLoopTreeNode const& loop) {
    std::size_t nCharacters = 64;
    for (auto const* p = loop.m_pPointList->m_pNodeHead; p != nullptr; p = p->pNext) {
        nCharacters += CharactersOf(p->data.x) + CharactersOf(p->data.y);
    }
    return nCharacters > kLongestLine;
}

std::size_t CountTooLong(CLayer const& layer) {
    std::size_t nTooLong = 0;
    for (auto const* p = layer.m_LoopList.m_pNodeHead; p != nullptr; p = p->pNext) {
        if (IsTooLongForText(*static_cast<tagLoopTreeNode const*>(p->data))) ++nTooLong;
    }
    return nTooLong;
}

PathOrdering OrderingOf(SliceOptions const& options) {
    PathOrdering ordering;
    if (options.bOrder) ordering.order = PathOrder::kByEnds;
    if (options.bSplice) ordering.order = PathOrder::kSpliced;
    ordering.dWidth = options.dHatch;
    return ordering;
}

using Models = std::vector<std::unique_ptr<CSTLModel>>;

std::vector<CSTLModel const*> Borrowed(Models const& models) {
    std::vector<CSTLModel const*> borrowed;
    for (auto const& pModel : models) borrowed.push_back(pModel.get());
    return borrowed;
}

// Solids down to the plate, with the thresholds that the support command has where none are given.
Models SupportsOf(Models const& parts) {
    Models supports;
    RunWithProgress(
        "Building support",
        [&] {
            for (auto const& pPart : parts) {
                SupportOptions const options;
                SupportPlan const plan = PlanSupport(*pPart, options);
                for (auto& pSolid : BuildSolids(*pPart, plan, options)) supports.push_back(std::move(pSolid));
            }
        },
        [] { return 0.0; }, [] {});
    ThrowIfInterrupted();
    return supports;
}

void PrintFigures(SliceOptions const& options, SliceFigures const& figures, SliceWriteFigures const& written,
                  std::size_t nSolids) {
    Table table(std::to_string(options.inputs.size()) + (options.inputs.size() == 1 ? " part" : " parts") +
                " -> " + options.output);
    auto const count = [](std::size_t n) { return Count(static_cast<long long>(n)); };
    table.Add("layers", Count(figures.nLayers) + " of " + Number(options.dLayer) + " mm");
    table.Add("contours", count(figures.nLoops));
    table.Add("open paths", count(figures.nOpenPaths));
    table.Add("points", count(figures.nPoints));
    table.Add("length of all contours, mm", Number(figures.dContourLength));
    table.Add("volume of the layers, mm3", Number(figures.dVolume));
    table.Add("fill strokes", count(figures.nStrokes));
    if (options.bSupport) {
        table.Add("support", count(nSolids) + " solids, " + count(figures.nSupportStrokes) + " strokes");
    }
    table.Add("travel with the material off, mm", Number(written.travel.dLength));
    table.Add("starts and stops", Count(written.travel.nStarts));
    table.Add("bytes", Count(static_cast<long long>(fs::file_size(options.output))));
    table.Print();
}

// Writes all layers of the plate. False where the disk did not take them.
bool WriteLayers(Plate& plate, SliceOutput const& output, fs::path const& path, SliceWriteFigures& figures,
                 std::atomic<int>& nDone) {
    std::unique_ptr<FILE, int (*)(FILE*)> const pFile(std::fopen(path.string().c_str(), "wb"), &std::fclose);
    if (pFile == nullptr) return false;
    CLayerModel writer;
    auto const nMode = static_cast<int>(output.mode);
    writer.SaveCLIHead(pFile.get(), nMode, plate.LayerCount());
    CPoint2D pos(0.0, 0.0);
    Head head(pos);
    for (int i = 0; i < plate.LayerCount(); ++i) {
        ThrowIfInterrupted();
        std::unique_ptr<CLayer> const pLayer = plate.NextLayer();
        OrderPaths(*pLayer, output.ordering, pos);
        head.Print(*pLayer);
        if (output.mode == SliceMode::kText) figures.nTooLong += CountTooLong(*pLayer);
        writer.SaveLayer(pLayer.get(), pFile.get(), nMode);
        nDone = i + 1;
    }
    figures.travel = head.Way();
    if (output.mode == SliceMode::kText) std::fputs("$$GEOMETRYEND\n", pFile.get());
    return std::fflush(pFile.get()) == 0 && std::ferror(pFile.get()) == 0;
}

}  // namespace

SliceWriteFigures WriteSlices(Plate& plate, SliceOutput const& output) {
    SliceWriteFigures figures;
    std::atomic<int> nDone = 0;
    WriteWhole(output.file, [&](fs::path const& path) {
        bool bWritten = false;
        RunWithProgress(
            "Slicing into " + fs::path(output.file).filename().string(),
            [&] { bWritten = WriteLayers(plate, output, path, figures, nDone); },
            [&] { return static_cast<double>(nDone) / plate.LayerCount(); }, [] {});
        return bWritten;
    });
    return figures;
}

void RunSlice(SliceOptions const& options) {
    Models parts;
    for (std::string const& input : options.inputs) {
        parts.push_back(std::make_unique<CSTLModel>());
        ReadModel(input, *parts.back());
    }
    Models const supports = options.bSupport ? SupportsOf(parts) : Models();
    SliceSettings settings;
    settings.dLayer = options.dLayer;
    settings.dHatch = options.dHatch;
    settings.dAngle = options.dAngle;
    Plate plate(Borrowed(parts), Borrowed(supports), settings);
    SliceOutput output;
    output.file = options.output;
    output.mode = SliceModeOf(options.mode).value_or(output.mode);
    output.ordering = OrderingOf(options);
    SliceWriteFigures const written = WriteSlices(plate, output);
    PrintFigures(options, plate.Figures(), written, supports.size());
    if (output.mode == SliceMode::kText && written.nTooLong > 0) {
        std::fprintf(stderr,
                     "varnet: %zu paths have lines too long to be read back whole: write binary instead\n",
                     written.nTooLong);
    }
}
