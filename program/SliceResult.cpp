#include "SliceResult.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "Console.h"

Report ReportOf(SliceOptions const& options) {
    return Report(std::to_string(options.inputs.size()) + (options.inputs.size() == 1 ? " part" : " parts") +
                  " -> " + options.output);
}

void Print(SliceOptions const& options, varnet::SliceReport const& sliced, Written const& written,
           std::size_t solids, Report report) {
    report.Add("layers", "layers", sliced.layers,
               Count(sliced.layers) + " of " + Number(options.settings.layer) + " mm");
    report.Add("contours", "contours", static_cast<long long>(sliced.contours));
    report.Add("open paths", "open_paths", static_cast<long long>(sliced.openPaths));
    report.Add("layers with open paths", "layers_with_open_paths",
               static_cast<long long>(sliced.layersWithOpenPaths));
    report.Add("gaps closed", "gaps_closed", sliced.gapsClosed,
               Count(sliced.gapsClosed) +
                   (sliced.gapsClosed > 0 ? ", up to " + Number(sliced.longestGapClosed) + " mm" : ""));
    report.AddJson("longest_gap_closed", sliced.longestGapClosed);
    report.AddJson("longest_gap", sliced.longestGap);
    report.AddJson("missing_volume", sliced.missingVolume);
    report.Add("points", "points", static_cast<long long>(sliced.points));
    report.Add("length of all contours, mm", "contour_length", sliced.contourLength);
    report.Add("volume of the mesh, mm3", "mesh_volume", sliced.meshVolume);
    report.Add("volume of the layers, mm3", "layer_volume", sliced.volume);
    report.AddJson("cut_volume", sliced.cutVolume);
    bool const filled = options.settings.hatch > 0.0;
    report.Add("fill strokes", "strokes", sliced.strokes,
               filled ? Count(sliced.strokes) : "none: contours only");
    report.Add("support strokes", "support_strokes", static_cast<long long>(sliced.supportStrokes));
    report.Add("support solids", "support_solids", static_cast<long long>(solids));
    report.Add("travel with the material off, mm", "travel", written.travel.length);
    report.Add("starts and stops", "starts", static_cast<long long>(written.travel.starts));
    report.Add("bytes", "bytes", static_cast<long long>(written.bytes));
    report.Print(options.json, options.output == "-");
}

void Judge(SliceOptions const& options, varnet::SliceReport const& sliced, Written const& written) {
    if (written.tooLong > 0) {
        Warn(Count(written.tooLong) +
             " paths have lines of over 10,239 characters, which some readers take for two: --mode binary "
             "has no such limit");
    }
    if (sliced.skippedFacets > 0)
        Warn(Count(sliced.skippedFacets) + " facets were not sliced: a corner is no number");
    if (sliced.openPaths == 0) return;
    std::string const text = "paths stay open in " + Count(sliced.layersWithOpenPaths) + " of " +
                             Count(sliced.layers) + " layers, the longest gap " +
                             Rounded(sliced.longestGap, 4) + " mm, about " +
                             Rounded(sliced.missingVolume, 4) +
                             " mm3 missing: --fill-holes MM closes the part, --close MM the gaps";
    if (options.strict) throw varnet::Error(varnet::ErrorKind::kContent, text);
    Warn(text);
}

void AddStream(Report& report, varnet::StreamReport const& found) {
    report.Add("facets in the file", "facets_in_file", static_cast<long long>(found.facetsInFile));
    report.Add("facets that a layer cuts", "facets_sorted", static_cast<long long>(found.facetsSorted));
    report.AddJson("facets_lost", found.facetsInFile - found.facetsRead);
    report.AddJson("not_finite", found.notFinite);
    report.AddJson("degenerate", found.degenerate);
    report.AddJson("collinear", found.collinear);
    report.AddJson("turned", found.turned);
    report.AddJson("inside_out_layers", found.insideOutLayers);
    report.Add("bytes of the temporary file", "temporary_bytes",
               static_cast<long long>(found.temporaryBytes));
}

void Judge(SliceOptions const& options, varnet::StreamReport const& found) {
    std::string const& input = options.inputs.front();
    if (found.facetsRead < found.facetsInFile) {
        Warn(input + ": " + Count(found.facetsInFile - found.facetsRead) + " of " +
             Count(found.facetsInFile) + " facets could not be read");
    }
    if (found.turned) Warn(input + ": the part is inside out, and is sliced as if it were turned");
    if (found.collinear > 0) {
        Warn(input + ": " + Count(found.collinear) +
             " facets without area are cut as they are: without --stream they are taken out");
    }
    if (found.insideOutLayers > 0) {
        Warn(input + ": in " + Count(found.insideOutLayers) +
             " layers a body seems to be inside out, and is empty: without --stream it is turned; "
             "--rule odd does not look at that");
    }
}
