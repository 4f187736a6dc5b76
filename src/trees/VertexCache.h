#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "foundation/Prefetch.h"
#include "foundation/memory/LargePages.h"
#include "trees/CoordinateHash.h"
#include "trees/DrawnCorners.h"
#include "trees/FirstHeights.h"
#include "trees/HeightSet.h"
#include "trees/NearRows.h"
#include "trees/VertexTree.h"
#include "trees/WaysAhead.h"

namespace varnet {

/// Answers, while a file is read into an empty tree, most corners by a look into a hash table instead of a
/// descent of the tree. The result is the same as that of CVertexTree::AddNode, node for node.
///
/// Why that is exact. Write a ~ b for two numbers that differ by no more than the tolerance, as rounded
/// subtraction has it. Rounding is monotonic: where a < b < c and not a ~ b, then not a ~ c. The tree has
/// been filled by AddNode alone, with numbers, since it was empty.
///
/// 1. Different heights in the tree are never ~. A point takes the height of the first vertex on its way with
///    height ~ its own. While none has come, all comparisons agree with the order of heights, so the way
///    passes the neighbours of the point's place in that order; if any vertex's height is ~ the point's, one
///    of these neighbours' is, and is met. So, if just one height H of the tree is ~ the point's, the point
///    ends at H, whatever shape the tree has. If there are two, H is the height of the uppermost vertex of
///    the two heights, which stands above all others of them (see FirstHeights). More than two there are not:
///    they would be ~ each other.
/// 2. Rows, of one y at one height, hang together by nearness in clans (see NearRows). A point at H lies on
///    one side of every clan that has no row near its own. So by the same argument it meets a row that is
///    near its own, if there is one, or else NearRows knows that row's clan to have several rows: a row that
///    comes into the tree tells NearRows enough to know which clans are clean.
/// 3. Vertices of a clean clan have x that are not ~: each met its neighbours in the clan when it came.
/// 4. A point (x, y, z) that takes the height H, where a vertex (x, y, H) stands in a clean clan, meets no
///    vertex on its way that is within tolerance on all axes but that one, and all comparisons agree with the
///    order in which the tree holds its clans and the vertices of this clan: the descent ends at that vertex,
///    and z becomes H.
///
/// So what a corner comes to stays the same until a height comes that is ~ its own, or another of two heights
/// is met first, or its clan ceases to be clean; DrawnCorners remembers it that long.
///
/// With a tolerance of 0, ~ is equality: no heights and no rows are near, and all of it holds for every
/// vertex. Zeros of both signs are equal; a point takes the sign that the vertices of its height have.
///
/// All else goes down the tree. A coordinate that is not a number ends the cache's work.
class VertexCache {
public:
    /// For a tree that nothing but this cache adds to while the cache lives. On a tree that is not empty, the
    /// cache passes everything on to the tree.
    ///
    /// nExpected, the number of vertices that will come, is only a hint.
    explicit VertexCache(CVertexTree& tree, std::size_t nExpected = 0);

    /// As CVertexTree::AddNode.
    tagVertexNode* AddNode(CPoint3D& point) { return AddNode(point, HashOf(point)); }

    static std::size_t HashOf(CPoint3D const& point) {
        return coordinate_hash::Hash(point.x, point.y, point.z);
    }
    tagVertexNode* AddNode(CPoint3D& point, std::size_t nHash) {
        tagVertexNode* const pRecent = m_Recent[nHash % kRecent];
        if (pRecent == nullptr || pRecent->x != point.x || pRecent->y != point.y || pRecent->z != point.z) {
            return AddSeldom(point, nHash);
        }
        point.z = pRecent->z;
        return pRecent;
    }

    // For callers that know their points in advance: what AddNode will look at is brought into the
    // processor's cache. Nothing else changes. Each step needs the memory that the one before has asked for.

    /// The first place in the table.
    void PrefetchLine(std::size_t nHash) const {
        if (m_bOn) Prefetch(&LineOf(nHash));
    }
    /// All that a group of points needs: the table, the vertices found there, and the way down the tree of
    /// the points that are not there. Returns how many vertices were found; they stand at the start of found,
    /// which has room for as many as there are points.
    std::size_t PrefetchGroup(std::span<CPoint3D const* const> points, std::span<std::size_t const> hashes,
                              std::span<tagVertexNode const*> found);

    static constexpr std::size_t kLargestGroup = WaysAhead::kMost;

