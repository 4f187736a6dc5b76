// Memory that runs out at any allocation: the operation ends by std::bad_alloc, or goes on without what it
// could not have, and what it leaves can be used and released.

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "FailingMemory.h"
#include "SmallFiles.h"
#include "foundation/files/Path.h"
#include "trees/Avl.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

using namespace varnet;

namespace {

struct Work {
    std::string name;
    std::function<void(CSTLModel&, TestFolder const&)> run;
};

void ReleaseShells(CSTLModel& model) {
    XR_CList<void*, void*> shells;
    try {
        model.Disjoin(shells);
    } catch (std::bad_alloc const&) {
    }
    while (shells.IsEmpty() == 0) delete static_cast<CSTLModel*>(shells.RemoveHead());
}

// A sphere, and a roof turned upside down, whose ridge hangs in the air.
shapes::Mesh SphereAndKeel() {
    shapes::Corner const a{0, 0, 0}, b{4, 0, 0}, c{0, -1, 1}, d{4, -1, 1}, e{0, 1, 1}, f{4, 1, 1};
    shapes::Mesh mesh = {{a, b, d}, {a, d, c}, {b, a, e}, {b, e, f},
                         {c, d, f}, {c, f, e}, {a, c, e}, {b, f, d}};
    return shapes::Append(mesh, shapes::Moved(shapes::IcoSphere(3.0, 1), 0, 20, 0));
}

std::vector<Work> WorkOnModels() {
    std::vector<Work> all = {
        {"FixNormal", [](CSTLModel& model, TestFolder const&) { model.FixNormal(); }},
        {"Disjoin", [](CSTLModel& model, TestFolder const&) { ReleaseShells(model); }},
        {"Disjoin where heights are near each other",
         [](CSTLModel& model, TestFolder const&) {
             avl::Walk(model.m_VertexTree.m_pRoot, [](tagVertexNode* pNode) { pNode->z *= 0.0001; });
             ReleaseShells(model);
         }},
        {"FindSuspendEdge",
         [](CSTLModel& model, TestFolder const&) {
             model.FindSuspendEdge(-1, 45.0, 30.0, 0.01);
             model.GenSuspendSTL(1.0);
         }},
        {"GenSupportSTL",
         [](CSTLModel& model, TestFolder const&) {
             model.FindSupportSurface(80.0, 0);
             model.FilterUnSuspendSupport(1000.0);
             model.GenSupportSTL(0.0);
         }},
        {"AddSTLModel",
         [](CSTLModel& model, TestFolder const&) {
             CSTLModel other;
             AddShape(other, shapes::Moved(shapes::IcoSphere(3.0, 1), 20, 0, 0));
             model.AddSTLModel(&other);
         }},
    };
    for (FileOperation const& writer : ModelWriters()) {
        all.push_back({writer.name, [writer](CSTLModel& model, TestFolder const& folder) {
                           WidePath path(folder / "out");
                           writer.run(model, path);
                       }});
    }
    return all;
}

void AddSquare(CLayer& layer, double dLow, double dHigh) {
    auto* const pLoop = new tagLoopTreeNode;
    pLoop->m_bClosed = 1;
    pLoop->m_pPointList = new XR_CList<CPoint2D, CPoint2D&>;
    for (CPoint2D corner : {CPoint2D(dLow, dLow), CPoint2D(dHigh, dLow), CPoint2D(dHigh, dHigh),
                            CPoint2D(dLow, dHigh), CPoint2D(dLow, dLow)}) {
        pLoop->m_pPointList->AddTail(corner);
    }
    layer.AddRawLoop(pLoop);
}

// Squares about each other, with strokes between the outer two.
void FillLayer(CLayer& layer) {
    AddSquare(layer, 0.0, 20.0);
    AddSquare(layer, 5.0, 15.0);
    AddSquare(layer, 8.0, 12.0);
    for (int i = 0; i < 4; ++i) {
        auto* const pHatch = new CHatch;
        pHatch->m_nID = 3;
        CEdge2D edge(CPoint2D(0.5, 0.7 + i), CPoint2D(19.5, 0.7 + i));
        pHatch->m_EdgeList.AddTail(edge);
        layer.m_HatchList.AddTail(pHatch);
    }
}

void WriteAndReadBack(CLayer& layer, int nMode) {
    File const file(std::tmpfile());
    if (file == nullptr) return;
    layer.WriteCLIFile(file.get(), nMode);
    std::rewind(file.get());
    CLayer copy;
    copy.ReadCLIFile(file.get(), nMode);
}

// Runs the work with its first allocation failing, its second, and so on, until it has had them all.
void FailEverywhere(
    std::function<void(std::function<void(std::function<void()> const&)> const&)> const& once) {
    bool bFailed = true;
    std::size_t nFailing = 0;
    for (; bFailed; ++nFailing) {
        once([&bFailed, nFailing](std::function<void()> const& work) {
            FailingMemory const failing(nFailing);
            try {
                work();
            } catch (std::bad_alloc const&) {
                // The one way out that an operation has.
            }
            bFailed = failing.HasFailed();
        });
    }
    EXPECT_GT(nFailing, 1u) << "nothing was allocated";
}

}  // namespace

TEST(AllocationFailure, EveryWorkOnAModelEndsCleanly) {
    for (Work const& work : WorkOnModels()) {
        SCOPED_TRACE(work.name);
        TestFolder const folder;
        FailEverywhere([&](auto const& run) {
            CSTLModel model;
            AddShape(model, shapes::WithTurned(SphereAndKeel(), 5));
            run([&] { work.run(model, folder); });
            model.ClearSupport();
            model.ClearSupportSTL();
            model.CalculateNormal();
            model.CalVolume();
        });
    }
}

