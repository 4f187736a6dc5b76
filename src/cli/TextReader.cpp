// Layers read from lines of text.

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "cli/CommandTable.h"
#include "cli/LayerFormats.h"
#include "cli/LineTokens.h"
#include "contours/LoopWalk.h"
#include "foundation/memory/AddNew.h"

namespace varnet {

namespace {

// List nodes come in blocks as large as the line can fill, at most this many.
constexpr int kMostNodesAtOnce = 1024;
constexpr std::size_t kShortestNumber = 2;  // a digit and a blank

// The nodes to take from the heap at once for nAnnounced items of nReals numbers, of which the line has
// nLeft characters.
int NodesAtOnce(int nAnnounced, std::size_t nLeft, std::size_t nReals, int nUsual) {
    std::size_t const nRoom = std::min<std::size_t>(nLeft / (nReals * kShortestNumber), kMostNodesAtOnce);
    return std::clamp(nAnnounced, nUsual, std::max(nUsual, static_cast<int>(nRoom)));
}

template <std::size_t nReals>
bool NextReals(LineTokens& tokens, double dUnits, std::array<double, nReals>& values) {
    for (double& d : values) {
        if (!tokens.Next(d)) return false;
        d *= dUnits;
    }
    return true;
}

// False where a number is missing: the line then has no effect.
bool ReadPolyline(LineTokens tokens, CLayer& layer) {
    int nID = 0;
    int nDirection = 0;
    int nAnnounced = 0;
    if (!tokens.Next(nID) || !tokens.Next(nDirection) || !tokens.Next(nAnnounced)) return false;
    auto pLoop = NewPath();
    pLoop->m_pPointList->m_nBlockSize = NodesAtOnce(nAnnounced, tokens.Left(), 2, kPointBlockSize);
    std::array<double, 2> xy;
    while (NextReals(tokens, layer.m_dUnits, xy)) {
        CPoint2D point(xy[0], xy[1]);
        pLoop->m_pPointList->AddTail(point);
        pLoop->m_Box += point;
    }
    pLoop->m_pPointList->m_nBlockSize = kPointBlockSize;
    pLoop->m_nDirection = nDirection == 0   ? LOOPDIRECT_CW
                          : nDirection == 1 ? LOOPDIRECT_CCW
                                            : LOOPDIRECT_NONE;
    pLoop->m_bClosed = nDirection < 2 ? 1 : 0;
    pLoop->m_dZ = layer.m_dZ;
    pLoop->m_nID = nID;
    layer.m_Box += pLoop->m_Box;
    AddOwned(layer.m_RawLoopList, std::move(pLoop));
    return true;
}

bool ReadHatches(LineTokens tokens, CLayer& layer) {
    int nID = 0;
    int nAnnounced = 0;
    if (!tokens.Next(nID) || !tokens.Next(nAnnounced)) return false;
    auto pHatch = std::make_unique<CHatch>();
    int const nUsual = pHatch->m_EdgeList.m_nBlockSize;
    pHatch->m_EdgeList.m_nBlockSize = NodesAtOnce(nAnnounced, tokens.Left(), 4, nUsual);
    std::array<double, 4> ends;
    while (NextReals(tokens, layer.m_dUnits, ends)) {
        CEdge2D edge(CPoint2D(ends[0], ends[1]), CPoint2D(ends[2], ends[3]));
        pHatch->m_EdgeList.AddTail(edge);
        layer.m_Box += edge.m_ptStart;
        layer.m_Box += edge.m_ptEnd;
    }
    pHatch->m_EdgeList.m_nBlockSize = nUsual;
    pHatch->m_nID = nID;
    AddOwned(layer.m_HatchList, std::move(pHatch));
    return true;
}

// A line without a number gives the height 0.
void ReadHeight(LineTokens tokens, CLayer& layer) {
    double dHeight = 0.0;
    tokens.Next(dHeight);
    layer.m_dZ = dHeight * layer.m_dUnits;
}

}  // namespace

LayerEnd ReadTextLayer(FileWindow& file, CLayer& layer) {
    std::int64_t nMark = file.Position();  // behind the last line that had an effect
    bool bSeen = false;
    while (std::optional<std::string_view> const line = file.NextLine(kLongestLine)) {
        std::optional<Command> const command = TextCommandOf(*line);
        bool const bNextLayer = bSeen && command == Command::kLayer;
        if (!command || bNextLayer) {
            file.Leave(nMark);
            return {bSeen ? 1 : 0, bNextLayer};
        }
        bool bHadEffect = true;
        switch (*command) {
            case Command::kLayer:
                ReadHeight(LineTokens(*line), layer);
                bSeen = true;
                break;
            case Command::kPolyline:
                bHadEffect = ReadPolyline(LineTokens(*line), layer);
                break;
            case Command::kHatches:
                bHadEffect = ReadHatches(LineTokens(*line), layer);
                break;
            case Command::kGeometryStart:
                break;
        }
        if (bHadEffect) nMark = file.Position();
    }
    file.Leave(file.Position());
    return {bSeen ? 1 : 0, true};
}

}  // namespace varnet
