#include "part/Classic.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <vector>

#include "varnet/Error.h"

namespace varnet {

namespace {

// Which facets the model takes: all, but of those on the same three corners one, or none.
class Choice {
public:
    explicit Choice(std::span<Triangle const> triangles) : m_Kept(triangles.size(), true) {
        std::vector<std::size_t> order(triangles.size());
        std::vector<std::uint64_t> keys(triangles.size());
        for (std::size_t i = 0; i < order.size(); ++i) {
            order[i] = i;
            keys[i] = KeyOf(triangles[i]);
        }
        std::sort(order.begin(), order.end(), [&keys](std::size_t a, std::size_t b) {
            return keys[a] != keys[b] ? keys[a] < keys[b] : a < b;
        });
        for (std::size_t i = 0; i < order.size();) {
            std::size_t end = i + 1;
            while (end < order.size() && keys[order[end]] == keys[order[i]]) ++end;
            if (end - i > 1) Decide(triangles, std::span(order).subspan(i, end - i));
            i = end;
        }
    }
    bool Keeps(std::size_t facet) const { return m_Kept[facet]; }

private:
    static Triangle Sorted(Triangle t) {
        std::sort(t.begin(), t.end());
        return t;
    }
    // Facets on the same corners have the same key; others seldom.
    static std::uint64_t KeyOf(Triangle const& triangle) {
        Triangle const t = Sorted(triangle);
        std::uint64_t key = static_cast<std::uint64_t>(t[0]) << 32 | static_cast<std::uint32_t>(t[1]);
        key = (key ^ static_cast<std::uint64_t>(t[2]) * 0x9E3779B97F4A7C15u) * 0xBF58476D1CE4E5B9u;
        return key ^ key >> 31;
    }
    static bool IsEven(Triangle const& t) {
        return (t[0] < t[1] && t[1] < t[2]) || (t[1] < t[2] && t[2] < t[0]) || (t[2] < t[0] && t[0] < t[1]);
    }

    void Decide(std::span<Triangle const> triangles, std::span<std::size_t> facets) {
        std::sort(facets.begin(), facets.end(), [&](std::size_t a, std::size_t b) {
            Triangle const s = Sorted(triangles[a]);
            Triangle const t = Sorted(triangles[b]);
            return s != t ? s < t : a < b;
        });
        for (std::size_t i = 0; i < facets.size();) {
            std::size_t end = i;
            int balance = 0;
            for (; end < facets.size() && Sorted(triangles[facets[end]]) == Sorted(triangles[facets[i]]);
                 ++end) {
                balance += IsEven(triangles[facets[end]]) ? 1 : -1;
            }
            bool wanted = balance != 0;
            for (; i < end; ++i) {
                bool const keep = wanted && IsEven(triangles[facets[i]]) == (balance > 0);
                m_Kept[facets[i]] = keep;
                if (keep) wanted = false;
            }
        }
    }

    std::vector<bool> m_Kept;
};

}  // namespace

ClassicPath::ClassicPath(std::filesystem::path const& path) {
    try {
        m_Text = path.u16string();
    } catch (std::exception const&) {
        throw Error(ErrorKind::kArgument, path.string() + ": the name is not valid UTF-8");
    }
}

std::unique_ptr<CSTLModel> MakeClassic(std::span<Point3 const> points, std::span<Triangle const> triangles,
                                       std::int64_t& refused) {
    auto model = std::make_unique<CSTLModel>();
    model->m_VertexTree.m_dTolerance = 0.0;
    Choice const choice(triangles);
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        if (!choice.Keeps(i)) continue;
        tagFACET facet;
        for (std::size_t k = 0; k < 3; ++k) {
            Point3 const& p = points[static_cast<std::size_t>(triangles[i][k])];
            facet.m_ptVertex[k] = CPoint3D(p.x, p.y, p.z);
        }
        model->AddFacet(facet);
    }
    refused = static_cast<std::int64_t>(triangles.size()) - model->GetFacetsNum();
    return model;
}

FlatMesh Flatten(CSTLModel const& model) {
    FlatMesh mesh;
    std::unordered_map<tagVertexNode const*, std::int32_t> numbers;
    numbers.reserve(model.m_VertexTree.m_nCount);
    for (int s = 0; s < model.m_SurfaceArray.m_aSurface.GetSize(); ++s) {
        auto const& facets = model.m_SurfaceArray.m_aSurface[s]->m_aFacet;
        for (int i = 0; i < facets.GetSize(); ++i) {
            CFacet const& facet = *facets[i];
            Triangle& triangle = mesh.triangles.emplace_back();
            std::array<tagVertexNode const*, 3> const corners = {facet.m_pVertex1, facet.m_pVertex2,
                                                                 facet.m_pVertex3};
            for (std::size_t k = 0; k < 3; ++k) {
                auto const [place, isNew] =
                    numbers.try_emplace(corners[k], static_cast<std::int32_t>(mesh.points.size()));
                if (isNew) mesh.points.push_back({corners[k]->x, corners[k]->y, corners[k]->z});
                triangle[k] = place->second;
            }
        }
    }
    return mesh;
}

}  // namespace varnet
