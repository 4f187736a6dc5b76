#include "Surfaces.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "Commands.h"
#include "ModelFile.h"
#include "Ply.h"
#include "Progress.h"
#include "Table.h"

namespace {

// Facets whose normal's z is below this count as upright, when surfaces are classes of facets.
constexpr double kUpright = 0.1;

// So many surfaces are listed, the largest first.
constexpr std::size_t kListed = 20;

std::vector<CFeatureSurface*> LargestFirst(CSTLModel const& model) {
    auto const& surfaces = model.m_SurfaceArray.m_aSurface;
    std::vector<CFeatureSurface*> found(surfaces.GetData(), surfaces.GetData() + surfaces.GetSize());
    std::stable_sort(found.begin(), found.end(),
                     [](CFeatureSurface* a, CFeatureSurface* b) { return a->Area() > b->Area(); });
    return found;
}

void PrintSurfaces(std::string const& file, CSTLModel const& model) {
    std::vector<CFeatureSurface*> const surfaces = LargestFirst(model);
    double dArea = 0.0, dRim = 0.0;
    for (CFeatureSurface* const pSurface : surfaces) {
        dArea += pSurface->Area();
        dRim += RimLength(*pSurface);
    }
    Table table(file);
    table.Add("surfaces", Count(static_cast<long long>(surfaces.size())));
    table.Add("area, mm2", Number(dArea));
    table.Add("length of all rims, mm", Number(dRim));
    for (std::size_t i = 0; i < std::min(kListed, surfaces.size()); ++i) {
        table.Add("surface " + std::to_string(i + 1), Count(surfaces[i]->m_aFacet.GetSize()) +
                                                          " facets, area " + Number(surfaces[i]->Area()) +
                                                          ", rim " + Number(RimLength(*surfaces[i])));
    }
    if (surfaces.size() > kListed) {
        table.Add("...", Count(static_cast<long long>(surfaces.size() - kListed)) + " smaller ones");
    }
    table.Print();
}

}  // namespace

void DivideModel(CSTLModel& model, std::string const& judge) {
    if (judge == "normal") {
        model.ExtractSurfaceAndEdge();
        return;
    }
    if (judge == "eight") {
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
    double dLength = 0.0;
    XR__POSITION* position = surface.m_VergeList.GetHeadPosition();
    while (position != nullptr) {
        tagVertexNode const* const pStart = surface.m_VergeList.GetNext(position);
        tagVertexNode const* const pEnd = surface.m_VergeList.GetNext(position);
        dLength += std::sqrt(D2ofPtoP(*pStart, *pEnd));
    }
    return dLength;
}

void RunSurfaces(SurfacesOptions const& options) {
    CSTLModel model;
    ReadModel(options.input, model);
    RunWithProgress(
        "Dividing", [&model, &options] { DivideModel(model, options.judge); }, [] { return 0.0; }, [] {});
    ThrowIfInterrupted();
    if (!options.output.empty()) {
        FacetColors colors;
        auto const& surfaces = model.m_SurfaceArray.m_aSurface;
        for (int i = 0; i < surfaces.GetSize(); ++i) colors.Paint(*surfaces[i], surfaces[i]->m_nColor);
        WritePly(options.output, model, colors);
    }
    PrintSurfaces(options.input, model);
}
