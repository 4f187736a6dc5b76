#include "trees/NearRows.h"

#include <bit>
#include <cmath>
#include <utility>

#include "foundation/Prefetch.h"
#include "trees/CoordinateHash.h"
#include "trees/VertexTree.h"

namespace varnet {

namespace {

// In tolerances. A row joins an anchor, or lies apart from it, and no row comes between. When a clan is
// founded, the row of another clan that is looked at may lie behind its anchor.
constexpr double kJoin = 0.49;
constexpr double kApart = 2.0;
constexpr double kAlone = 2.5;

// How far marks reach, and how far anchors are looked for.
constexpr double kReach = 2.5;

// The height of a band of y, in tolerances.
constexpr double kTolerancesPerBand = 64.0;

constexpr std::size_t kMarkBits = std::size_t{1} << 20;
constexpr std::size_t kFirstClans = 64;

bool SetBit(std::uint64_t* pBits, std::size_t n) {
    std::uint64_t const nBit = std::uint64_t{1} << (n % 64);
    bool const bNew = (pBits[n / 64] & nBit) == 0;
    pBits[n / 64] |= nBit;
    return bNew;
}

}  // namespace

bool IsAlone(CVertexTree const& tree, double y, double dHeight, double dDistance) {
    for (bool const bAbove : {true, false}) {
        tagVertexNode const* pNext = nullptr;
        for (tagVertexNode const* p = tree.m_pRoot; p != nullptr;) {
            double const d = p->z != dHeight ? p->z - dHeight : p->y - y;
            bool const bBeyond = bAbove ? d > 0.0 : d < 0.0;
            if (bBeyond) pNext = p;
            p = bBeyond == bAbove ? p->m_pRight : p->m_pLeft;
        }
        if (pNext != nullptr && pNext->z == dHeight && std::fabs(pNext->y - y) <= dDistance) return false;
    }
    return true;
}

NearRows::NearRows(double dTolerance)
    : m_dJoin(kJoin * dTolerance),
      m_dApart(kApart * dTolerance),
      m_dAlone(kAlone * dTolerance),
      m_dReach(kReach * dTolerance),
      m_dBandsPerUnit(1.0 / (kTolerancesPerBand * dTolerance)) {}

NearRows::Entry NearRows::TryEnter(double y, double dHeight, RowsMet const& met) {
    auto const marked = [this, y, dHeight] {
        return MarkAround(y, dHeight) ? Entry::kMarked : Entry::kUnmarked;
    };
    if (IsMarked(y - m_dReach, dHeight) || IsMarked(y + m_dReach, dHeight)) return marked();
    double dAnchor = 0.0;
    if (FindClan(y, dHeight, dAnchor)) return std::fabs(y - dAnchor) > m_dJoin ? marked() : Entry::kUnmarked;
    if (!met.bNear) return Entry::kUnmarked;
    return met.bSeveral || std::fabs(y - met.y) > m_dJoin ? marked() : Entry::kMayFound;
}

bool NearRows::FoundClan(double y, double dHeight, double dMet, bool bAlone) {
    if (!bAlone) return MarkAround(y, dHeight);
    AddClan({dHeight, dMet});
    return false;
}

std::uint64_t NearRows::HashOf(double y, double dHeight) const {
    // Two bands about 0 count as one, since the conversion truncates.
    auto const nBand = static_cast<std::uint64_t>(static_cast<std::int64_t>(y * m_dBandsPerUnit));
    return coordinate_hash::Spread(nBand * coordinate_hash::kFactorY ^
                                   coordinate_hash::Bits(dHeight) * coordinate_hash::kFactorZ) >>
           24;
}

std::size_t NearRows::FilteredHeightOf(double dHeight) {
    constexpr int kDropped = 64 - std::bit_width(kFilterBits - 1);
    return static_cast<std::size_t>(coordinate_hash::Bits(dHeight) * coordinate_hash::kFactorZ >> kDropped);
}

bool NearRows::HasMark(double y, double dHeight) const {
    std::size_t const nMark = static_cast<std::size_t>(HashOf(y, dHeight)) & (kMarkBits - 1);
    return (m_Marks[nMark / 64] >> (nMark % 64) & 1) != 0;
}

// A band is wider than the reach to both sides, so that the ends lie in all the bands there are.
bool NearRows::MarkAround(double y, double dHeight) {
    if (m_Marks.empty()) m_Marks.resize(kMarkBits / 64);
    bool bNew = SetBit(m_MarkedHeights.data(), FilteredHeightOf(dHeight));
    for (double const dEnd : {y - m_dReach, y + m_dReach}) {
        bNew |= SetBit(m_Marks.data(), static_cast<std::size_t>(HashOf(dEnd, dHeight)) & (kMarkBits - 1));
    }
    return bNew;
}

bool NearRows::MayHaveClan(double dHeight) const {
    std::size_t const nHeight = FilteredHeightOf(dHeight);
    return (m_ClanHeights[nHeight / 64] >> (nHeight % 64) & 1) != 0;
}

// The nearest anchor that a row at y is not apart from.
bool NearRows::FindClan(double y, double dHeight, double& dAnchor) const {
    if (!MayHaveClan(dHeight)) return false;
    std::uint64_t const nLow = HashOf(y - m_dReach, dHeight);
    std::uint64_t const nHigh = HashOf(y + m_dReach, dHeight);
    double dNearest = std::numeric_limits<double>::infinity();
    auto const look = [&](std::uint64_t nHash) {
        for (std::size_t i = nHash & (m_Clans.size() - 1); !std::isnan(m_Clans[i].dHeight);
             i = (i + 1) & (m_Clans.size() - 1)) {
            double const dDistance = std::fabs(m_Clans[i].dAnchor - y);
            if (m_Clans[i].dHeight != dHeight || dDistance > m_dApart || dDistance >= dNearest) continue;
            dNearest = dDistance;
            dAnchor = m_Clans[i].dAnchor;
        }
    };
    look(nLow);
    if (nHigh != nLow) look(nHigh);
    return dNearest <= m_dApart;
}

void NearRows::Prefetch(double y, double dHeight) const {
    if (!MayHaveClan(dHeight)) return;
    varnet::Prefetch(&m_Clans[HashOf(y - m_dReach, dHeight) & (m_Clans.size() - 1)]);
    varnet::Prefetch(&m_Clans[HashOf(y + m_dReach, dHeight) & (m_Clans.size() - 1)]);
}

void NearRows::AddClan(Clan const& clan) {
    if (2 * ++m_nClans > m_Clans.size()) {
        std::vector<Clan> const old =
            std::exchange(m_Clans, std::vector<Clan>(m_Clans.empty() ? kFirstClans : 2 * m_Clans.size()));
        for (Clan const& known : old) {
            if (!std::isnan(known.dHeight)) Insert(known);
        }
    }
    Insert(clan);
    SetBit(m_ClanHeights.data(), FilteredHeightOf(clan.dHeight));
}

void NearRows::Insert(Clan const& clan) {
    std::size_t i = HashOf(clan.dAnchor, clan.dHeight) & (m_Clans.size() - 1);
    while (!std::isnan(m_Clans[i].dHeight)) i = (i + 1) & (m_Clans.size() - 1);
    m_Clans[i] = clan;
}

}  // namespace varnet
