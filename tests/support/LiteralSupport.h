#pragma once

#include <cmath>
#include <cstdint>
#include <deque>
#include <list>
#include <set>
#include <utility>
#include <vector>

#include "mesh/LiteralMesh.h"

// The searches of the support subsystem as their definitions are worded, for holding the real ones against.
// Facets are marked in sets of the twins' own.

namespace literal {

using Group = std::vector<CFacet*>;
using Marks = std::set<CFacet const*>;

inline CFacet* FirstNeighbor(CFacet const* f, tagVertexNode const* a, tagVertexNode const* b) {
    std::vector<CFacet*> const found = Neighbors(f, a, b);
    return found.empty() ? nullptr : found[0];
}

inline std::vector<CFacet*> ThreeNeighbors(CFacet const* f) {
    return {FirstNeighbor(f, f->m_pVertex1, f->m_pVertex2), FirstNeighbor(f, f->m_pVertex2, f->m_pVertex3),
            FirstNeighbor(f, f->m_pVertex3, f->m_pVertex1)};
}

/// Growth in waves from each facet that is marked, in order. joins(group, edge number, member, candidate).
template <class Begin, class Joins>
std::vector<Group> GrowInWaves(std::vector<CFacet*> const& facets, Marks marked, Begin const& begin,
                               Joins const& joins) {
    std::vector<Group> groups;
    for (CFacet* const f : facets) {
        if (marked.count(f) == 0) continue;
        groups.push_back({f});
        marked.erase(f);
        begin(f);
        std::list<CFacet*> current = {f};
        while (!current.empty()) {
            std::list<CFacet*> next;
            for (CFacet* const g : current) {
                std::vector<CFacet*> const around = ThreeNeighbors(g);
                for (int k = 0; k < 3; ++k) {
                    CFacet* const n = around[static_cast<std::size_t>(k)];
                    if (n == nullptr || marked.count(n) == 0) continue;
                    if (!joins(k + 1, g, n)) continue;
                    next.push_back(n);
                    marked.erase(n);
                }
            }
            for (CFacet* const n : next) groups.back().push_back(n);
            current = next;
        }
    }
    return groups;
}

inline Marks All(std::vector<CFacet*> const& facets) { return Marks(facets.begin(), facets.end()); }

using Judge = int (*)(int, CFacet*, CFacet*, double);

inline std::vector<Group> Classify(std::vector<CFacet*> const& facets, int nSurfaces, Judge pJudge,
                                   double d) {
    int nClass = nSurfaces;
    return GrowInWaves(
        facets, All(facets), [&](CFacet* f) { nClass = pJudge(nClass, f, nullptr, d); },
        [&](int, CFacet*, CFacet* n) { return pJudge(nClass, nullptr, n, d) != 0; });
}

inline std::vector<Group> ExtractFeather(std::vector<CFacet*> const& facets, Judge pJudge, double d) {
    return GrowInWaves(
        facets, All(facets), [](CFacet*) {},
        [&](int k, CFacet* g, CFacet* n) { return pJudge(k, g, n, d) != 0; });
}

inline double Difference2(CFacet const& a, CFacet const& b) {
    float const x = a.m_fNormal[0] - b.m_fNormal[0];
    float const y = a.m_fNormal[1] - b.m_fNormal[1];
    float const z = a.m_fNormal[2] - b.m_fNormal[2];
    double const dx = x, dy = y, dz = z;
    return dx * dx + dy * dy + dz * dz;
}

/// The groups after small ones have been merged, and the areas that are cached then.
inline std::vector<std::pair<Group, double>> UnionSmall(std::vector<Group> groups) {
    std::map<CFacet const*, int> region;
    std::vector<double> areas;
    auto const areaOf = [](Group const& group) {
        double dArea = 0.0;
        for (CFacet const* f : group) dArea += Area(*f);
        return dArea;
    };
    for (std::size_t i = 0; i < groups.size(); ++i) {
        for (CFacet const* f : groups[i]) region[f] = static_cast<int>(i);
        areas.push_back(areaOf(groups[i]));
    }
    for (std::size_t i = 0; i < groups.size(); ++i) {
        if (groups[i].size() > 10) continue;
        if (!(areas[i] > 0.0)) areas[i] = areaOf(groups[i]);
        if (areas[i] > 2.0) continue;
        double dLimit = 60.0 / std::sqrt(areas[i]);
        if (dLimit > 120.0) dLimit = 120.0;
        double const s = std::sin(dLimit * 0.5 * 3.141592653589793 / 180.0);
        double L = 4.0 * s * s;
        int nBest = -1;
        for (CFacet* const g : groups[i]) {
            for (CFacet* const n : ThreeNeighbors(g)) {
                if (n == nullptr || region[n] == static_cast<int>(i)) continue;
                if (L > Difference2(*g, *n)) {
                    L = Difference2(*g, *n);
                    nBest = region[n];
                }
            }
        }
        if (nBest == -1) continue;
        for (CFacet* const g : groups[i]) {
            region[g] = nBest;
            groups[static_cast<std::size_t>(nBest)].push_back(g);
        }
        groups[i].clear();
    }
    std::vector<std::pair<Group, double>> left;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        if (!groups[i].empty()) left.emplace_back(groups[i], areas[i]);
    }
    return left;
}

