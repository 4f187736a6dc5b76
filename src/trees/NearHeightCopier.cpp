#include "trees/NearHeightCopier.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "foundation/LookAhead.h"
#include "foundation/Require.h"
#include "foundation/memory/SlotPool.h"
#include "trees/VertexInsertion.h"

namespace varnet {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

}  // namespace

using parent_avl::kLeft;
using parent_avl::kRight;
using parent_avl::kTop;
using parent_avl::Link;
using vertex_insertion::CompareAxis;

NearHeightCopier::NearHeightCopier(std::span<tagVertexNode* const> sources)
    : m_dTolerance(CVertexTree().m_dTolerance),
      m_nSources(sources.size()),
      m_Records(sources.size() + 1),
      m_nRecords(sources.size() + 1),
      m_Heights(1),
      m_Taken(0),
      m_Rows(m_dTolerance) {
    VARNET_REQUIRE(sources.size() <= kMostVertices);
    for (std::size_t i = 0; i < sources.size(); ++i) {
        if (i + look_ahead::kRankedVertex < sources.size())
            Prefetch(&sources[i + look_ahead::kRankedVertex]->x);
        CPoint3D const& point = *sources[i];
        if (i == 0 || point.z != m_Heights.back().z)
            m_Heights.push_back({point.z, -kInfinity, kInfinity, kNone, false, false});
        Record& record = m_Records[i + 1];
        record.x = point.x;
        record.y = point.y;
        record.nOwnHeight = static_cast<std::uint32_t>(m_Heights.size() - 1);
    }
    m_Taken = RankSet(m_Heights.size());
}

NearHeightCopier::Target::Target(NearHeightCopier& copier, CVertexTree& tree) : m_Copier(copier) {
    VARNET_REQUIRE(tree.m_pRoot == nullptr && tree.m_dTolerance == copier.m_dTolerance);
    VARNET_REQUIRE(copier.m_pTarget == nullptr);
    copier.m_pTarget = &tree;
}

void NearHeightCopier::PrefetchRecords(std::span<std::uint32_t const> ranks) const {
    for (std::uint32_t const nRank : ranks) Prefetch(&m_Records[nRank + 1]);
}

// The ways go down a level at a time, so that the memory of many is under way at once, and without branches,
// since no turn can be foreseen. A point that has come to its vertex goes on.
void NearHeightCopier::PrefetchWays(std::span<std::uint32_t const> ranks) const {
    struct Way {
        std::uint32_t nRecord;
        std::uint32_t nHeight;
        std::uint32_t nNode;
    };
    VARNET_REQUIRE(ranks.size() <= kLargestGroup);
    std::array<Way, kLargestGroup> ways;
    std::size_t nWays = 0;
    // A new vertex comes several times before it is there.
    std::array<std::uint32_t, 256> asked{};
    for (std::uint32_t const nRank : ranks) {
        Record const& record = m_Records[nRank + 1];
        if (record.nLast != kNone) {
            Record const& last = m_Records[record.nLast];
            Prefetch(&m_Heights[last.nHeight]);
            Prefetch(&last.pVertex->x);
            Prefetch(&last.pVertex->m_ppFacet);
            Prefetch(AnnexOf(last.pVertex));
            continue;
        }
        if (std::exchange(asked[nRank % asked.size()], nRank + 1) == nRank + 1) continue;
        NextHeights const next = FindNext(record.nOwnHeight);
        std::uint32_t const nHeight = FindNear(record.nOwnHeight, next);
        ways[nWays++] = {nRank + 1, nHeight != kNone ? nHeight : record.nOwnHeight, TopFor(nHeight, next)};
        Prefetch(&m_Records[ways[nWays - 1].nNode]);
    }
    while (nWays > 0) {
        std::size_t nStill = 0;
        for (std::size_t i = 0; i < nWays; ++i) {
            auto const [nRecord, nHeight, nAt] = ways[i];
            Record const& record = m_Records[nRecord];
            Record const& node = m_Records[nAt];
            double const dRow = node.y - record.y;
            double const dInRow = std::fabs(dRow) > m_dTolerance ? dRow : node.x - record.x;
            double const dHeight = static_cast<double>(node.nHeight) - static_cast<double>(nHeight);
            double const d = node.nHeight != nHeight ? dHeight : dInRow;
            std::uint32_t const nNext = node.nChildren[d < 0.0 ? kLeft : kRight];
            Prefetch(&m_Records[nNext]);
            ways[nStill] = {nRecord, nHeight, nNext};
            nStill += nNext != kNone ? 1 : 0;
        }
        nWays = nStill;
    }
}

