#include "trees/VertexCopier.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "foundation/Prefetch.h"
#include "trees/Avl.h"
#include "trees/VertexInsertion.h"

using vertex_insertion::CompareAxis;

namespace {

bool IsBeyond(double d, double dBefore, double dTolerance) {
    return CompareAxis(d, dBefore, dTolerance) == COMPARE_GREATER;
}

bool HasSameBits(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

bool IsFinite(CPoint3D const& point) {
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

// Goes through vertices in the order of a tree and groups the rows at a height that lie within the tolerance
// of each other, one to the next. A vertex lies on one side of every group but its own.
class RowGroups {
public:
    explicit RowGroups(double dTolerance) : m_dTolerance(dTolerance) {}

    enum class Place { kSameGroup, kNextGroup, kOutOfOrder };
    Place Add(CPoint3D const& point) {
        Place const place = PlaceOf(point);
        if (place == Place::kNextGroup) {
            m_dBelow = point.z == m_dHeight ? m_dHighest : -std::numeric_limits<double>::infinity();
            m_dHeight = point.z;
            m_dHighest = point.y;
            m_bMistakable = false;
        } else {
            bool const bInRow = point.y == m_dHighest && IsBeyond(point.x, m_dLast, m_dTolerance);
            m_bMistakable = m_bMistakable || !bInRow;
            m_dHighest = std::max(m_dHighest, point.y);
        }
        m_dLast = point.x;
        return place;
    }

    /// Whether vertices of the group may be mistaken for each other: it has several rows, or vertices in one
    /// that are not apart.
    bool IsMistakable() const { return m_bMistakable; }

private:
    // The first point begins a group: it compares with nothing.
    Place PlaceOf(CPoint3D const& point) const {
        if (std::isnan(m_dHeight) || IsBeyond(point.z, m_dHeight, m_dTolerance)) return Place::kNextGroup;
        if (!HasSameBits(point.z, m_dHeight)) return Place::kOutOfOrder;
        if (IsBeyond(point.y, m_dHighest, m_dTolerance)) return Place::kNextGroup;
        return IsBeyond(point.y, m_dBelow, m_dTolerance) ? Place::kSameGroup : Place::kOutOfOrder;
    }

    double m_dTolerance;
    double m_dHeight = std::numeric_limits<double>::quiet_NaN();
    double m_dBelow = 0.0;    // the highest y of the group before, at this height
    double m_dHighest = 0.0;  // y of the group
    double m_dLast = 0.0;     // x of the last point
    bool m_bMistakable = false;
};

}  // namespace

VertexCopier::VertexCopier(CVertexTree& source) : m_Tree(0) {
    m_Sources.reserve(std::min<std::size_t>(source.m_nCount, ForeseenTree::kMostKeys));
    avl::WalkInOrder(source.m_pRoot, [this](tagVertexNode* pNode) {
        m_Sources.push_back({pNode, pNode->m_nID});
        pNode->m_nID = static_cast<std::uint32_t>(m_Sources.size() - 1);
    });
    m_bOrdered = m_Sources.size() <= ForeseenTree::kMostKeys;
    if (!m_bOrdered) return;
    m_Tree = ForeseenTree(m_Sources.size());
    m_Copies = ZeroedTable<tagVertexNode*>(m_Sources.size());
    FindMistakable();
}

void VertexCopier::FindMistakable() {
    RowGroups groups(CVertexTree().m_dTolerance);
    std::uint32_t nFirst = 0;  // of the group
    auto const endGroup = [this, &nFirst](std::uint32_t nEnd, bool bMistakable) {
        for (; nFirst < nEnd; ++nFirst) {
            if (bMistakable) m_Tree.SetUnplaced(nFirst);
        }
    };
    auto const nEnd = static_cast<std::uint32_t>(m_Sources.size());
    for (std::uint32_t n = 0; n < nEnd && m_bOrdered; ++n) {
        CPoint3D const& point = *m_Sources[n].pVertex;
        bool const bMistakable = groups.IsMistakable();
        RowGroups::Place const place = groups.Add(point);
        m_bOrdered = IsFinite(point) && place != RowGroups::Place::kOutOfOrder;
        if (place == RowGroups::Place::kNextGroup) endGroup(n, bMistakable);
    }
    endGroup(nEnd, groups.IsMistakable());
}

void VertexCopier::EndNumbers() {
    if (!m_bNumbered) return;
    for (Source const& source : m_Sources) source.pVertex->m_nID = source.nID;
    m_bNumbered = false;
}

void VertexCopier::CopyTo(CVertexTree& target) {
    m_Tree.Link();
    if (m_Copies.size() < m_Tree.NodeCount()) m_Copies = ZeroedTable<tagVertexNode*>(m_Tree.NodeCount());
    CPoint3D point;
    vertex_insertion::NoWatch watch;
    auto const compare = [this, &point, &watch, &target](std::uint32_t nKey) {
        return vertex_insertion::CompareAndSnap(*m_Copies[nKey], point.x, point.y, point.z, target.m_dTolerance, watch);
    };
    auto const& comings = m_Tree.Comings();
    for (std::size_t i = 0; i < comings.size(); ++i) {
        PrefetchComing(i);
        point = *m_Sources[comings[i]].pVertex;
        tagVertexNode*& pCopy = m_Copies[m_Tree.Come(comings[i], compare)];
        if (pCopy == nullptr) pCopy = vertex_insertion::MakeVertex(target, point);
        if (m_Tree.IsUnplaced(comings[i])) m_Mistakable.push_back(pCopy);
    }
    SetLinks(target);
}

void VertexCopier::PrefetchComing(std::size_t i) const {
    constexpr std::size_t kFar = 24;
    constexpr std::size_t kNear = 12;
    auto const& comings = m_Tree.Comings();
    if (i + kFar < comings.size()) {
        m_Tree.PrefetchNode(comings[i + kFar]);
        Prefetch(&m_Sources[comings[i + kFar]]);
    }
    if (i + kNear < comings.size()) {
        m_Tree.PrefetchNeighbors(comings[i + kNear]);
        Prefetch(&m_Sources[comings[i + kNear]].pVertex->x);
        Prefetch(&m_Sources[comings[i + kNear]].pVertex->z);
    }
}

// Gives the copies the places that they have in the tree.
void VertexCopier::SetLinks(CVertexTree& target) const {
    auto const copyOf = [this](std::uint32_t n) { return n == kNone ? nullptr : m_Copies[n]; };
    m_Tree.ForEachNode([this, &copyOf](std::uint32_t nKey) {
        tagVertexNode& copy = *m_Copies[nKey];
        copy.m_pLeft = copyOf(m_Tree.Left(nKey));
        copy.m_pRight = copyOf(m_Tree.Right(nKey));
        copy.m_nBalance = m_Tree.Balance(nKey);
    });
    target.m_pRoot = copyOf(m_Tree.Root());
}

void VertexCopier::Clear() {
    m_Tree.ForEachNode([this](std::uint32_t nKey) { m_Copies[nKey] = nullptr; });
    m_Tree.Clear();
    m_Mistakable.clear();
    m_nMistakable = 0;
}
