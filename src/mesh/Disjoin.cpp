// Splitting a model into its connected shells.

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <optional>
#include <span>
#include <vector>

#include "foundation/Counter.h"
#include "foundation/LookAhead.h"
#include "foundation/Prefetch.h"
#include "foundation/memory/AddNew.h"
#include "mesh/FacetCorners.h"
#include "mesh/FacetGraph.h"
#include "mesh/FacetIntake.h"
#include "mesh/RegionGrowth.h"
#include "mesh/STLModel.h"
#include "trees/NearHeightCopier.h"
#include "trees/VertexCopier.h"

using namespace varnet;

namespace {

// A shell's number and ending take the place of the last four characters of the source's name, normally
// ".stl".
constexpr std::size_t kExtension = 4;

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

// The model's facets, in its order.
std::vector<CFacet*> FacetsOf(CSTLModel const& model) {
    std::vector<CFacet*> facets;
    auto const& surfaces = model.m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.m_nSize; ++i) {
        auto const& array = surfaces[i]->m_aFacet;
        facets.insert(facets.end(), array.m_pData, array.m_pData + array.m_nSize);
    }
    return facets;
}

// Facets whose vertices are brought near at once.
constexpr std::size_t kGroup = 32;
static_assert(3 * kGroup <= NearHeightCopier::kLargestGroup);

// The corners of a facet, by the ranks of their vertices.
using Ranks = std::array<std::uint32_t, 3>;
using RankGraph = FacetGraph<Ranks>;

// Finds the facets of shells and copies them to models.
//
// Facets of a shell lie scattered in memory in the order in which a walk over it meets them. So what the walk
// and the copying need of them is gathered in a table before, in the order in which they mostly lie, and a
// shell's vertices are copied first, which finds them their places in the new tree without a search.
class ShellCopier {
public:
    explicit ShellCopier(CSTLModel& source)
        : m_Source(source),
          m_Vertices(source.m_VertexTree, kLargestCoordinate),
          m_bRanked(m_Vertices.IsRanked()),
          m_Placed(static_cast<std::size_t>(source.GetFacetsNum())),
          m_Graph(FacetsOf(source),
                  [this](RankGraph const& graph, std::uint32_t n) { return FindRanks(graph.Facet(n)); }) {
        MarkAsPlaced();
        std::size_t const nVertices = m_Vertices.Sources().size();
        if (m_bRanked && !m_Vertices.IsOrdered() && nVertices <= NearHeightCopier::kMostVertices)
            m_NearHeights.emplace(m_Vertices.Sources());
    }
    ShellCopier(ShellCopier const&) = delete;
    ShellCopier& operator=(ShellCopier const&) = delete;
    // A stop leaves facets without a shell.
    ~ShellCopier() {
        for (std::uint32_t n = 0; n < Size(); ++n) {
            if (m_Placed[n] == 0) m_Graph.Facet(n).m_nRegion = kNotPlaced;
        }
    }

    std::uint32_t Size() const { return m_Graph.Size(); }
    bool IsPlaced(std::uint32_t n) const { return m_Placed[n] != 0; }
    bool IsStopped() const { return LoadShared(m_Source.m_bStopOperate) != 0; }

    void Copy(std::uint32_t nSeed, CSTLModel& shell) {
        FindShell(nSeed);
        if (m_NearHeights.has_value()) {
            CopyByHeights(shell);
        } else if (IsForeseen() && m_Vertices.CanCopy()) {
            m_Vertices.CopyTo(shell.m_VertexTree);
            CopyFacets(shell);
        } else {
            OfferFacets(shell);
        }
        m_Vertices.Clear();
    }

private:
    // What the walk over a shell asks of a facet: its neighbours. On the way, the vertices get to know when
    // they will come.
    struct Neighbors {
        ShellCopier& copier;
        void LookAhead(std::span<std::uint32_t const> wave, std::size_t i) const {
            using namespace look_ahead;
            if (i + kShellRecord < wave.size()) copier.m_Graph.PrefetchRecord(wave[i + kShellRecord]);
            if (i + kShellVertices < wave.size() && copier.IsForeseen()) {
                for (std::uint32_t const n : copier.m_Graph.NoteOf(wave[i + kShellVertices]))
                    copier.m_Vertices.PrefetchAnnounce(n);
            }
        }
        template <class Offer>
        void operator()(std::uint32_t nFacet, Offer const& offer) const {
            copier.AnnounceCorners(nFacet);
            auto const& neighbors = copier.m_Graph.Neighbors(nFacet);
            for (std::size_t k = 0; k < neighbors.size(); ++k) {
                if (neighbors[k] != RankGraph::kNone) offer(static_cast<int>(k) + 1, neighbors[k]);
            }
        }
    };

    Ranks FindRanks(CFacet const& facet) {
        Ranks ranks;
        std::size_t k = 0;
        for (tagVertexNode const* const pVertex : Corners(facet)) {
            ranks[k] = m_Vertices.RankOf(*pVertex);
            m_bRanked = m_bRanked && ranks[k] != VertexCopier::kNone;
            ++k;
        }
        return ranks;
    }

    // Whether the vertices of a shell are copied before its facets.
    bool IsForeseen() const { return m_bRanked && m_Vertices.IsOrdered(); }

    // Where facets stand in the model a second time, they are placed from the beginning.
    void MarkAsPlaced() {
        constexpr std::uint32_t kAhead = look_ahead::kNumberedFacet;
        for (std::uint32_t n = 0; n < Size(); ++n) {
            if (n + kAhead < Size()) Prefetch(&m_Graph.Facet(n + kAhead));
            CFacet& facet = m_Graph.Facet(n);
            m_Placed[n] = RankGraph::NumberOf(facet) == n ? 0 : 1;
            facet.m_nRegion = kPlaced;
        }
    }

