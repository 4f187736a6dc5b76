// Surfaces and supports. Angles are looked up by their sine and cosine: what is found by them is set apart.

#include <memory>

#include "selfcheck/Record.h"

namespace selfcheck {

namespace {

void AddSurface(Record& record, CFeatureSurface& surface) {
    CBoundBox3D const box = surface.GetBoundBox();
    record.AddAll(surface.m_aFacet.GetSize(), surface.CalArea(), surface.CalProjectArea(), surface.CalMinZ(),
                  box.m_ptMin, box.m_ptMax, surface.FindSurfaceEdge());
    for (XR__POSITION* p = surface.m_EdgeList.GetHeadPosition(); p != nullptr;) {
        CEdge3D const& edge = surface.m_EdgeList.GetNext(p);
        record.AddAll(edge.m_ptStart, edge.m_ptEnd);
    }
    surface.FindSurfaceVerge();
    record.AddAll(surface.m_VergeList.GetCount(), surface.IsSuspendSupport(), surface.IsSuspendSurface());
}

// Solids on a surface: walls, and the shell at a distance along the normals of the vertices.
void AddSolids(Record& record, CFeatureSurface& surface) {
    surface.FindSurfaceEdge();
    CSTLModel walls;
    surface.ExtendEdge(2.0, &walls);
    surface.ExtendEdgeTo(-100.0, &walls);
    AddModel(record, walls);
    CSTLModel shell;
    surface.ExtrudeSurface(&shell, 0.75);
    surface.ExtrudeSurfaceVerge(&shell, 0.75);
    surface.ClearUsedPoint();
    AddModel(record, shell);
}

void AddClasses(Record& record, CSTLModel& model) {
    model.ClassifySurf(CSTLModel::EightClassifyFun, 0.1);
    record.Add(model.GetCharacterFacetsNum());
    AddModel(record, model);
    auto const& surfaces = model.m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.GetSize(); ++i) AddSurface(record, *surfaces[i]);
    AddSolids(record, *surfaces[0]);
    CSurfaceArray level;
    model.ExtractHorizonPlane(0.3, &level);
    record.Add(level.m_aSurface.GetSize());
    for (int i = 0; i < level.m_aSurface.GetSize(); ++i) {
        AddSurface(record, *level.m_aSurface[i]);
        level.m_aSurface[i]->m_aFacet.RemoveAll();
    }
    model.ExtractFeatherSurf(CSTLModel::JionJudgeFun, 0.02);
    record.Add(model.GetCharacterFacetsNum());
    AddModel(record, model);
    model.ExtractFeatherSurf(CSTLModel::NormalJudgeFun, 0.0);
    AddModel(record, model);
}

void AddBar(Record& record, Chance& chance) {
    CVertexTree tree;
    CFeatureEdge chain;
    for (int i = 0; i < 20; ++i) {
        CPoint3D point = chance.Point3();
        chain.m_VertexList.AddTail(tree.AddNode(point));
    }
    CSTLModel bar;
    chain.GenSTL(&bar, 0.4, 0.2, 5.0, 0);
    chain.GenSTL(&bar, 0.4, 0.2, -200.0, 1);
    AddModel(record, bar);
    record.AddAll(chain.GetLength(0), chain.GetMinZ(1));
}

double VolumeOf(XR_CList<void*, void*>& solids) {
    double volume = 0.0;
    for (XR__POSITION* p = solids.GetHeadPosition(); p != nullptr;)
        volume += static_cast<CSTLModel*>(solids.GetNext(p))->CalVolume();
    return volume;
}

// One after the other: each call leaves marks that the next one may see.
void AddSupports(Record& record, CSTLModel& model) {
    record.AddApart("FindSupportSurface, by vertices", model.FindSupportSurface(80.0, 0));
    record.AddApart("FindSupportSurface, by edges", model.FindSupportSurface(45.0, 1));
    record.AddApart("FilterUnSuspendSupport", model.FilterUnSuspendSupport(4.0));
    model.GenSupportSTL(0.0);
    record.AddApart("GenSupportSTL", VolumeOf(model.m_SupportModelList));
    model.ClearSupportSTL();
    XR_CList<void*, void*> hanging;
    model.m_VertexTree.FindSuspendPoint(hanging, 1);
    record.AddApart("FindSuspendPoint", hanging.GetCount());
    for (int const mode : {1, -1}) {
        record.AddApart(mode == 1 ? "FindSuspendEdge, up" : "FindSuspendEdge, down",
                        model.FindSuspendEdge(mode, 20.0, 20.0, 1.0));
        auto const& chains = model.m_SuspendEdgeArray;
        for (int i = 0; i < chains.GetSize(); ++i) {
            chains[i]->m_dHalfWidth = 0.5;
            chains[i]->m_dRise = 0.25;
        }
        model.GenSuspendSTL(3.0);
    }
    record.AddApart("GenSuspendSTL", VolumeOf(model.m_SupportModelList));
    model.FindSupportSurface(80.0, 1);
    model.ZCompensate(0.5);
    record.AddApart("ZCompensate", model.CalVolume());
    model.ResumeZCompensate();
    record.AddApart("ResumeZCompensate", model.CalVolume());
    model.ExtractSurfaceAndEdge();
    record.AddApart("ExtractSurfaceAndEdge", model.GetCharacterFacetsNum());
}

}  // namespace

void CheckSupport(Record& record) {
    record.BeginRoom("support");
    Chance chance(4);
    {
        CSTLModel ball;
        FillWithBall(ball, 24, 30.0);
        AddClasses(record, ball);
    }
    AddBar(record, chance);
    CSTLModel part;
    FillWithBall(part, 24, 30.0);
    // Flatter, so that its lower flanks are overhangs and its keels hang.
    double flatter[4][4] = {
        {1.0, 0.0, 0.0, 0.0}, {0.0, 1.0, 0.0, 0.0}, {0.0, 0.0, 0.5, 0.0}, {0.0, 0.0, 0.0, 1.0}};
    part.Transform(flatter);
    AddSupports(record, part);
}

}  // namespace selfcheck
