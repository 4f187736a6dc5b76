// Orders the paths of a slice file, layer by layer, and says how much shorter the head's travel has become.

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "Commands.h"
#include "Failure.h"
#include "LayerPicture.h"
#include "ModelFile.h"
#include "PathOrder.h"
#include "Progress.h"
#include "SliceFile.h"
#include "Table.h"

namespace {

namespace fs = std::filesystem;

int ModeOf(std::string const& word) { return word == "near" ? 0 : word == "far" ? 1 : 2; }

PathOrdering OrderingOf(OrderOptions const& options) {
    PathOrdering ordering;
    ordering.order = options.bSplice ? PathOrder::kSpliced : PathOrder::kByEnds;
    ordering.nLoopMode = ModeOf(options.loops);
    ordering.nHatchMode = options.bSplice ? 0 : ModeOf(options.hatches);
    ordering.dWidth = options.dWidth;
    ordering.dCut = options.dCut;
    return ordering;
}

// Layer after layer, each from where the last one ended.
class Ordering {
public:
    explicit Ordering(OrderOptions const& options)
        : m_Options(options), m_Before(CPoint2D(options.start[0], options.start[1])), m_After(m_Before) {
        std::srand(options.nSeed);
    }

    void Order(CLayer& layer) {
        ThrowIfInterrupted();
        ++m_nLayers;
        m_Before.Print(layer);
        bool const bPicture = !m_Options.svg.empty();
        CLayer before;
        if (bPicture) before = layer;
        CPoint2D pos(m_After.Pos());
        OrderPaths(layer, OrderingOf(m_Options), pos);
        m_After.Print(layer);
        if (bPicture) Draw(before, layer);
    }
    Travel const& Before() const { return m_Before.Way(); }
    Travel const& After() const { return m_After.Way(); }
    int Layers() const { return m_nLayers; }

private:
    void Draw(CLayer& before, CLayer& after) const {
        before.GetBoundBox();
        after.GetBoundBox();
        std::array<char, 32> name{};
        std::snprintf(name.data(), name.size(), "layer_%05d.svg", m_nLayers);
        std::vector<PicturePanel> const panels = {{"before", &before}, {"after", &after}};
        WriteBytes((fs::path(m_Options.svg) / name.data()).string(), LayerPicture(panels, BoxAround(panels)));
    }

    OrderOptions m_Options;
    Head m_Before;
    Head m_After;
    int m_nLayers = 0;
};

int CountLayers(std::string const& file) {
    SliceReader reader(file);
    for (CLayer layer; reader.Next(layer);) ThrowIfInterrupted();
    return reader.LayersRead();
}

}  // namespace

void RunOrder(OrderOptions const& options) {
    if (!options.svg.empty()) {
        std::error_code error;
        fs::create_directories(options.svg, error);
        if (error) throw Failure(options.svg, "cannot be made: " + error.message());
    }
    // The file is gone through again where its header announces another number of layers.
    int const nLayers = CountLayers(options.input);
    Ordering ordering(options);
    RewriteSlices(options.input, options.output, SliceReader(options.input).Mode(), [&](CLayer& layer) {
        if (ordering.Layers() == nLayers) ordering = Ordering(options);
        ordering.Order(layer);
    });
    Table table(options.input + " -> " + options.output);
    table.Add("layers", Count(nLayers));
    table.Add("travel with the material off, mm",
              Number(ordering.Before().dLength) + " -> " + Number(ordering.After().dLength));
    table.Add("starts and stops",
              Count(ordering.Before().nStarts) + " -> " + Count(ordering.After().nStarts));
    table.Print();
}
