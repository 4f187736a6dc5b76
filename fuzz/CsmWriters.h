#pragma once

#include <string>

#include "MeshInvariants.h"

/// Writes the model in every CSM layout, to nowhere.
inline void WriteEveryLayout(CSTLModel& model) {
    std::u16string devNull = u"/dev/null";
    char* const path = reinterpret_cast<char*>(devNull.data());
    Require(model.SaveCSMFile(path) == 1);
    Require(model.SaveCSMFile1(path) == 1);
    Require(model.ExtractFacetForCSM(1, path, 1, nullptr, 0) == 1);
    Require(model.ExtractFacetForCSM(0, path, 0, nullptr, 4096) == 1);
    ForEachFacet(model.m_SurfaceArray, [](CFacet const& facet) { Require(facet.m_nRegion == 0); });
    RequireInvariants(model);
}
