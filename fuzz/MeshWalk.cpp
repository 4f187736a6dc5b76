// Random facets, then a random walk over the operations of a model.

#include <cmath>

#include "FuzzInput.h"
#include "MeshInvariants.h"

namespace {

// Small steps about the tolerance, so that corners meet; now and then anything at all.
double Coordinate(ByteSource& source) {
    auto const nByte = source.Take<std::uint8_t>();
    if (nByte == 255) return source.Take<double>();
    return (nByte % 16) * 0.00005 + (nByte / 16) * 1.0;
}

void AddFacets(ByteSource& source, CSTLModel& model) {
    for (int n = source.Take<std::uint8_t>(); n > 0; --n) {
        tagFACET facet;
        for (CPoint3D& p : facet.m_ptVertex) {
            p.x = Coordinate(source);
            p.y = Coordinate(source);
            p.z = Coordinate(source);
        }
        model.AddFacet(facet);
    }
}

void Transform(ByteSource& source, CSTLModel& model) {
    double matrix[4][4];
    for (auto& row : matrix) {
        for (double& d : row) d = Coordinate(source);
    }
    model.Transform(matrix);
}

int AnyJudge(int n, CFacet* pA, CFacet* pB, double d) {
    CFacet const& facet = pA != nullptr ? *pA : *pB;
    return facet.m_fNormal[0] + static_cast<float>(n % 3) > static_cast<float>(d) ? 1 : 0;
}

// A model without surfaces takes no facets: the walk gives it one.
void RequireSurface(CSTLModel& model) {
    if (model.GetCharacterFacetsNum() == 0) model.m_SurfaceArray.m_aSurface.Add(new CFeatureSurface);
}

void Classify(ByteSource& source, CSTLModel& model) {
    double const d = Coordinate(source);
    switch (source.Take<std::uint8_t>() % 6) {
        case 0:
            model.ClassifySurf(CSTLModel::EightClassifyFun, d);
            break;
        case 1:
            model.ClassifySurf(AnyJudge, d);
            break;
        case 2:
            model.ExtractFeatherSurf(CSTLModel::JionJudgeFun, d);
            break;
        case 3:
            model.ExtractFeatherSurf(CSTLModel::NormalJudgeFun, d);
            break;
        case 4:
            model.ExtractFeatherSurf(AnyJudge, d);
            break;
        default:
            model.ExtractSurfaceAndEdge();
    }
    RequireSurface(model);
}

void Disjoin(CSTLModel& model) {
    XR_CList<void*, void*> shells;
    model.Disjoin(shells);
    while (shells.IsEmpty() == 0) {
        auto* const pShell = static_cast<CSTLModel*>(shells.RemoveHead());
        RequireInvariants(*pShell);
        delete pShell;
    }
}

void FindLevelPlanes(ByteSource& source, CSTLModel& model) {
    CSurfaceArray planes;
    model.ExtractHorizonPlane(Coordinate(source), &planes);
    for (int i = 0; i < planes.m_aSurface.GetSize(); ++i) planes.m_aSurface[i]->m_aFacet.RemoveAll();
}

void RequireFiniteSolids(CSTLModel& model) {
    XR__POSITION* position = model.m_SupportModelList.GetHeadPosition();
    while (position != nullptr) {
        auto const& solid = *static_cast<CSTLModel*>(model.m_SupportModelList.GetNext(position));
        RequireInvariants(solid);
        avl::Walk(solid.m_VertexTree.m_pRoot, [](tagVertexNode const* p) {
            Require(std::isfinite(p->x) && std::isfinite(p->y) && std::isfinite(p->z));
        });
    }
    model.ClearSupportSTL();
}

void Support(ByteSource& source, CSTLModel& model) {
    model.FindSupportSurface(100.0 * Coordinate(source), source.Take<std::uint8_t>() % 2);
    model.FilterUnSuspendSupport(Coordinate(source));
    for (int i = 0; i < model.m_SupportArray.m_aSurface.GetSize(); ++i)
        model.m_SupportArray.m_aSurface[i]->IsSuspendSurface();
    model.GenSupportSTL(Coordinate(source) - 1.0);
    RequireFiniteSolids(model);
    model.ClearSupport();
}

void SuspendedEdges(ByteSource& source, CSTLModel& model) {
    model.FindSuspendEdge(source.Take<std::uint8_t>() % 3 - 1, 100.0 * Coordinate(source),
                          100.0 * Coordinate(source), Coordinate(source));
    model.GenSuspendSTL(Coordinate(source) - 1.0);
    RequireFiniteSolids(model);
    model.ClearSuspendEdge();
}

void Extrude(ByteSource& source, CSTLModel& model) {
    double const d = Coordinate(source) - 1.0;
    CFeatureSurface& surface = *model.m_SurfaceArray.m_aSurface[0];
    CSTLModel shell;
    surface.ExtrudeSurface(&shell, d);
    surface.ExtrudeSurfaceVerge(&shell, d);
    RequireInvariants(shell);
    surface.ClearUsedPoint();
}

void Step(ByteSource& source, CSTLModel& model) {
    switch (source.Take<std::uint8_t>() % 18) {
        case 0:
            return AddFacets(source, model);
        case 1:
            return model.FixNormal();
        case 2:
            return model.ReverseFacet();
        case 3:
            return Transform(source, model);
        case 4:
            return model.ZCompensate(Coordinate(source));
        case 5:
            return model.ResumeZCompensate();
        case 6:
            return model.m_VertexTree.ExchangeXYZ(source.Take<std::uint8_t>() % 5);
        case 7:
            return model.m_VertexTree.ReBuildTree();
        case 8:
            return model.ReleaseAllFacet();
        case 9: {
            CSTLModel other;
            AddFacets(source, other);
            return model.AddSTLModel(&other);
        }
        case 10: {
            for (int i = 0; i < model.GetCharacterFacetsNum(); ++i) {
                CFeatureSurface& surface = *model.m_SurfaceArray.m_aSurface[i];
                surface.FindSurfaceEdge();
                surface.FindSurfaceVerge();
                surface.GetBoundBox();
                surface.Area();
            }
            return;
        }
        case 11:
            return Classify(source, model);
        case 12:
            return Disjoin(model);
        case 13:
            return FindLevelPlanes(source, model);
        case 14:
            return Support(source, model);
        case 15:
            return SuspendedEdges(source, model);
        case 16:
            return Extrude(source, model);
        default: {
            double offset[3] = {Coordinate(source), Coordinate(source), Coordinate(source)};
            return model.Transfer(offset);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize) {
    ByteSource source(pData, nSize);
    CSTLModel model;
    AddFacets(source, model);
    RequireInvariants(model);
    while (!source.IsEmpty()) {
        Step(source, model);
        RequireInvariants(model);
    }
    return 0;
}