inline std::vector<Group> FindSupport(std::vector<CFacet*> const& facets, double dAngle, int nMode) {
    double const t = -std::cos(dAngle * 3.141592653589793 / 180.0);
    Marks marked;
    for (CFacet* const f : facets) {
        if (t > static_cast<double>(f->m_fNormal[2])) marked.insert(f);
    }
    std::vector<Group> groups;
    for (CFacet* const f : facets) {
        if (marked.count(f) == 0) continue;
        groups.push_back({f});
        marked.erase(f);
        std::deque<CFacet*> queue = {f};
        while (!queue.empty()) {
            CFacet* const g = queue.front();
            queue.pop_front();
            std::vector<CFacet*> reached;
            if (nMode != 0) {
                reached = ThreeNeighbors(g);
            } else {
                for (tagVertexNode* v : {g->m_pVertex1, g->m_pVertex2, g->m_pVertex3})
                    reached.insert(reached.end(), v->m_ppFacet, v->m_ppFacet + v->m_nFacetNum);
            }
            for (CFacet* const n : reached) {
                if (n == nullptr || marked.count(n) == 0) continue;
                queue.push_back(n);
                groups.back().push_back(n);
                marked.erase(n);
            }
        }
    }
    return groups;
}

inline int NeighborSide(CFacet const* f, CFacet const* n, tagVertexNode const* A, tagVertexNode const* B,
                        double tol) {
    tagVertexNode const* C = n->m_pVertex1;
    tagVertexNode const* P = n->m_pVertex2;
    if (n->m_pVertex1 == A || n->m_pVertex1 == B) {
        P = n->m_pVertex1;
        C = n->m_pVertex2;
        if (C == A || C == B) C = n->m_pVertex3;
    }
    double const ux = C->x - P->x, uy = C->y - P->y, uz = C->z - P->z;
    double const dLength = std::sqrt(ux * ux + uy * uy + uz * uz);
    double const x = ux / dLength, y = uy / dLength, z = uz / dLength;
    double const d = x * static_cast<double>(f->m_fNormal[0]) + y * static_cast<double>(f->m_fNormal[1]) +
                     z * static_cast<double>(f->m_fNormal[2]);
    if (tol > std::fabs(d)) return 0;
    return d > 0.0 ? 1 : -1;
}

/// The edge that proves the surface to be attached; nulls when it hangs free.
inline std::pair<tagVertexNode*, tagVertexNode*> ProofOfWall(Group const& surface) {
    Marks const own = All(surface);
    double dLowest = 1e300;
    for (CFacet const* f : surface) {
        for (tagVertexNode const* v : {f->m_pVertex1, f->m_pVertex2, f->m_pVertex3})
            dLowest = std::fmin(dLowest, v->z);
    }
    for (CFacet const* f : surface) {
        tagVertexNode* const v[4] = {f->m_pVertex1, f->m_pVertex2, f->m_pVertex3, f->m_pVertex1};
        for (int k = 0; k < 3; ++k) {
            if (v[k]->z >= dLowest + 0.1 && v[k + 1]->z >= dLowest + 0.1) continue;
            CFacet const* const n = FirstNeighbor(f, v[k], v[k + 1]);
            if (n == nullptr || own.count(n) != 0) continue;
            if (NeighborSide(f, n, v[k], v[k + 1], 0.01) == 1) return {v[k], v[k + 1]};
        }
    }
    return {nullptr, nullptr};
}

struct FlagsAndEdges {
    std::map<CFacet const*, unsigned> flags;
    std::vector<std::pair<tagVertexNode*, tagVertexNode*>> edges;
};

