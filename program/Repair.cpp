// Winding made consistent within each shell, and holes closed where that is asked for.

#include <memory>

#include "Commands.h"
#include "Console.h"
#include "PartFacts.h"
#include "Reading.h"

namespace {

struct RepairOptions {
    std::string input;
    std::string output;
    double fillHoles = 0.0;
    bool outward = false;
    bool json = false;
    ReadOptions read;
};

void Run(RepairOptions const& options) {
    varnet::Part part = ReadPart(options.input, options.read);
    varnet::RepairSettings settings;
    settings.fillHoles = options.fillHoles;
    settings.outward = options.outward;
    settings.progress = Bar("Repairing");
    varnet::RepairReport const repaired = part.Repair(settings);
    part.Write(PathOf(options.output), varnet::MeshFormat::kBinaryStl, Bar("Writing"));

    Report report(options.input + " -> " + options.output);
    AddIntake(report, part);
    report.Add("facets turned to agree", "turned", static_cast<long long>(repaired.turned));
    report.Add("facets once too often, left out", "repair_doubled", static_cast<long long>(repaired.doubled));
    report.Add("facets divided at a vertex on their edge", "repair_split",
               static_cast<long long>(repaired.split));
    report.Add("bodies turned outward", "bodies_turned", static_cast<long long>(repaired.bodiesTurned));
    report.Add("holes closed", "holes_filled", static_cast<long long>(repaired.holesFilled));
    report.Add("facets added", "facets_added", static_cast<long long>(repaired.facetsAdded));
    report.Add("open edges, before and after", "open_edges_after",
               static_cast<long long>(repaired.openEdgesAfter),
               Count(repaired.openEdgesBefore) + " -> " + Count(repaired.openEdgesAfter));
    report.AddJson("open_edges_before", repaired.openEdgesBefore);
    AddMeasures(report, part);
    AddBodies(report, part);
    report.Print(options.json, options.output == "-");
    if (repaired.openEdgesAfter > 0) {
        Warn(options.output + ": " + Count(repaired.openEdgesAfter) +
             " edges are open: --fill-holes MM closes holes with rims up to that length");
    }
    for (varnet::Body const& body : part.Bodies()) {
        if (!body.IsInsideOut()) continue;
        Warn(options.output + ": a body is inside out: --outward turns it");
        break;
    }
}

}  // namespace

void AddRepair(CLI::App& app) {
    auto const options = std::make_shared<RepairOptions>();
    CLI::App* const command = app.add_subcommand(
        "repair",
        "Join what belongs together, turn facets that contradict their shell, and write binary STL");
    command->add_option("IN", options->input, "Mesh file to read")->required();
    command->add_option("OUT", options->output, "STL file to write, - for standard output")->required();
    command->add_option("--fill-holes", options->fillHoles, "Close holes whose rim is up to this long, mm")
        ->check(WhyNotFinite)
        ->check(CLI::Range(0.0, 1e9));
    command->add_flag("--outward", options->outward, "Turn whole bodies that are inside out");
    command->add_flag("--json", options->json, "Print JSON instead of a table");
    options->read.AddTo(*command);
    command->callback([options] { Run(*options); });
}
