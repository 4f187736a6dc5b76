#include "Shells.h"

#include <array>

namespace {

double SignedVolume(CFacet const& facet) {
    CPoint3D const& a = *facet.m_pVertex1;
    CPoint3D const& b = *facet.m_pVertex2;
    CPoint3D const& c = *facet.m_pVertex3;
    return (a.x * (b.y * c.z - b.z * c.y) - a.y * (b.x * c.z - b.z * c.x) + a.z * (b.x * c.y - b.y * c.x)) /
           6.0;
}

std::array<CFacet*, 3> NeighborsOf(CFacet& facet) {
    return {facet.FindNeighborFacet(facet.m_pVertex1, facet.m_pVertex2),
            facet.FindNeighborFacet(facet.m_pVertex2, facet.m_pVertex3),
            facet.FindNeighborFacet(facet.m_pVertex3, facet.m_pVertex1)};
}

Shell GrowFrom(CFacet& seed) {
    Shell shell;
    shell.facets.push_back(&seed);
    seed.m_nRegion = 0;
    for (std::size_t i = 0; i < shell.facets.size(); ++i) {
        CFacet& facet = *shell.facets[i];
        shell.dSignedVolume += SignedVolume(facet);
        for (CPoint3D const* p : {facet.m_pVertex1, facet.m_pVertex2, facet.m_pVertex3}) shell.box += *p;
        for (CFacet* const pNeighbor : NeighborsOf(facet)) {
            if (pNeighbor == nullptr || pNeighbor->m_nRegion == 0) continue;
            pNeighbor->m_nRegion = 0;
            shell.facets.push_back(pNeighbor);
        }
    }
    return shell;
}

double Side(CPoint3D const& p, CPoint3D const& a, CPoint3D const& b) {
    return (b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x);
}

// Whether the line upward from the point passes through the facet.
bool IsAbove(CFacet const& facet, CPoint3D const& p) {
    CPoint3D const& a = *facet.m_pVertex1;
    CPoint3D const& b = *facet.m_pVertex2;
    CPoint3D const& c = *facet.m_pVertex3;
    double const dA = Side(p, b, c), dB = Side(p, c, a), dC = Side(p, a, b);
    if (!((dA > 0.0 && dB > 0.0 && dC > 0.0) || (dA < 0.0 && dB < 0.0 && dC < 0.0))) return false;
    return (dA * a.z + dB * b.z + dC * c.z) / (dA + dB + dC) > p.z;
}

bool Contains(Shell const& shell, CPoint3D const& p) {
    bool bInside = false;
    for (CFacet const* const pFacet : shell.facets) bInside ^= IsAbove(*pFacet, p);
    return bInside;
}

// A point on a facet, away from its corners and edges, so that few lines through it meet edges of others.
CPoint3D PointOn(CFacet const& facet) {
    auto const mean = [](double a, double b, double c) { return 0.471 * a + 0.336 * b + 0.193 * c; };
    CPoint3D const& a = *facet.m_pVertex1;
    CPoint3D const& b = *facet.m_pVertex2;
    CPoint3D const& c = *facet.m_pVertex3;
    return CPoint3D(mean(a.x, b.x, c.x), mean(a.y, b.y, c.y), mean(a.z, b.z, c.z));
}

}  // namespace

std::vector<Shell> FindShells(CSTLModel& model) {
    auto const& surfaces = model.m_SurfaceArray.m_aSurface;
    auto const forEachFacet = [&surfaces](auto const& visit) {
        for (int i = 0; i < surfaces.GetSize(); ++i) {
            for (int k = 0; k < surfaces[i]->m_aFacet.GetSize(); ++k) visit(*surfaces[i]->m_aFacet[k]);
        }
    };
    std::vector<Shell> shells;
    forEachFacet([](CFacet& facet) { facet.m_nRegion = 1; });
    forEachFacet([&shells](CFacet& facet) {
        if (facet.m_nRegion != 0) shells.push_back(GrowFrom(facet));
    });
    return shells;
}

bool IsCavity(std::vector<Shell> const& shells, Shell const& shell) {
    CPoint3D const point = PointOn(*shell.facets.front());
    bool bInside = false;
    for (Shell const& other : shells) {
        if (&other != &shell && other.box.IsInBox(point) != 0) bInside ^= Contains(other, point);
    }
    return bInside;
}