inline bool IsSupportEdge(CFacet const* f, unsigned nFlag, tagVertexNode const* a, tagVertexNode const* b) {
    if ((nFlag & 0x30) != 0) return true;
    tagVertexNode const* const v[4] = {f->m_pVertex1, f->m_pVertex2, f->m_pVertex3, f->m_pVertex1};
    for (int k = 0; k < 3; ++k) {
        if (!((v[k] == a && v[k + 1] == b) || (v[k] == b && v[k + 1] == a))) continue;
        float const dx = static_cast<float>(v[k + 1]->x - v[k]->x);
        float const dy = static_cast<float>(v[k + 1]->y - v[k]->y);
        return dx * f->m_fNormal[1] - dy * f->m_fNormal[0] >= 0.0f;
    }
    return false;
}

/// The suspended edges of the mode, in the order in which they are found, before they are chained.
inline FlagsAndEdges SuspendedEdges(std::vector<CFacet*> const& facets, int nMode, double dUp, double dDown) {
    FlagsAndEdges result;
    double const c1 = std::cos(dUp / 180.0 * 3.141592653589793);
    double const c2 = -std::cos(dDown / 180.0 * 3.141592653589793);
    for (CFacet const* f : facets) {
        double const nz = f->m_fNormal[2];
        result.flags[f] = (nz > c1 ? 0x20u : 0u) | (c2 > nz ? 0x10u : 0u);
    }
    double const dLimit = std::tan(((nMode == 1 ? dUp : dDown) - 1.0) / 180.0 * 3.141592653589793);
    Marks open = All(facets);
    auto const test = [&](tagVertexNode* A, tagVertexNode* B, CFacet const* f) {
        double const x = B->x - A->x, y = B->y - A->y, z = B->z - A->z;
        if (std::fabs(z) / std::sqrt(y * y + x * x) >= dLimit) return 0;
        if (IsSupportEdge(f, result.flags[f], A, B)) return 0;
        CFacet const* const n = FirstNeighbor(f, A, B);
        if (n == nullptr || open.count(n) == 0) return 0;
        if (IsSupportEdge(n, result.flags[n], A, B)) return 0;
        float const a = f->m_fNormal[2], b = n->m_fNormal[2];
        if (a < 0.0f) {
            if (b < 0.0f) return -1;
            return b > std::fabs(a) ? 1 : -1;
        }
        if (b > 0.0f) return 1;
        return std::fabs(b) > std::fabs(a) ? -1 : 1;
    };
    for (CFacet const* f : facets) {
        open.erase(f);
        tagVertexNode* const v[4] = {f->m_pVertex1, f->m_pVertex2, f->m_pVertex3, f->m_pVertex1};
        for (int k = 0; k < 3; ++k) {
            if (test(v[k], v[k + 1], f) == nMode) result.edges.emplace_back(v[k], v[k + 1]);
        }
    }
    return result;
}

/// Chaining by scanning the array anew after every merge.
inline std::vector<std::deque<tagVertexNode*>> Chain(
    std::vector<std::pair<tagVertexNode*, tagVertexNode*>> const& edges) {
    std::vector<std::deque<tagVertexNode*>> chains;
    for (auto const& [a, b] : edges) chains.push_back({a, b});
    for (std::size_t i = 0; i < chains.size(); ++i) {
        for (std::size_t j = i + 1; j < chains.size();) {
            auto& c = chains[i];
            tagVertexNode *const H = c.front(), *const T = c.back();
            tagVertexNode *const P = chains[j].front(), *const Q = chains[j].back();
            bool bHeld = false;
            if (P == H) c.push_front(Q), bHeld = true;
            if (P == T) c.push_back(Q), bHeld = true;
            if (Q == H) c.push_front(P), bHeld = true;
            if (Q == T) c.push_back(P), bHeld = true;
            if (bHeld) {
                chains.erase(chains.begin() + static_cast<std::ptrdiff_t>(j));
                j = i + 1;
            } else {
                ++j;
            }
        }
    }
    return chains;
}

inline std::vector<Group> LevelPlanes(std::vector<CFacet*> const& facets, double dTolerance) {
    Marks level;
    for (CFacet const* f : facets) {
        float const fOff = 1.0f - std::fabs(f->m_fNormal[2]);
        if (dTolerance > static_cast<double>(fOff)) level.insert(f);
    }
    return GrowInWaves(
        facets, level, [](CFacet*) {}, [](int, CFacet*, CFacet*) { return true; });
}

}  // namespace literal
