#pragma once

#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "trees/VertexTree.h"

namespace varnet {

/// Of two heights of a vertex tree that are near one and the same height, which of them a descent meets
/// first.
///
/// The vertices of one height stand together in the tree's order, and there is none between those of two
/// heights that are both near a third. So the uppermost vertex of the two heights together stands above all
/// others of them, and every descent for the third height meets it before any of these. It stays the
/// uppermost one until a rotation puts a vertex of the other height on top of it.
class FirstHeights {
public:
    /// What a descent for a point of height z meets first, of the two heights that are near z: as it was last
    /// found out, or from the tree. Where another pair is forgotten for it, forgotten(its lower height) is
    /// called.
    template <class Forgotten>
    double Find(CVertexTree const& tree, double z, double dLower, Forgotten const& forgotten) {
        if (m_Known.empty()) m_Known.resize(kPairs);
        Pair& pair = m_Known[PlaceOf(dLower)];
        if (pair.dLower != dLower) {
            if (!std::isnan(pair.dLower)) forgotten(pair.dLower);
            pair = {dLower, LookUp(tree, z)};
        }
        return pair.dFirst;
    }

    /// As Find, of what has been found out: the lower one where nothing has.
    double Guess(double dLower) const {
        if (m_Known.empty()) return dLower;
        Pair const& pair = m_Known[PlaceOf(dLower)];
        return pair.dLower == dLower ? pair.dFirst : dLower;
    }

    /// A rotation is about to begin whose uppermost vertex is this: forgets what it may change, and calls
    /// forgotten(lower height) of each.
    template <class Forgotten>
    void ForgetRotated(tagVertexNode const& top, Forgotten const& forgotten) {
        if (m_Known.empty()) return;
        tagVertexNode const* const pChild = top.m_nBalance > 0 ? top.m_pLeft : top.m_pRight;
        bool const bOuter = top.m_nBalance == pChild->m_nBalance;
        tagVertexNode const* const pInner = top.m_nBalance > 0 ? pChild->m_pRight : pChild->m_pLeft;
        double const dThird = bOuter ? pChild->z : pInner->z;
        if (top.z == pChild->z && top.z == dThird) return;
        for (double const dHeight : {top.z, pChild->z, dThird}) {
            Pair& pair = m_Known[PlaceOf(dHeight)];
            if (pair.dLower != dHeight) continue;
            forgotten(dHeight);
            pair = {};
        }
    }

private:
    struct Pair {
        double dLower = std::numeric_limits<double>::quiet_NaN();  // the upper one follows from it
        double dFirst = 0.0;
    };

    static constexpr std::size_t kPairs = std::size_t{1} << 15;

    static std::size_t PlaceOf(double dLower);
    static double LookUp(CVertexTree const& tree, double z);

    std::vector<Pair> m_Known;  // by the hash of the lower height; empty until one is asked for
};

}  // namespace varnet
