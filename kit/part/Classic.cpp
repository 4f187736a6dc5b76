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

    std::int32_t Of(tagVertexNode const* vertex, LargeVector<Point3>& points) {
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
    static std::int32_t Add(tagVertexNode const& vertex, LargeVector<Point3>& points) {
        points.push_back({vertex.x, vertex.y, vertex.z});
        return static_cast<std::int32_t>(points.size() - 1);
    }
    std::int32_t Else(tagVertexNode const* vertex, LargeVector<Point3>& points) {
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

}  // namespace

FlatMesh Flatten(CSTLModel const& model) {
    FlatMesh mesh;
    VertexNumbers numbers(std::min<std::size_t>(model.m_VertexTree.m_nCount, 3 * CountFacets(model)));
    for (int s = 0; s < model.m_SurfaceArray.m_aSurface.GetSize(); ++s) {
        auto const& facets = model.m_SurfaceArray.m_aSurface[s]->m_aFacet;
        for (int i = 0; i < facets.GetSize(); ++i) {
            CFacet const& facet = *facets[i];
            mesh.triangles.push_back({numbers.Of(facet.m_pVertex1, mesh.points),
                                      numbers.Of(facet.m_pVertex2, mesh.points),
                                      numbers.Of(facet.m_pVertex3, mesh.points)});
        }
    }
    return mesh;
}

}  // namespace varnet
