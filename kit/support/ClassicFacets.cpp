#include "support/ClassicFacets.h"

namespace varnet {

namespace {

bool IsAt(tagVertexNode const& vertex, Point3 const& point) {
    return vertex.x == point.x && vertex.y == point.y && vertex.z == point.z;
}

// Whether the facet has these corners in this order, from whichever on.
bool HasCorners(CFacet const& facet, Point3 const& a, Point3 const& b, Point3 const& c) {
    tagVertexNode const& v1 = *facet.m_pVertex1;
    tagVertexNode const& v2 = *facet.m_pVertex2;
    tagVertexNode const& v3 = *facet.m_pVertex3;
    return (IsAt(v1, a) && IsAt(v2, b) && IsAt(v3, c)) || (IsAt(v1, b) && IsAt(v2, c) && IsAt(v3, a)) ||
           (IsAt(v1, c) && IsAt(v2, a) && IsAt(v3, b));
}

}  // namespace

// The model holds the facets in the order of the triangles, less those that it refused.
ClassicFacets::ClassicFacets(Part const& part) : m_Model(part.Model()) {
    auto const& facets = m_Model->m_SurfaceArray.m_aSurface[0]->m_aFacet;
    auto const points = part.Points();
    auto const triangles = part.Triangles();
    m_Triangles.reserve(static_cast<std::size_t>(facets.GetSize()));
    int next = 0;
    for (std::size_t i = 0; i < triangles.size() && next < facets.GetSize(); ++i) {
        auto const corner = [&](std::size_t k) { return points[static_cast<std::size_t>(triangles[i][k])]; };
        if (!HasCorners(*facets.GetAt(next), corner(0), corner(1), corner(2))) continue;
        m_Triangles.emplace(facets.GetAt(next), static_cast<std::int32_t>(i));
        ++next;
    }
}

std::int32_t ClassicFacets::TriangleOf(CFacet const* facet) const {
    auto const found = m_Triangles.find(facet);
    return found != m_Triangles.end() ? found->second : -1;
}

}  // namespace varnet
