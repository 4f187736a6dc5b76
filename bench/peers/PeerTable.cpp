// Runs the jobs that well-kept libraries do too, all in one run, and prints one Markdown table.

#include "Collector.h"

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
          {"VTK", "VtkReadBinary/1000000"},
          {"OpenMesh", "OpenMeshReadBinary/1000000"},
          {"CGAL", "CgalReadBinary/1000000"},
          {"Assimp (no neighbours)", "AssimpReadBinary/1000000"}}},
        {"the same, facets shuffled",
         "ReadBinaryShuffled/1000000",
         {{"ADMesh", "AdmeshReadBinaryShuffled/1000000"},
          {"VTK", "VtkReadBinaryShuffled/1000000"},
          {"OpenMesh", "OpenMeshReadBinaryShuffled/1000000"},
          {"CGAL", "CgalReadBinaryShuffled/1000000"},
          {"Assimp (no neighbours)", "AssimpReadBinaryShuffled/1000000"}}},
        {"ASCII STL",
         "ReadAscii/1000000",
         {{"ADMesh", "AdmeshReadAscii/1000000"},
          {"VTK", "VtkReadAscii/1000000"},
          {"OpenMesh", "OpenMeshReadAscii/1000000"},
          {"Assimp (no neighbours)", "AssimpReadAscii/1000000"}}},
        {"write binary STL",
         "WriteBinary/1000000",
         {{"ADMesh", "AdmeshWriteBinary/1000000"},
          {"VTK", "VtkWriteBinary/1000000"},
          {"OpenMesh", "OpenMeshWriteBinary/1000000"}}},
        {"consistent winding, one facet in ten turned",
         "FixNormal/1000000",
         {{"ADMesh", "AdmeshFixNormalDirections/1000000"},
          {"VTK", "VtkOrient/1000000"},
          {"CGAL", "CgalOrient/1000000"}}},
        {"area and volume",
         "CalAreaAndCalVolume/1000000",
         {{"ADMesh (volume alone)", "AdmeshVolume/1000000"},
          {"VTK", "VtkAreaAndVolume/1000000"},
          {"OpenMesh", "OpenMeshAreaAndVolume/1000000"},
          {"CGAL", "CgalAreaAndVolume/1000000"}}},
        {"regions that face down, 7,000 on a gyroid",
         "FindSupportSurface/1000000/0",
         {{"VTK", "VtkOverhangs/1000000"}}},
        {"the same, 48,000 on a height field",
         "FindSupportSurface/1000000/1",
         {{"VTK", "VtkOverhangsOfNoise/1000000"}}},
        {"split 780 shells", "Disjoin/1000000/1", {{"CGAL", "CgalSplitShells/1000000"}}},
        {"nest 10,000 loops of 33 points", "Nesting/Rings/10000", {{"Clipper", "ClipperNestingRings/10000"}}},
        {"order 100,000 hatches, nearest first",
         "OptimizeHatchs/Near/100000",
         {{"nanoflann", "NanoflannNearHatchs/100000"}}},
    };
    return s_Jobs;
}

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
    Collector collector;
    if (!RunAll(collector,
                {"--benchmark_filter=" + Filter(), "--benchmark_repetitions=5",
                 "--benchmark_enable_random_interleaving=true"},
                nArguments, ppArguments)) {
        return 2;
    }
    PrintTable(collector);
    return 0;
}
