#include <cmath>

#include "part/Pace.h"
#include "support/ClassicFacets.h"
#include "varnet/Supports.h"

namespace varnet {

namespace {

// Facets whose normal's z is below this count as upright, where surfaces are classes of facets.
constexpr double kUpright = 0.1;

void Divide(CSTLModel& model, SurfaceRule rule) {
    if (rule == SurfaceRule::kNormals) {
        model.ExtractSurfaceAndEdge();
        return;
    }
    if (rule == SurfaceRule::kOctants) {
        model.ClassifySurf(CSTLModel::EightClassifyFun, kUpright);
    } else {
        model.ExtractFeatherSurf(CSTLModel::NormalJudgeFun, 0.0);
    }
    auto const& surfaces = model.m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.GetSize(); ++i) {
        surfaces[i]->FindSurfaceVerge();
        surfaces[i]->CalArea();
    }
}

double RimLength(CFeatureSurface const& surface) {
    double length = 0.0;
    for (XR__POSITION* at = surface.m_VergeList.GetHeadPosition(); at != nullptr;) {
        tagVertexNode const* const start = surface.m_VergeList.GetNext(at);
        tagVertexNode const* const end = surface.m_VergeList.GetNext(at);
        length += std::sqrt(D2ofPtoP(*start, *end));
    }
    return length;
}

// A palette of eight of our own, so that the colours do not depend on what else the process has divided.
std::uint32_t ColorOf(std::size_t surface) {
    constexpr std::uint32_t kPalette[] = {0x4E79A7, 0xF28E2B, 0x59A14F, 0xE15759,
                                          0x76B7B2, 0xEDC948, 0xB07AA1, 0x9C755F};
    return kPalette[surface % std::size(kPalette)];
}

}  // namespace

Surfaces::Surfaces(Part const& part, SurfaceRule rule, Progress const& progress)
    : ofTriangle(part.Triangles().size(), -1) {
    if (part.Triangles().empty()) return;
    Watch watch(progress);
    ClassicFacets facets(part);
    watch.Tell(0.3);
    Divide(facets.Model(), rule);
    watch.Tell(0.8);
    auto const& surfaces = facets.Model().m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.GetSize(); ++i) {
        CFeatureSurface& surface = *surfaces[i];
        for (int k = 0; k < surface.m_aFacet.GetSize(); ++k) {
            std::int32_t const triangle = facets.TriangleOf(surface.m_aFacet[k]);
            if (triangle >= 0)
                ofTriangle[static_cast<std::size_t>(triangle)] = static_cast<std::int32_t>(all.size());
        }
        all.push_back({surface.m_aFacet.GetSize(), surface.Area(), RimLength(surface), ColorOf(all.size())});
    }
    watch.Tell(1.0);
}

}  // namespace varnet
