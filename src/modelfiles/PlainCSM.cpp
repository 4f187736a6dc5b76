// The plain CSM file: a header, the number of vertices, the vertices as floats, the number of facets, and
// three vertex numbers a facet.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>
#include <vector>

#include "foundation/LookAhead.h"
#include "foundation/Prefetch.h"
#include "foundation/files/ByteStream.h"
#include "foundation/files/LittleEndian.h"
#include "foundation/files/Path.h"
#include "mesh/FacetCorners.h"
#include "mesh/FacetIntake.h"
#include "mesh/FacetWalk.h"
#include "mesh/STLModel.h"
#include "modelfiles/CSMLayout.h"
#include "modelfiles/StoredName.h"

using namespace varnet;

namespace {

constexpr std::size_t kRecordSize = 12;  // of a vertex, and of a facet

using Vertex = std::array<float, 3>;

void WriteHeader(FILE* pFile, std::uint32_t nVertices) {
    std::array<unsigned char, csm::kHeaderSize + 4> header{};
    std::memcpy(header.data(), csm::kPlainText.data(), csm::kPlainText.size());
    StoreUnsigned(header.data() + csm::kHeaderSize, nVertices);
    std::fwrite(header.data(), 1, header.size(), pFile);
}

// Writes the facets with the numbers that their vertices have been given.
void WriteFacets(FILE* pFile, CSurfaceArray const& surfaces, std::uint32_t nFacets) {
    ByteWriter writer(pFile);
    StoreUnsigned(writer.Room(4), nFacets);
    ForEachFacet(surfaces, [&writer](CFacet const& facet) {
        unsigned char* pNumber = writer.Room(kRecordSize);
        for (tagVertexNode const* const pVertex : Corners(facet)) {
            StoreUnsigned(pNumber, pVertex->m_nID);
            pNumber += 4;
        }
    });
}

// Reads the body of a plain file. A record or count that arrives short keeps the bytes that its buffer held
// before: those of the record before, or zeros. One that is missing ends the read.
class PlainReader {
public:
    explicit PlainReader(FILE* pFile) : m_Bytes(pFile), m_nFileSize(FileSize(pFile)) {}

    /// The vertices; nothing when the file ends before the last one. Memory is taken only for what comes.
    std::optional<std::vector<Vertex>> ReadVertices() {
        std::uint32_t const nVertices = ReadCount().value_or(0);
        std::vector<Vertex> vertices;
        vertices.reserve(std::min<std::size_t>(nVertices, MostRecords()));
        while (vertices.size() < nVertices) {
            if (m_Bytes.Take(m_Record.data(), m_Record.size()) == 0) return std::nullopt;
            vertices.push_back(
                {LoadFloat(m_Record.data()), LoadFloat(m_Record.data() + 4), LoadFloat(m_Record.data() + 8)});
        }
        return vertices;
    }

    std::optional<std::uint32_t> ReadCount() {
        std::array<unsigned char, 4> count{};
        if (m_Bytes.Take(count.data(), count.size()) == 0) return std::nullopt;
        return LoadUnsigned<std::uint32_t>(count.data());
    }

    /// Adds nFacets facets to the model. False when the file ends before the last one, or at a facet with a
    /// number that no vertex has.
    bool ReadFacets(std::uint32_t nFacets, std::vector<Vertex> const& vertices, CSTLModel& model) {
        FacetIntake intake(model, std::min<std::size_t>(nFacets, MostRecords()));
        FacetQueue facets(intake, FacetIntake::OnStop::kGoOn);
        m_Record.fill(0);
        std::uint32_t nLeft = nFacets;
        while (nLeft > 0 && !m_bBroken) {
            for (Numbers const& numbers : ReadBlock(nLeft, vertices)) {
                tagFACET& facet = facets.New();
                for (std::size_t k = 0; k < numbers.size(); ++k) {
                    Vertex const& vertex = vertices[numbers[k]];
                    facet.m_ptVertex[k] = CPoint3D(vertex[0], vertex[1], vertex[2]);
                }
            }
            nLeft -= static_cast<std::uint32_t>(m_Block.size());
        }
        facets.Flush();
        return nLeft == 0;
    }

private:
    using Numbers = std::array<std::uint32_t, 3>;  // of a facet's vertices

    // The next facets, at most nMost, up to a broken one. A block at a time, so that the vertices, which lie
    // anywhere in memory, are on their way before they are needed.
    std::vector<Numbers> const& ReadBlock(std::uint32_t nMost, std::vector<Vertex> const& vertices) {
        constexpr std::uint32_t kBlock = look_ahead::kPlainFacets;
        m_Block.clear();
        for (std::uint32_t n = std::min(nMost, kBlock); n > 0; --n) {
            Numbers numbers;
            if (!ReadFacet(vertices.size(), numbers)) {
                m_bBroken = true;
                break;
            }
            for (std::uint32_t const nVertex : numbers) Prefetch(&vertices[nVertex]);
            m_Block.push_back(numbers);
        }
        return m_Block;
    }

    bool ReadFacet(std::size_t nVertices, Numbers& numbers) {
        if (m_Bytes.Take(m_Record.data(), m_Record.size()) == 0) return false;
        for (std::size_t k = 0; k < numbers.size(); ++k) {
            numbers[k] = LoadUnsigned<std::uint32_t>(m_Record.data() + 4 * k);
            if (numbers[k] >= nVertices) return false;
        }
        return true;
    }

    std::size_t MostRecords() const { return static_cast<std::size_t>(m_nFileSize) / kRecordSize; }

    ByteReader m_Bytes;
    std::int32_t m_nFileSize;
    std::array<unsigned char, kRecordSize> m_Record{};
    std::vector<Numbers> m_Block;
    bool m_bBroken = false;  // the file has ended too early, or named a vertex that there is not
};

}  // namespace

int CSTLModel::SaveCSMFile(char* path) {
    File const file = OpenPath(path, "wb");
    if (file == nullptr) return 0;
    WriteHeader(file.get(), m_VertexTree.m_nCount);
    unsigned int nCounter = 0;
    m_VertexTree.SavePoint(file.get(), nCounter);
    m_Status.m_nFacetNum = GetFacetsNum();
    WriteFacets(file.get(), m_SurfaceArray, static_cast<std::uint32_t>(m_Status.m_nFacetNum));
    return 1;
}

int CSTLModel::ReadCSMFile(char* path) {
    File file = OpenPath(path, "rb");
    if (file == nullptr) return 0;
    StoreFileName(path, m_Status);
    std::fread(m_Status.m_szHeader, 1, csm::kHeaderSize, file.get());
    std::string_view const header(m_Status.m_szHeader, csm::kHeaderSize);
    if (csm::HeaderSizeOf(header, csm::Layout::kRing) != 0) {
        file.reset();
        return ReadCSMFile1(path, 0);
    }
    PlainReader reader(file.get());
    std::optional<std::vector<Vertex>> const vertices = reader.ReadVertices();
    if (!vertices) return 0;
    std::optional<std::uint32_t> const nFacets = reader.ReadCount();
    if (!nFacets) return 0;
    if (static_cast<std::int32_t>(*nFacets) <= 0) return 1;
    return reader.ReadFacets(*nFacets, *vertices, *this) ? 1 : 0;
}
