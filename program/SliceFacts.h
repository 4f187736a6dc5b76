#pragma once

#include <string>
#include <vector>

#include "Report.h"
#include "varnet/SliceFile.h"

// What is in the layers of a slice file.

/// Counts and measures of a layer, or of all of a file. Millimetres.
struct LayerFacts {
    long long contours = 0;  // closed
    long long openPaths = 0;
    long long chains = 0;
    long long strokes = 0;
    long long points = 0;  // of contours and open paths
    double area = 0.0;
    double length = 0.0;  // of contours and open paths
    double strokeLength = 0.0;
    varnet::Box2 box;

    LayerFacts& operator+=(LayerFacts const& other);
};

struct NumberedLayer {
    long long number;
    double z;
    LayerFacts facts;
};

LayerFacts FactsOf(varnet::Layer const& layer);

/// Opens a file, with a bar; a broken one gives the layers before the break, which IsBroken and RequireWhole
/// tell.
varnet::SliceFile OpenSlices(std::string const& file);
/// Throws varnet::Error for a file that was broken.
void RequireWhole(varnet::SliceFile const& slices);

/// All layers, or one, with never more than one of them in memory.
std::vector<NumberedLayer> MeasureLayers(varnet::SliceFile const& slices, long long only = 0);

/// Rows about a file; what was put right on reading is among them, and a header that states another box is.
void AddSlices(Report& report, varnet::SliceFile const& slices, std::vector<NumberedLayer> const& layers);

nlohmann::json ToJson(LayerFacts const& facts);
std::string TextOf(varnet::Box2 const& box);
