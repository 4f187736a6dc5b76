#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "trees/CoordinateHash.h"
#include "trees/VertexTree.h"

namespace varnet {

/// Corners asked for lately whose vertices have another height than their own, with the vertices: for these,
/// the way over the height that a corner takes need not be gone again.
///
/// An answer holds as long as no height comes near the corner's, and as long as the descent meets the same
/// one first where there are two: both are told by Change. Each band of heights counts its changes, and what
/// was remembered under another count is forgotten.
class DrawnCorners {
public:
    /// For a tree with this tolerance, above 0.
    explicit DrawnCorners(double dTolerance);

    /// Takes the memory; until then nothing is known and no change counts.
    void Begin();

    /// The corner's vertex, or null when it is not known. The hash is any of the corner's coordinates.
    tagVertexNode* Find(CPoint3D const& corner, std::size_t nHash) const {
        tagVertexNode* const pNode = Guess(corner.z, nHash);
        return pNode != nullptr && pNode->x == corner.x && pNode->y == corner.y ? pNode : nullptr;
    }

    /// What Find will most likely give for a corner of this height and hash; looks at no vertex.
    tagVertexNode* Guess(double z, std::size_t nHash) const {
        if (m_Known.empty()) return nullptr;
        Known const& known = m_Known[nHash % kPlaces];
        return known.pNode != nullptr && known.z == z && known.nAge == m_nAge &&
                       known.nChanges == m_Changes[BandOf(z)]
                   ? known.pNode
                   : nullptr;
    }

    /// After Begin: a corner of height z has come to a vertex at its x and y, in a clan that is clean.
    void Remember(double z, std::size_t nHash, tagVertexNode* pNode);

    /// What corners within the tolerance of the height come to may be another vertex from now on.
    void Change(double dHeight);

    /// After Begin: how often Change has been told of a height near this one, or more often.
    std::uint32_t ChangesAt(double z) const { return m_Changes[BandOf(z)]; }

    /// The same of all corners.
    void ForgetAll() { ++m_nAge; }

private:
    struct Known {
        double z = 0.0;  // of the corner
        tagVertexNode* pNode = nullptr;
        std::uint32_t nChanges = 0;
        std::uint32_t nAge = 0;
    };

    static constexpr int kBandBits = 12;
    static constexpr std::size_t kPlaces = 8192;

    // Bands that share a number forget too much.
    std::size_t BandOf(double z) const {
        auto const nBand = static_cast<std::uint64_t>(static_cast<std::int64_t>(z * m_dBandsPerUnit));
        return static_cast<std::size_t>(nBand * coordinate_hash::kFactorZ >> (64 - kBandBits));
    }

    double m_dReach;
    double m_dBandsPerUnit;
    std::uint32_t m_nAge = 0;
    std::vector<std::uint32_t> m_Changes;  // by band; both are empty until Begin
    std::vector<Known> m_Known;            // by hash
};

}  // namespace varnet
