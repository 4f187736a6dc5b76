// Reading the strip stream: three tags, of which one has a longer header, and points as floats or as numbers
// of steps, which the scale alone decides.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "foundation/Counter.h"
#include "foundation/files/ByteStream.h"
#include "foundation/files/LittleEndian.h"
#include "foundation/files/Path.h"
#include "mesh/FacetIntake.h"
#include "mesh/STLModel.h"
#include "modelfiles/CSMLayout.h"
#include "modelfiles/QuantizedPoint.h"
#include "modelfiles/StoredName.h"

using namespace varnet;

namespace {

constexpr int kNewVertex = 4;        // bit of a record's code
constexpr int kSharesFirstEdge = 2;  // bit of a record's code
constexpr int kEndOfStrip = 0;

using Vertex = std::array<float, 3>;
using Triangle = std::array<Vertex, 3>;

CPoint3D ToPoint(Vertex const& vertex) { return CPoint3D(vertex[0], vertex[1], vertex[2]); }

// Reads the header into its field and finds its tag. False when the file holds none, or ends too soon.
bool ReadHeader(FILE* pFile, char (&field)[4096]) {
    if (std::fread(field, 1, csm::kHeaderSize, pFile) == 0) return false;
    field[csm::kHeaderSize - 1] = '\0';
    std::string_view const text(field, csm::kHeaderSize);
    std::size_t const nSize = csm::HeaderSizeOf(text, csm::Layout::kStrip);
    if (nSize != csm::kLongHeaderSize) return nSize != 0;
    std::rewind(pFile);
    return std::fread(field, 1, csm::kLongHeaderSize, pFile) > 0;
}

struct Preamble {
    PointGrid grid;
    std::uint32_t nVertices;
};

std::optional<Preamble> ReadPreamble(FILE* pFile) {
    std::array<unsigned char, 36> bytes;
    if (std::fread(bytes.data(), 1, bytes.size(), pFile) != bytes.size()) return std::nullopt;
    CPoint3D const origin(LoadDouble(bytes.data()), LoadDouble(bytes.data() + 8),
                          LoadDouble(bytes.data() + 16));
    return Preamble{{origin, LoadDouble(bytes.data() + 24)}, LoadUnsigned<std::uint32_t>(bytes.data() + 32)};
}

// Decodes the strips of a file into a model, from the file's present position on.
//
// A file that ends inside a point or a number leaves in it what the one before had there; the facet counts,
// and the next byte that is asked for ends the file. Numbers of steps end in zero bytes instead.
class StripReader {
public:
    StripReader(FILE* pFile, Preamble const& preamble, CSTLModel& model)
        : m_Bytes(pFile),
          m_Grid(preamble.grid),
          m_nAnnounced(preamble.nVertices),
          m_Model(model),
          m_Intake(model, 2 * MostVertices(pFile)) {
        m_Vertices.reserve(MostVertices(pFile));
    }

    /// Reads to the end of the file, or until StopReadModel. False when the file is refused: for a number
    /// that no vertex has yet, or more vertices than announced. All facets up to there enter the model.
    bool ReadStrips() {
        bool bGood = true;
        for (int nFlags = m_Bytes.Next(); nFlags != ByteReader::kEnd && !IsStopped();
             nFlags = m_Bytes.Next()) {
            bGood = ReadHead(nFlags) && ReadRecords();
            if (!bGood) break;
        }
        m_Facets.Flush();
        return bGood;
    }

private:
    bool IsStopped() const { return LoadShared(m_Model.m_bStopRead) != 0; }

    // No more vertices than are announced, nor than the file has room for.
    std::size_t MostVertices(FILE* pFile) const {
        auto const nFileSize = static_cast<std::size_t>(FileSize(pFile));
        return std::min<std::size_t>(m_nAnnounced, nFileSize / strip_point::Size(m_Grid.dScale));
    }

    bool ReadHead(int nFlags) {
        for (std::size_t i = 0; i < 3; ++i) {
            bool const bNew = (nFlags & 1 << i) != 0;
            if (!(bNew ? ReadNewVertex(m_Last[i]) : ReadHeadNumber(m_Last[i]))) return false;
        }
        AddLast();
        ++m_Model.m_nStripNum;
        return true;
    }

