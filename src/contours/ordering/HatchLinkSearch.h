#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "contours/HatchLink.h"
#include "contours/ordering/ContourReach.h"
#include "contours/ordering/PointSearch.h"

namespace varnet {

/// A way to link a contour with a hatch, in the order of EvaluateHatchLink's argument.
struct LinkCandidate {
    CPoint2D const& entry;
    CPoint2D const& point;
    CPoint2D const& back;
    CPoint2D const& front;
};

/// EvaluateHatchLink with a contour's reach that serves many candidates: HatchLink.cpp.
double EvaluateLink(LinkCandidate const& candidate, CPoint2D const& pos, double dWidth, tagLoopTreeNode& loop,
                    ContourReach& reach, tagHatchLink& link);

/// The hatches that contours are linked with, one contour after the other.
///
/// A search looks at all hatches in order. From the third search on, the vertices of all hatches are in a
/// tree, and only those hatches are looked at, in the same order, that have a vertex in the box beyond which
/// no link point finds a segment of the contour; of rings only the vertices there. Between searches, hatches
/// may be flagged Used and lose edges.
class LinkableHatchs {
public:
    explicit LinkableHatchs(XR_CList<void*, void*> const& hatchs);

    /// The best link of the contour; without a hatch where there is none. The contour may not change
    /// meanwhile. Link points of chains are within three edges of an end, and further along the chain from it
    /// than dCut and a millimetre.
    tagHatchLink Find(tagLoopTreeNode& contour, CPoint2D const& pos, double dWidth, double dCut);

private:
    using EdgeNode = XR_CList<CEdge2D, CEdge2D&>::XR_CNode;

    /// A vertex in the tree: of which hatch, by its number; and for rings the edge that ends there.
    struct Vertex {
        std::int32_t nHatch;
        EdgeNode const* pEdge;
    };

    void BuildTree();
    std::vector<std::int32_t> VerticesIn(PlanBox const& box) const;

    std::vector<CHatch*> m_Hatchs;
    int m_nSearches = 0;
    std::vector<Vertex> m_Vertices;  // in the order of the walk
    std::unique_ptr<PointSearch> m_pTree;
};

/// LinkLoopWithHatchs with hatches that serve many contours: ContourSplice.cpp.
void LinkContour(tagLoopTreeNode& contour, LinkableHatchs& hatchs, CPoint2D& pos, CLayer& out, double dWidth,
                 double dCut);

}  // namespace varnet
