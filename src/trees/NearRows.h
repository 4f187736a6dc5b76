#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

class CVertexTree;

namespace varnet {

/// What a descent for a point has met at the point's height: a row, that is vertices of one y, that is near
/// the point's row, but not the same.
struct RowsMet {
    bool bNear = false;
    bool bSeveral = false;  // different ones
    double y = 0.0;
    void Meet(double dRow) {
        bSeveral = bSeveral || (bNear && dRow != y);
        bNear = true;
        y = dRow;
    }
};

/// For NearRows::Enter: whether the vertices next to the row at its height lie farther from it in y than the
/// distance. The tree's order agrees with the comparison there: all clans do.
bool IsAlone(CVertexTree const& tree, double y, double dHeight, double dDistance);

/// Rows of a vertex tree that are near each other, which decide whether the tree's order can be relied on.
///
/// Rows at one height are near each other when their y differ by no more than the tolerance. Rows that hang
/// together so, directly or by others, are a clan; clans at a height stand in the order of their y, whole and
/// apart: a chain of near rows does not pass a row without one that is near it. Where all rows of a clan are
/// near each other, the tree holds the clan's vertices in the order of their x, as if it were one row: such a
/// clan is clean. Any other is entangled, and where a point ends in it depends on the shape of the tree.
///
/// Of a clean clan of several rows one is known, the anchor. Two things hold, in tolerances:
///
/// - The rows of the clan lie less than 1/2 from the anchor, and so are near each other.
/// - All other rows at the height lie more than 3/2 from the anchor. So none is near one of the clan.
///
/// A row that comes joins the nearest anchor if it lies less than 1/2 from it; any other one is more than 3/2
/// away then, since anchors lie more than 2 apart. A row that comes nearer than 2 without joining gets marks
/// as far as 5/2 around, in truth entangled or not, and so do all rows of a clan whose anchor is less than
/// 3/2 away: such rows are rare, and roundings lie nearer. Where a mark is found around a new row, all around
/// it is marked as well. So a clan without marks is clean.
class NearRows {
public:
    explicit NearRows(double dTolerance);

    /// Whether a clan that the row belongs to may be entangled.
    bool IsMarked(double y, double dHeight) const {
        std::size_t const nHeight = FilteredHeightOf(dHeight);
        if ((m_MarkedHeights[nHeight / 64] >> (nHeight % 64) & 1) == 0) return false;
        return HasMark(y, dHeight);
    }

    /// A vertex is about to enter the tree, at a height that the tree has or one far from all of them, after
    /// a descent that has met this. Returns true when a row has got a mark that had none.
    ///
    /// isAlone(y, height, distance) tells of a clean row that is alone in its clan whether all other vertices
    /// at its height lie farther from it in y than the distance.
    template <class IsAlone>
    bool Enter(double y, double dHeight, RowsMet const& met, IsAlone const& isAlone) {
        Entry const entry = TryEnter(y, dHeight, met);
        if (entry != Entry::kMayFound) return entry == Entry::kMarked;
        return FoundClan(y, dHeight, met.y, isAlone(met.y, dHeight, m_dAlone));
    }

    /// Brings what Enter looks at into the processor's cache.
    void Prefetch(double y, double dHeight) const;

private:
    // A clean clan.
    struct Clan {
        double dHeight = std::numeric_limits<double>::quiet_NaN();  // of an empty place
        double dAnchor = 0.0;
    };

    // What comes of a row, or that it founds a clan if the row that it has met is alone.
    enum class Entry { kUnmarked, kMarked, kMayFound };
    Entry TryEnter(double y, double dHeight, RowsMet const& met);
    bool FoundClan(double y, double dHeight, double dMet, bool bAlone);

    // Marks stand for bands of y at a height, a bit each in a table of hashes: a mark too many costs a
    // descent. Clans are found by the bands of their anchors.
    std::uint64_t HashOf(double y, double dHeight) const;
    static std::size_t FilteredHeightOf(double dHeight);
    bool HasMark(double y, double dHeight) const;
    bool MarkAround(double y, double dHeight);
    bool MayHaveClan(double dHeight) const;
    bool FindClan(double y, double dHeight, double& dAnchor) const;
    void AddClan(Clan const& clan);
    void Insert(Clan const& clan);

    static constexpr std::size_t kFilterBits = 8192;
    using Filter = std::array<std::uint64_t, kFilterBits / 64>;  // a bit for heights

    double m_dJoin;
    double m_dApart;
    double m_dAlone;
    double m_dReach;
    double m_dBandsPerUnit;
    Filter m_MarkedHeights{};
    Filter m_ClanHeights{};
    std::vector<std::uint64_t> m_Marks;  // empty until there is one
    std::vector<Clan> m_Clans;           // a power of two, or empty
    std::size_t m_nClans = 0;
};

}  // namespace varnet
