// Making the winding of a mesh consistent, and turning it.

#include <array>
#include <vector>

#include "mesh/FacetCorners.h"
#include "mesh/FacetWalk.h"
#include "mesh/STLModel.h"
#include "mesh/WindingParity.h"

using namespace varnet;

namespace {

// Marks of the walk in m_nRegion.
constexpr std::int32_t kNotVisited = 1;
constexpr std::int32_t kVisited = 0;

// At most so many facets across an edge are looked at.
constexpr int kMostNeighbors = 10;

// Spreads the winding of a facet over its shell: depth first, edge by edge, each neighbour to its end before
// the next. The stack is on the heap, since its depth can reach the number of facets in the shell.
class WindingWalk {
public:
    void SpreadFrom(CFacet& start) {
        Enter(start);
        while (!m_Frames.empty()) Step();
    }

private:
    // A facet under way. Its neighbours across the present edge stand in m_Neighbors from nFirst to the end.
    struct Frame {
        CFacet* pFacet;
        std::array<tagVertexNode*, 3> corners;  // as they stood on entry
        std::size_t nFirst;
        std::size_t nNext;
        std::size_t nEdge;  // the edge to take next
        bool bMayFlip;      // false once a neighbour across the present edge has agreed
    };

    void Enter(CFacet& facet) {
        m_Frames.push_back({&facet, Corners(facet), m_Neighbors.size(), m_Neighbors.size(), 0, true});
    }

    void Step() {
        Frame& frame = m_Frames.back();
        if (frame.nNext < m_Neighbors.size()) {
            VisitNextNeighbor(frame);
            return;
        }
        LeaveEdge(frame);
        if (frame.nEdge < frame.corners.size()) {
            TakeNextEdge(frame);
        } else {
            m_Frames.pop_back();
        }
    }

    void LeaveEdge(Frame& frame) {
        m_Neighbors.resize(frame.nFirst);
        frame.nNext = frame.nFirst;
    }

    void TakeNextEdge(Frame& frame) {
        std::size_t const k = frame.nEdge++;
        std::array<CFacet*, kMostNeighbors> found;
        int const nFound = frame.pFacet->FindNeighborFacets(frame.corners[k], frame.corners[(k + 1) % 3],
                                                            found.data(), kMostNeighbors);
        m_Neighbors.insert(m_Neighbors.end(), found.begin(), found.begin() + nFound);
        frame.bMayFlip = true;
    }

    // A neighbour that was visited before ends the edge, with all neighbours behind it.
    void VisitNextNeighbor(Frame& frame) {
        CFacet& neighbor = *m_Neighbors[frame.nNext++];
        if (neighbor.m_nRegion == kVisited) {
            LeaveEdge(frame);
            return;
        }
        std::size_t const k = frame.nEdge - 1;
        bool const bAgrees = HasDirectedEdge(neighbor, frame.corners[(k + 1) % 3], frame.corners[k]);
        if (bAgrees) frame.bMayFlip = false;
        neighbor.m_nRegion = kVisited;
        if (!bAgrees && frame.bMayFlip) neighbor.Reverse();
        Enter(neighbor);
    }

    std::vector<Frame> m_Frames;
    std::vector<CFacet*> m_Neighbors;
};

}  // namespace

void CSTLModel::FixNormal() {
    WindingParity parity(*this);
    if (parity.IsUnique()) {
        std::size_t nFacet = 0;
        ForEachFacet(m_SurfaceArray, [&parity, &nFacet](CFacet& facet) {
            if (parity.IsTurned(nFacet++)) facet.Reverse();
            facet.CalculateNormalAndResetFlag();
        });
        return;
    }
    ForEachFacet(m_SurfaceArray, [](CFacet& facet) { facet.m_nRegion = kNotVisited; });
    WindingWalk walk;
    ForEachFacet(m_SurfaceArray, [&walk](CFacet& facet) {
        if (facet.m_nRegion == kNotVisited) walk.SpreadFrom(facet);
        facet.CalculateNormalAndResetFlag();
    });
}

void CSTLModel::CalculateNormal() {
    ForEachFacet(m_SurfaceArray, [](CFacet& facet) { facet.CalculateNormalAndResetFlag(); });
}

void CSTLModel::ReverseFacet() {
    ForEachFacet(m_SurfaceArray, [](CFacet& facet) { facet.Reverse(); });
}
