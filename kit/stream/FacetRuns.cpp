#include "stream/FacetRuns.h"

#include <algorithm>
#include <type_traits>

namespace varnet {

namespace {

// Facets that are written at a time, and the fewest and most of a run that are read at a time.
constexpr std::size_t kWritten = std::size_t{1} << 14;
constexpr std::size_t kFewestRead = 64;
constexpr std::size_t kMostRead = std::size_t{1} << 14;

static_assert(std::is_trivially_copyable_v<FacetRecord> && sizeof(FacetRecord) == 40);

}  // namespace

FacetRuns::FacetRuns(std::filesystem::path const& folder, std::size_t facetsInRun, std::uint64_t most,
                     std::int32_t lastLayer)
    : m_File(folder), m_RunLength(facetsInRun), m_Begin(static_cast<std::size_t>(lastLayer) + 2) {
    m_Gathered.reserve(static_cast<std::size_t>(std::min<std::uint64_t>(facetsInRun, most)));
}

void FacetRuns::Add(FacetRecord const& facet, Pulse& pulse) {
    m_Gathered.push_back(facet);
    if (m_Gathered.size() >= m_RunLength) WriteRun(pulse);
}

// A counting sort: facets of one layer stay in their order.
void FacetRuns::WriteRun(Pulse& pulse) {
    if (m_Gathered.empty()) return;
    Run run;
    run.begin = m_File.Size();
    run.count = m_Gathered.size();
    std::fill(m_Begin.begin(), m_Begin.end(), 0);
    for (FacetRecord const& facet : m_Gathered) ++m_Begin[static_cast<std::size_t>(facet.layer) + 1];
    for (std::size_t i = 1; i < m_Begin.size(); ++i) m_Begin[i] += m_Begin[i - 1];
    m_Order.resize(m_Gathered.size());
    for (std::size_t i = 0; i < m_Gathered.size(); ++i) {
        m_Order[m_Begin[static_cast<std::size_t>(m_Gathered[i].layer)]++] = static_cast<std::uint32_t>(i);
    }
    std::vector<FacetRecord> block;
    block.reserve(std::min(kWritten, m_Order.size()));
    for (std::uint32_t const i : m_Order) {
        block.push_back(m_Gathered[i]);
        if (block.size() < kWritten) continue;
        Append(block);
        pulse.Beat(kWritten);
    }
    Append(block);
    m_Gathered.clear();
    m_Runs.push_back(std::move(run));
}

void FacetRuns::Append(std::vector<FacetRecord>& block) {
    m_File.Append({reinterpret_cast<char const*>(block.data()), block.size() * sizeof(FacetRecord)});
    block.clear();
}

void FacetRuns::Finish(Pulse& pulse) {
    WriteRun(pulse);
    m_Gathered = {};
    m_Begin = {};
    m_Order = {};
    // All runs together take no more memory than the one that was sorted.
    m_BlockLength = std::clamp(m_RunLength / std::max<std::size_t>(m_Runs.size(), 1), kFewestRead, kMostRead);
}

void FacetRuns::Rewind() {
    m_Heap.clear();
    for (std::size_t i = 0; i < m_Runs.size(); ++i) {
        Run& run = m_Runs[i];
        run.loaded = 0;
        run.at = 0;
        run.block.clear();
        if (Load(run)) m_Heap.push_back({run.block[0].layer, static_cast<std::uint32_t>(i)});
    }
    std::make_heap(m_Heap.begin(), m_Heap.end());
}

// The next facets of a run; false behind its last one.
bool FacetRuns::Load(Run& run) {
    auto const count =
        static_cast<std::size_t>(std::min<std::uint64_t>(m_BlockLength, run.count - run.loaded));
    run.block.resize(count);
    run.at = 0;
    if (count == 0) return false;
    m_File.ReadAt(run.begin + run.loaded * sizeof(FacetRecord),
                  {reinterpret_cast<char*>(run.block.data()), count * sizeof(FacetRecord)});
    run.loaded += count;
    return true;
}

// The run on top of the heap gives all that it has of a layer; its head is looked at again only then.
FacetRecord const* FacetRuns::Next(std::int32_t layer) {
    while (!m_Heap.empty()) {
        Head const head = m_Heap.front();
        if (head.layer > layer) return nullptr;
        Run& run = m_Runs[head.run];
        bool const hasMore = run.at < run.block.size() || Load(run);
        if (hasMore && run.block[run.at].layer == head.layer) return &run.block[run.at++];
        std::pop_heap(m_Heap.begin(), m_Heap.end());
        m_Heap.pop_back();
        if (!hasMore) continue;
        m_Heap.push_back({run.block[run.at].layer, head.run});
        std::push_heap(m_Heap.begin(), m_Heap.end());
    }
    return nullptr;
}

}  // namespace varnet
