// Runs the jobs that well-kept libraries do too, all in one run, and prints one Markdown table.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace {

struct Peer {
    char const* pName;
    char const* pBenchmark;
};

struct Job {
    char const* pName;
    char const* pOurs;
    std::vector<Peer> peers;
};

std::vector<Job> const& Jobs() {
    static std::vector<Job> const s_Jobs = {
        {"binary STL to a mesh with neighbours",
         "ReadBinary/1000000",
         {{"ADMesh", "AdmeshReadBinary/1000000"},
          {"OpenMesh", "OpenMeshReadBinary/1000000"},
          {"CGAL", "CgalReadBinary/1000000"},
          {"Assimp (no neighbours)", "AssimpReadBinary/1000000"}}},
        {"the same, facets shuffled",
         "ReadBinaryShuffled/1000000",
         {{"ADMesh", "AdmeshReadBinaryShuffled/1000000"},
          {"OpenMesh", "OpenMeshReadBinaryShuffled/1000000"},
          {"CGAL", "CgalReadBinaryShuffled/1000000"},
          {"Assimp (no neighbours)", "AssimpReadBinaryShuffled/1000000"}}},
        {"ASCII STL",
         "ReadAscii/1000000",
         {{"ADMesh", "AdmeshReadAscii/1000000"},
          {"OpenMesh", "OpenMeshReadAscii/1000000"},
          {"Assimp (no neighbours)", "AssimpReadAscii/1000000"}}},
        {"write binary STL",
         "WriteBinary/1000000",
         {{"ADMesh", "AdmeshWriteBinary/1000000"}, {"OpenMesh", "OpenMeshWriteBinary/1000000"}}},
        {"consistent winding, one facet in ten turned",
         "FixNormal/1000000",
         {{"ADMesh", "AdmeshFixNormalDirections/1000000"}, {"CGAL", "CgalOrient/1000000"}}},
        {"area and volume",
         "CalAreaAndCalVolume/1000000",
         {{"ADMesh (volume alone)", "AdmeshVolume/1000000"},
          {"OpenMesh", "OpenMeshAreaAndVolume/1000000"},
          {"CGAL", "CgalAreaAndVolume/1000000"}}},
        {"split 780 shells", "Disjoin/1000000/1", {{"CGAL", "CgalSplitShells/1000000"}}},
        {"nest 10,000 loops of 33 points", "Nesting/Rings/10000", {{"Clipper", "ClipperNestingRings/10000"}}},
        {"order 100,000 hatches, nearest first",
         "OptimizeHatchs/Near/100000",
         {{"nanoflann", "NanoflannNearHatchs/100000"}}},
    };
    return s_Jobs;
}

// Nanoseconds for a facet, loop or hatch, by benchmark: the medians of the repetitions.
class Collector : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(Context const&) override { return true; }

    void ReportRuns(std::vector<Run> const& runs) override {
        for (Run const& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
            for (char const* const pCounter : {"time/facet", "s/item"}) {
                auto const counter = run.counters.find(pCounter);
                if (counter != run.counters.end()) {
                    m_Times[run.run_name.str()].push_back(counter->second.value * 1e9);
                }
            }
            std::fprintf(stderr, "%s\n", run.run_name.str().c_str());
        }
    }

    double Median(std::string const& name) const {
        auto const found = m_Times.find(name);
        if (found == m_Times.end()) return std::numeric_limits<double>::quiet_NaN();
        std::vector<double> times = found->second;
        std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2),
                         times.end());
        return times[times.size() / 2];
    }

private:
    std::map<std::string, std::vector<double>> m_Times;
};

std::string Filter() {
    std::string filter;
    auto const add = [&filter](char const* pName) {
        filter += filter.empty() ? "^(" : "|";
        filter += pName;
    };
    for (Job const& job : Jobs()) {
        add(job.pOurs);
        for (Peer const& peer : job.peers) add(peer.pBenchmark);
    }
    return filter + ")$";
}

void PrintTable(Collector const& collector) {
    std::printf("| Job | Varnet64, ns | peers, ns | ratio to the fastest |\n|---|---|---|---|\n");
    for (Job const& job : Jobs()) {
        double const dOurs = collector.Median(job.pOurs);
        double dFastest = std::numeric_limits<double>::infinity();
        std::string peers;
        for (Peer const& peer : job.peers) {
            double const dTime = collector.Median(peer.pBenchmark);
            if (!(dTime > 0.0)) continue;
            dFastest = std::min(dFastest, dTime);
            peers += (peers.empty() ? "" : ", ") + std::string(peer.pName) + " " +
                     std::to_string(static_cast<long long>(dTime + 0.5));
        }
        std::printf("| %s | %.0f | %s | %.2f |\n", job.pName, dOurs, peers.c_str(), dOurs / dFastest);
    }
}

}  // namespace

int main(int nArguments, char** ppArguments) {
    std::string filter = "--benchmark_filter=" + Filter();
    std::string repetitions = "--benchmark_repetitions=5";
    std::string interleaved = "--benchmark_enable_random_interleaving=true";
    std::vector<char*> arguments = {ppArguments[0], filter.data(), repetitions.data(), interleaved.data()};
    arguments.insert(arguments.end(), ppArguments + 1, ppArguments + nArguments);
    auto nAll = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    benchmark::Initialize(&nAll, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(nAll, arguments.data())) return 2;
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    PrintTable(collector);
    return 0;
}
