// Orders the paths of a slice file, layer by layer, and says how much shorter the head's travel has become.

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "Commands.h"
#include "Failure.h"
#include "LayerPicture.h"
#include "ModelFile.h"
#include "Progress.h"
#include "SliceFile.h"
#include "Table.h"

namespace {

namespace fs = std::filesystem;

template <class T, class Visit>
void ForEach(XR_CList<void*, void*> const& list, Visit visit) {
    for (XR__POSITION* at = list.GetHeadPosition(); at != nullptr;) visit(*static_cast<T*>(list.GetNext(at)));
}

bool HasPoints(tagLoopTreeNode const& loop) {
    return loop.m_pPointList != nullptr && loop.m_pPointList->IsEmpty() == 0;
}

// The head's way with the material off, in millimetres, and how often the material is switched on.
struct Travel {
    double dLength = 0.0;
    long long nStarts = 0;
};

class Head {
public:
    explicit Head(CPoint2D const& start) : m_Pos(start) {}

    // Loops and paths first, then hatches, as they stand in a file.
    void Print(CLayer& layer) {
        layer.BuildLoopList();
        ForEach<tagLoopTreeNode>(layer.m_LoopList, [this](tagLoopTreeNode& loop) {
            if (!HasPoints(loop)) return;
            MoveTo(loop.m_pPointList->GetHead());
            m_Pos = loop.m_pPointList->GetTail();
        });
        ForEach<CHatch>(layer.m_HatchList, [this](CHatch& hatch) {
            bool bFirst = true;
            for (XR__POSITION* at = hatch.m_EdgeList.GetHeadPosition(); at != nullptr; bFirst = false) {
                CEdge2D const edge = hatch.m_EdgeList.GetNext(at);
                if (bFirst || !(edge.m_ptStart == m_Pos)) MoveTo(edge.m_ptStart);
                m_Pos = edge.m_ptEnd;
            }
        });
    }
    CPoint2D const& Pos() const { return m_Pos; }
    Travel const& Way() const { return m_Way; }

private:
    void MoveTo(CPoint2D const& point) {
        m_Way.dLength += std::hypot(point.x - m_Pos.x, point.y - m_Pos.y);
        ++m_Way.nStarts;
    }

    CPoint2D m_Pos;
    Travel m_Way;
};

int ModeOf(std::string const& word) { return word == "near" ? 0 : word == "far" ? 1 : 2; }

// Loops that the pass does not reach come last, as they were.
void OrderLoops(CLayer& layer, CPoint2D& pos, int nMode) {
    layer.BuildLoopList();
    std::vector<tagLoopTreeNode*> all;
    ForEach<tagLoopTreeNode>(layer.m_LoopList, [&all](tagLoopTreeNode& loop) { all.push_back(&loop); });
    layer.OptimizeLoops(pos, nMode);
    std::set<tagLoopTreeNode*> ordered;
    ForEach<tagLoopTreeNode>(layer.m_RawLoopList, [&](tagLoopTreeNode& loop) { ordered.insert(&loop); });
    for (tagLoopTreeNode* const pLoop : all) {
        if (ordered.count(pLoop) != 0) continue;
        pLoop->m_ChildList.RemoveAll();
        layer.AddRawLoop(pLoop);
    }
}

// One outer loop after the other, with its holes and hatches. Hatches that are in no loop, or take no part,
// stay hatches, and are ordered by themselves.
void SpliceLayer(CLayer& layer, CPoint2D& pos, OrderOptions const& options) {
    CLayer out;
    layer.MakeTopology(1);
    while (tagLoopTreeNode* const pLoop = layer.FindNearUnusedOutLoop(pos)) {
        layer.OptimizeLoopAndChildLoopHatch(pLoop, &pos, &out, options.dWidth, options.dCut);
        pLoop->m_nFlag |= LOOP_USED_FLAG;
    }
    ForEach<CHatch>(layer.m_HatchList, [&out](CHatch& hatch) {
        if ((hatch.m_nFlag & HATCH_USED_FLAG) != 0) {
            delete &hatch;
        } else {
            out.m_HatchList.AddTail(&hatch);
        }
    });
    layer.m_HatchList.RemoveAll();
    layer.ReleaseAll();
    ForEach<tagLoopTreeNode>(out.m_RawLoopList, [&layer](tagLoopTreeNode& path) { layer.AddRawLoop(&path); });
    ForEach<CHatch>(out.m_HatchList, [&layer](CHatch& hatch) { layer.m_HatchList.AddTail(&hatch); });
    out.m_RawLoopList.RemoveAll();
    out.m_HatchList.RemoveAll();
    layer.OptimizeHatchs(pos, 0);
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
        if (m_Options.bSplice) {
            SpliceLayer(layer, pos, m_Options);
        } else {
            OrderLoops(layer, pos, ModeOf(m_Options.loops));
            layer.OptimizeHatchs(pos, ModeOf(m_Options.hatches));
        }
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
