#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "trees/Avl.h"
#include "trees/VertexTree.h"

namespace varnet {

/// The ways that a group of points will go down a vertex tree, found all at once: a level at a time, so that
/// the memory of many levels is under way together, and without branches where no turn can be foreseen. That
/// brings what the points will look at into the processor's cache, and spares them to compare themselves with
/// the same vertices again.
///
/// A way holds as far as the tree has not changed: up to the first link that leads to another vertex. The
/// comparisons with the vertices before it are those that were made. It ends early at a vertex in a row that
/// is near the point's own, and at the one where the point belongs: there the descent looks for itself.
class WaysAhead {
public:
    static constexpr std::size_t kMost = 96;

    /// Forgets all ways and all points.
    void Begin() {
        m_Numbers.fill(0);
        m_nWays = 0;
    }

    /// The way of this point, whose coordinates are finite and have this hash, will be found: it gets the
    /// number that is returned, counting from 0. kMost points at most.
    std::size_t Want(CPoint3D const& point, std::size_t nHash);

    /// Finds the ways of all points that are wanted. The tree's vertices must stay as long as ways are asked
    /// for.
    void Find(CVertexTree const& tree);

    static constexpr std::size_t kNone = kMost;

    /// The number of the point's way, or kNone. It is given once.
    std::size_t Take(CPoint3D const& point, std::size_t nHash) {
        std::uint8_t& nNumber = m_Numbers[nHash % m_Numbers.size()];
        if (nNumber == 0) return kNone;
        CPoint3D const& known = m_Ways[nNumber - 1u].point;
        if (known.x != point.x || known.y != point.y || known.z != point.z) return kNone;
        return std::exchange(nNumber, std::uint8_t{0}) - 1u;
    }

    /// Passes, on a way that begins at the tree's root, what is known of a way and still as it was. The
    /// point's z becomes that of the vertices within the tolerance that were passed, as in a descent.
    void Follow(std::size_t nNumber, avl::Way<tagVertexNode>& way, CPoint3D& point) const {
        Known const& known = m_Ways[nNumber];
        std::size_t const nPassed =
            way.PassSame(std::span(known.vertices).first(known.nLevels), known.nLefts);
        if (nPassed > known.nDrawn) point.z = known.vertices[known.nDrawn]->z;
    }

    /// Whether the ways of the points, kMost at most, lead to all parts of the tree.
    static bool AreFarApart(CVertexTree const& tree, std::span<CPoint3D const* const> points);
    /// Whether most of the points that are new have their places among vertices that have been in the tree
    /// for long, so that what is there has to be brought near.
    static bool AreFarFromRecent(CVertexTree const& tree, std::span<CPoint3D const* const> points);

private:
    // A tree of 2^27 vertices is not deeper. Ways are not followed deeper.
    static constexpr std::uint32_t kDeepest = 40;

    struct Known {
        CPoint3D point;
        std::uint64_t nLefts;   // a bit a level: whether the way turns left
        std::uint32_t nLevels;  // that are known
        std::uint32_t nDrawn;   // the first level within the tolerance of the point's height, or nLevels
        std::array<tagVertexNode const*, kDeepest> vertices;
    };

    // A way that is being looked for.
    struct Open {
        double z;
        tagVertexNode const* pVertex;  // the next one
        std::uint64_t nLefts;
        std::uint32_t nWay;
        std::uint32_t nLevel;
    };
    using Opens = std::array<Open, kMost>;

    std::size_t FindHeights(Opens& opens, std::size_t nOpen, double dTolerance);
    void FindEnds(Opens& opens, std::size_t nOpen, double dTolerance);
    void End(Open const& open);

    std::vector<Known> m_Ways;  // with room for all, once one was wanted
    std::size_t m_nWays = 0;
    std::array<std::uint8_t, 256> m_Numbers{};  // of ways, from 1 on, by hash
};

}  // namespace varnet
