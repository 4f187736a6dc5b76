#include "modelfiles/RingEncoder.h"

#include <algorithm>

#include "foundation/LookAhead.h"
#include "foundation/Prefetch.h"
#include "mesh/FacetCorners.h"

namespace varnet {

namespace {

// The longest run that a step can state, and the most edges beyond a run that are looked at.
constexpr int kLongestRun = 127;

// The corner of the facet that is neither a nor b, two of its corners.
tagVertexNode* OppositeCorner(CFacet const& facet, tagVertexNode const* a, tagVertexNode const* b) {
    if (facet.m_pVertex1 == a) return facet.m_pVertex2 == b ? facet.m_pVertex3 : facet.m_pVertex2;
    if (facet.m_pVertex1 == b) return facet.m_pVertex2 == a ? facet.m_pVertex3 : facet.m_pVertex2;
    return facet.m_pVertex1;
}

// The edge from a to b with the facet beyond it: of the marked facets in a's list that have b as a corner the
// last one. The winding is not looked at. Walked is rather the list of pNear, an end that is at hand.
tagCSMEdge FindRingEdgeFacet(tagVertexNode* a, tagVertexNode* b, tagVertexNode const* pNear) {
    auto const [pWalked, pWanted] = ChooseWalked(pNear, pNear == a ? b : a);
    for (int i = pWalked->m_nFacetNum; i > 0; --i) {
        CFacet* const pFacet = pWalked->m_ppFacet[i - 1];
        if (pFacet->m_nRegion != 0 && HasCorner(*pFacet, pWanted)) {
            tagVertexNode* const pOpposite = OppositeCorner(*pFacet, a, b);
            Prefetch(pOpposite);
            return {a, b, pOpposite, pFacet};
        }
    }
    return {a, b, nullptr, nullptr};
}

// Has the first of the vertex's facets brought near: the next edges will be made from them.
void BringFacetsNear(tagVertexNode const& vertex) {
    int const nFacets = std::min(vertex.m_nFacetNum, look_ahead::kMostRingFacets);
    for (int i = 0; i < nFacets; ++i) Prefetch(vertex.m_ppFacet[i]);
}

}  // namespace

// ---- the ring

void EdgeRing::AddHead(tagCSMEdge const& edge) {
    if (m_nSize == m_Slots.size()) Grow();
    m_nHead = (m_nHead - 1) & Mask();
    m_Slots[m_nHead] = edge;
    ++m_nSize;
}

void EdgeRing::AddTail(tagCSMEdge const& edge) {
    if (m_nSize == m_Slots.size()) Grow();
    m_Slots[(m_nHead + m_nSize) & Mask()] = edge;
    ++m_nSize;
}

void EdgeRing::RemoveHead(std::size_t nEdges) {
    VARNET_REQUIRE(nEdges <= m_nSize);
    m_nHead = (m_nHead + nEdges) & Mask();
    m_nSize -= nEdges;
}

void EdgeRing::RotateForward(std::size_t nTimes) {
    for (; nTimes > 0; --nTimes) {
        m_Slots[(m_nHead + m_nSize) & Mask()] = m_Slots[m_nHead];
        m_nHead = (m_nHead + 1) & Mask();
    }
}

void EdgeRing::RotateBackward(std::size_t nTimes) {
    for (; nTimes > 0; --nTimes) {
        m_nHead = (m_nHead - 1) & Mask();
        m_Slots[m_nHead] = m_Slots[(m_nHead + m_nSize) & Mask()];
    }
}

void EdgeRing::Grow() {
    std::rotate(m_Slots.begin(), m_Slots.begin() + static_cast<std::ptrdiff_t>(m_nHead), m_Slots.end());
    m_nHead = 0;
    m_Slots.resize(2 * m_Slots.size());
}

// ---- the encoder

void RingEncoder::Encode(CFacet& seed) {
    VARNET_REQUIRE(seed.m_nRegion != 0);
    Start(seed);
    while (!m_Ring.IsEmpty()) {
        Choice const choice = ChooseStep();
        AddStep(choice);
        if (choice.nPosition == 0) {
            m_Ring.RemoveHead(static_cast<std::size_t>(choice.nRun));
            continue;
        }
        Rotate(choice.nPosition);
        if (choice.nRun == 0) {
            m_Ring.RemoveHead(1);
        } else {
            CloseRun(choice.nRun);
        }
    }
}

void RingEncoder::Start(CFacet& seed) {
    m_Steps.clear();
    m_Points.assign({seed.m_pVertex1, seed.m_pVertex2, seed.m_pVertex3});
    seed.m_nRegion = 0;
    for (DirectedEdge const& edge : DirectedEdges(seed)) {
        m_Ring.AddTail(FindRingEdgeFacet(edge.pStart, edge.pEnd, edge.pStart));
    }
}

// A run is closed only on a vertex that is not touched again further along the ring: that would split the
// ring in two, which the stream cannot state.
RingEncoder::Choice RingEncoder::ChooseStep() const {
    std::size_t const nSize = m_Ring.Size();
    tagCSMEdge const& head = m_Ring.Head();
    if (head.m_pFacet == nullptr) return {0, CountOpenEdges()};
    if (nSize == 1) return {1, 1};

    Prefetch(head.m_pOpposite->m_ppFacet);

    // The edges at the tail that belong to the head's run, across the seam of the ring.
    int nTail = 0;
    std::size_t nEnd = nSize;
    while (nEnd > 0 && nTail < kLongestRun && m_Ring.At(nEnd - 1).m_pOpposite == head.m_pOpposite) {
        ++nTail;
        --nEnd;
    }
    if (nEnd == 0) return {1, static_cast<int>(nSize)};

    BringFacetsNear(*head.m_pOpposite);
    Choice choice = FindInnerRun(nEnd);
    if (choice.nPosition == 1 && nTail != 0) {
        choice.nPosition = -nTail;
        choice.nRun += nTail;
    }
    choice.nRun = std::min(choice.nRun, kLongestRun);
    return choice;
}

// The edges without a facet at the head, as many as one step can state.
int RingEncoder::CountOpenEdges() const {
    int nOpen = 1;
    while (nOpen < kLongestRun && static_cast<std::size_t>(nOpen) < m_Ring.Size() &&
           m_Ring.At(static_cast<std::size_t>(nOpen)).m_pFacet == nullptr) {
        ++nOpen;
    }
    return nOpen;
}

// Looks from the head for a run whose vertex is not touched again among the edges ahead of nEnd. Where the
// vertex of a run is touched again, the run behind it is tried, and only the edges up to there count: what is
// behind lies on the other side. At most so many edges beyond the runs are looked at; ending right where the
// next run would be tried leaves a run of no edges, though the edge there may have a facet.
RingEncoder::Choice RingEncoder::FindInnerRun(std::size_t nEnd) const {
    int nBeyond = 0;
    std::size_t nStart = 0;
    std::size_t nRun = 0;
    bool bInRun = true;
    for (std::size_t i = 0; i < nEnd;) {
        bool const bSameVertex = m_Ring.At(i).m_pOpposite == m_Ring.At(nStart).m_pOpposite;
        if (bSameVertex && bInRun) {
            ++nRun;
            ++i;
            continue;
        }
        if (bSameVertex) {
            nEnd = i;
            nStart += nRun;
            nRun = 0;
            bInRun = true;
            i = nStart;
        } else {
            bInRun = false;
            ++i;
        }
        if (++nBeyond == kLongestRun) break;
    }
    if (m_Ring.At(nStart).m_pFacet == nullptr) nRun = 0;
    return {static_cast<int>(nStart) + 1, static_cast<int>(nRun)};
}

void RingEncoder::Rotate(int nPosition) {
    if (nPosition > 0) {
        m_Ring.RotateForward(static_cast<std::size_t>(nPosition - 1));
    } else {
        m_Ring.RotateBackward(static_cast<std::size_t>(-nPosition));
    }
}

// Codes the facets beyond the first nRun edges, which have one opposite vertex, and puts the two edges to
// that vertex in their place.
void RingEncoder::CloseRun(int nRun) {
    auto const nEdges = static_cast<std::size_t>(nRun);
    tagVertexNode* const a = m_Ring.Head().m_pStart;
    tagVertexNode* const pTop = m_Ring.Head().m_pOpposite;
    tagVertexNode* const b = m_Ring.At(nEdges - 1).m_pEnd;
    for (std::size_t i = 0; i < nEdges; ++i) m_Ring.At(i).m_pFacet->m_nRegion = 0;
    m_Ring.RemoveHead(nEdges);
    m_Points.push_back(pTop);
    m_Ring.AddHead(FindRingEdgeFacet(pTop, b, pTop));
    m_Ring.AddHead(FindRingEdgeFacet(a, pTop, pTop));
}

void RingEncoder::AddStep(Choice const& choice) {
    m_Steps.push_back(
        {static_cast<std::uint8_t>(choice.nPosition & 0xFF), static_cast<std::uint8_t>(choice.nRun & 0xFF)});
}

}  // namespace varnet
