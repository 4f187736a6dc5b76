// A layer's way into a slice file and out of it.

#include "cli/CommandTable.h"
#include "cli/LayerFormats.h"
#include "contours/LoopWalk.h"

using namespace varnet;

namespace {

LayerEnd ReadLayer(FileWindow& file, CLayer& layer, int nMode) {
    switch (nMode) {
        case kModeText:
            return ReadTextLayer(file, layer);
        case kModeBinary:
            return ReadBinaryLayer(file, layer, false);
        default:
            return ReadBinaryLayer(file, layer, true);
    }
}

// Makes closed raw loops end exactly where they begin, whatever the file held.
void CloseLoops(CLayer& layer) {
    ForEachLoop(layer.m_RawLoopList, [](tagLoopTreeNode& loop) {
        if (loop.m_bClosed != 0 && PointCount(loop) > 0) {
            loop.m_pPointList->GetTail() = loop.m_pPointList->GetHead();
        }
    });
}

}  // namespace

int CLayer::ReadCLIFile(FILE* pFile, int nMode) {
    LayerEnd end{0, true};
    if (IsFileMode(nMode)) {
        FileWindow file(pFile);
        end = ReadLayer(file, *this, nMode);
    }
    if (end.bWhole) CloseLoops(*this);
    return end.nResult;
}

int CLayer::WriteCLIFile(FILE* pFile, int nMode) {
    if (pFile == nullptr || !IsFileMode(nMode)) return 1;
    ByteWriter file(pFile);
    if (nMode == kModeText) {
        WriteTextLayer(file, *this);
    } else {
        WriteBinaryLayer(file, *this, nMode == kModeDisguised);
    }
    return 1;
}

int tagLoopTreeNode::WriteCLILoop(FILE* pFile, int nMode) {
    if (pFile == nullptr || nMode != kModeText) return 1;
    ByteWriter file(pFile);
    WriteTextTree(file, *this);
    return 1;
}
