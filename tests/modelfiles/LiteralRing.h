#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <list>
#include <string>
#include <vector>

#include "MeshChecks.h"

/// The ring stream's writer, step for step and with a copy of the ring at each: slow, and plainly right.
class LiteralRing {
public:
    static std::string Write(CSTLModel& model) { return LiteralRing(model).Write(); }

private:
    struct Edge {
        tagVertexNode* start;
        tagVertexNode* end;
        tagVertexNode* opposite;
        CFacet* facet;
    };
    using Ring = std::list<Edge>;

    explicit LiteralRing(CSTLModel& model) : m_Model(model) {}

    std::string Write() {
        std::string header = "Quarnell Ziped Model -- CSM2.0";
        header.resize(80);
        m_Bytes = header;
        CBoundBox3D const& box = m_Model.m_VertexTree.m_BoundBox;
        double const x = box.m_ptMax.x - box.m_ptMin.x;
        double const y = box.m_ptMax.y - box.m_ptMin.y;
        double const z = box.m_ptMax.z - box.m_ptMin.z;
        m_dScale = 16777216.0 / (fmax(x, fmax(y, z)) + 1.0);
        for (double const d : {box.m_ptMin.x, box.m_ptMin.z, box.m_ptMin.y, 1.0 / m_dScale}) Raw(&d, 8);
        std::list<CFacet*> facets;
        for (CFacet* const pFacet : FacetsOf(m_Model)) {
            pFacet->m_nRegion = 1;
            facets.push_back(pFacet);
        }
        while (!facets.empty()) {
            CFacet* const pSeed = facets.front();
            facets.pop_front();
            if (pSeed->m_nRegion != 0) Region(pSeed);
        }
        return m_Bytes;
    }

    void Region(CFacet* pSeed) {
        std::list<tagVertexNode*> points = {pSeed->m_pVertex1, pSeed->m_pVertex2, pSeed->m_pVertex3};
        std::list<int> c1s;
        std::list<int> c2s;
        pSeed->m_nRegion = 0;
        Ring ring;
        ring.push_back(Find(pSeed->m_pVertex1, pSeed->m_pVertex2));
        ring.push_back(Find(pSeed->m_pVertex2, pSeed->m_pVertex3));
        ring.push_back(Find(pSeed->m_pVertex3, pSeed->m_pVertex1));
        while (!ring.empty()) {
            int c1 = 0;
            int c2 = 0;
            Choose(ring, c1, c2);
            if (c1 == 0) {
                c1s.push_back(c1);
                c2s.push_back(c2);
                for (int i = 0; i < c2; ++i) ring.pop_front();
                continue;
            }
            if (c1 >= 2) {
                for (int i = 0; i < c1 - 1; ++i) {
                    ring.push_back(ring.front());
                    ring.pop_front();
                }
            } else if (c1 < 0) {
                for (int i = 0; i < -c1; ++i) {
                    ring.push_front(ring.back());
                    ring.pop_back();
                }
            }
            if (c2 == 0) {
                c1s.push_back(c1);
                c2s.push_back(0);
                ring.pop_front();
                continue;
            }
            tagVertexNode* const a = ring.front().start;
            tagVertexNode* const p = ring.front().opposite;
            tagVertexNode* b = nullptr;
            for (int i = 0; i < c2; ++i) {
                ring.front().facet->m_nRegion = 0;
                b = ring.front().end;
                ring.pop_front();
            }
            c1s.push_back(c1);
            c2s.push_back(c2);
            points.push_back(p);
            ring.push_front(Find(p, b));
            ring.push_front(Find(a, p));
        }
        std::uint32_t const n = static_cast<std::uint32_t>(c1s.size());
        Raw(&n, 4);
        for (int i = 0; i < 3; ++i) {
            Point(points.front());
            points.pop_front();
        }
        while (!c1s.empty()) {
            unsigned char const b1 = static_cast<unsigned char>(c1s.front() & 0xFF);
            unsigned char const b2 = static_cast<unsigned char>(c2s.front() & 0xFF);
            Raw(&b1, 1);
            Raw(&b2, 1);
            if (b1 != 0 && b2 != 0) {
                Point(points.front());
                points.pop_front();
            }
            c1s.pop_front();
            c2s.pop_front();
        }
    }

    static Edge Find(tagVertexNode* a, tagVertexNode* b) {
        Edge edge = {a, b, nullptr, nullptr};
        for (int i = 0; i < a->m_nFacetNum; ++i) {
            CFacet* const f = a->m_ppFacet[i];
            if (f->m_nRegion != 0 && (f->m_pVertex1 == b || f->m_pVertex2 == b || f->m_pVertex3 == b))
                edge.facet = f;
        }
        if (CFacet* const f = edge.facet) {
            edge.opposite = f->m_pVertex1;
            if (edge.opposite == a) {
                edge.opposite = f->m_pVertex2;
                if (edge.opposite == b) edge.opposite = f->m_pVertex3;
            } else if (edge.opposite == b) {
                edge.opposite = f->m_pVertex2;
                if (edge.opposite == a) edge.opposite = f->m_pVertex3;
            }
        }
        return edge;
    }

    static void Choose(Ring const& ring, int& c1, int& c2) {
        if (ring.front().facet == nullptr) {
            c1 = 0;
            c2 = 1;
            for (auto e = std::next(ring.begin()); e != ring.end() && e->facet == nullptr && c2 < 127; ++e)
                ++c2;
            return;
        }
        if (ring.size() == 1) {
            c1 = c2 = 1;
            return;
        }
        Ring w = ring;
        int t = 0;
        while (!w.empty() && w.back().opposite == ring.front().opposite) {
            ++t;
            w.pop_back();
            if (t == 127) break;
        }
        if (w.empty()) {
            c1 = 1;
            c2 = static_cast<int>(ring.size());
            return;
        }
        c1 = 1;
        FindInner(w, c1, c2);
        if (c1 == 1 && t != 0) {
            c1 = -t;
            c2 += t;
        }
        if (c2 > 127) c2 = 127;
    }

    static void FindInner(Ring& w, int& c1, int& c2) {
        auto h = w.begin();
        c2 = 0;
        bool bInRun = true;
        int nCounter = 0;
        auto e = w.begin();
        while (e != w.end()) {
            if (e->opposite != h->opposite) {
                bInRun = false;
                if (++nCounter == 127) break;
                ++e;
            } else if (bInRun) {
                ++c2;
                ++e;
            } else {
                c1 += c2;
                for (int i = 0; i < c2; ++i) w.pop_front();
                w.erase(e, w.end());
                h = w.begin();
                c2 = 0;
                bInRun = true;
                if (++nCounter == 127) break;
                e = h;
            }
        }
        if (h->facet == nullptr) c2 = 0;
    }

    void Point(tagVertexNode const* p) {
        CPoint3D const& least = m_Model.m_VertexTree.m_BoundBox.m_ptMin;
        for (double const d :
             {(p->x - least.x) * m_dScale, (p->y - least.y) * m_dScale, (p->z - least.z) * m_dScale}) {
            auto const n = static_cast<std::uint32_t>(d);
            Raw(&n, 3);
        }
    }

    // The tests run on little-endian machines.
    void Raw(void const* p, std::size_t n) { m_Bytes.append(static_cast<char const*>(p), n); }

    CSTLModel& m_Model;
    double m_dScale = 0.0;
    std::string m_Bytes;
};
