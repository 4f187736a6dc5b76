#include "part/Classic.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <vector>

#include "varnet/Error.h"

namespace varnet {

ClassicPath::ClassicPath(std::filesystem::path const& path) {
    try {
        m_Text = path.u16string();
    } catch (std::exception const&) {
        throw Error(ErrorKind::kArgument, path.string() + ": the name is not valid UTF-8");
    }
}

namespace {

// Numbers the vertices of a model in the order in which they are asked for. Each vertex of a tree holds a
// number of its own, unless a host has put trees together.
class VertexNumbers {
public:
    explicit VertexNumbers(std::size_t vertices) : m_Known(vertices) {}

    template <class Points>
    std::int32_t Of(tagVertexNode const* vertex, Points& points) {
        auto const index = static_cast<std::size_t>(vertex->m_nIndex);
        if (vertex->m_nIndex < 0 || index >= m_Known.size()) return Else(vertex, points);
        Known& known = m_Known[index];
        if (known.vertex == nullptr) known = {vertex, Add(*vertex, points)};
        return known.vertex == vertex ? known.number : Else(vertex, points);
    }

private:
    struct Known {
        tagVertexNode const* vertex = nullptr;
        std::int32_t number = 0;
    };
    template <class Points>
    static std::int32_t Add(tagVertexNode const& vertex, Points& points) {
        points.push_back({vertex.x, vertex.y, vertex.z});
        return static_cast<std::int32_t>(points.size() - 1);
    }
    template <class Points>
    std::int32_t Else(tagVertexNode const* vertex, Points& points) {
        auto const [place, isNew] = m_Others.try_emplace(vertex, 0);
        if (isNew) place->second = Add(*vertex, points);
        return place->second;
    }

    std::vector<Known> m_Known;
    std::unordered_map<tagVertexNode const*, std::int32_t> m_Others;
};

std::size_t CountFacets(CSTLModel const& model) {
    std::size_t count = 0;
    for (int s = 0; s < model.m_SurfaceArray.m_aSurface.GetSize(); ++s)
        count += static_cast<std::size_t>(model.m_SurfaceArray.m_aSurface[s]->m_aFacet.GetSize());
    return count;
}

// Points and triangles may be of either kind of vector.
template <class Points, class Triangles>
void FlattenInto(CSTLModel const& model, Points& points, Triangles& triangles) {
    std::size_t const facetCount = CountFacets(model);
    std::size_t const mostPoints = std::min<std::size_t>(model.m_VertexTree.m_nCount, 3 * facetCount);
    VertexNumbers numbers(mostPoints);
    points.reserve(mostPoints);
    triangles.reserve(facetCount);
    for (int s = 0; s < model.m_SurfaceArray.m_aSurface.GetSize(); ++s) {
        auto const& facets = model.m_SurfaceArray.m_aSurface[s]->m_aFacet;
        for (int i = 0; i < facets.GetSize(); ++i) {
            CFacet const& facet = *facets[i];
            std::int32_t const a = numbers.Of(facet.m_pVertex1, points);
            std::int32_t const b = numbers.Of(facet.m_pVertex2, points);
            triangles.push_back({a, b, numbers.Of(facet.m_pVertex3, points)});
        }
    }
}

}  // namespace

FlatMesh Flatten(CSTLModel const& model) {
    FlatMesh mesh;
    FlattenInto(model, mesh.points, mesh.triangles);
    return mesh;
}

SupportSolid FlattenSolid(CSTLModel const& model) {
    SupportSolid solid;
    FlattenInto(model, solid.points, solid.triangles);
    return solid;
}

}  // namespace varnet
