#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "contours/LoopWalk.h"

namespace varnet {

/// The edges of a loop by height, for testing many points against one loop: a point meets only the edges that
/// reach its slab. The answers are those of CrossingParity, to the bit, since every edge counts by itself.
///
/// Most points meet no edge at all: in each slab of a closed loop, the answer is the same all over the widest
/// gap between its edges. Every edge there stands on one side of the gap as a whole, together with the edges
/// it shares its ends with, so that a vertex which a point passes on its way up turns the crossings of two
/// edges on the same side.
class alignas(64) LoopSlabs {
public:
    /// The loop has points, and may not change afterwards.
    explicit LoopSlabs(tagLoopTreeNode const& loop);

    /// CrossingParity of the loop and the point.
    int Parity(double x, double y) const;

private:
    struct Edge {
        double dFromX;
        double dFromY;
        double dToX;
        double dToY;
    };

    /// Where the answer is 1, from its left end to its right; where it is 0, the other way round. Crossings
    /// are rounded by less than the distance of the ends from the edges.
    struct Gap {
        double dFrom = 0.0;
        double dTo = 0.0;
    };

    std::int32_t SlabAt(double y) const;
    int ParityOfEdges(std::size_t nSlab, double x, double y) const;
    Gap WidestGap(std::size_t nSlab) const;
    template <class Visit>
    void ForEachSlabOf(Visit visit) const;
    double MeasureHeight();
    bool CountEdges();
    void FillSlabs();
    void FindGaps();

    // The first cache line is all that most points need, beside their gap.
    double m_dLowest = 0.0;
    double m_dSlabsPerHeight = 0.0;
    std::int32_t m_nSlabs = 0;  // 0 where the loop is walked after all
    std::vector<Gap> m_Gaps;    // by slab
    PointNode const* m_pHead;
    std::vector<std::int32_t> m_nFirst;  // by slab, and one more: where its edges begin
    std::vector<Edge> m_Edges;
};

/// CrossingParity of a loop with points and one of many points that are held against it: the loop is walked
/// for the first few, which nTests counts, and gets slabs then. The loop may not change meanwhile.
int ParityAmongMany(tagLoopTreeNode const& loop, double x, double y, std::unique_ptr<LoopSlabs>& pSlabs,
                    std::int32_t& nTests);

}  // namespace varnet
