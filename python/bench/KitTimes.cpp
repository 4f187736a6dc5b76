// What the kit itself takes for the jobs of speed.py: prints the seconds, the best of some runs.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>

#include "varnet/Kit.h"

namespace {

double BestOf(int runs, std::function<void()> const& work) {
    double best = 1e300;
    for (int i = 0; i < runs; ++i) {
        auto const begin = std::chrono::steady_clock::now();
        work();
        std::chrono::duration<double> const took = std::chrono::steady_clock::now() - begin;
        best = took.count() < best ? took.count() : best;
    }
    return best;
}

}  // namespace

// usage: python_kit_times FILE LAYERS RUNS
int main(int argc, char** argv) {
    if (argc != 4) return 2;
    int const layers = std::atoi(argv[2]);
    int const runs = std::atoi(argv[3]);
    std::printf("%.6f\n", BestOf(runs, [&] { varnet::Part::Read(argv[1]); }));
    varnet::Part const part = varnet::Part::Read(argv[1]);
    varnet::Box3 const box = part.Measures().box;
    part.Bodies();
    std::printf("%.6f\n", BestOf(runs, [&] {
                    varnet::SliceSettings settings;
                    settings.layer = (box.max.z - box.min.z) / layers;
                    varnet::Slicer slicer(varnet::SlicerInputs(part), settings);
                    while (slicer.NextLayer().has_value()) {
                    }
                }));
    return 0;
}
