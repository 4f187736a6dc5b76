// What files hold.

#include <cstdio>
#include <memory>
#include <vector>

#include "Commands.h"
#include "Console.h"
#include "PartFacts.h"
#include "Reading.h"
#include "SliceFacts.h"
#include "varnet/SliceFile.h"

namespace {

struct InfoOptions {
    std::vector<std::string> files;
    bool json = false;
    ReadOptions read;
};

Report ReportOf(std::string const& file, InfoOptions const& options) {
    Report report(file);
    report.AddJson("file", file);
    if (varnet::SliceFile::IsOne(PathOf(file))) {
        varnet::SliceFile const slices = OpenSlices(file);
        AddSlices(report, slices, MeasureLayers(slices));
        return report;
    }
    varnet::Part const part = ReadPart(file, options.read);
    AddIntake(report, part);
    AddMeasures(report, part);
    AddBodies(report, part);
    return report;
}

// A file that cannot be read does not keep the others from being shown.
void Run(InfoOptions const& options) {
    nlohmann::json all = nlohmann::json::array();
    std::size_t failed = 0;
    for (std::string const& file : options.files) {
        try {
            Report const report = ReportOf(file, options);
            if (options.json) {
                all.push_back(report.Json());
            } else {
                report.Print();
            }
        } catch (varnet::Error const& error) {
            if (error.Kind() == varnet::ErrorKind::kCancelled) throw;
            std::fprintf(stderr, "varnet: %s\n", error.what());
            all.push_back({{"file", file}, {"error", error.what()}});
            ++failed;
        }
    }
    if (options.json) PrintJson({{"files", all}});
    if (failed == 0) return;
    throw varnet::Error(
        varnet::ErrorKind::kContent,
        std::to_string(failed) + " of " + std::to_string(options.files.size()) + " files could not be read");
}

}  // namespace

void AddInfo(CLI::App& app) {
    auto const options = std::make_shared<InfoOptions>();
    CLI::App* const command = app.add_subcommand(
        "info",
        "Say what a file holds: facets, bodies, open edges in the file and as read, box, area, volume");
    command->add_option("FILE", options->files, "Mesh files (STL, CSM, 3DMF, OLTP) or CLI slices")
        ->required();
    command->add_flag("--json", options->json, "Print JSON instead of a table");
    options->read.AddTo(*command);
    command->callback([options] { Run(*options); });
}