// Facets on their way from one division of the model to the next belong to no surface. Where the next one
// cannot be had, those that are not in it yet are lost: the model is smaller, and what it has is sound.
TEST(AllocationFailure, EveryClassificationLeavesASmallerModelAtWorst) {
#if defined(__SANITIZE_ADDRESS__)
    __lsan::ScopedDisabler const lost;
#endif
    using Classify = std::function<void(CSTLModel&)>;
    std::vector<Classify> const all = {
        [](CSTLModel& model) { model.ExtractSurfaceAndEdge(); },
        [](CSTLModel& model) { model.ClassifySurf(CSTLModel::EightClassifyFun, 0.1); },
        [](CSTLModel& model) { model.ExtractFeatherSurf(CSTLModel::NormalJudgeFun, 0.0); },
    };
    for (Classify const& classify : all) {
        FailEverywhere([&](auto const& run) {
            CSTLModel model;
            AddShape(model, shapes::IcoSphere(3.0, 1));
            run([&] { classify(model); });
            model.CalculateNormal();
            model.CalArea();
        });
    }
}

TEST(AllocationFailure, EveryReaderEndsCleanlyAndClosesItsFile) {
    TestFolder const folder;
    std::size_t const nOpen = OpenFiles();
    for (std::string const& bytes : FilesOf(shapes::Box({-1, -2, -3}, {1, 2, 3}))) {
        WidePath path(folder.Write("model", bytes));
        for (FileOperation const& reader : ModelReaders()) {
            SCOPED_TRACE(reader.name);
            FailEverywhere([&](auto const& run) {
                CSTLModel model;
                run([&] { reader.run(model, path); });
                model.CalculateNormal();
                model.CalVolume();
            });
        }
    }
    EXPECT_EQ(nOpen, OpenFiles());
}

namespace {

using WorkOnLayer = std::function<void(CLayer&)>;

void FailOnLayers(std::vector<WorkOnLayer> const& all) {
    for (std::size_t n = 0; n < all.size(); ++n) {
        SCOPED_TRACE(n);
        FailEverywhere([&](auto const& run) {
            CLayer layer;
            FillLayer(layer);
            run([&] { all[n](layer); });
            layer.GetBoundBox();
            EXPECT_GE(layer.m_LoopList.GetCount(), 3);
            EXPECT_FALSE(layer.m_HatchList.IsEmpty());
            layer.ReleaseAll();
        });
    }
}

tagLoopTreeNode& FirstLoop(CLayer& layer) {
    return *static_cast<tagLoopTreeNode*>(layer.m_RawLoopList.GetHead());
}

CHatch& FirstHatch(CLayer& layer) { return *static_cast<CHatch*>(layer.m_HatchList.GetHead()); }

}  // namespace

TEST(AllocationFailure, EveryWorkOnALayerEndsCleanlyAndLosesNothing) {
    FailOnLayers({
        [](CLayer& layer) { layer.MakeTopology(1); },
        [](CLayer& layer) {
            CPoint2D a(-1.0, -1.0);
            CPoint2D b(21.0, 21.0);
            layer.AddBorder(a, b);
        },
        [](CLayer& layer) {
            CPoint2D pos(30.0, 0.0);
            layer.OptimizeHatchs(pos, 0);
        },
        [](CLayer& layer) { std::unique_ptr<CLayer> const copy(layer.CopyLoop()); },
        [](CLayer& layer) { CLayer const copy(layer); },
        [](CLayer& layer) {
            CLayer copy;
            copy.AddOtherLayer(layer, 1.0, 2.0, 7);
        },
        [](CLayer& layer) { std::unique_ptr<CLayer> const hatches(layer.ConvertLoopToHatch(3)); },
        [](CLayer& layer) {
            std::unique_ptr<tagLoopTreeNode> const path(ConvertHatchToLoop(&FirstHatch(layer), 1.0, 4));
        },
        [](CLayer& layer) { FirstHatch(layer).AddPointsOnLongEdge(0.3); },
        [](CLayer& layer) {
            CPoint2D pos;
            layer.OptimizeLoops(pos, 0);
        },
        [](CLayer& layer) {
            CPoint2D pos;
            CLayer out;
            layer.OptimizeLoopAndChildLoopHatch(&FirstLoop(layer), &pos, &out, 0.5, 0.3);
        },
        [](CLayer& layer) { layer.LimitInBox(CBoundBox2D(CPoint2D(1, 1), CPoint2D(12, 12)), 1, 1); },
        [](CLayer& layer) { WriteAndReadBack(layer, 1); },
        [](CLayer& layer) { WriteAndReadBack(layer, 2); },
        [](CLayer& layer) { WriteAndReadBack(layer, 3); },
        [](CLayer& layer) {
            tagLoopTreeNode& loop = FirstLoop(layer);
            std::unique_ptr<tagLoopTreeNode> const off(loop.CutLoop(7.0, 1.0, OPERATE_AT_HEAD, 1));
            tagLoopTreeNode joined;
            joined.InsertLoopAtTail(&loop, 0);
            joined.InsertLoopAtHead(off.get(), 0);
            joined.CopyOtherLoop(&loop);
            joined.Optimize();
        },
    });
}
