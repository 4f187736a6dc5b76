// Writing the strip stream: the facets in strips of neighbours, each strip a head facet and then one vertex a
// facet. Vertices are numbered from 1 as they come; one that has its number is referred to by it.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "foundation/Counter.h"
#include "foundation/files/LittleEndian.h"
#include "foundation/files/Path.h"
#include "mesh/FacetCorners.h"
#include "mesh/FacetWalk.h"
#include "mesh/STLModel.h"
#include "modelfiles/CSMLayout.h"
#include "modelfiles/QuantizedPoint.h"

using namespace varnet;

std::int32_t m_nCSMFacetCount = 0;

namespace {

// A reference has 21 bits for the number of its vertex.
constexpr std::uint32_t kTooManyVertices = 1u << 21;

constexpr std::size_t kNumberSize = 3;
constexpr unsigned char kEndOfStrip = 0;

// The code of a facet record.
constexpr unsigned kRecord = 1;
constexpr unsigned kSharesFirstEdge = 2;
constexpr unsigned kNewVertex = 4;
constexpr unsigned kCodeBits = 3;

// Writes the point of a vertex that has no number, and gives it the next one. Returns the end of the point.
unsigned char* StoreNewVertex(unsigned char* pBytes, tagVertexNode& vertex, PointGrid const& grid,
                              std::int32_t& nCounter) {
    vertex.m_nID = static_cast<std::uint32_t>(++nCounter);
    return strip_point::Store(pBytes, vertex, grid);
}

using ThreeCorners = std::array<tagVertexNode*, 3>;

// The corners from the given one (1 to 3) on, in winding order.
ThreeCorners CornersFrom(CFacet const& facet, int nFirst) {
    ThreeCorners corners = Corners(facet);
    std::rotate(corners.begin(), corners.begin() + (nFirst - 1), corners.end());
    return corners;
}

// The place (1 to 3) of the first corner that is not on the edge; 0 when all are.
int CornerOffEdge(CFacet const& facet, DirectedEdge const& edge) {
    ThreeCorners const corners = Corners(facet);
    for (int i = 0; i < 3; ++i) {
        tagVertexNode const* const p = corners[static_cast<std::size_t>(i)];
        if (p != edge.pStart && p != edge.pEnd) return i + 1;
    }
    return 0;
}

// A facet of a strip, with the corner (1 to 3) that comes first.
struct StripFacet {
    CFacet* pFacet;
    int nVertex;
};

// How a strip goes on: across which edge (1 to 3) of the present facet, 0 at the end of the strip, and where
// to.
struct Continuation {
    int nEdge;
    StripFacet next;
};

// As CFacet::FindNeighborFacetRightNormal across the edge, but rather through the list of the end that is at
// hand, which is not that of the newest vertex.
CFacet* FindNeighbor(CFacet const* pFacet, DirectedEdge const& edge, bool bEndIsNewest) {
    tagVertexNode const* const pWalked = bEndIsNewest ? ChooseWalked(edge.pStart, edge.pEnd).pWalked
                                                      : ChooseWalked(edge.pEnd, edge.pStart).pWalked;
    for (int i = 0; i < pWalked->m_nFacetNum; ++i) {
        CFacet* const pFound = pWalked->m_ppFacet[i];
        if (pFound != pFacet && HasDirectedEdge(*pFound, edge.pEnd, edge.pStart)) return pFound;
    }
    return nullptr;
}

// The first facet across the edges of the present one, in their order, that is marked and has its winding in
// agreement.
Continuation FindContinuation(StripFacet const& present) {
    ThreeCorners const corner = CornersFrom(*present.pFacet, present.nVertex);
    for (int nEdge = 1; nEdge <= 3; ++nEdge) {
        DirectedEdge const edge = {corner[static_cast<std::size_t>(nEdge - 1)],
                                   corner[static_cast<std::size_t>(nEdge % 3)]};
        CFacet* const pFacet = FindNeighbor(present.pFacet, edge, nEdge == 3);
        if (pFacet == nullptr || pFacet->m_nRegion == 0) continue;
        if (int const nVertex = CornerOffEdge(*pFacet, edge)) return {nEdge, {pFacet, nVertex}};
    }
    return {0, {nullptr, 0}};
}

// Writes the header that the host gives, or else the text with zeros behind it.
void WriteHeader(FILE* pFile, char const* pszHeader, std::size_t nSize, std::string_view text) {
    std::array<char, csm::kLongHeaderSize> header{};
    std::memcpy(header.data(), text.data(), text.size());
    std::fwrite(pszHeader != nullptr ? pszHeader : header.data(), 1, nSize, pFile);
}

void WriteGrid(FILE* pFile, PointGrid const& grid, std::uint32_t nVertices) {
    std::array<unsigned char, 36> bytes;
    StoreDouble(bytes.data(), grid.origin.x);
    StoreDouble(bytes.data() + 8, grid.origin.y);
    StoreDouble(bytes.data() + 16, grid.origin.z);
    StoreDouble(bytes.data() + 24, grid.dScale);
    StoreUnsigned(bytes.data() + 32, nVertices);
    std::fwrite(bytes.data(), 1, bytes.size(), pFile);
}

// Marks all facets as not coded, and takes the numbers from their vertices.
void Unnumber(CSurfaceArray const& surfaces) {
    ForEachFacet(surfaces, [](CFacet& facet) {
        facet.m_nRegion = 1;
        for (tagVertexNode* const pVertex : Corners(facet)) pVertex->m_nID = 0;
    });
}

// Writes the strip that starts with the seed, as far as it goes or until StopCurOperate.
void WriteStrip(CSTLModel& model, CFacet& seed, bool bRotate, FILE* pFile, PointGrid const& grid) {
    seed.m_nRegion = 0;
    StripFacet present = {&seed, 1};
    bool bHeadWritten = false;
    while (LoadShared(model.m_bStopOperate) == 0) {
        if (!bRotate) present.nVertex = 1;
        Continuation const found = FindContinuation(present);
        if (found.nEdge == 0) break;
        present = found.next;
        present.pFacet->m_nRegion = 0;
        if (!bHeadWritten) model.WriteCSMHeadFacet(&seed, found.nEdge, pFile, grid.dScale, grid.origin);
        bHeadWritten = true;
        model.WriteCSMFacet(present.pFacet, found.nEdge, present.nVertex, pFile, grid.dScale, grid.origin);
    }
    if (!bHeadWritten) model.WriteCSMHeadFacet(&seed, 0, pFile, grid.dScale, grid.origin);
    std::fwrite(&kEndOfStrip, 1, 1, pFile);
}

}  // namespace

