// Prints a hash of everything that the library computes on some shapes: the same number under every compiler
// and at every optimisation level. The shapes are made of random floats, since a generator's own arithmetic
// is not under test.

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "Varnet64.h"

namespace {

// FNV-1a, over bytes (G. Fowler, L. C. Noll, K.-P. Vo).
class Hash {
public:
    void Add(std::uint64_t n) {
        for (int i = 0; i < 8; ++i) {
            m_nValue = (m_nValue ^ (n & 0xFF)) * 0x100000001B3u;
            n >>= 8;
        }
    }
    void Add(double d) { Add(std::bit_cast<std::uint64_t>(d)); }
    std::uint64_t Value() const { return m_nValue; }

private:
    std::uint64_t m_nValue = 0xCBF29CE484222325u;
};

class Random {
public:
    explicit Random(std::uint32_t nSeed) : m_Engine(nSeed) {}
    double operator()() { return (static_cast<double>(m_Engine()) - 2147483648.0) / 16777216.0; }
    double OnLattice() { return static_cast<double>(m_Engine() % 41) * 0.5; }

private:
    std::mt19937 m_Engine;
};

void AddModel(Hash& hash, CSTLModel const& model) {
    auto const& facets = model.m_SurfaceArray.m_aSurface[0]->m_aFacet;
    for (int i = 0; i < facets.GetSize(); ++i) {
        CFacet& facet = *facets[i];
        for (float f : facet.m_fNormal) hash.Add(static_cast<double>(f));
        for (tagVertexNode const* p : {facet.m_pVertex1, facet.m_pVertex2, facet.m_pVertex3}) {
            hash.Add(static_cast<std::uint64_t>(p->m_nIndex));
            hash.Add(p->x);
            hash.Add(p->y);
            hash.Add(p->z);
        }
        hash.Add(static_cast<std::uint64_t>(facet.m_nFlag));
        hash.Add(facet.Area());
        hash.Add(facet.ProjectArea());
    }
}

CSTLModel* MakeModel(Random& random, bool bLattice) {
    auto* const pModel = new CSTLModel;
    for (int i = 0; i < 4000; ++i) {
        tagFACET facet;
        for (CPoint3D& p : facet.m_ptVertex) {
            // One after the other: the order in which arguments are evaluated is the compiler's choice.
            for (double* const pCoordinate : {&p.x, &p.y, &p.z}) {
                *pCoordinate = bLattice ? random.OnLattice() : random();
            }
        }
        pModel->AddFacet(facet);
    }
    return pModel;
}

void FillLayer(CLayer& layer, Random& random) {
    layer.m_dZ = random();
    for (int i = 0; i < 50; ++i) {
        auto* const pLoop = new tagLoopTreeNode(0);
        pLoop->m_bClosed = i % 2;
        pLoop->m_pPointList = new XR_CList<CPoint2D, CPoint2D&>(10);
        for (int k = 0; k < 40; ++k) {
            double const x = random();
            CPoint2D point(x, random.OnLattice());
            pLoop->m_pPointList->AddTail(point);
        }
        layer.AddRawLoop(pLoop);
    }
}

// What a layer becomes in a slice file, and what is read back in units of a tenth.
void AddSlices(Hash& hash, Random& random) {
    CLayer layer;
    FillLayer(layer, random);
    for (int const nMode : {1, 2, 3}) {
        std::srand(1);
        FILE* const pFile = std::tmpfile();
        layer.WriteCLIFile(pFile, nMode);
        std::rewind(pFile);
        for (int c = std::getc(pFile); c != EOF; c = std::getc(pFile))
            hash.Add(static_cast<std::uint64_t>(c));
        std::rewind(pFile);
        CLayer back;
        back.m_dUnits = 0.1;
        hash.Add(static_cast<std::uint64_t>(back.ReadCLIFile(pFile, nMode)));
        std::fclose(pFile);
        hash.Add(back.m_dZ);
        back.GetBoundBox();
        double dLength = 0.0;
        hash.Add(back.GetAreaLength(dLength));
        hash.Add(dLength);
        for (double const d : {back.m_Box.m_ptMin.x, back.m_Box.m_ptMin.y, back.m_Box.m_ptMax.x}) hash.Add(d);
    }
}

}  // namespace

int main() {
    Hash hash;
    Random random(20);
    AddSlices(hash, random);
    for (bool const bLattice : {false, true}) {
        CSTLModel* const pModel = MakeModel(random, bLattice);
        AddModel(hash, *pModel);
        hash.Add(pModel->CalArea());
        hash.Add(pModel->CalVolume());
        pModel->FixNormal();
        double matrix[4][4] = {
            {0.7, 0.1, -0.3, 0.0}, {0.2, -0.9, 0.4, 0.0}, {0.5, 0.3, 1.1, 0.0}, {3.3, -1.7, 0.9, 1.0}};
        pModel->Transform(matrix);
        AddModel(hash, *pModel);
        hash.Add(pModel->m_dArea);
        hash.Add(pModel->m_dVolume);
        delete pModel;
    }
    std::printf("%016llx\n", static_cast<unsigned long long>(hash.Value()));
}
