// Slicing: cutting a mesh at many heights, making layers of the cuts, and filling them.

#include <Varnet64.h>
#include <benchmark/benchmark.h>

#include <memory>

#include "BenchFiles.h"
#include "Fill.h"
#include "SliceLayer.h"
#include "Slicer.h"

namespace {

// The mesh that was asked for last.
CSTLModel const& GyroidModel(std::size_t nFacets) {
    static std::unique_ptr<CSTLModel> pModel;
    static std::size_t nHeld = 0;
    if (pModel == nullptr || nHeld != nFacets) {
        pModel = std::make_unique<CSTLModel>();
        for (shapes::Triangle const& triangle : GyroidMesh(nFacets)) {
            tagFACET facet;
            for (std::size_t i = 0; i < 3; ++i) {
                facet.m_ptVertex[i] = CPoint3D(triangle[i].x, triangle[i].y, triangle[i].z);
            }
            pModel->AddFacet(facet);
        }
        nHeld = nFacets;
    }
    return *pModel;
}

template <class Work>
void AtHeights(benchmark::State& state, Work const& work) {
    CSTLModel const& model = GyroidModel(static_cast<std::size_t>(state.range(0)));
    CBoundBox3D const& box = model.m_VertexTree.m_BoundBox;
    auto const nLayers = state.range(1);
    double const dHeight = (box.m_ptMax.z - box.m_ptMin.z) / static_cast<double>(nLayers);
    std::size_t nPoints = 0;
    for (auto _ : state) {
        nPoints = 0;
        Slicer slicer(model);
        for (std::int64_t i = 0; i < nLayers; ++i) {
            std::vector<Contour> const contours =
                slicer.Cut(box.m_ptMin.z + (static_cast<double>(i) + 0.5) * dHeight);
            for (Contour const& contour : contours) nPoints += contour.points.size();
            work(contours);
        }
    }
    state.counters["points"] = static_cast<double>(nPoints);
    state.SetItemsProcessed(state.iterations() * (state.range(0) + static_cast<std::int64_t>(nPoints)));
    state.counters["s/item"] =
        benchmark::Counter(static_cast<double>(state.range(0)) + static_cast<double>(nPoints),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void Cut(benchmark::State& state) {
    AtHeights(state, [](std::vector<Contour> const& contours) { benchmark::DoNotOptimize(contours.data()); });
}

void CutAndNest(benchmark::State& state) {
    AtHeights(state, [](std::vector<Contour> const& contours) {
        CLayer layer;
        AddContours(layer, contours, 0);
        NestAndSimplify(layer, 0.01);
    });
}

void CutNestAndFill(benchmark::State& state) {
    AtHeights(state, [](std::vector<Contour> const& contours) {
        CLayer layer;
        AddContours(layer, contours, 0);
        NestAndSimplify(layer, 0.01);
        Fill(layer, FillStyle(), RegionsOf(layer));
    });
}

// Facets, and layers: the growth with each.
void Sizes(benchmark::internal::Benchmark* pBenchmark) {
    pBenchmark->Args({100'000, 500})->Args({1'000'000, 50})->Args({1'000'000, 500});
    pBenchmark->Unit(benchmark::kMillisecond);
}

BENCHMARK(Cut)->Apply(Sizes);
BENCHMARK(CutAndNest)->Apply(Sizes);
BENCHMARK(CutNestAndFill)->Apply(Sizes);

}  // namespace