tagVertexNode* NearHeightCopier::AddNode(std::uint32_t nRank) {
    Record const& record = m_Records[nRank + 1];
    if (record.nLast != kNone) {
        Record const& last = m_Records[record.nLast];
        if (IsStillTaken(last.nHeight, record.nOwnHeight)) return AddAgain(nRank + 1);
    }
    NextHeights const next = FindNext(record.nOwnHeight);
    std::uint32_t const nHeight = FindNear(record.nOwnHeight, next);
    return nHeight != kNone ? AddAtHeight(nRank + 1, nHeight) : AddHeight(nRank + 1, next);
}

// Whether a height that a vertex has taken is the one that it would take again.
bool NearHeightCopier::IsStillTaken(std::uint32_t nHeight, std::uint32_t nOwnHeight) const {
    if (nHeight == nOwnHeight) return true;
    Height const& height = m_Heights[nHeight];
    double const z = m_Heights[nOwnHeight].z;
    return nHeight < nOwnHeight ? !height.bAboveFirst || !IsNear(height.dAbove, z)
                                : !height.bBelowFirst || !IsNear(height.dBelow, z);
}

// At the height where the vertex came to a node of its x and y.
tagVertexNode* NearHeightCopier::AddAgain(std::uint32_t nRecord) {
    Record const& record = m_Records[nRecord];
    Record const& last = m_Records[record.nLast];
    if (!m_Rows.IsMarked(record.y, m_Heights[last.nHeight].z)) return last.pVertex;
    return AddAtHeight(nRecord, last.nHeight);
}

NearHeightCopier::NextHeights NearHeightCopier::FindNext(std::uint32_t nOwnHeight) const {
    if (m_Taken.Has(nOwnHeight)) return {nOwnHeight, nOwnHeight};
    return {RecordOf(m_Taken.Below(nOwnHeight)), RecordOf(m_Taken.Above(nOwnHeight))};
}

bool NearHeightCopier::IsNear(double dHeight, double z) const {
    return CompareAxis(dHeight, z, m_dTolerance) == COMPARE_EQUAL;
}

std::uint32_t NearHeightCopier::FindNear(std::uint32_t nOwnHeight, NextHeights const& next) const {
    double const z = m_Heights[nOwnHeight].z;
    bool const bLower = next.nLower != kNone && IsNear(m_Heights[next.nLower].z, z);
    bool const bUpper = next.nUpper != kNone && IsNear(m_Heights[next.nUpper].z, z);
    if (bLower && bUpper) return m_Heights[next.nLower].bAboveFirst ? next.nUpper : next.nLower;
    return bLower ? next.nLower : bUpper ? next.nUpper : kNone;
}

tagVertexNode* NearHeightCopier::AddAtHeight(std::uint32_t nRecord, std::uint32_t nHeight) {
    RowsMet met;
    End end = FindEnd(m_Records[nRecord], nHeight, met);
    if (end.nNode == kNone) {
        end.nNode = Make(nRecord, nHeight, met);
        PutIn(end.nNode, end.link);
    }
    Remember(nRecord, end.nNode);
    return m_Records[end.nNode].pVertex;
}

tagVertexNode* NearHeightCopier::AddHeight(std::uint32_t nRecord, NextHeights const& next) {
    std::uint32_t const nHeight = m_Records[nRecord].nOwnHeight;
    Link link = {kTop, kLeft};
    for (std::uint32_t n = TopFor(kNone, next); n != kNone; n = parent_avl::At(m_Records, link))
        link = {n, m_Records[n].nHeight < nHeight ? kLeft : kRight};
    std::uint32_t const nNode = Make(nRecord, nHeight, {});
    m_Taken.Add(nHeight);
    Height& height = m_Heights[nHeight];
    height = {height.z, -kInfinity, kInfinity, nNode, false, false};
    if (next.nLower != kNone) SetNext(next.nLower, nHeight, false);
    if (next.nUpper != kNone) SetNext(nHeight, next.nUpper, true);
    PutIn(nNode, link);
    Remember(nRecord, nNode);
    return m_Records[nNode].pVertex;
}

