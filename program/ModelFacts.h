#pragma once

#include <Varnet64.h>

/// What a person wants to know of a mesh.
struct ModelFacts {
    int nFacets = 0;
    int nVertices = 0;
    int nRimEdges = 0;  ///< edges without a facet on their other side
    int nDoubled = 0;   ///< facets that the file holds more than once
    CBoundBox3D box;
    double dArea = 0.0;
    double dVolume = 0.0;
};

ModelFacts FactsOf(CSTLModel& model);
