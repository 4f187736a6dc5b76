#include "support/EdgeChains.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <vector>

#include "foundation/memory/AddNew.h"

namespace varnet {

namespace {

constexpr std::size_t kNoEdge = static_cast<std::size_t>(-1);

// The edges that are left, by their vertices. Edges are only ever taken away, so that the search for the
// first one at a vertex goes on where the last one ended.
class OpenEdges {
public:
    explicit OpenEdges(std::span<MeshEdge const> edges) : m_Open(edges.size(), true), m_Places(edges.size()) {
        std::vector<End> ends;
        ends.reserve(2 * edges.size());
        for (std::size_t i = 0; i < edges.size(); ++i) {
            ends.push_back({edges[i].pHead, 2 * i});
            ends.push_back({edges[i].pTail, 2 * i + 1});
        }
        std::sort(ends.begin(), ends.end(), [](End const& a, End const& b) {
            return a.pVertex != b.pVertex ? std::less<>()(a.pVertex, b.pVertex) : a.nEnd < b.nEnd;
        });
        GroupByVertex(ends);
    }

    bool IsOpen(std::size_t nEdge) const { return m_Open[nEdge]; }
    void Take(std::size_t nEdge) { m_Open[nEdge] = false; }

    // Numbers that stand for the two vertices of an edge.
    std::size_t HeadOf(std::size_t nEdge) const { return m_Places[nEdge][0]; }
    std::size_t TailOf(std::size_t nEdge) const { return m_Places[nEdge][1]; }

    // The first edge that is left at a vertex.
    std::size_t FirstAt(std::size_t nVertex) {
        Range& range = m_Ranges[nVertex];
        while (range.nNext < range.nEnd && !m_Open[m_Edges[range.nNext]]) ++range.nNext;
        return range.nNext < range.nEnd ? m_Edges[range.nNext] : kNoEdge;
    }

private:
    struct End {
        tagVertexNode const* pVertex;
        std::size_t nEnd;  // the edge's number times two, plus one for its tail
    };

    // Where the edges of a vertex stand in m_Edges.
    struct Range {
        std::size_t nNext;
        std::size_t nEnd;
    };

    void GroupByVertex(std::vector<End> const& ends) {
        m_Edges.reserve(ends.size());
        for (std::size_t i = 0; i < ends.size(); ++i) {
            if (i == 0 || ends[i].pVertex != ends[i - 1].pVertex) m_Ranges.push_back({i, i});
            m_Ranges.back().nEnd = i + 1;
            m_Edges.push_back(ends[i].nEnd / 2);
            m_Places[ends[i].nEnd / 2][ends[i].nEnd % 2] = m_Ranges.size() - 1;
        }
    }

    std::vector<bool> m_Open;
    std::vector<std::array<std::size_t, 2>> m_Places;
    std::vector<Range> m_Ranges;
    std::vector<std::size_t> m_Edges;
};

}  // namespace

void ChainEdges(std::span<MeshEdge const> edges, XR_CArray<CFeatureEdge*, CFeatureEdge*>& chains) {
    OpenEdges open(edges);
    for (std::size_t nFirst = 0; nFirst < edges.size(); ++nFirst) {
        if (!open.IsOpen(nFirst)) continue;
        auto& vertices = AddNew(chains).m_VertexList;
        vertices.AddTail(edges[nFirst].pHead);
        vertices.AddTail(edges[nFirst].pTail);
        open.Take(nFirst);
        std::size_t nHead = open.HeadOf(nFirst);
        std::size_t nTail = open.TailOf(nFirst);
        for (;;) {
            std::size_t const nEdge = std::min(open.FirstAt(nHead), open.FirstAt(nTail));
            if (nEdge == kNoEdge) break;
            open.Take(nEdge);
            auto const& [pP, pQ] = edges[nEdge];
            std::size_t const nP = open.HeadOf(nEdge);
            std::size_t const nQ = open.TailOf(nEdge);
            std::size_t const nOldHead = nHead;
            std::size_t const nOldTail = nTail;
            if (nP == nOldHead) {
                vertices.AddHead(pQ);
                nHead = nQ;
            }
            if (nP == nOldTail) {
                vertices.AddTail(pQ);
                nTail = nQ;
            }
            if (nQ == nOldHead) {
                vertices.AddHead(pP);
                nHead = nP;
            }
            if (nQ == nOldTail) {
                vertices.AddTail(pP);
                nTail = nP;
            }
        }
    }
}

}  // namespace varnet