    // A stop leaves the shell with the facets that were found until then, whole generations of them.
    void FindShell(std::uint32_t nSeed) {
        m_Shell.assign(1, nSeed);
        m_nAnnounced = 0;
        m_Placed[nSeed] = 1;
        m_Growth.Grow(
            nSeed, Neighbors{*this},
            [this](int, std::uint32_t, std::uint32_t nCandidate) {
                return std::exchange(m_Placed[nCandidate], std::uint8_t{1}) == 0;
            },
            [this](std::span<std::uint32_t const> wave) {
                m_Shell.insert(m_Shell.end(), wave.begin(), wave.end());
                return !IsStopped();
            });
        while (m_nAnnounced < m_Shell.size()) AnnounceCorners(m_Shell[m_nAnnounced]);
    }

    // To be called for each facet of the shell, in their order.
    void AnnounceCorners(std::uint32_t nFacet) {
        ++m_nAnnounced;
        if (!IsForeseen()) return;
        for (std::uint32_t const nRank : m_Graph.NoteOf(nFacet)) m_Vertices.Announce(nRank);
    }

    void CopyFacets(CSTLModel& shell) {
        for (std::size_t i = 0; i < m_Shell.size(); ++i) {
            PrefetchEntered(i);
            std::array<tagVertexNode*, 3> corners;
            for (std::size_t k = 0; k < 3; ++k) corners[k] = m_Vertices.Next(m_Graph.NoteOf(m_Shell[i])[k]);
            EnterTriangle(shell, corners);
        }
    }

    void PrefetchEntered(std::size_t i) const {
        using namespace look_ahead;
        if (i + kEnteredRecord < m_Shell.size()) m_Graph.PrefetchRecord(m_Shell[i + kEnteredRecord]);
        if (i + kEnteredRanks < m_Shell.size()) {
            for (std::uint32_t const nRank : m_Graph.NoteOf(m_Shell[i + kEnteredRanks]))
                m_Vertices.PrefetchNext(nRank);
        }
        if (i + kEnteredVertices >= m_Shell.size()) return;
        for (std::uint32_t const nRank : m_Graph.NoteOf(m_Shell[i + kEnteredVertices])) {
            if (tagVertexNode const* const p = m_Vertices.Peek(nRank)) {
                Prefetch(&p->x);
                Prefetch(&p->m_ppFacet);
            }
        }
    }

    // Where heights lie within the tolerance of a shell's tree, which were apart in the source.
    void CopyByHeights(CSTLModel& shell) {
        NearHeightCopier::Target target(*m_NearHeights, shell.m_VertexTree);
        for (std::size_t i = 0; i < m_Shell.size(); ++i) {
            if (i % kGroup == 0) PrefetchGroup(i);
            std::array<tagVertexNode*, 3> corners;
            for (std::size_t k = 0; k < 3; ++k) corners[k] = target.AddNode(m_Graph.NoteOf(m_Shell[i])[k]);
            EnterTriangle(shell, corners);
        }
    }

    // The ways of the vertices of the group of facets that begins at the i-th, and what leads to those of the
    // next ones.
    void PrefetchGroup(std::size_t i) const {
        auto const groupAt = [this](std::size_t nFirst) {
            std::size_t const nBegin = std::min(nFirst, m_Shell.size());
            return std::span(m_Shell).subspan(nBegin, std::min(kGroup, m_Shell.size() - nBegin));
        };
        for (std::uint32_t const n : groupAt(i + 2 * kGroup)) m_Graph.PrefetchRecord(n);
        for (std::uint32_t const n : groupAt(i + kGroup)) m_NearHeights->PrefetchRecords(m_Graph.NoteOf(n));
        std::array<std::uint32_t, 3 * kGroup> ranks;
        std::size_t nRanks = 0;
        for (std::uint32_t const n : groupAt(i)) {
            for (std::uint32_t const nRank : m_Graph.NoteOf(n)) ranks[nRanks++] = nRank;
        }
        m_NearHeights->PrefetchWays({ranks.data(), nRanks});
    }

    // Where the order of the vertices does not tell their places in the new tree.
    void OfferFacets(CSTLModel& shell) {
        FacetIntake intake(shell, m_Shell.size());
        FacetQueue queue(intake);
        for (std::uint32_t const n : m_Shell) queue.Add(RecordOf(m_Graph.Facet(n)));
        queue.Flush();
    }

    CSTLModel& m_Source;
    VertexCopier m_Vertices;
    bool m_bRanked;  // whether the vertices are in range and have ranks, and all corners are among them
    std::vector<std::uint8_t> m_Placed;
    RankGraph m_Graph;  // made last, since the facets hold its numbers until they are marked
    std::optional<NearHeightCopier> m_NearHeights;  // where the vertices' heights are near each other
    WaveGrowth<std::uint32_t> m_Growth;
    std::vector<std::uint32_t> m_Shell;
    std::size_t m_nAnnounced = 0;  // facets of the shell whose corners have been announced
};

}  // namespace

void CSTLModel::Disjoin(XR_CList<void*, void*>& ShellList) {
    int nShells = 0;
    ShellCopier copier(*this);
    for (std::uint32_t nSeed = 0; nSeed < copier.Size(); ++nSeed) {
        if (copier.IsPlaced(nSeed)) continue;
        auto& shell = AddNew<CSTLModel>(ShellList);
        NameShell(shell.m_Status.m_szFileName, m_Status.m_szFileName, ++nShells);
        copier.Copy(nSeed, shell);
        if (copier.IsStopped()) return;
    }
}
