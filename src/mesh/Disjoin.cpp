// Splitting a model into its connected shells.

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <span>
#include <vector>

#include "foundation/AddNew.h"
#include "foundation/Counter.h"
#include "foundation/Prefetch.h"
#include "mesh/FacetCorners.h"
#include "mesh/FacetIntake.h"
#include "mesh/RegionGrowth.h"
#include "mesh/STLModel.h"

namespace {

// A shell's name takes the place of the last four characters of the source's name, normally ".stl".
constexpr std::size_t kExtension = 4;

// Facets are handed to a shell in blocks of so many; the stop flag is looked at before each.
constexpr std::size_t kBlock = 1024;

// "part.stl" becomes "part_1.STL". A name too short for the cut gives way as a whole, one too long for the
// field loses its end.
template <std::size_t kSize>
void NameShell(char (&name)[kSize], char const (&sourceName)[kSize], int nNumber) {
    std::size_t const nLength =
        static_cast<std::size_t>(std::find(sourceName, sourceName + kSize - 1, '\0') - sourceName);
    std::size_t const nCut = nLength - std::min(nLength, kExtension);
    std::memcpy(name, sourceName, nCut);
    std::snprintf(name + nCut, kSize - nCut, "_%d.STL", nNumber);
}

tagFACET CopyOf(CFacet const& facet) {
    tagFACET copy;
    copy.m_ptVertex[0] = *facet.m_pVertex1;
    copy.m_ptVertex[1] = *facet.m_pVertex2;
    copy.m_ptVertex[2] = *facet.m_pVertex3;
    std::copy_n(facet.m_fNormal, 3, copy.m_fNormal);
    return copy;
}

// Finds the facets of shells and copies them to models, with the memory of the shell before.
class ShellCopier {
public:
    explicit ShellCopier(CSTLModel& source) : m_Source(source) {}

    void Copy(CFacet& seed, CSTLModel& shell) {
        FindShell(seed);
        FacetIntake intake(shell, m_Shell.size());
        std::span<CFacet* const> left = m_Shell;
        while (!left.empty()) {
            std::span<CFacet* const> const block = left.first(std::min(kBlock, left.size()));
            left = left.subspan(block.size());
            CopyAll(block);
            intake.AddAll(m_Copies);
            if (IsStopped()) return;
        }
    }

    bool IsStopped() const { return LoadShared(m_Source.m_bStopOperate) != 0; }

private:
    void CopyAll(std::span<CFacet* const> facets) {
        constexpr std::size_t kVerticesAhead = 16;
        m_Copies.clear();
        for (std::size_t i = 0; i < facets.size(); ++i) {
            if (i + kVerticesAhead < facets.size()) {
                for (tagVertexNode const* const p : Corners(*facets[i + kVerticesAhead])) Prefetch(&p->x);
            }
            m_Copies.push_back(CopyOf(*facets[i]));
        }
    }

    // A stop leaves the shell with the facets that were found until then, whole generations of them.
    void FindShell(CFacet& seed) {
        m_Shell.assign(1, &seed);
        seed.m_nRegion = kPlaced;
        m_Growth.Grow(seed, AcrossEdges(), EveryoneJoins(), [this](std::span<CFacet* const> wave) {
            m_Shell.insert(m_Shell.end(), wave.begin(), wave.end());
            return !IsStopped();
        });
    }

    CSTLModel& m_Source;
    RegionGrowth m_Growth;
    std::vector<CFacet*> m_Shell;
    std::vector<tagFACET> m_Copies;
};

}  // namespace

void CSTLModel::Disjoin(XR_CList<void*, void*>& ShellList) {
    int nShells = 0;
    ShellCopier copier(*this);
    for (CFacet* const pSeed : MarkFacetsToPlace(*this, [](CFacet const&) { return true; })) {
        if (pSeed->m_nRegion == kPlaced) continue;
        auto& shell = AddNew<CSTLModel>(ShellList);
        NameShell(shell.m_Status.m_szFileName, m_Status.m_szFileName, ++nShells);
        copier.Copy(*pSeed, shell);
        if (copier.IsStopped()) return;
    }
}
