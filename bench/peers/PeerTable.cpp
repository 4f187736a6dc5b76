// Runs the jobs that well-kept libraries do too, all in one run, and prints one Markdown table.

#include <array>
#include <cmath>
#include <string>

#include "Collector.h"
#include "SizedShapes.h"

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
        {"nest 10,000 loops of 33 points, ring in ring",
         "Nesting/Rings/10000",
         {{"Clipper", "ClipperNestingRings/10000"}, {"Boost's r-tree", "BoostNestingRings/10000"}}},
        {"the same, scattered", "Nesting/Random/10000", {{"Boost's r-tree", "BoostNestingScattered/10000"}}},
        {"100,000, scattered", "Nesting/Random/100000", {{"Boost's r-tree", "BoostNestingScattered/100000"}}},
        {"order 10,000 hatches, nearest first",
         "OptimizeHatchs/Near/10000",
         {{"nanoflann", "NanoflannNearHatchs/10000"}, {"CGAL", "CgalNearHatchs/10000"}}},
        {"order 100,000 hatches, nearest first",
         "OptimizeHatchs/Near/100000",
         {{"nanoflann", "NanoflannNearHatchs/100000"}, {"CGAL", "CgalNearHatchs/100000"}}},
        {"cut a gyroid into 500 layers, chained",
         "KitCut/0/1000000/500",
         {{"VTK", "VtkCut/0/1000000/500"}, {"CGAL", "CgalCut/0/1000000/500"}}},
        {"the same, a sphere",
         "KitCut/1/1000000/500",
         {{"VTK", "VtkCut/1/1000000/500"}, {"CGAL", "CgalCut/1/1000000/500"}}},
        {"cut, nest, fill, order, write the gyroid",
         "KitRoad/0/1000000/500/real_time",
         {{"VTK (cutting alone)", "VtkCut/0/1000000/500"},
          {"CGAL (cutting alone)", "CgalCut/0/1000000/500"}}},
        {"the same by two threads",
         "KitRoadByTwo/0/1000000/500/real_time",
         {{"VTK (cutting alone)", "VtkCut/0/1000000/500"},
          {"CGAL (cutting alone)", "CgalCut/0/1000000/500"}}},
        {"cut, nest, fill, order, write the sphere",
         "KitRoad/1/1000000/500/real_time",
         {{"VTK (cutting alone)", "VtkCut/1/1000000/500"},
          {"CGAL (cutting alone)", "CgalCut/1/1000000/500"}}},
        {"the same by two threads",
         "KitRoadByTwo/1/1000000/500/real_time",
         {{"VTK (cutting alone)", "VtkCut/1/1000000/500"},
          {"CGAL (cutting alone)", "CgalCut/1/1000000/500"}}},
    };
    return s_Jobs;
}

// What reads each shape.
constexpr std::array<char const*, 3> kShapeReaders = {"ReadShape", "ReadShapeFinely", "ReadShapeExactly"};
constexpr std::array<Peer, 3> kShapePeers = {
    {{"ADMesh", "AdmeshReadShape"}, {"VTK", "VtkReadShape"}, {"OCCT", "OcctReadShape"}}};

std::string Filter() {
    std::string filter;
    auto const add = [&filter](std::string const& name) {
        filter += filter.empty() ? "^(" : "|";
        filter += name;
    };
    for (char const* const pName : kShapeReaders) add(std::string(pName) + "/.*");
    for (Peer const& peer : kShapePeers) add(std::string(peer.pBenchmark) + "/.*");
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

// Whether those who cut have cut the same.
void PrintAreas(Collector const& collector) {
    for (Job const& job : Jobs()) {
        double const dOurs = collector.Area(job.pOurs);
        for (Peer const& peer : job.peers) {
            double const dTheirs = collector.Area(peer.pBenchmark);
            if (!(dOurs > 0.0) || !(dTheirs > 0.0)) continue;
            std::printf("\n%s: the areas of all layers are %.1f mm2 in all; %s differs by %.1e of it.\n",
                        job.pName, dOurs, peer.pName, std::fabs(dTheirs - dOurs) / dOurs);
        }
    }
}

// One row of the table of shapes.
struct ShapeRow {
    std::string text;
    double dRatio;  // of the worst of our readings to the fastest peer
};

ShapeRow RowOf(Collector const& collector, std::size_t nShape, bool bShuffled) {
    std::string arguments = "/1000000/";
    arguments += std::to_string(nShape);
    arguments += bShuffled ? "/1" : "/0";
    std::string text = "| ";
    text += shapes::SizedShapes()[nShape].pName;
    text += bShuffled ? ", shuffled |" : " |";
    auto const add = [&text](double d) {
        if (d > 0.0) text.append(1, ' ').append(std::to_string(static_cast<long long>(d + 0.5)));
        text += " |";
    };
    double dWorst = 0.0;
    for (char const* const pName : kShapeReaders) {
        double const dTime = collector.Median(pName + arguments);
        dWorst = std::max(dWorst, dTime);
        add(dTime);
    }
    double dFastest = std::numeric_limits<double>::infinity();
    for (Peer const& peer : kShapePeers) {
        double const dTime = collector.Median(peer.pBenchmark + arguments);
        if (dTime > 0.0) dFastest = std::min(dFastest, dTime);
        add(dTime);
    }
    return {text, dWorst / dFastest};
}

// The worst shape first.
void PrintShapes(Collector const& collector) {
    std::vector<ShapeRow> rows;
    for (bool const bShuffled : {false, true}) {
        for (std::size_t n = 0; n < shapes::SizedShapes().size(); ++n)
            rows.push_back(RowOf(collector, n, bShuffled));
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](ShapeRow const& a, ShapeRow const& b) { return a.dRatio > b.dRatio; });
    std::printf("\n| Reading binary STL, ns a facet | tolerance 0.0001 | 0.000001 | 0 |");
    for (Peer const& peer : kShapePeers) std::printf(" %s |", peer.pName);
    std::printf(" worst ratio to the fastest |\n|---|---|---|---|---|---|---|---|\n");
    for (ShapeRow const& row : rows) std::printf("%s %.2f |\n", row.text.c_str(), row.dRatio);
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
    PrintAreas(collector);
    PrintShapes(collector);
    return 0;
}
