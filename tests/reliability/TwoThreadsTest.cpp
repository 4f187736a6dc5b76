// Every operation on two models and two layers at the same time, one in each of two threads. Run under the
// thread sanitizer too: only the process-wide counters are shared, and these are no race.

#include <gtest/gtest.h>

#include <sstream>
#include <thread>

#include "SmallFiles.h"

namespace {

// What the operations came to, as text.
using Findings = std::ostringstream;

void Release(XR_CList<void*, void*>& models) {
    while (models.IsEmpty() == 0) delete static_cast<CSTLModel*>(models.RemoveHead());
}

void AnalyseAndSupport(CSTLModel& model, Findings& out) {
    model.FixNormal();
    out << model.CalArea() << ' ' << model.CalVolume() << ' ';
    out << model.FindSupportSurface(45.0, 1) << ' ' << model.FilterUnSuspendSupport(1.0) << ' ';
    model.GenSupportSTL(0.0);
    model.ZCompensate(0.1);
    model.ResumeZCompensate();
    out << model.FindSuspendEdge(-1, 45.0, 45.0, 0.5) << ' ';
    model.GenSuspendSTL(1.0);
    out << model.m_SupportModelList.GetCount() << ' ';
    model.ClearSupportSTL();
    model.ClearSupport();
    CSTLModel shell;
    CFeatureSurface& surface = *model.m_SurfaceArray.m_aSurface[0];
    surface.ExtrudeSurface(&shell, 0.5);
    surface.ExtrudeSurfaceVerge(&shell, 0.5);
    surface.ClearUsedPoint();
    XR_CList<void*, void*> shells;
    model.Disjoin(shells);
    out << shells.GetCount() << ' ' << shell.GetFacetsNum() << ' ';
    Release(shells);
    model.ExtractSurfaceAndEdge();
    model.ClassifySurf(CSTLModel::EightClassifyFun, 0.1);
    out << model.GetCharacterFacetsNum() << '\n';
}

void WriteAndReadAll(CSTLModel& model, TestFolder const& folder, Findings& out) {
    for (FileOperation const& writer : ModelWriters()) {
        WidePath path(folder / "model");
        out << writer.run(model, path);
        for (FileOperation const& reader : ModelReaders()) {
            CSTLModel copy;
            out << reader.run(copy, path) << ' ' << copy.GetFacetsNum() << ' ';
        }
    }
}

tagLoopTreeNode* Square(double dCenter, double dHalf) {
    auto* const pLoop = new tagLoopTreeNode;
    pLoop->m_pPointList = new XR_CList<CPoint2D, CPoint2D&>;
    for (int i = 0; i < 5; ++i) {
        CPoint2D point(dCenter + (i % 4 == 1 || i % 4 == 2 ? dHalf : -dHalf),
                       dCenter + (i % 4 >= 2 ? dHalf : -dHalf));
        pLoop->m_pPointList->AddTail(point);
    }
    pLoop->m_bClosed = 1;
    return pLoop;
}

// A stroke in each outer loop, from near its left side to near its right.
void AddStrokes(CLayer& layer, int nLoops) {
    for (int i = 0; i < nLoops; ++i) {
        auto* const pHatch = new CHatch;
        pHatch->m_nID = 3;
        CEdge2D edge(CPoint2D(10.0 * i - 3.5, 10.0 * i + 3.0), CPoint2D(10.0 * i + 3.5, 10.0 * i + 3.0));
        pHatch->m_EdgeList.AddTail(edge);
        layer.m_HatchList.AddTail(pHatch);
    }
}

void WriteAndReadLayer(CLayer& layer, Findings& out) {
    constexpr int kText = 1;
    constexpr int kBinary = 2;
    for (int const nMode : {kText, kBinary}) {
        CLayerModel model;
        model.m_pFile = std::tmpfile();
        out << model.SaveCLIHead(model.m_pFile, nMode, 1);
        long const nOffset = std::ftell(model.m_pFile);
        out << model.SaveLayer(&layer, model.m_pFile, nMode) << model.ReadCLIHead();
        CLayer copy;
        out << model.ReadLayer(&copy, static_cast<unsigned long>(nOffset)) << ' '
            << copy.m_LoopList.GetCount() << '\n';
        std::fclose(model.m_pFile);
    }
}

void WorkOnLayers(int nLoops, Findings& out) {
    CLayer layer;
    for (int i = 0; i < nLoops; ++i) {
        layer.AddRawLoop(Square(10.0 * i, 4.0));
        layer.AddRawLoop(Square(10.0 * i, 2.0));
    }
    layer.MakeTopology(1);
    layer.BuildLoopList();
    layer.GetBoundBox();
    CLayer copy;
    copy.AddOtherLayer(layer, 1.0, 2.0, 7);
    out << copy.m_RawLoopList.GetCount() << ' ' << layer.m_LoopList.GetCount() << '\n';
    AddStrokes(layer, nLoops);
    CPoint2D pos;
    layer.OptimizeHatchs(pos, 0);
    out << pos.x << ' ' << pos.y << '\n';
    CLayer paths;
    while (tagLoopTreeNode* const pLoop = layer.FindNearUnusedOutLoop(pos)) {
        layer.OptimizeLoopAndChildLoopHatch(pLoop, &pos, &paths, 0.5, 0.3);
        pLoop->m_nFlag |= LOOP_USED_FLAG;
    }
    out << paths.m_RawLoopList.GetCount() << '\n';
    copy.OptimizeLoops(pos, 0);
    WriteAndReadLayer(copy, out);
}

std::string WorkOn(shapes::Mesh const& mesh, int nLoops) {
    TestFolder const folder;
    Findings out;
    CSTLModel model;
    AddShape(model, shapes::WithTurned(mesh, 7));
    WriteAndReadAll(model, folder, out);
    AnalyseAndSupport(model, out);
    model.ReleaseAllFacet();
    WorkOnLayers(nLoops, out);
    return out.str();
}

}  // namespace

TEST(TwoThreads, EveryOperationComesToWhatItComesToAlone) {
    shapes::Mesh const bracket = shapes::Bracket();
    shapes::Mesh const tray = shapes::Tray(2, 2, 2);
    std::string const bracketAlone = WorkOn(bracket, 20);
    std::string const trayAlone = WorkOn(tray, 30);
    std::string first;
    std::string second;
    std::thread one([&] { first = WorkOn(bracket, 20); });
    std::thread two([&] { second = WorkOn(tray, 30); });
    one.join();
    two.join();
    EXPECT_EQ(bracketAlone, first);
    EXPECT_EQ(trayAlone, second);
}
