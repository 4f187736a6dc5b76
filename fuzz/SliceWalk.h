#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "Require.h"
#include "cli/LayerModel.h"
#include "contours/LoopWalk.h"

using namespace varnet;

// Reading the bytes of an input as a slice file, layer after layer.

/// A list that a reader has filled grows as any other afterwards.
template <class List>
void RequireRead(List const& list) {
    RequireSound(list);
    Require(list.m_nBlockSize == 10);
}

/// Every path is whole, and none was made of fewer bytes than a path and its points take.
inline void RequireInvariants(CLayer const& layer, std::size_t nBytes) {
    std::size_t nLeast = 0;
    RequireRead(layer.m_RawLoopList);
    RequireRead(layer.m_HatchList);
    ForEachLoop(layer.m_RawLoopList, [&nLeast](tagLoopTreeNode& loop) {
        Require(loop.m_pPointList != nullptr && loop.m_nLevel == 0 && loop.m_ChildList.IsEmpty() != 0);
        RequireRead(*loop.m_pPointList);
        nLeast += 8 + 4 * static_cast<std::size_t>(PointCount(loop)) - 4;
    });
    ForEachHatch(layer.m_HatchList, [&nLeast](CHatch& hatch) {
        RequireRead(hatch.m_EdgeList);
        nLeast += 6 + 8 * static_cast<std::size_t>(hatch.m_EdgeList.GetCount()) - 2;
    });
    Require(nLeast <= nBytes);
}

inline void RequireWritable(CLayer& layer) {
    FILE* const pFile = std::fopen("/dev/null", "wb");
    for (int const nMode : {1, 2, 3}) Require(layer.WriteCLIFile(pFile, nMode) == 1);
    std::fclose(pFile);
}

/// Reads layers until there are no more: each call that gives one gets further in the file.
inline void ReadLayers(FILE* pFile, int nMode, double dUnits, std::size_t nBytes) {
    for (long nLast = -1;;) {
        CLayer layer;
        layer.m_dUnits = dUnits;
        int const nResult = layer.ReadCLIFile(pFile, nMode);
        long const nPosition = std::ftell(pFile);
        RequireInvariants(layer, nBytes);
        RequireWritable(layer);
        Require(nPosition >= 0 && static_cast<std::size_t>(nPosition) <= nBytes);
        if (nResult == 0) return;
        Require(nResult == 1 && nPosition > nLast);
        nLast = nPosition;
    }
}

/// The input as a body: the first byte chooses the units, the rest is the file.
inline int FuzzBody(std::uint8_t const* pData, std::size_t nSize, int nMode) {
    if (nSize < 2) return 0;
    FILE* const pFile = fmemopen(const_cast<std::uint8_t*>(pData + 1), nSize - 1, "rb");
    ReadLayers(pFile, nMode, pData[0] % 2 == 0 ? 1.0 : 0.01 * pData[0], nSize - 1);
    std::fclose(pFile);
    return 0;
}
