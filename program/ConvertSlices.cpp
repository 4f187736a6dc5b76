// Writes a slice file in another mode, every layer of it, reads the result back, and says what it has cost.

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "Commands.h"
#include "Failure.h"
#include "Layers.h"
#include "Progress.h"
#include "SliceFile.h"
#include "Table.h"

namespace {

// The largest difference of a number of two layers that have the same paths.
class Difference {
public:
    void Compare(CLayer& a, CLayer& b) {
        Add(a.m_dZ, b.m_dZ);
        XR__POSITION* pa = a.m_LoopList.GetHeadPosition();
        XR__POSITION* pb = b.m_LoopList.GetHeadPosition();
        while (pa != nullptr && pb != nullptr) {
            Compare(*static_cast<tagLoopTreeNode*>(a.m_LoopList.GetNext(pa)),
                    *static_cast<tagLoopTreeNode*>(b.m_LoopList.GetNext(pb)));
        }
        pa = a.m_HatchList.GetHeadPosition();
        pb = b.m_HatchList.GetHeadPosition();
        while (pa != nullptr && pb != nullptr) {
            Compare(*static_cast<CHatch*>(a.m_HatchList.GetNext(pa)),
                    *static_cast<CHatch*>(b.m_HatchList.GetNext(pb)));
        }
    }
    double Largest() const { return m_dLargest; }

private:
    void Add(double a, double b) { m_dLargest = std::max(m_dLargest, std::fabs(a - b)); }
    void Add(CPoint2D const& a, CPoint2D const& b) {
        Add(a.x, b.x);
        Add(a.y, b.y);
    }
    void Compare(tagLoopTreeNode const& a, tagLoopTreeNode const& b) {
        XR__POSITION* pa = a.m_pPointList->GetHeadPosition();
        XR__POSITION* pb = b.m_pPointList->GetHeadPosition();
        while (pa != nullptr && pb != nullptr) Add(a.m_pPointList->GetNext(pa), b.m_pPointList->GetNext(pb));
    }
    void Compare(CHatch const& a, CHatch const& b) {
        XR__POSITION* pa = a.m_EdgeList.GetHeadPosition();
        XR__POSITION* pb = b.m_EdgeList.GetHeadPosition();
        while (pa != nullptr && pb != nullptr) {
            CEdge2D const ea = a.m_EdgeList.GetNext(pa);
            CEdge2D const eb = b.m_EdgeList.GetNext(pb);
            Add(ea.m_ptStart, eb.m_ptStart);
            Add(ea.m_ptEnd, eb.m_ptEnd);
        }
    }
    double m_dLargest = 0.0;
};

bool SamePaths(LayerFacts const& a, LayerFacts const& b) {
    return a.nLoops == b.nLoops && a.nOpenPaths == b.nOpenPaths && a.nHatches == b.nHatches &&
           a.nPoints == b.nPoints && a.nEdges == b.nEdges;
}

}  // namespace

void RunConvertSlices(ConvertOptions const& options) {
    SliceMode const inputMode = SliceReader(options.input).Mode();
    SliceMode const outputMode = SliceModeOf(options.mode).value_or(inputMode);
    int const nLayers = RewriteSlices(options.input, options.output, outputMode, [](CLayer&) {});

    SliceReader input(options.input);
    SliceReader output(options.output);
    LayerFacts before;
    LayerFacts after;
    Difference difference;
    CLayer a;
    CLayer b;
    while (input.Next(a) && output.Next(b)) {
        ThrowIfInterrupted();
        LayerFacts const factsA = FactsOf(a);
        LayerFacts const factsB = FactsOf(b);
        before += factsA;
        after += factsB;
        if (SamePaths(factsA, factsB)) difference.Compare(a, b);
    }
    Table table(options.input + " -> " + options.output);
    auto const add = [&table](char const* pLabel, long long nBefore, long long nAfter) {
        table.Add(pLabel, Count(nBefore) + ", read back " + Count(nAfter));
    };
    table.Add("formats", std::string(NameOf(inputMode)) + " -> " + NameOf(outputMode));
    table.Add("bytes", Count(static_cast<long long>(std::filesystem::file_size(options.input))) + " -> " +
                           Count(static_cast<long long>(std::filesystem::file_size(options.output))));
    add("layers", nLayers, output.LayersRead());
    add("loops and paths", before.nLoops + before.nOpenPaths, after.nLoops + after.nOpenPaths);
    add("points", before.nPoints, after.nPoints);
    add("hatch edges", before.nEdges, after.nEdges);
    table.Add("largest difference, mm", Number(difference.Largest()));
    table.Print();
}
