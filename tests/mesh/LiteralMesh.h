#pragma once

#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

#include "mesh/STLModel.h"
#include "trees/LiteralVertexTree.h"

// The operations of the mesh as their definition is worded, for holding the real ones against.

/// How facets enter a mesh. Vertices are known by their creation number, facets by their place.
class LiteralMesh {
public:
    struct Facet {
        int corners[3];
        unsigned nFlag;
    };

    void AddFacet(tagFACET& f) {
        for (CPoint3D const& p : f.m_ptVertex) {
            for (double const d : {p.x, p.y, p.z}) {
                if (d > 10000000000.0 || d < -10000000000.0) return;
            }
        }
        LiteralVertexTree::Node const* nodes[3];
        for (int i = 0; i < 3; ++i) nodes[i] = m_Tree.AddNode(f.m_ptVertex[i]);
        m_Lists.resize(m_Tree.m_nCount);
        auto const [a, b, c] = nodes;
        if (a == b || b == c || c == a) return;
        for (int const nFacet : m_Lists[static_cast<std::size_t>(a->nIndex)]) {
            Facet& g = m_Facets[static_cast<std::size_t>(nFacet)];
            for (int k = 0; k < 3; ++k) {
                if (g.corners[k] != a->nIndex) continue;
                int const nNext = g.corners[(k + 1) % 3];
                int const nLast = g.corners[(k + 2) % 3];
                if (nNext == b->nIndex && nLast == c->nIndex) {
                    g.nFlag |= 0x200;
                    return;
                }
                if (nNext == c->nIndex && nLast == b->nIndex) {
                    g.nFlag |= 0x100;
                    return;
                }
            }
        }
        Enter(a, b, c);
    }

    LiteralVertexTree m_Tree;
    std::vector<Facet> m_Facets;
    std::vector<std::vector<int>> m_Lists;  // of vertices

private:
    using Node = LiteralVertexTree::Node;

    void Enter(Node const* a, Node const* b, Node const* c) {
        Node const* p[3] = {c, a, b};
        if (b->point.z >= a->point.z && c->point.z >= a->point.z) {
            p[0] = a, p[1] = b, p[2] = c;
        } else if (b->point.z < a->point.z && c->point.z >= b->point.z) {
            p[0] = b, p[1] = c, p[2] = a;
        }
        CPoint3D const u = p[1]->point - p[0]->point;
        CPoint3D const v = p[2]->point - p[0]->point;
        double const nx = u.y * v.z - u.z * v.y;
        double const ny = u.z * v.x - u.x * v.z;
        double const nz = u.x * v.y - u.y * v.x;
        double const dLength = std::sqrt(nx * nx + ny * ny + nz * nz);
        if (!(dLength > 1e-10)) return;
        unsigned const nFlag = p[2]->point.z >= p[1]->point.z ? 2 : 1;
        int const nFacet = static_cast<int>(m_Facets.size());
        m_Facets.push_back({{p[0]->nIndex, p[1]->nIndex, p[2]->nIndex}, nFlag});
        for (Node const* pNode : {a, b, c})
            m_Lists[static_cast<std::size_t>(pNode->nIndex)].push_back(nFacet);
    }
};

