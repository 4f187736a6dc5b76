#include "selfcheck/Record.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace selfcheck {

// FNV-1a, over bytes (G. Fowler, L. C. Noll, K.-P. Vo).
void Record::AddWord(std::uint64_t n) {
    std::uint64_t& hash = m_Rooms.back().second;
    for (int i = 0; i < 8; ++i) {
        hash = (hash ^ (n & 0xFF)) * 0x100000001B3u;
        n >>= 8;
    }
}

void Record::Add(CPoint2D const& p) { AddAll(p.x, p.y, p.m_fAttr1, p.m_fAttr2); }

void Record::Add(CPoint3D const& p) { AddAll(p.x, p.y, p.z); }

void Record::Add(std::string_view bytes) {
    Add(bytes.size());
    for (char const c : bytes) Add(static_cast<int>(static_cast<unsigned char>(c)));
}

std::uint64_t Record::All() const {
    Record all;
    all.BeginRoom("all");
    for (auto const& [name, hash] : m_Rooms) {
        all.Add(name);
        all.AddWord(hash);
    }
    return all.m_Rooms.front().second;
}

std::string BytesOf(std::filesystem::path const& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::filesystem::path WriteFile(std::filesystem::path const& path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

#if defined(_WIN32)
OpenFile::OpenFile(std::filesystem::path const& path) : m_File(_wfopen(path.c_str(), L"wb+")) {
#else
OpenFile::OpenFile(std::filesystem::path const& path) : m_File(std::fopen(path.c_str(), "wb+")) {
#endif
    if (m_File == nullptr) throw std::runtime_error("no file can be made for what is written on the way");
}

std::string OpenFile::Bytes() {
    std::rewind(m_File);
    std::string bytes;
    for (int c = std::getc(m_File); c != EOF; c = std::getc(m_File)) bytes += static_cast<char>(c);
    std::rewind(m_File);
    return bytes;
}

void FillWithSoup(CSTLModel& model, Chance& chance, bool onLattice) {
    constexpr int kFacets = 4000;
    for (int i = 0; i < kFacets; ++i) {
        tagFACET facet;
        for (CPoint3D& p : facet.m_ptVertex) {
            for (double* const coordinate : {&p.x, &p.y, &p.z})
                *coordinate = onLattice ? chance.OnLattice() : chance();
        }
        model.AddFacet(facet);
    }
}

// An octahedron |x| + |y| + |z| = divisions, whose corners are moved out by the squares of x and y, so that
// there are flanks of all slopes.
void FillWithBall(CSTLModel& model, int divisions, double size) {
    auto const corner = [&](int x, int y, int z) {
        double const out = 1.0 + (static_cast<double>(x) * x * 0.5 + static_cast<double>(y) * y * 0.25) /
                                     (static_cast<double>(divisions) * divisions);
        double const step = size / divisions * out;
        return CPoint3D(x * step, y * step, z * step);
    };
    auto const add = [&model](CPoint3D const& a, CPoint3D const& b, CPoint3D const& c, bool turned) {
        tagFACET facet;
        facet.m_ptVertex[0] = a;
        facet.m_ptVertex[1] = turned ? c : b;
        facet.m_ptVertex[2] = turned ? b : c;
        model.AddFacet(facet);
    };
    for (int octant = 0; octant < 8; ++octant) {
        int const sx = octant & 1 ? -1 : 1;
        int const sy = octant & 2 ? -1 : 1;
        int const sz = octant & 4 ? -1 : 1;
        bool const turned = sx * sy * sz < 0;
        auto const at = [&](int i, int j) { return corner(sx * i, sy * j, sz * (divisions - i - j)); };
        for (int i = 0; i < divisions; ++i) {
            for (int j = 0; i + j < divisions; ++j) {
                add(at(i, j), at(i + 1, j), at(i, j + 1), turned);
                if (i + j + 1 < divisions) add(at(i + 1, j), at(i + 1, j + 1), at(i, j + 1), turned);
            }
        }
    }
}

void AddModel(Record& record, CSTLModel& model) {
    auto const& surfaces = model.m_SurfaceArray.m_aSurface;
    record.AddAll(surfaces.GetSize(), model.m_VertexTree.m_nCount);
    for (int s = 0; s < surfaces.GetSize(); ++s) {
        auto const& facets = surfaces[s]->m_aFacet;
        for (int i = 0; i < facets.GetSize(); ++i) {
            CFacet& facet = *facets[i];
            for (float const f : facet.m_fNormal) record.Add(f);
            for (tagVertexNode const* p : {facet.m_pVertex1, facet.m_pVertex2, facet.m_pVertex3}) {
                record.Add(p->m_nIndex);
                record.Add(static_cast<CPoint3D const&>(*p));
            }
            record.AddAll(facet.m_nFlag, facet.m_nRegion, facet.Area(), facet.ProjectArea());
        }
    }
}

}  // namespace selfcheck