    // The records up to the end of the strip or file. The facet before is (A, B, C): the new vertex N makes
    // (N, B, A) or (N, A, C) of it.
    bool ReadRecords() {
        for (int nCode = m_Bytes.Next(); nCode != ByteReader::kEnd; nCode = m_Bytes.Next()) {
            if (IsStopped() || nCode == kEndOfStrip) return true;
            Vertex vertex;
            if (!((nCode & kNewVertex) != 0 ? ReadNewVertex(vertex) : ReadNumber(nCode, vertex)))
                return false;
            auto const& [a, b, c] = m_Last;
            m_Last = (nCode & kSharesFirstEdge) != 0 ? Triangle{vertex, b, a} : Triangle{vertex, a, c};
            AddLast();
        }
        return true;
    }

    bool ReadNewVertex(Vertex& vertex) {
        if (m_Vertices.size() >= m_nAnnounced) return false;
        if (m_Grid.dScale != 0.0) m_Point.fill(0);
        m_Bytes.Take(m_Point.data(), strip_point::Size(m_Grid.dScale));
        vertex = strip_point::Load(m_Point.data(), m_Grid);
        m_Vertices.push_back(vertex);
        return true;
    }

    bool ReadHeadNumber(Vertex& vertex) {
        m_Bytes.Take(m_Number.data(), m_Number.size());
        std::uint32_t const nNumber = LoadUnsigned24(m_Number.data());
        if (!IsNumbered(nNumber)) return false;
        NoteReference(nNumber);
        vertex = m_Vertices[nNumber - 1];
        return true;
    }

    // The number of a record, which has its low bits in the code.
    bool ReadNumber(int nCode, Vertex& vertex) {
        m_Number[0] = static_cast<unsigned char>(nCode);
        m_Bytes.Take(m_Number.data() + 1, m_Number.size() - 1);
        std::uint32_t const nNumber = LoadUnsigned24(m_Number.data()) >> 3;
        NoteReference(nNumber);
        if (!IsNumbered(nNumber)) return false;
        vertex = m_Vertices[nNumber - 1];
        return true;
    }

    bool IsNumbered(std::uint32_t nNumber) const { return nNumber != 0 && nNumber <= m_Vertices.size(); }

    void NoteReference(std::uint32_t nNumber) {
        auto const nBack = static_cast<std::int64_t>(m_Vertices.size()) - std::int64_t{nNumber};
        if (nBack > m_Model.m_nMaxBackRef) m_Model.m_nMaxBackRef = static_cast<std::int32_t>(nBack);
    }

    void AddLast() {
        tagFACET& facet = m_Facets.New();
        for (std::size_t i = 0; i < 3; ++i) facet.m_ptVertex[i] = ToPoint(m_Last[i]);
    }

    ByteReader m_Bytes;
    PointGrid m_Grid;
    std::size_t m_nAnnounced;
    CSTLModel& m_Model;
    FacetIntake m_Intake;
    std::vector<Vertex> m_Vertices;  // by number, less one
    FacetQueue m_Facets{m_Intake};
    Triangle m_Last{};
    std::array<unsigned char, strip_point::kLongest> m_Point{};
    std::array<unsigned char, 3> m_Number{};
};

}  // namespace

int CSTLModel::ReadCSMFile1(char* path, int bCountOnly) {
    m_nMaxBackRef = 0;
    m_nStripNum = 0;
    File const file = OpenPath(path, "rb");
    if (file == nullptr) return 0;
    StoreFileName(path, m_Status);
    if (!ReadHeader(file.get(), m_Status.m_szHeader)) return 0;
    std::optional<Preamble> const preamble = ReadPreamble(file.get());
    if (!preamble) return 0;
    StoreShared(m_nTotalFacet, static_cast<std::int32_t>(2 * preamble->nVertices));
    if (bCountOnly != 0) return m_nTotalFacet;

    StripReader reader(file.get(), *preamble, *this);
    if (!reader.ReadStrips() || LoadShared(m_bStopRead) != 0) return 0;
    ++m_nMaxBackRef;
    return 1;
}
