// varnet, the example host program of Varnet64.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

#include "Commands.h"
#include "Progress.h"

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;

int Run(int argc, char** argv) {
    CLI::App app("Varnet64: looks at, repairs and writes the meshes of 3D-printing parts.", "varnet");
    app.require_subcommand(1);

    InfoOptions info;
    CLI::App* const pInfo =
        app.add_subcommand("info", "Say what a file holds: counts, box, area, volume, open edges");
    pInfo->add_option("FILE", info.files, "STL files")->required();
    pInfo->add_flag("--json", info.bJson, "Print JSON instead of a table");
    pInfo->callback([&info] { RunInfo(info); });

    RepairOptions repair;
    CLI::App* const pRepair = app.add_subcommand(
        "repair", "Make the winding consistent and outward, drop bad facets, and write binary STL");
    pRepair->add_option("IN", repair.input, "STL file to read")->required();
    pRepair->add_option("OUT", repair.output, "STL file to write")->required();
    pRepair->callback([&repair] { RunRepair(repair); });

    DemoOptions demo;
    CLI::App* const pDemo = app.add_subcommand("demo", "Make a part and run everything on it");
    pDemo->add_option("DIR", demo.folder, "Folder for the files that it writes")->capture_default_str();
    pDemo->callback([&demo] { RunDemo(demo); });

    CatchInterrupt();
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        return app.exit(error) == 0 ? 0 : kUsage;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (std::exception const& error) {
        std::fprintf(stderr, "varnet: %s\n", error.what());
    }
    return kFailed;
}