    /// Whether corners that took another height are remembered with their vertices for a while. That pays
    /// where they come again soon and have their places all over the tree; the answers are the same.
    void KeepDrawn(bool bKeep) {
        m_bKeepDrawn = bKeep && !m_bExact;
        if (m_bKeepDrawn) m_Drawn.Begin();
    }

    /// Whether hardly any corner comes again soon. Then none is looked for among the recent ones, which lie
    /// far apart in memory.
    void SetStrewn(bool bStrewn) {
        if (bStrewn && !m_bStrewn) m_Recent.fill(nullptr);
        m_bStrewn = bStrewn;
    }

    /// As those of WaysAhead.
    bool AreFarApart(std::span<CPoint3D const* const> points) const {
        return WaysAhead::AreFarApart(m_Tree, points);
    }
    bool AreFarFromRecent(std::span<CPoint3D const* const> points) const {
        return WaysAhead::AreFarFromRecent(m_Tree, points);
    }

    /// How many points have gone down the tree and found a vertex there.
    std::size_t NeedlessDescents() const { return m_nNeedless; }

private:
    // A cache line of vertices whose hashes lead to it. The tags, other bits of the hashes and never 0, keep
    // a search from looking at vertices that are not the one. A vertex that finds its line full is not
    // remembered.
    struct alignas(64) Line {
        static constexpr std::size_t kCapacity = 6;
        std::array<tagVertexNode*, kCapacity> vertices;
        std::array<std::uint16_t, 8> tags;  // two more than there are vertices: those stay 0
    };
    static_assert(sizeof(Line) == 64);

    static std::uint16_t TagOf(std::size_t nHash) { return static_cast<std::uint16_t>(nHash >> 48 | 1); }
    static bool IsFull(Line const& line) { return line.tags[Line::kCapacity - 1] != 0; }
    Line& LineOf(std::size_t nHash) { return m_Lines[nHash & (m_Lines.size() - 1)]; }
    Line const& LineOf(std::size_t nHash) const { return m_Lines[nHash & (m_Lines.size() - 1)]; }
    static std::size_t Beside(std::size_t nHash) { return nHash ^ 1; }
    template <class Visit>
    static void VisitTagged(Line const& line, std::uint16_t nTag, Visit const& visit);

    // As AddNode, for a point that was not asked for lately.
    tagVertexNode* AddSeldom(CPoint3D& point, std::size_t nHash);
    double GuessHeight(double z, HeightSet::Answer const& near) const;
    HeightSet::Answer NearHeights(double z, std::size_t nWay) const;
    tagVertexNode* FindTagged(std::size_t nHash) const;
    tagVertexNode* FindInCleanRow(double x, double y, double z, std::size_t nHash) const;
    HeightSet::Answer FindHeight(double z, HeightSet::Answer const& near);
    tagVertexNode* FindDrawnOrInsert(CPoint3D& point, std::size_t nHash, std::size_t nWay);
    tagVertexNode* InsertDrawn(CPoint3D& point, std::size_t nHash, std::size_t nWay);
    tagVertexNode* Insert(CPoint3D& point, HeightSet::Near nearHeights, std::size_t nWay);
    tagVertexNode* InsertExactly(CPoint3D& point, std::size_t nWay);
    void NoteNewHeight(double z);
    void Remember(tagVertexNode* pNode);
    void Grow();
    void SwitchOff();

    // Vertices of clean clans that were asked for lately, by their hash. Empty whenever a clan ceases to be
    // clean.
    static constexpr std::size_t kRecent = 1024;

    CVertexTree& m_Tree;
    bool m_bOn;
    std::array<tagVertexNode*, kRecent> m_Recent{};
    bool m_bExact;  // the tolerance is 0
    bool m_bKeepDrawn = false;
    bool m_bStrewn = false;
    ZeroedTable<Line> m_Lines;  // a power of two
    std::size_t m_nUsed = 0;
    HeightSet m_Heights;
    NearRows m_Rows;
    FirstHeights m_FirstHeights;
    DrawnCorners m_Drawn;

    // Of the new points of the last group: their ways, the heights near theirs, and what has been added to
    // the heights since.
    WaysAhead m_Ways;
    std::array<HeightSet::Answer, kLargestGroup> m_NearHeights;
    std::vector<double> m_NewHeights;

    std::size_t m_nNeedless = 0;
};

}  // namespace varnet
