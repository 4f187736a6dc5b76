// A whole slice file: the header, then the layers in the mode that it names, in order and from their offsets.

#include "SliceWalk.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize) {
    if (nSize == 0) return 0;
    FILE* const pFile = fmemopen(const_cast<std::uint8_t*>(pData), nSize, "rb");
    CLayerModel model;
    model.m_pFile = pFile;
    int const nHeader = model.ReadCLIHead();
    long const nGeometry = std::ftell(pFile);
    auto const nMode = static_cast<int>(model.GetFileMode());
    Require(nMode >= 1 && nMode <= 3);
    Require(nGeometry >= 0 && (nMode != 1 || static_cast<std::size_t>(nGeometry) <= nSize));
    if (nHeader == 1 && static_cast<std::size_t>(nGeometry) <= nSize) {
        ReadLayers(pFile, nMode, model.m_dUnits, nSize);
        model.m_bInMemory = 0;
        model.AddTailLayer(new CLayer);
        for (int const nOffset : {static_cast<int>(nGeometry), static_cast<int>(nSize), -1, 0}) {
            model.m_OffsetList.AddTail(nOffset);
        }
        for (XR__POSITION* position = model.GetHeadLayerPos(); position != nullptr;) {
            CLayer* const pLayer = model.GetNextLayer(position);
            if (pLayer != nullptr) RequireInvariants(*pLayer, nSize);
        }
    }
    std::fclose(pFile);
    return 0;
}
