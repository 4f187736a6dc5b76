// varnet, the example host program of Varnet64.

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <exception>

#include "Commands.h"
#include "Failure.h"
#include "Progress.h"

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;

void AddSupport(CLI::App& app, SupportOptions& support) {
    CLI::App* const pSupport =
        app.add_subcommand("support", "Find what hangs in the air and write support solids for it");
    pSupport->add_option("IN", support.input, "Mesh file to read")->required();
    pSupport->add_option("-o", support.output, "STL file to write the solids to")->required();
    pSupport->add_option("--ply", support.ply, "PLY file to write, with the regions coloured");
    pSupport->add_option("--angle", support.dAngle, "Faces less than this from straight down need support")
        ->check(CLI::Range(0.0, 90.0))
        ->capture_default_str();
    pSupport->add_option("--connect", support.connect, "What joins facets to one region")
        ->check(CLI::IsMember({"edge", "vertex"}))
        ->capture_default_str();
    pSupport->add_option("--min-area", support.dMinArea, "Regions with less projected area need to hang free")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    CLI::Option* const pDown = pSupport->add_option("--down", support.dDown, "Closed solids of this height")
                                   ->check(CLI::PositiveNumber);
    pSupport
        ->add_flag("--to-plate", support.bToPlate,
                   "Solids down to the lowest point of the part, open at the bottom below faces (default)")
        ->excludes(pDown);
    pSupport->add_option("--edges-up", support.dEdgesUp, "Facets less than this from straight up hold edges")
        ->check(CLI::Range(0.0, 90.0))
        ->capture_default_str();
    pSupport->add_option("--edges-down", support.dEdgesDown, "And those less than this from straight down")
        ->check(CLI::Range(0.0, 90.0))
        ->capture_default_str();
    pSupport->add_option("--edge-length", support.dEdgeLength, "Chains of edges must be longer than this")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    pSupport->add_flag("--json", support.bJson, "Print JSON instead of a table");
    pSupport->callback([&support] { RunSupport(support); });
}

// The checks of CLI11 let "nan" pass.
std::string WhyNotFinite(std::string const& text) {
    double d = 0.0;
    return CLI::detail::lexical_cast(text, d) && std::isfinite(d) ? "" : text + " is not a number";
}

void AddSlice(CLI::App& app, SliceOptions& slice) {
    CLI::App* const pSlice =
        app.add_subcommand("slice", "Slice parts, as they lie side by side, into a CLI file");
    pSlice->add_option("IN", slice.inputs, "Mesh files to read: STL, CSM, 3DMF, OLTP")->required();
    pSlice->add_option("-o", slice.output, "CLI file to write")->required();
    pSlice->add_option("--layer", slice.dLayer, "Height of a layer")
        ->check(WhyNotFinite)
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    pSlice->add_option("--hatch", slice.dHatch, "Distance of fill lines")
        ->check(WhyNotFinite)
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    pSlice
        ->add_option("--angle", slice.dAngle, "Of the fill lines; each layer is at right angles to the last")
        ->check(WhyNotFinite)
        ->check(CLI::Range(-360.0, 360.0))
        ->capture_default_str();
    pSlice->add_flag("--support", slice.bSupport, "Fill support solids too, in layers of even numbers");
    CLI::Option* const pOrder =
        pSlice->add_flag("--order", slice.bOrder, "Print what is nearest next: contours, then fill");
    pSlice->add_flag("--splice", slice.bSplice, "Print contours and fill in one stroke where they meet")
        ->excludes(pOrder);
    pSlice->add_option("--mode", slice.mode, "Of the file")
        ->check(CLI::IsMember({"ascii", "binary", "coc"}))
        ->capture_default_str();
    pSlice->callback([&slice] { RunSlice(slice); });
}

void AddConvert(CLI::App& app, ConvertOptions& convert) {
    CLI::App* const pConvert = app.add_subcommand(
        "convert", "Write a mesh file, or a slice file, in another format, and say what it lost");
    pConvert->add_option("IN", convert.input, "File to read: STL, CSM, 3DMF, OLTP, or CLI slices")
        ->required();
    pConvert
        ->add_option("OUT", convert.output,
                     "File to write: .stl, .csm, in strips of 16-bit points, or .cli, from .cli")
        ->required();
    CLI::Option* const pFloats =
        pConvert->add_flag("--floats", convert.bFloats, "CSM strips with float points");
    CLI::Option* const pRing = pConvert->add_flag("--ring", convert.bRing, "CSM ring stream, 24-bit points");
    CLI::Option* const pPlain = pConvert->add_flag("--plain", convert.bPlain, "Plain CSM, float points");
    CLI::Option* const pHeader =
        pConvert->add_option("--header", convert.header, "File with the header text of CSM strips");
    pConvert->add_option("--mode", convert.mode, "How slices are written (that of IN if not given)")
        ->check(CLI::IsMember({"ascii", "binary", "coc"}));
    pRing->excludes(pFloats, pPlain, pHeader);
    pPlain->excludes(pFloats, pHeader);
    pConvert->callback([&convert] { RunConvert(convert); });
}

