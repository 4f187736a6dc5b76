// Random loops and hatches in two layers, then a random walk over the operations of layers, loops and
// hatches.

#include <memory>
#include <set>

#include "FuzzInput.h"
#include "Require.h"
#include "contours/HatchLink.h"
#include "contours/Layer.h"
#include "contours/LoopWalk.h"

using namespace varnet;

namespace {

// Hosts may pass anything; the walk stops before it grows out of bounds.
constexpr int kMostPoints = 20000;

// Steps that make boxes touch and nest; now and then anything at all.
double Coordinate(ByteSource& source) {
    auto const nByte = source.Take<std::uint8_t>();
    if (nByte == 255) return source.Take<double>();
    return (nByte % 32) * 0.5 + (nByte / 32) * 0.00004;
}

CPoint2D Point(ByteSource& source) {
    double const x = Coordinate(source);
    double const y = Coordinate(source);
    return CPoint2D(x, y);
}

tagLoopTreeNode* Loop(ByteSource& source) {
    auto* const pLoop = new tagLoopTreeNode(0);
    auto const nKind = source.Take<std::uint8_t>();
    pLoop->m_bClosed = nKind % 8 != 0 ? 1 : 0;
    if (nKind % 16 == 1) return pLoop;
    pLoop->m_pPointList = new PointList(kPointBlockSize);
    if (nKind % 4 == 2) {
        double const x = Coordinate(source);
        double const y = Coordinate(source);
        double const d = Coordinate(source);
        for (CPoint2D corner :
             {CPoint2D(x, y), CPoint2D(x + d, y), CPoint2D(x + d, y + d), CPoint2D(x, y + d)}) {
            pLoop->m_pPointList->AddTail(corner);
        }
    } else {
        for (int n = source.Take<std::uint8_t>() % 16; n > 0; --n) {
            CPoint2D point(Point(source));
            pLoop->m_pPointList->AddTail(point);
        }
    }
    if (nKind % 32 != 3 && pLoop->m_pPointList->GetCount() > 0) {
        pLoop->m_pPointList->AddTail(pLoop->m_pPointList->GetHead());
    }
    if (nKind % 64 != 4) pLoop->GetBoundBox();
    return pLoop;
}

CHatch* Hatch(ByteSource& source) {
    auto* const pHatch = new CHatch;
    pHatch->m_nID = source.Take<std::uint8_t>() * 16;
    for (int n = source.Take<std::uint8_t>() % 8; n > 0; --n) {
        CPoint2D const start(Point(source));
        CEdge2D edge(start, Point(source));
        pHatch->m_EdgeList.AddTail(edge);
    }
    return pHatch;
}

void Fill(ByteSource& source, CLayer& layer) {
    for (int n = source.Take<std::uint8_t>() % 16; n > 0; --n) layer.AddRawLoop(Loop(source));
    for (int n = source.Take<std::uint8_t>() % 4; n > 0; --n) layer.m_HatchList.AddTail(Hatch(source));
}

// Every loop stands in the tree once, and a child one level below its parent. Gives the number of points.
int RequireInvariants(CLayer& layer) {
    layer.BuildLoopList();
    RequireSound(layer.m_RawLoopList);
    RequireSound(layer.m_LoopList);
    RequireSound(layer.m_HatchList);
    std::set<tagLoopTreeNode const*> seen;
    int nPoints = 0;
    ForEachLoop(layer.m_LoopList, [&](tagLoopTreeNode& loop) {
        Require(seen.insert(&loop).second);
        RequireSound(loop.m_ChildList);
        ForEachLoop(loop.m_ChildList,
                    [&loop](tagLoopTreeNode& child) { Require(child.m_nLevel == loop.m_nLevel + 1); });
        if (loop.m_pPointList != nullptr) RequireSound(*loop.m_pPointList);
        nPoints += PointCount(loop) + 1;
    });
    ForEachLoop(layer.m_RawLoopList, [](tagLoopTreeNode& loop) { Require(loop.m_nLevel == 0); });
    ForEachHatch(layer.m_HatchList, [&nPoints](CHatch& hatch) {
        RequireSound(hatch.m_EdgeList);
        nPoints += hatch.m_EdgeList.GetCount() + 1;
    });
    return nPoints;
}

tagLoopTreeNode* PickLoop(ByteSource& source, CLayer& layer) {
    layer.BuildLoopList();
    int const nCount = layer.m_LoopList.GetCount();
    if (nCount == 0) return nullptr;
    return static_cast<tagLoopTreeNode*>(
        layer.m_LoopList.GetAt(layer.m_LoopList.FindIndex(source.Take<std::uint8_t>() % nCount)));
}

void LoopStep(ByteSource& source, CLayer& layer, CLayer& other) {
    tagLoopTreeNode* const pLoop = PickLoop(source, layer);
    tagLoopTreeNode* const pOther = PickLoop(source, other);
    if (pLoop == nullptr) return;
    int const nBefore = PointCount(*pLoop);
    switch (source.Take<std::uint8_t>() % 13) {
        case 0:
            pLoop->Optimize();
            return Require(PointCount(*pLoop) <= nBefore);
        case 1:
            pLoop->OptimizeLine(Coordinate(source));
            return Require(PointCount(*pLoop) <= nBefore);
        case 2:
            pLoop->Optimize_UnClosed(Coordinate(source));
            return Require(PointCount(*pLoop) <= nBefore);
        case 3: {
            double const dLength = Coordinate(source);
            double const dKeep = Coordinate(source);
            auto const end = source.Take<std::uint8_t>() % 2 == 0 ? OPERATE_AT_TAIL : OPERATE_AT_HEAD;
            std::unique_ptr<tagLoopTreeNode> const pPieces(pLoop->CutLoop(dLength, dKeep, end, 1));
            return Require(pPieces != nullptr && pPieces->m_pPointList != nullptr);
        }
        case 4:
            pLoop->ReverseLoop();
            return Require(PointCount(*pLoop) == nBefore);
        case 5:
            pLoop->AdjutstHeadToPoint(Point(source));
            return Require(PointCount(*pLoop) == nBefore);
        case 6:
            pLoop->AdjustHeadToNearPoint(Point(source));
            return Require(PointCount(*pLoop) == nBefore);
        case 7:
            if (pOther != nullptr) pLoop->InsertLoopAtHead(pOther, POINT_INSERTED);
            return;
        case 8:
            if (pOther != nullptr) pLoop->InsertLoopAtTail(pOther, POINT_JOINT);
            return;
        case 9:
            if (pOther != nullptr) pLoop->CopyOtherLoop(pOther);
            return;
        case 10:
            pLoop->m_dTolerance = Coordinate(source);
            return;
        case 11:
            JudgeLoopDirection(pLoop->m_pPointList);
            return;
        default: {
            CPoint2D point(Point(source));
            int const nInside = IsInLoop(pLoop, point);
            return Require(nInside == 0 || nInside == 1);
        }
    }
}

void HatchStep(ByteSource& source, CLayer& layer) {
    ForEachHatch(layer.m_HatchList, [&source](CHatch& hatch) {
        switch (source.Take<std::uint8_t>() % 4) {
            case 0:
                return hatch.Reverse();
            case 1: {
                double const dLength = Coordinate(source);
                if (dLength > 0.25 && dLength < 100.0 && hatch.m_EdgeList.GetCount() < 100) {
                    double dSum = 0.0;
                    for (auto const* p = hatch.m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) {
                        CPoint2D const d = p->data.m_ptEnd - p->data.m_ptStart;
                        dSum += std::fabs(d.x) + std::fabs(d.y);
                    }
                    if (dSum < 1000.0) hatch.AddPointsOnLongEdge(dLength);
                }
                return;
            }
            case 2: {
                CHatch copy;
                copy.Copy(&hatch);
                return Require(copy.m_EdgeList.GetCount() == hatch.m_EdgeList.GetCount());
            }
            default:
                delete ConvertHatchToLoop(&hatch, 1.0, LOOP_KIND_HATCH);
        }
    });
}

void Transform(ByteSource& source, CLayer& layer) {
    double matrix[3][3];
    for (auto& row : matrix) {
        for (double& d : row) d = Coordinate(source) - 4.0;
    }
    layer.Transform(matrix, source.Take<std::uint8_t>() % 2);
}

// Loops that fall out of the pass belong to whoever called it.
void OrderLoops(ByteSource& source, CLayer& layer) {
    CPoint2D pos(Point(source));
    layer.BuildLoopList();
    std::set<tagLoopTreeNode*> left;
    ForEachLoop(layer.m_LoopList, [&left](tagLoopTreeNode& loop) { left.insert(&loop); });
    layer.OptimizeLoops(pos, source.Take<std::uint8_t>() % 3);
    ForEachLoop(layer.m_RawLoopList, [&left](tagLoopTreeNode& loop) {
        Require(left.erase(&loop) == 1 && PointCount(loop) > 0);
        loop.m_nLevel = 0;
    });
    for (tagLoopTreeNode* const pLoop : left) {
        pLoop->m_ChildList.RemoveAll();
        delete pLoop;
    }
}

void OrderHatchs(ByteSource& source, CLayer& layer) {
    CPoint2D pos(Point(source));
    int const nBefore = layer.m_HatchList.GetCount();
    layer.OptimizeHatchs(pos, source.Take<std::uint8_t>() % 3);
    Require(layer.m_HatchList.GetCount() <= nBefore);
    while (CHatch* const pHatch = FindNearHatchAndAdjust(&layer.m_HatchList, pos)) {
        Require((pHatch->m_nFlag & HATCH_USED_FLAG) == 0);
        pHatch->m_nFlag |= HATCH_USED_FLAG;
        pos = pHatch->m_EdgeList.GetTail().m_ptEnd;
    }
    ForEachHatch(layer.m_HatchList, [](CHatch& hatch) { hatch.m_nFlag = 0; });
}

void SpliceAll(ByteSource& source, CLayer& layer) {
    CLayer out;
    CPoint2D pos(Point(source));
    double const dWidth = Coordinate(source);
    double const dCut = Coordinate(source);
    layer.MakeTopology(source.Take<std::uint8_t>() % 2);
    while (tagLoopTreeNode* const pLoop = layer.FindNearUnusedOutLoop(pos)) {
        layer.OptimizeLoopAndChildLoopHatch(pLoop, &pos, &out, dWidth, dCut);
        pLoop->m_nFlag |= LOOP_USED_FLAG;
    }
    ForEachLoop(out.m_RawLoopList, [](tagLoopTreeNode& path) {
        Require(PointCount(path) > 0);
        RequireSound(*path.m_pPointList);
    });
    layer.ClearLoopsUsedFlag();
    ForEachHatch(layer.m_HatchList, [](CHatch& hatch) { hatch.m_nFlag = 0; });
}

void LayerStep(ByteSource& source, CLayer& layer, CLayer& other) {
    switch (source.Take<std::uint8_t>() % 19) {
        case 0:
            return Fill(source, layer);
        case 1:
            return layer.MakeTopology(1);
        case 2:
            return layer.MakeTopology(0);
        case 3:
            return layer.LimitInBox(CBoundBox2D(Point(source), Point(source)), 1, 1);
        case 4: {
            CPoint2D a(Point(source));
            CPoint2D b(Point(source));
            return layer.AddBorder(a, b);
        }
        case 5:
            return layer.CopyLayer(other, Coordinate(source), Coordinate(source), 0.5);
        case 6:
            return layer.AddOtherLayer(other, Coordinate(source), Coordinate(source),
                                       source.Take<std::uint8_t>());
        case 7:
            return Transform(source, layer);
        case 8: {
            std::unique_ptr<CLayer> const pCopy(layer.CopyLoop());
            return Require(pCopy->m_RawLoopList.GetCount() == layer.m_LoopList.GetCount());
        }
        case 9:
            return std::unique_ptr<CLayer>(layer.ConvertLoopToHatch(7))->ReleaseAll();
        case 10: {
            layer.BuildLoopList();
            layer.SortLoopListByBoxCenterX();
            return layer.SortLoopListByBoxCenterY();
        }
        case 11: {
            CPoint2D point(Point(source));
            layer.GetBoundBox();
            int const nInside = layer.IsInCounter(point);
            return Require(nInside == 0 || nInside == 1);
        }
        case 12: {
            double dLength = -1.0;
            layer.GetAreaLength(dLength);
            return layer.ClearLoopsUsedFlag();
        }
        case 13:
            return HatchStep(source, layer);
        case 14:
            return OrderLoops(source, layer);
        case 15:
            return OrderHatchs(source, layer);
        case 16:
            return SpliceAll(source, layer);
        default:
            return LoopStep(source, layer, other);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize) {
    ByteSource source(pData, nSize);
    CLayer first;
    CLayer second;
    Fill(source, first);
    Fill(source, second);
    for (int nSteps = 0; nSteps < 200 && !source.IsEmpty(); ++nSteps) {
        bool const bFirst = source.Take<std::uint8_t>() % 4 != 0;
        LayerStep(source, bFirst ? first : second, bFirst ? second : first);
        if (RequireInvariants(first) + RequireInvariants(second) > kMostPoints) break;
    }
    return 0;
}
