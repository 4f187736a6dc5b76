// What is released gives all its memory back: as many blocks are there after a work as before, in every
// build.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>

#include "FailingMemory.h"
#include "SmallFiles.h"

namespace {

// Pools and buffers that stay for the next work have come into being by the second time.
void ExpectNothingLeft(char const* pName, std::function<void()> const& work) {
    work();
    work();
    std::int64_t const nBefore = LiveBlocks();
    for (int i = 0; i < 3; ++i) work();
    EXPECT_EQ(nBefore, LiveBlocks()) << pName;
}

CPoint3D Rim(int i) { return CPoint3D(50.0 * std::cos(i * 0.1), 50.0 * std::sin(i * 0.1), 0.0); }

// Facets about one vertex: its list of facets is a block of its own from the eighth on.
void AddFan(CSTLModel& model, int nFacets) {
    for (int i = 0; i < nFacets; ++i) {
        tagFACET facet;
        facet.m_ptVertex[0] = CPoint3D(0.0, 0.0, 20.0);
        facet.m_ptVertex[1] = Rim(i);
        facet.m_ptVertex[2] = Rim(i + 1);
        model.AddFacet(facet);
    }
}

shapes::Mesh BoxAndSphere() {
    shapes::Mesh mesh = shapes::Box({-1, -2, -3}, {1, 2, 3});
    return shapes::Append(mesh, shapes::Moved(shapes::IcoSphere(3.0, 2), 20, 0, 5));
}

CHatch* Stroke(double x, bool bHasEdge = true) {
    auto pHatch = std::make_unique<CHatch>();
    CEdge2D edge(CPoint2D(x, 1.0), CPoint2D(x, 0.0));
    if (bHasEdge) pHatch->m_EdgeList.AddTail(edge);
    return pHatch.release();
}

}  // namespace

TEST(Blocks, AreCounted) {
    std::int64_t const nBefore = LiveBlocks();
    // Volatile, since a compiler may leave out what it sees taken and given back.
    void* volatile pBlock = ::operator new(10);
    EXPECT_EQ(nBefore + 1, LiveBlocks());
    ::operator delete(pBlock);
    EXPECT_EQ(nBefore, LiveBlocks());
    void* volatile pGrown = std::realloc(nullptr, 10);
    pGrown = std::realloc(pGrown, 100000);
    EXPECT_EQ(nBefore + 1, LiveBlocks());
    std::free(pGrown);
    EXPECT_EQ(nBefore, LiveBlocks());
}

TEST(Blocks, ModelsAndTreesGiveTheirListsBack) {
    for (int const nFacets : {1, 7, 8, 9, 16, 60}) {
        ExpectNothingLeft("a model of a fan", [nFacets] {
            CSTLModel model;
            AddFan(model, nFacets);
        });
        ExpectNothingLeft("a released model", [nFacets] {
            CSTLModel model;
            AddFan(model, nFacets);
            model.ReleaseAllFacet();
            AddFan(model, nFacets);
        });
    }
    ExpectNothingLeft("a tree", [] {
        CVertexTree tree;
        for (int i = 0; i < 300; ++i) {
            CPoint3D point(Rim(i));
            tree.AddNode(point);
        }
        tree.ReleaseAll();
    });
}

TEST(Blocks, WorkOnModelsGivesAllBack) {
    auto const works = std::vector<std::pair<char const*, std::function<void(CSTLModel&)>>>{
        {"FixNormal", [](CSTLModel& model) { model.FixNormal(); }},
        {"Disjoin",
         [](CSTLModel& model) {
             XR_CList<void*, void*> shells;
             model.Disjoin(shells);
             while (shells.IsEmpty() == 0) delete static_cast<CSTLModel*>(shells.RemoveHead());
         }},
        {"ExtractSurfaceAndEdge", [](CSTLModel& model) { model.ExtractSurfaceAndEdge(); }},
        {"ClassifySurf", [](CSTLModel& model) { model.ClassifySurf(CSTLModel::EightClassifyFun, 0.1); }},
        {"supports",
         [](CSTLModel& model) {
             model.FindSupportSurface(60.0, 1);
             model.FilterUnSuspendSupport(5.0);
             model.GenSupportSTL(0.0);
             model.FindSuspendEdge(-1, 45.0, 30.0, 0.01);
             model.GenSuspendSTL(1.0);
             model.ClearSupport();
             model.ClearSupportSTL();
         }},
        {"supports that the model still has",
         [](CSTLModel& model) {
             model.FindSupportSurface(60.0, 1);
             model.GenSupportSTL(2.0);
         }},
    };
    for (auto const& [pName, work] : works) {
        ExpectNothingLeft(pName, [&work = work] {
            CSTLModel model;
            AddShape(model, BoxAndSphere());
            work(model);
        });
    }
}

TEST(Blocks, ReadersGiveAllBack) {
    TestFolder const folder;
    for (std::string const& bytes : FilesOf(BoxAndSphere())) {
        for (std::size_t const nSize : {bytes.size(), bytes.size() / 2}) {
            WidePath path(folder.Write("model", bytes.substr(0, nSize)));
            for (FileOperation const& reader : ModelReaders()) {
                ExpectNothingLeft(reader.name.c_str(), [&] {
                    CSTLModel model;
                    reader.run(model, path);
                });
            }
        }
    }
}

// Hatches without edges are entered by no pass: they leave the list, and nobody else has them.
TEST(Blocks, HatchesThatAreNeverEnteredAreGone) {
    for (int const nMode : {0, 1, 2}) {
        ExpectNothingLeft("OptimizeHatchs", [nMode] {
            CLayer layer;
            for (int i = 0; i < 4; ++i) {
                layer.m_HatchList.AddTail(Stroke(i, false));
                layer.m_HatchList.AddTail(Stroke(i));
            }
            CPoint2D pos(0.0, 0.0);
            layer.OptimizeHatchs(pos, nMode);
            EXPECT_EQ(4, layer.m_HatchList.GetCount());
        });
    }
}

TEST(Blocks, WorkOnLayersGivesAllBack) {
    auto const square = [](double dLow, double dHigh) {
        auto pLoop = std::make_unique<tagLoopTreeNode>();
        pLoop->m_bClosed = 1;
        pLoop->m_pPointList = new XR_CList<CPoint2D, CPoint2D&>;
        for (CPoint2D corner : {CPoint2D(dLow, dLow), CPoint2D(dHigh, dLow), CPoint2D(dHigh, dHigh),
                                CPoint2D(dLow, dHigh), CPoint2D(dLow, dLow)})
            pLoop->m_pPointList->AddTail(corner);
        return pLoop.release();
    };
    ExpectNothingLeft("a layer", [&square] {
        CLayer layer;
        layer.AddRawLoop(square(0.0, 20.0));
        layer.AddRawLoop(square(5.0, 15.0));
        for (int i = 1; i < 5; ++i) layer.m_HatchList.AddTail(Stroke(i));
        layer.MakeTopology(1);
        CLayer out;
        CPoint2D pos(0.0, 0.0);
        layer.OptimizeLoopAndChildLoopHatch(static_cast<tagLoopTreeNode*>(layer.m_RawLoopList.GetHead()),
                                            &pos, &out, 1.0, 1.0);
        CLayer const copy(layer);
        layer.LimitInBox(CBoundBox2D(CPoint2D(1, 1), CPoint2D(12, 12)), 1, 1);
        layer.OptimizeLoops(pos, 0);
        out.ReleaseAll();
    });
}
