// The layers of a model, from a slice file and into it.

#include <cstdlib>

#include "cli/CommandTable.h"
#include "cli/LayerModel.h"
#include "foundation/files/FilePosition.h"
#include "foundation/files/Path.h"

using namespace varnet;

namespace {

// A layer is written with a chance of one in so many.
constexpr int kThinning = 3;

// The same for the same extent of the model, in square millimetres.
unsigned SeedOf(CBoundBox3D const& box) {
    constexpr double kFactor = 123492.0;
    constexpr double kTooLarge = 9223372036854775808.0;
    CPoint3D const size = box.Size();
    double const dSeed = size.y * size.x * kFactor;
    if (!(dSeed >= -kTooLarge && dSeed < kTooLarge)) return 0;
    return static_cast<unsigned>(static_cast<std::int64_t>(dSeed));
}

int ReadLayerIn(FILE* pFile, CLayer* pLayer, unsigned long nOffset, int nMode) {
    if (pFile == nullptr) return 0;
    SetFilePosition(pFile, static_cast<std::int64_t>(nOffset));
    return pLayer->ReadCLIFile(pFile, nMode);
}

}  // namespace

unsigned int CLayerModel::GetFileMode() { return m_nFileMode; }

int CLayerModel::ReadLayer(CLayer* pLayer, unsigned long nOffset) {
    if (pLayer == nullptr) return 0;
    pLayer->m_dUnits = m_dUnits;
    int nResult = 0;
    switch (m_nFileMode) {
        case kModeText:
            nResult = ReadLayerASCII(pLayer, nOffset);
            break;
        case kModeBinary:
            nResult = ReadLayerBINARY(pLayer, nOffset);
            break;
        case kModeDisguised:
            nResult = ReadLayerCOC(pLayer, nOffset);
            break;
        default:
            break;
    }
    pLayer->BuildLoopList();
    return nResult;
}

int CLayerModel::ReadLayerASCII(CLayer* pLayer, unsigned long nOffset) {
    return ReadLayerIn(m_pFile, pLayer, nOffset, kModeText);
}

int CLayerModel::ReadLayerBINARY(CLayer* pLayer, unsigned long nOffset) {
    return ReadLayerIn(m_pFile, pLayer, nOffset, kModeBinary);
}

int CLayerModel::ReadLayerCOC(CLayer* pLayer, unsigned long nOffset) {
    return ReadLayerIn(m_pFile, pLayer, nOffset, kModeDisguised);
}

int CLayerModel::SaveCLIFile(char* pszPath, int nMode) {
    File const file = OpenPath(pszPath, "w");
    if (file == nullptr || SaveCLIHead(file.get(), nMode, 0) == 0) return 0;
    if (nMode == kModeBinary) std::fseek(file.get(), 0, SEEK_END);
    std::srand(SeedOf(m_BoundBox));
    for (XR__POSITION* position = GetHeadLayerPos(); position != nullptr;) {
        // A layer on disk is read even where it is left out: the buffer layer is as after reading all.
        CLayer* const pLayer = GetNextLayer(position);
        if (std::rand() % kThinning != 0) continue;
        if (SaveLayer(pLayer, file.get(), nMode) == 0) return 0;
    }
    if (nMode == kModeText) {
        std::fwrite(kGeometryEnd.data(), 1, kGeometryEnd.size(), file.get());
        std::fputc('\n', file.get());
    }
    return 1;
}

int CLayerModel::SaveLayer(CLayer* pLayer, FILE* pFile, int nMode) {
    if (pLayer == nullptr) return 0;
    switch (nMode) {
        case kModeText:
            SaveLayerASCII(pLayer, pFile);
            break;
        case kModeBinary:
            SaveLayerBINARY(pLayer, pFile);
            break;
        case kModeDisguised:
            SaveLayerCOC(pLayer, pFile);
            break;
        default:
            break;
    }
    return 1;
}

void CLayerModel::SaveLayerASCII(CLayer* pLayer, FILE* pFile) { pLayer->WriteCLIFile(pFile, kModeText); }

void CLayerModel::SaveLayerBINARY(CLayer* pLayer, FILE* pFile) { pLayer->WriteCLIFile(pFile, kModeBinary); }

void CLayerModel::SaveLayerCOC(CLayer* pLayer, FILE* pFile) { pLayer->WriteCLIFile(pFile, kModeDisguised); }
