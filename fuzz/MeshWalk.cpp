// Random facets, then a random walk over the operations of a model.

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

void Step(ByteSource& source, CSTLModel& model) {
    switch (source.Take<std::uint8_t>() % 12) {
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