void AddLayers(CLI::App& app, LayersOptions& layers) {
    CLI::App* const pLayers =
        app.add_subcommand("layers", "Show the layers of a slice file: heights, counts, area, length, box");
    pLayers->add_option("FILE", layers.input, "CLI slice file to read")->required();
    pLayers->add_flag("--json", layers.bJson, "Print JSON instead of a table");
    pLayers->add_option("--svg", layers.svg, "Folder for a picture of each layer");
    pLayers->add_option("--layer", layers.nLayer, "Only this layer, counted from 1")
        ->check(CLI::Range(1, 2147483647));
    pLayers
        ->add_option("--limit", layers.dLimit, "Files of more than so many megabytes are not held in memory")
        ->check(CLI::Range(0.0, 4096.0))
        ->capture_default_str();
    pLayers->callback([&layers] { RunLayers(layers); });
}

void AddOrder(CLI::App& app, OrderOptions& order) {
    CLI::App* const pOrder =
        app.add_subcommand("order", "Order the paths of a slice file for a print head that travels little");
    pOrder->add_option("IN", order.input, "CLI slice file to read")->required();
    pOrder->add_option("OUT", order.output, "CLI slice file to write")->required();
    auto const modes = CLI::IsMember({"near", "far", "random"});
    CLI::Option* const pHatches = pOrder->add_option("--hatches", order.hatches, "Which hatch comes next")
                                      ->check(modes)
                                      ->capture_default_str();
    CLI::Option* const pLoops = pOrder->add_option("--loops", order.loops, "Which loop comes next")
                                    ->check(modes)
                                    ->capture_default_str();
    CLI::Option* const pWidth =
        pOrder->add_option("--width", order.dWidth, "Contours link with hatches within 1.8 times this, mm")
            ->check(CLI::PositiveNumber);
    CLI::Option* const pCut =
        pOrder
            ->add_option("--cut", order.dCut, "Length of the opening of a contour, and cut off path ends, mm")
            ->check(CLI::NonNegativeNumber);
    CLI::Option* const pSplice = pOrder->add_flag(
        "--splice", order.bSplice, "Print contours in one stroke with the hatches beside them");
    pSplice->needs(pWidth, pCut)->excludes(pHatches, pLoops);
    pWidth->needs(pSplice);
    pCut->needs(pSplice);
    pOrder->add_option("--start", order.start, "Where the head is at first: X,Y")
        ->delimiter(',')
        ->expected(2)
        ->capture_default_str();
    pOrder->add_option("--seed", order.nSeed, "Seed of the random order")->capture_default_str();
    pOrder->add_option("--svg", order.svg, "Folder for a picture of each layer, before and after");
    pOrder->callback([&order] { RunOrder(order); });
}

int Run(int argc, char** argv) {
    CLI::App app("Varnet64: looks at, repairs and writes the meshes of 3D-printing parts.", "varnet");
    app.require_subcommand(1);

    InfoOptions info;
    CLI::App* const pInfo =
        app.add_subcommand("info", "Say what a file holds: counts, box, area, volume, open edges");
    pInfo->add_option("FILE", info.files, "Mesh files: STL, CSM, 3DMF, OLTP; or CLI slices")->required();
    pInfo->add_flag("--json", info.bJson, "Print JSON instead of a table");
    pInfo->callback([&info] { RunInfo(info); });

    RepairOptions repair;
    CLI::App* const pRepair = app.add_subcommand(
        "repair", "Make the winding consistent and outward, drop bad facets, and write binary STL");
    pRepair->add_option("IN", repair.input, "Mesh file to read")->required();
    pRepair->add_option("OUT", repair.output, "STL file to write")->required();
    pRepair->callback([&repair] { RunRepair(repair); });

    SplitOptions split;
    CLI::App* const pSplit = app.add_subcommand(
        "split", "Write each connected shell to a file of its own: part_1.STL, part_2.STL");
    pSplit->add_option("IN", split.input, "Mesh file to read")->required();
    pSplit->add_option("-o", split.folder, "Folder for the files")->required();
    pSplit->callback([&split] { RunSplit(split); });

    SurfacesOptions surfaces;
    CLI::App* const pSurfaces =
        app.add_subcommand("surfaces", "Divide a part into surfaces: count, areas, rim lengths");
    pSurfaces->add_option("IN", surfaces.input, "Mesh file to read")->required();
    pSurfaces->add_option("-o", surfaces.output, "PLY file to write, with a colour for each surface");
    pSurfaces
        ->add_option("--judge", surfaces.judge,
                     "What makes a surface: similar normals, the octant of the normal, or one winding")
        ->check(CLI::IsMember({"normal", "eight", "winding"}))
        ->capture_default_str();
    pSurfaces->callback([&surfaces] { RunSurfaces(surfaces); });

    SupportOptions support;
    AddSupport(app, support);

    SliceOptions slice;
    AddSlice(app, slice);

    ConvertOptions convert;
    AddConvert(app, convert);

    LayersOptions layers;
    AddLayers(app, layers);

    OrderOptions order;
    AddOrder(app, order);

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
    } catch (UsageError const& error) {
        std::fprintf(stderr, "varnet: %s\n", error.what());
        return kUsage;
    } catch (std::exception const& error) {
        std::fprintf(stderr, "varnet: %s\n", error.what());
    }
    return kFailed;
}
