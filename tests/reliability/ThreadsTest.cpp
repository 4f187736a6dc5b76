// Different models in different threads at the same time, and the stop flags from outside. Run under the
// thread sanitizer too.

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "Shapes.h"
#include "TestFiles.h"
#include "Varnet64.h"

namespace {

// Reads, repairs, measures, moves, writes and releases a model.
int WorkOn(TestFolder const& folder, std::string const& name, shapes::Mesh const& mesh) {
    WidePath input(folder.Write(name + ".stl", shapes::ToBinaryStl(shapes::WithTurned(mesh, 7))));
    WidePath output(folder / (name + "-out.stl"));
    CSTLModel model;
    if (model.ReadSTLFile(input, 0) != 1) return 0;
    model.FixNormal();
    double matrix[4][4] = {{2, 0, 0, 0}, {0, 2, 0, 0}, {0, 0, 2, 0}, {1, 2, 3, 1}};
    model.Transform(matrix);
    model.m_SurfaceArray.m_aSurface[0]->FindSurfaceEdge();
    model.SaveSTLFile(output, 2);
    CSTLModel copy;
    copy.AddSTLModel(&model);
    int const nFacets = copy.GetFacetsNum();
    model.ReleaseAllFacet();
    return nFacets;
}

}  // namespace

TEST(Threads, DifferentModelsMayBeUsedAtTheSameTime) {
    TestFolder folder;
    shapes::Mesh const torus = shapes::Torus(20.0, 5.0, 48, 24);
    shapes::Mesh const sphere = shapes::IcoSphere(10.0, 4);
    int nTorus = 0;
    int nSphere = 0;
    std::thread first([&] { nTorus = WorkOn(folder, "torus", torus); });
    std::thread second([&] { nSphere = WorkOn(folder, "sphere", sphere); });
    first.join();
    second.join();
    EXPECT_EQ(static_cast<int>(torus.size()), nTorus);
    EXPECT_EQ(static_cast<int>(sphere.size()), nSphere);
}

TEST(Threads, AModelMayBeReleasedByAnotherThreadThanTheOneThatMadeIt) {
    CSTLModel* pModel = nullptr;
    std::thread maker([&pModel] {
        pModel = new CSTLModel;
        for (shapes::Triangle const& t : shapes::IcoSphere(10.0, 4)) {
            tagFACET facet;
            for (std::size_t i = 0; i < 3; ++i) facet.m_ptVertex[i] = CPoint3D(t[i].x, t[i].y, t[i].z);
            pModel->AddFacet(facet);
        }
    });
    maker.join();
    EXPECT_EQ(20 * 256, pModel->GetFacetsNum());
    delete pModel;
}

TEST(Threads, AnotherThreadMayStopAMerge) {
    CSTLModel source;
    for (shapes::Triangle const& t : shapes::IcoSphere(10.0, 5)) {
        tagFACET facet;
        for (std::size_t i = 0; i < 3; ++i) facet.m_ptVertex[i] = CPoint3D(t[i].x, t[i].y, t[i].z);
        source.AddFacet(facet);
    }
    CSTLModel target;
    std::atomic<bool> bMerged = false;
    std::thread stopper([&] {
        while (!bMerged && target.GetFacetsNum() < 100) std::this_thread::yield();
        target.StopCurOperate();
    });
    target.AddSTLModel(&source);
    bMerged = true;
    stopper.join();
    EXPECT_GE(target.GetFacetsNum(), 100);
    EXPECT_LE(target.GetFacetsNum(), source.GetFacetsNum());
    EXPECT_EQ(1, target.IsStopCurOperate());
    target.ResetStopFlag();
    EXPECT_EQ(0, target.IsStopCurOperate());
}