// The heights are next to each other now.
void NearHeightCopier::SetNext(std::uint32_t nLower, std::uint32_t nUpper, bool bUpperFirst) {
    m_Heights[nLower].dAbove = m_Heights[nUpper].z;
    m_Heights[nUpper].dBelow = m_Heights[nLower].z;
    SetFirst(nLower, nUpper, bUpperFirst);
}

// Which of two heights next to each other has the uppermost node.
void NearHeightCopier::SetFirst(std::uint32_t nLower, std::uint32_t nUpper, bool bUpper) {
    m_Heights[nLower].bAboveFirst = bUpper;
    m_Heights[nUpper].bBelowFirst = !bUpper;
}

// Where the way down begins for a point that takes the height, or none.
std::uint32_t NearHeightCopier::TopFor(std::uint32_t nHeight, NextHeights const& next) const {
    if (nHeight != kNone) return m_Heights[nHeight].nTop;
    bool const bBelowUpper =
        next.nUpper != kNone && (next.nLower == kNone || m_Heights[next.nUpper].bBelowFirst);
    return m_Heights[bBelowUpper ? next.nUpper : next.nLower].nTop;
}

// As the way of a descent from the uppermost node of the height on.
NearHeightCopier::End NearHeightCopier::FindEnd(Record const& record, std::uint32_t nHeight,
                                                RowsMet& met) const {
    Link link = {kTop, kLeft};
    for (std::uint32_t n = m_Heights[nHeight].nTop; n != kNone;) {
        Record const& node = m_Records[n];
        bool bGreater = node.nHeight > nHeight;
        if (node.nHeight == nHeight) {
            COMPARE order = CompareAxis(node.y, record.y, m_dTolerance);
            if (order == COMPARE_EQUAL) {
                if (node.y != record.y) met.Meet(node.y);
                order = CompareAxis(node.x, record.x, m_dTolerance);
                if (order == COMPARE_EQUAL) return {n, link};
            }
            bGreater = order == COMPARE_GREATER;
        }
        link = {n, bGreater ? kRight : kLeft};
        n = node.nChildren[link.nSide];
    }
    return {kNone, link};
}

// The vertices at the height next to a clean row that is alone in its clan lie farther from it than so much.
bool NearHeightCopier::IsAlone(std::uint32_t nHeight, double y, double dDistance) const {
    for (bool const bAbove : {true, false}) {
        std::uint32_t nNext = kNone;
        for (std::uint32_t n = m_Heights[nHeight].nTop; n != kNone;) {
            Record const& node = m_Records[n];
            double const dLevel = node.nHeight > nHeight ? 1.0 : -1.0;
            double const d = node.nHeight != nHeight ? dLevel : node.y - y;
            bool const bBeyond = bAbove ? d > 0.0 : d < 0.0;
            if (bBeyond && node.nHeight == nHeight) nNext = n;
            n = node.nChildren[bBeyond == bAbove ? kRight : kLeft];
        }
        if (nNext != kNone && std::fabs(m_Records[nNext].y - y) <= dDistance) return false;
    }
    return true;
}

void NearHeightCopier::Grow() {
    if (m_nRecords > 2 * kMostVertices) throw std::bad_alloc();
    ZeroedTable<Record> records(m_nRecords + std::min(m_nRecords, kMostVertices) / 2 + 1);
    std::copy(m_Records.begin(), m_Records.end(), records.begin());
    m_Records = std::move(records);
}

// A node that stands nowhere yet. Nothing is changed where memory has run out, but rows may have got marks,
// which do no harm.
std::uint32_t NearHeightCopier::Make(std::uint32_t nRecord, std::uint32_t nHeight, RowsMet const& met) {
    std::uint32_t nNode = nRecord;
    if (m_Records[nRecord].pVertex != nullptr) {
        if (m_nRecords == m_Records.size()) Grow();
        nNode = static_cast<std::uint32_t>(m_nRecords);
    }
    if (m_Touched.capacity() - m_Touched.size() < 2) m_Touched.reserve(2 * m_Touched.size() + 64);
    Record const& record = m_Records[nRecord];
    auto vertex = std::make_unique<tagVertexNode>(CPoint3D(record.x, record.y, m_Heights[nHeight].z));
    m_Rows.Enter(record.y, vertex->z, met, [this, nHeight](double y, double, double dDistance) {
        return IsAlone(nHeight, y, dDistance);
    });
    vertex_insertion::CountVertex(*m_pTarget, *vertex);
    Record& node = m_Records[nNode];
    if (nNode != nRecord) {
        ++m_nRecords;
        node = Record{};
        node.x = record.x;
        node.y = record.y;
    }
    node.pVertex = vertex.release();
    node.nHeight = nHeight;
    m_Touched.push_back(nNode);
    return nNode;
}

