#pragma once

#include <Varnet64.h>

#include <nlohmann/json.hpp>
#include <string>

#include "SliceFile.h"

/// What is in a layer, or in all layers of a file. Millimetres.
struct LayerFacts {
    long long nLoops = 0;  // closed
    long long nOpenPaths = 0;
    long long nHatches = 0;
    long long nEdges = 0;   // of hatches
    long long nPoints = 0;  // of loops and open paths
    double dArea = 0.0;     // of the material, by the nesting of the closed loops
    double dLength = 0.0;   // of loops and open paths
    double dHatchLength = 0.0;
    CBoundBox2D box;

    LayerFacts& operator+=(LayerFacts const& other);
};

/// Counts and measures a layer. Its box is refreshed.
LayerFacts FactsOf(CLayer& layer);

/// Prints what a slice file holds in all, as the info command has it, or gives it as JSON. A broken file is
/// shown as far as it goes, and throws Failure then.
void PrintSliceTable(std::string const& file);
nlohmann::json SliceJson(std::string const& file);
