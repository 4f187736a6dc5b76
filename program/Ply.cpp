#include "Ply.h"

#include <bit>
#include <filesystem>
#include <fstream>
#include <unordered_map>

#include "ModelFile.h"

namespace {

constexpr std::uint32_t kGrey = 0xC0C0C0;

// Numbers as a PLY file of format binary_little_endian holds them.
class Bytes {
public:
    void AddByte(std::uint32_t n) { m_Bytes.push_back(static_cast<char>(n & 0xFF)); }
    void Add(std::uint32_t n) {
        for (int i = 0; i < 4; ++i) AddByte(n >> (8 * i));
    }
    void Add(double d) { Add(std::bit_cast<std::uint32_t>(static_cast<float>(d))); }
    void Add(std::string const& text) { m_Bytes += text; }
    std::string const& Get() const { return m_Bytes; }

private:
    std::string m_Bytes;
};

// The vertices of the facets, numbered in the order in which they come.
class VertexNumbers {
public:
    std::uint32_t Of(tagVertexNode const* pVertex) {
        auto const [found, bNew] = m_Numbers.emplace(pVertex, static_cast<std::uint32_t>(m_Vertices.size()));
        if (bNew) m_Vertices.push_back(pVertex);
        return found->second;
    }
    std::vector<tagVertexNode const*> const& Vertices() const { return m_Vertices; }

private:
    std::unordered_map<tagVertexNode const*, std::uint32_t> m_Numbers;
    std::vector<tagVertexNode const*> m_Vertices;
};

std::string Header(std::size_t nVertices, std::size_t nFaces) {
    return "ply\nformat binary_little_endian 1.0\ncomment made by varnet\nelement vertex " +
           std::to_string(nVertices) +
           "\nproperty float x\nproperty float y\nproperty float z\nelement face " + std::to_string(nFaces) +
           "\nproperty list uchar int vertex_indices\nproperty uchar red\nproperty uchar green\n"
           "property uchar blue\nend_header\n";
}

}  // namespace

void FacetColors::Paint(CFeatureSurface const& surface, std::uint32_t nColor) {
    for (int i = 0; i < surface.m_aFacet.GetSize(); ++i)
        m_Painted.push_back({surface.m_aFacet.GetAt(i), nColor});
}

std::vector<FacetColors::Painted> FacetColors::Of(CSTLModel const& model) const {
    std::unordered_map<CFacet const*, std::uint32_t> colors;
    for (Painted const& painted : m_Painted) colors[painted.pFacet] = painted.nColor;
    std::vector<Painted> all;
    auto const& surfaces = model.m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.GetSize(); ++i) {
        auto const& facets = surfaces.GetAt(i)->m_aFacet;
        for (int k = 0; k < facets.GetSize(); ++k) {
            auto const found = colors.find(facets.GetAt(k));
            all.push_back({facets.GetAt(k), found != colors.end() ? found->second : kGrey});
        }
    }
    return all;
}

void WritePly(std::string const& file, CSTLModel const& model, FacetColors const& colors) {
    std::vector<FacetColors::Painted> const all = colors.Of(model);
    VertexNumbers numbers;
    Bytes faces;
    for (auto const& [pFacet, nColor] : all) {
        faces.AddByte(3);
        for (tagVertexNode const* const p : {pFacet->m_pVertex1, pFacet->m_pVertex2, pFacet->m_pVertex3})
            faces.Add(numbers.Of(p));
        for (int const nShift : {16, 8, 0}) faces.AddByte(nColor >> nShift);
    }
    Bytes bytes;
    bytes.Add(Header(numbers.Vertices().size(), all.size()));
    for (tagVertexNode const* const p : numbers.Vertices()) {
        for (double const d : {p->x, p->y, p->z}) bytes.Add(d);
    }
    bytes.Add(faces.Get());
    WriteBytes(file, bytes.Get());
}
