// Binary STL, and the files that differ from it in the length of the header only.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

#include "foundation/Counter.h"
#include "foundation/files/ByteStream.h"
#include "foundation/files/LittleEndian.h"
#include "foundation/files/Path.h"
#include "mesh/FacetIntake.h"
#include "mesh/FacetWalk.h"
#include "mesh/STLModel.h"

using namespace varnet;

namespace {

// A facet record: normal and three corners as floats, then two attribute bytes without meaning.
constexpr std::size_t kVectorSize = 12;
constexpr std::size_t kGeometrySize = 4 * kVectorSize;
constexpr std::size_t kRecordSize = kGeometrySize + 2;
constexpr std::size_t kHeaderSize = 80;
constexpr char kHeaderText[] = "Deiklug";

// Records are read in blocks of so many.
constexpr std::size_t kBlockRecords = 1024;

void LoadNormal(unsigned char const* pBytes, tagFACET& facet) {
    for (std::size_t i = 0; i < 3; ++i) facet.m_fNormal[i] = LoadFloat(pBytes + 4 * i);
}

void LoadCorner(unsigned char const* pBytes, CPoint3D& corner) {
    corner.x = LoadFloat(pBytes);
    corner.y = LoadFloat(pBytes + 4);
    corner.z = LoadFloat(pBytes + 8);
}

// Takes from the start of a record what its length delivers whole.
void LoadRecord(unsigned char const* pBytes, std::size_t nLength, tagFACET& facet) {
    if (nLength >= kVectorSize) LoadNormal(pBytes, facet);
    for (std::size_t i = 0; i < 3; ++i) {
        std::size_t const nOffset = (i + 1) * kVectorSize;
        if (nLength >= nOffset + kVectorSize) LoadCorner(pBytes + nOffset, facet.m_ptVertex[i]);
    }
}

void StoreRecord(CFacet const& facet, unsigned char* pBytes) {
    for (std::size_t i = 0; i < 3; ++i) StoreFloat(pBytes + 4 * i, facet.m_fNormal[i]);
    unsigned char* pCorner = pBytes + kVectorSize;
    for (tagVertexNode const* pVertex : {facet.m_pVertex1, facet.m_pVertex2, facet.m_pVertex3}) {
        StoreFloat(pCorner, static_cast<float>(pVertex->x));
        StoreFloat(pCorner + 4, static_cast<float>(pVertex->y));
        StoreFloat(pCorner + 8, static_cast<float>(pVertex->z));
        pCorner += kVectorSize;
    }
    pCorner[0] = 0;
    pCorner[1] = 0;
}

// Reads whole records block by block, at most as many as announced.
class RecordReader {
public:
    RecordReader(FILE* pFile, std::uint32_t nAnnounced)
        : m_pFile(pFile),
          m_nLeft(nAnnounced),
          m_Bytes(kBlockRecords * kRecordSize),
          m_Facets(kBlockRecords) {}

    /// The next triangles; none at the end. They are good until the next call, and may be changed.
    std::span<tagFACET> Next() {
        std::size_t const nWanted = m_nLeft < kBlockRecords ? m_nLeft : kBlockRecords;
        std::size_t const nBytes = std::fread(m_Bytes.data(), 1, nWanted * kRecordSize, m_pFile);
        std::size_t const nRecords = nBytes / kRecordSize;
        for (std::size_t i = 0; i < nRecords; ++i) {
            LoadRecord(m_Bytes.data() + i * kRecordSize, kRecordSize, m_Facets[i]);
        }
        m_nLeft -= nRecords;
        return {m_Facets.data(), nRecords};
    }

private:
    FILE* m_pFile;
    std::size_t m_nLeft;
    std::vector<unsigned char> m_Bytes;
    std::vector<tagFACET> m_Facets;
};

}  // namespace

int CSTLModel::ReadSTLBINARY(char* pszPath, int bCountOnly, int nHeaderLen) {
    File const file = OpenPath(pszPath, "rb");
    if (file == nullptr) return 0;
    auto const nHeader = static_cast<std::size_t>(nHeaderLen);
    if (nHeader > sizeof m_Status.m_szHeader) return 0;
    std::array<unsigned char, 4> count{};
    std::fread(m_Status.m_szHeader, 1, nHeader, file.get());
    std::fread(count.data(), 1, count.size(), file.get());
    auto const nAnnounced = LoadUnsigned<std::uint32_t>(count.data());
    StoreShared(m_nTotalFacet, static_cast<std::int32_t>(nAnnounced));
    if (bCountOnly != 0) return m_nTotalFacet;

    auto const nMostRecords = static_cast<std::uint32_t>(FileSize(file.get())) / kRecordSize;
    FacetIntake intake(*this, std::min<std::size_t>(nAnnounced, nMostRecords));
    RecordReader reader(file.get(), nAnnounced);
    while (LoadShared(m_bStopRead) == 0) {
        std::span<tagFACET> const facets = reader.Next();
        if (facets.empty()) break;
        intake.AddAll(facets);
    }
    return LoadShared(m_bStopRead) == 0 ? 1 : 0;
}

int CSTLModel::ReadSTLFacetBINARY(FILE* pFile, tagFACET* pFacet) {
    std::array<unsigned char, kRecordSize> record{};
    std::size_t const nRead = std::fread(record.data(), 1, record.size(), pFile);
    LoadRecord(record.data(), nRead, *pFacet);
    return nRead == record.size() ? 1 : 0;
}

int CSTLModel::SaveSTLBINARY(char* pszPath) {
    File const file = OpenPath(pszPath, "wb");
    if (file == nullptr) return 0;
    std::array<unsigned char, kHeaderSize + 4> header{};
    std::memcpy(header.data(), kHeaderText, sizeof kHeaderText);
    m_Status.m_nFacetNum = GetFacetsNum();
    StoreUnsigned(header.data() + kHeaderSize, static_cast<std::uint32_t>(m_Status.m_nFacetNum));
    std::fwrite(header.data(), 1, header.size(), file.get());

    ByteWriter writer(file.get());
    ForEachFacet(m_SurfaceArray,
                 [&writer](CFacet const& facet) { StoreRecord(facet, writer.Room(kRecordSize)); });
    return 1;
}
