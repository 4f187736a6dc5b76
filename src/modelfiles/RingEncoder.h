#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "foundation/Require.h"
#include "mesh/Facet.h"

namespace varnet {

/// An edge of the ring: the boundary of what has been coded, in the direction that the coded side gives it.
/// The facet beyond it is looked up when the edge is made, and is not looked at again: by the time the edge's
/// turn comes, that facet may have been coded through another edge.
struct tagCSMEdge {
    tagVertexNode* m_pStart;
    tagVertexNode* m_pEnd;
    tagVertexNode* m_pOpposite;  ///< the third corner of the facet beyond; null where there is none
    CFacet* m_pFacet;            ///< the facet beyond; null where there is none
};

/// A closed row of edges with a head, in a circular buffer: the head can be taken off, edges put in front of
/// it, and the whole turned, each at the cost of the edges that move.
class EdgeRing {
public:
    std::size_t Size() const { return m_nSize; }
    bool IsEmpty() const { return m_nSize == 0; }
    /// The edge so many places behind the head.
    tagCSMEdge const& At(std::size_t i) const {
        VARNET_REQUIRE(i < m_nSize);
        return m_Slots[(m_nHead + i) & Mask()];
    }
    tagCSMEdge const& Head() const { return At(0); }

    void AddHead(tagCSMEdge const& edge);
    void AddTail(tagCSMEdge const& edge);
    void RemoveHead(std::size_t nEdges);
    /// Moves the head to the tail, so many times.
    void RotateForward(std::size_t nTimes);
    /// Moves the tail to the head, so many times.
    void RotateBackward(std::size_t nTimes);

private:
    std::size_t Mask() const { return m_Slots.size() - 1; }
    void Grow();

    std::vector<tagCSMEdge> m_Slots = std::vector<tagCSMEdge>(1024);  // a power of two
    std::size_t m_nHead = 0;
    std::size_t m_nSize = 0;
};

/// Turns a region of a mesh, all that can be reached across edges from a seed facet, into the steps of the
/// ring stream.
///
/// A ring of edges, at first those of the seed, grows over the region. Each step either drops edges with
/// nothing beyond, or closes a run of edges on one vertex: their facets are coded, and two edges to that
/// vertex take the place of the run. Marks tell which facets are not coded yet: m_nRegion is 1 on those, and
/// 0 on all others. What a region leaves out stays marked, for a later seed.
class RingEncoder {
public:
    /// The two bytes of a step. A position in the ring that no byte holds has lost its upper bits.
    struct Step {
        std::uint8_t nPosition;
        std::uint8_t nRun;
    };

    /// Codes the region of the marked facet. Steps and points are those of this region until the next call.
    void Encode(CFacet& seed);

    std::vector<Step> const& Steps() const { return m_Steps; }
    /// The corners of the seed, then the vertex of each step that closes on one.
    std::vector<tagVertexNode const*> const& Points() const { return m_Points; }

private:
    // A step as it is chosen: where the run starts, 1 the head, negative for so many edges ahead of the head,
    // 0 for open edges at the head; and how many edges it has, 0 for one open edge.
    struct Choice {
        int nPosition;
        int nRun;
    };

    void Start(CFacet& seed);
    Choice ChooseStep() const;
    int CountOpenEdges() const;
    Choice FindInnerRun(std::size_t nEnd) const;
    void Rotate(int nPosition);
    void CloseRun(int nRun);
    void AddStep(Choice const& choice);

    EdgeRing m_Ring;
    std::vector<Step> m_Steps;
    std::vector<tagVertexNode const*> m_Points;
};

}  // namespace varnet
