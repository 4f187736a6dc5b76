// The stack of layers, in memory and on disk.

#include "cli/LayerModel.h"

#include "contours/LoopWalk.h"

using namespace varnet;

namespace {

CLayer* LayerIn(void* pElement) { return static_cast<CLayer*>(pElement); }

void GrowBox(CBoundBox3D& bounds, CLayer const* pLayer) {
    if (pLayer == nullptr) return;
    CBoundBox2D const& box = pLayer->m_Box;
    bounds += CPoint3D(box.m_ptMin.x, box.m_ptMin.y, pLayer->m_dZ);
    bounds += CPoint3D(box.m_ptMax.x, box.m_ptMax.y, pLayer->m_dZ);
}

// The buffer layer of a model on disk with the layer at an offset; null where either is missing.
CLayer* FillBuffer(CLayerModel& model, int nOffset) {
    if (model.m_LayerList.IsEmpty() != 0) return nullptr;
    CLayer* const pBuffer = LayerIn(model.m_LayerList.GetHead());
    if (pBuffer == nullptr) return nullptr;
    pBuffer->ReleaseAll();
    return model.ReadLayer(pBuffer, static_cast<std::uint32_t>(nOffset)) != 0 ? pBuffer : nullptr;
}

}  // namespace

CLayerModel::CLayerModel()
    : m_LayerList(10),
      m_OffsetList(10),
      m_pFile(nullptr),
      m_dUnits(1.0),
      m_nFileMode(1),
      m_szFileName{},
      m_bInMemory(1),
      m_nLayerLimit(10000000),
      m_nVersion(100),
      m_nNozzle(0),
      m_nUser1(0),
      m_nUser2(0),
      m_nUser3(0) {}

CLayerModel::~CLayerModel() { ReleaseAllLayer(); }

XR__POSITION* CLayerModel::AddHeadLayer(CLayer* pLayer) { return InsertLayerBefore(nullptr, pLayer); }

XR__POSITION* CLayerModel::AddTailLayer(CLayer* pLayer) { return InsertLayerAfter(nullptr, pLayer); }

XR__POSITION* CLayerModel::InsertLayerBefore(XR__POSITION* position, CLayer* pLayer) {
    GrowBox(m_BoundBox, pLayer);
    return m_LayerList.InsertBefore(position, pLayer);
}

XR__POSITION* CLayerModel::InsertLayerAfter(XR__POSITION* position, CLayer* pLayer) {
    GrowBox(m_BoundBox, pLayer);
    return m_LayerList.InsertAfter(position, pLayer);
}

CLayer* CLayerModel::GetLayerAt(int nLayer) {
    if (nLayer < 1) return nullptr;
    return GetLayerAt(m_bInMemory != 0 ? m_LayerList.FindIndex(nLayer - 1)
                                       : m_OffsetList.FindIndex(nLayer - 1));
}

CLayer* CLayerModel::GetLayerAt(XR__POSITION* position) {
    if (position == nullptr) return nullptr;
    return m_bInMemory != 0 ? LayerIn(m_LayerList.GetAt(position))
                            : FillBuffer(*this, m_OffsetList.GetAt(position));
}

void CLayerModel::SetLayerAt(XR__POSITION* position, CLayer* pLayer) {
    if (position != nullptr) m_LayerList.SetAt(position, pLayer);
}

XR__POSITION* CLayerModel::GetHeadLayerPos() {
    return m_bInMemory != 0 ? m_LayerList.GetHeadPosition() : m_OffsetList.GetHeadPosition();
}

XR__POSITION* CLayerModel::GetTailLayerPos() {
    return m_bInMemory != 0 ? m_LayerList.GetTailPosition() : m_OffsetList.GetTailPosition();
}

CLayer* CLayerModel::GetNextLayer(XR__POSITION*& position) {
    if (position == nullptr) return nullptr;
    return m_bInMemory != 0 ? LayerIn(m_LayerList.GetNext(position))
                            : FillBuffer(*this, m_OffsetList.GetNext(position));
}

CLayer* CLayerModel::GetPrevLayer(XR__POSITION*& position) {
    if (position == nullptr) return nullptr;
    return m_bInMemory != 0 ? LayerIn(m_LayerList.GetPrev(position))
                            : FillBuffer(*this, m_OffsetList.GetPrev(position));
}

int CLayerModel::GetLayerCount() {
    return m_bInMemory != 0 ? m_LayerList.GetCount() : m_OffsetList.GetCount();
}

int CLayerModel::GetSupportAtLayer(int nLayer, XR_CList<void*, void*>* pList) {
    if (nLayer % 2 != 0) return 0;
    CLayer* const pLayer = GetLayerAt(nLayer);
    if (pLayer == nullptr) return 0;
    int nFound = 0;
    ForEachHatch(pLayer->m_HatchList, [&](CHatch& hatch) {
        if (hatch.m_nID < kSecondGroup) return;
        pList->AddTail(&hatch);
        ++nFound;
    });
    return nFound;
}

CLayer* CLayerModel::RemoveHeadLayer() {
    if (m_LayerList.IsEmpty() == 0) delete LayerIn(m_LayerList.RemoveHead());
    return nullptr;
}

CLayer* CLayerModel::RemoveTailLayer() {
    if (m_LayerList.IsEmpty() == 0) delete LayerIn(m_LayerList.RemoveTail());
    return nullptr;
}

void CLayerModel::RemoveLayerAt(XR__POSITION* position) {
    if (position != nullptr) m_LayerList.RemoveAt(position);
}

void CLayerModel::ReleaseLayerList() {
    for (auto const* p = m_LayerList.m_pNodeHead; p != nullptr; p = p->pNext) delete LayerIn(p->data);
    m_LayerList.RemoveAll();
}

void CLayerModel::ReleaseAllLayer() {
    ReleaseLayerList();
    m_OffsetList.RemoveAll();
    m_BoundBox = CBoundBox3D();
}

void CLayerModel::RemoveAllLayer() { ReleaseAllLayer(); }