void NearHeightCopier::PutIn(std::uint32_t nNode, Link const& link) {
    parent_avl::PutIn(m_Records, nNode, link, [this](std::uint32_t nRotated, std::uint32_t nChild) {
        BeforeRotation(nRotated, nChild);
    });
}

void NearHeightCopier::BeforeRotation(std::uint32_t nNode, std::uint32_t nChild) {
    std::uint32_t const nHeight = m_Records[nNode].nHeight;
    std::uint32_t const nOther = m_Records[nChild].nHeight;
    if (m_Heights[nHeight].nTop != nNode) return;
    if (nOther == nHeight) {
        m_Heights[nHeight].nTop = nChild;
    } else if (m_Heights[nHeight].dAbove == m_Heights[nOther].z) {
        SetFirst(nHeight, nOther, true);
    } else if (m_Heights[nHeight].dBelow == m_Heights[nOther].z) {
        SetFirst(nOther, nHeight, false);
    }
}

// Where x or y differ, the same may not come true again.
void NearHeightCopier::Remember(std::uint32_t nRecord, std::uint32_t nNode) {
    Record& record = m_Records[nRecord];
    if (m_Records[nNode].x != record.x || m_Records[nNode].y != record.y) return;
    if (record.nLast == kNone && record.pVertex == nullptr) m_Touched.push_back(nRecord);
    record.nLast = nNode;
}

void NearHeightCopier::Finish() noexcept {
    SetLinks();
    Clear();
    m_pTarget = nullptr;
}

// In the order of the records, where children are mostly at hand. A few of many are sorted.
void NearHeightCopier::SetLinks() {
    constexpr std::size_t kFew = 8;
    auto const vertexOf = [this](std::uint32_t n) { return m_Records[n].pVertex; };
    auto const link = [this, &vertexOf](std::uint32_t n) {
        Record const& node = m_Records[n];
        if (node.pVertex == nullptr) return;
        node.pVertex->m_pLeft = vertexOf(node.nChildren[kLeft]);
        node.pVertex->m_pRight = vertexOf(node.nChildren[kRight]);
        node.pVertex->m_nBalance = BalanceAt(n);
    };
    if (m_Touched.size() < m_nSources / kFew) {
        std::sort(m_Touched.begin(), m_Touched.end());
        std::for_each(m_Touched.begin(), m_Touched.end(), link);
    } else {
        constexpr std::size_t kAhead = look_ahead::kLinkedVertex;
        for (std::size_t n = 1; n < m_nRecords; ++n) {
            if (tagVertexNode const* const p =
                    n + kAhead < m_nRecords ? m_Records[n + kAhead].pVertex : nullptr) {
                Prefetch(&p->m_pLeft);
                Prefetch(&p->m_nBalance);
            }
            link(static_cast<std::uint32_t>(n));
        }
    }
    m_pTarget->m_pRoot = vertexOf(m_Records[kTop].nChildren[kLeft]);
}

void NearHeightCopier::Clear() {
    auto const clear = [](Record& record) {
        record.pVertex = nullptr;
        record.nLast = kNone;
        record.nChildren[kLeft] = kNone;
        record.nChildren[kRight] = kNone;
        record.nHeight = kNone;
        record.nBalance = 0;
    };
    for (std::uint32_t const n : m_Touched) {
        if (m_Records[n].nHeight != kNone) m_Taken.Forget(m_Records[n].nHeight);
    }
    for (std::uint32_t const n : m_Touched) clear(m_Records[n]);
    clear(m_Records[kTop]);
    m_nRecords = m_nSources + 1;
    m_Rows = NearRows(m_dTolerance);
    m_Touched.clear();
}

}  // namespace varnet