namespace literal {

inline bool HasCorner(CFacet const* g, tagVertexNode const* v) {
    return g->m_pVertex1 == v || g->m_pVertex2 == v || g->m_pVertex3 == v;
}

inline bool RunsFromTo(CFacet const* g, tagVertexNode const* a, tagVertexNode const* b) {
    return (g->m_pVertex1 == a && g->m_pVertex2 == b) || (g->m_pVertex2 == a && g->m_pVertex3 == b) ||
           (g->m_pVertex3 == a && g->m_pVertex1 == b);
}

/// Every facet but f in a's list that has b as a corner.
inline std::vector<CFacet*> Neighbors(CFacet const* f, tagVertexNode const* a, tagVertexNode const* b) {
    std::vector<CFacet*> found;
    for (int i = 0; i < a->m_nFacetNum; ++i) {
        CFacet* const g = a->m_ppFacet[i];
        if (g != f && HasCorner(g, b)) found.push_back(g);
    }
    return found;
}

inline void CalculateNormal(CFacet* f) {
    CPoint3D const b = *f->m_pVertex2 - *f->m_pVertex1;
    CPoint3D const c = *f->m_pVertex3 - *f->m_pVertex1;
    double const n[3] = {b.y * c.z - b.z * c.y, b.z * c.x - b.x * c.z, b.x * c.y - b.y * c.x};
    double const dLength = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
    for (int i = 0; i < 3; ++i) f->m_fNormal[i] = dLength > 1e-10 ? static_cast<float>(n[i] / dLength) : 1.0f;
}

inline void CalculateNormalAndResetFlag(CFacet* f) {
    CalculateNormal(f);
    tagVertexNode* const p1 = f->m_pVertex1;
    tagVertexNode* const p2 = f->m_pVertex2;
    tagVertexNode* const p3 = f->m_pVertex3;
    if (!(p2->z >= p1->z && p1->z <= p3->z)) {
        bool const bSecond = p2->z < p1->z && p3->z >= p2->z;
        f->m_pVertex1 = bSecond ? p2 : p3;
        f->m_pVertex2 = bSecond ? p3 : p1;
        f->m_pVertex3 = bSecond ? p1 : p2;
    }
    f->m_nRegion = 0;
    f->m_nFlag = f->m_pVertex3->z >= f->m_pVertex2->z ? 2 : 1;
}

inline void Propagate(CFacet* f) {
    tagVertexNode* const corners[3] = {f->m_pVertex1, f->m_pVertex2, f->m_pVertex3};
    for (int k = 0; k < 3; ++k) {
        tagVertexNode* const p = corners[k];
        tagVertexNode* const q = corners[(k + 1) % 3];
        std::vector<CFacet*> list = Neighbors(f, p, q);
        if (list.size() > 10) list.resize(10);
        bool bFlip = true;
        for (CFacet* const g : list) {
            if (g->m_nRegion == 0) break;
            bool const bAgrees = RunsFromTo(g, q, p);
            if (bAgrees) bFlip = false;
            g->m_nRegion = 0;
            if (!bAgrees && bFlip) {
                std::swap(g->m_pVertex2, g->m_pVertex3);
                CalculateNormalAndResetFlag(g);
            }
            Propagate(g);
        }
    }
}

inline void FixNormal(std::vector<CFacet*> const& facets) {
    for (CFacet* const f : facets) f->m_nRegion = 1;
    for (CFacet* const f : facets) {
        if (f->m_nRegion == 1) Propagate(f);
        CalculateNormalAndResetFlag(f);
    }
}

/// In float, one rounding an operation.
inline double Area(CFacet const& f) {
    float p[3][3];
    tagVertexNode const* const corners[3] = {f.m_pVertex1, f.m_pVertex2, f.m_pVertex3};
    for (int i = 0; i < 3; ++i) {
        p[i][0] = static_cast<float>(corners[i]->x);
        p[i][1] = static_cast<float>(corners[i]->y);
        p[i][2] = static_cast<float>(corners[i]->z);
    }
    float s[3];
    for (int i = 0; i < 3; ++i) {
        int const j = (i + 1) % 3;
        int const k = (i + 2) % 3;
        float const c12 = p[0][j] * p[1][k] - p[0][k] * p[1][j];
        float const c23 = p[1][j] * p[2][k] - p[1][k] * p[2][j];
        float const c31 = p[2][j] * p[0][k] - p[2][k] * p[0][j];
        float const sum = c12 + c23;
        s[i] = sum + c31;
    }
    float const d0 = f.m_fNormal[0] * s[0];
    float const d1 = f.m_fNormal[1] * s[1];
    float const d2 = f.m_fNormal[2] * s[2];
    float const d01 = d0 + d1;
    float const d = d01 + d2;
    return std::fabs(static_cast<double>(d) * 0.5);
}

inline double Volume(std::vector<CFacet*> const& facets) {
    double dVolume = 0.0;
    for (CFacet const* f : facets) {
        float const d0 = f->m_fNormal[0] * static_cast<float>(f->m_pVertex1->x);
        float const d1 = f->m_fNormal[1] * static_cast<float>(f->m_pVertex1->y);
        float const d2 = f->m_fNormal[2] * static_cast<float>(f->m_pVertex1->z);
        float const d01 = d0 + d1;
        float const d = d01 + d2;
        dVolume += static_cast<double>(d) * Area(*f);
    }
    return std::fabs(dVolume / 3.0);
}

}  // namespace literal