// NOLINTBEGIN(performance-unnecessary-value-param): hosts link against points by value.

void CSTLModel::WriteCSMHeadFacet(CFacet* pFacet, int nEdge, FILE* fp, double dScale, CPoint3D ptOrigin) {
    AddToCounter(m_nCSMFacetCount, 1);
    // Edge 1 goes on as (A, B) and edge 3 as (C, A); edge 2, which a record cannot name, is made edge 1.
    ThreeCorners const corners = CornersFrom(*pFacet, nEdge == 2 ? 2 : 1);
    std::array<bool, 3> isNew;
    for (std::size_t i = 0; i < 3; ++i) isNew[i] = corners[i]->m_nID == 0;

    PointGrid const grid = {ptOrigin, dScale};
    std::array<unsigned char, 1 + 3 * strip_point::kLongest> record{};
    unsigned char* pEnd = record.data() + 1;
    for (std::size_t i = 0; i < 3; ++i) {
        if (isNew[i]) {
            record[0] = static_cast<unsigned char>(record[0] | 1u << i);
            pEnd = StoreNewVertex(pEnd, *corners[i], grid, m_nPointCounter);
        } else {
            StoreUnsigned24(pEnd, corners[i]->m_nID);
            pEnd += kNumberSize;
        }
    }
    std::fwrite(record.data(), 1, static_cast<std::size_t>(pEnd - record.data()), fp);
}

void CSTLModel::WriteCSMFacet(CFacet* pFacet, int nEdge, int nVertex, FILE* fp, double dScale,
                              CPoint3D ptOrigin) {
    AddToCounter(m_nCSMFacetCount, 1);
    if (nVertex < 1 || nVertex > 3) return;
    tagVertexNode& vertex = *Corners(*pFacet)[static_cast<std::size_t>(nVertex - 1)];
    unsigned const nCode = kRecord | (nEdge < 3 ? kSharesFirstEdge : 0u);
    std::array<unsigned char, 1 + strip_point::kLongest> record;
    unsigned char* pEnd = record.data() + kNumberSize;
    if (vertex.m_nID == 0) {
        record[0] = static_cast<unsigned char>(nCode | kNewVertex);
        pEnd = StoreNewVertex(record.data() + 1, vertex, {ptOrigin, dScale}, m_nPointCounter);
    } else {
        StoreUnsigned24(record.data(), vertex.m_nID << kCodeBits | nCode);
    }
    std::fwrite(record.data(), 1, static_cast<std::size_t>(pEnd - record.data()), fp);
}

// NOLINTEND(performance-unnecessary-value-param)

int CSTLModel::ExtractFacetForCSM(int bRotate, char* path, int bCompress, char* pszHeader, int nHeaderLen) {
    StoreShared(m_nCSMFacetCount, 0);
    if (m_VertexTree.m_nCount >= kTooManyVertices) return 0;
    auto const nHeaderSize = nHeaderLen == 0 ? csm::kHeaderSize : static_cast<std::size_t>(nHeaderLen);
    if (nHeaderSize > csm::kLongHeaderSize) return 0;
    File const file = OpenPath(path, "wb");
    if (file == nullptr) return 0;
    WriteHeader(file.get(), pszHeader, nHeaderSize, bCompress != 0 ? csm::kStripText : csm::kFloatStripText);

    PointGrid grid = GridOf(m_VertexTree.m_BoundBox, strip_point::kSteps);
    if (bCompress == 0) grid.dScale = 0.0;
    WriteGrid(file.get(), grid, m_VertexTree.m_nCount);
    m_nPointCounter = 0;
    Unnumber(m_SurfaceArray);
    bool bStopped = false;
    ForEachFacet(m_SurfaceArray, [&](CFacet& seed) {
        if (bStopped || seed.m_nRegion == 0) return;
        WriteStrip(*this, seed, bRotate != 0, file.get(), grid);
        bStopped = LoadShared(m_bStopOperate) != 0;
    });
    return LoadShared(m_bStopOperate) == 0 ? 1 : 0;
}
