#include "Plate.h"

#include <algorithm>
#include <cmath>

#include "Failure.h"
#include "SliceLayer.h"

namespace {

// What a part may be higher than its layers, of a layer, before it gets another one.
constexpr double kSliver = 1e-6;

constexpr double kMostLayers = 1e6;

constexpr double kRightAngle = 90.0;

CBoundBox3D BoxOf(std::vector<CSTLModel const*> const& parts) {
    CBoundBox3D box;
    for (CSTLModel const* const pPart : parts) box += pPart->m_VertexTree.m_BoundBox;
    return box;
}

}  // namespace

Plate::Plate(std::vector<CSTLModel const*> const& parts, std::vector<CSTLModel const*> const& supports,
             SliceSettings const& settings)
    : m_Settings(settings) {
    CBoundBox3D const box = BoxOf(parts);
    double const dHeight = box.m_ptMax.z - box.m_ptMin.z;
    if (!(dHeight > 0.0)) throw Failure("there is nothing to slice: the parts have no height");
    double const dLayers = std::max(std::ceil(dHeight / settings.dLayer - kSliver), 1.0);
    if (!(dLayers <= kMostLayers))
        throw Failure("the layers are too thin: there would be more than a million");
    m_dBottom = box.m_ptMin.z;
    m_nLayers = static_cast<int>(dLayers);
    for (CSTLModel const* const pPart : parts) m_Parts.emplace_back(*pPart);
    for (CSTLModel const* const pSupport : supports) m_Supports.emplace_back(*pSupport);
}

std::unique_ptr<CLayer> Plate::NextLayer() {
    int const nLayer = ++m_Figures.nLayers;
    double const dMiddle = m_dBottom + (nLayer - 0.5) * m_Settings.dLayer;
    double const dAngle = m_Settings.dAngle + (nLayer % 2 == 0 ? kRightAngle : 0.0);
    auto pLayer = std::make_unique<CLayer>();
    pLayer->m_dZ = m_dBottom + nLayer * m_Settings.dLayer;
    for (std::size_t i = 0; i < m_Parts.size(); ++i) {
        AddContours(*pLayer, m_Parts[i].Cut(dMiddle), static_cast<int>(i));
    }
    NestAndSimplify(*pLayer, m_Settings.dTolerance);
    std::vector<FillRegion> const regions = RegionsOf(*pLayer);
    m_Figures.nStrokes += Fill(*pLayer, {m_Settings.dHatch, dAngle, kFillHatch}, regions);
    if (nLayer % 2 == 0) AddSupports(*pLayer, dMiddle, dAngle, regions);
    Count(*pLayer);
    pLayer->GetBoundBox();
    return pLayer;
}

void Plate::AddSupports(CLayer& layer, double dMiddle, double dAngle, std::vector<FillRegion> const& parts) {
    std::vector<FillRegion> regions;
    for (Slicer& slicer : m_Supports) {
        FillRegion region;
        for (Contour& contour : slicer.Cut(dMiddle)) {
            if (contour.bClosed) region.contours.push_back(std::move(contour.points));
        }
        if (!region.contours.empty()) regions.push_back(std::move(region));
    }
    m_Figures.nSupportStrokes += Fill(layer, {m_Settings.dHatch, dAngle, kSupportHatch}, regions, parts);
}

void Plate::Count(CLayer& layer) {
    double dLength = 0.0;
    for (auto const* pNode = layer.m_LoopList.m_pNodeHead; pNode != nullptr; pNode = pNode->pNext) {
        auto& loop = *static_cast<tagLoopTreeNode*>(pNode->data);
        ++(loop.m_bClosed != 0 ? m_Figures.nLoops : m_Figures.nOpenPaths);
        m_Figures.nPoints += static_cast<std::size_t>(loop.m_pPointList->GetCount());
        dLength += loop.GetLength();
        if (loop.m_bClosed != 0) m_Figures.dVolume += loop.GetArea() / 2.0 * m_Settings.dLayer;
    }
    m_Figures.dContourLength += dLength;
}
