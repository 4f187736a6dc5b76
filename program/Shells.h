#pragma once

#include <Varnet64.h>

#include <vector>

/// Facets that hang together by shared edges.
struct Shell {
    std::vector<CFacet*> facets;
    CBoundBox3D box;
    double dSignedVolume = 0.0;  ///< above 0 when the normals of a closed shell point outward
};

/// The shells of the model, in the order of their first facets. Uses m_nRegion of all facets, and leaves it
/// 0.
std::vector<Shell> FindShells(CSTLModel& model);

/// Whether the shell lies in the solid that the other shells make: a cavity, whose normals rightly point
/// inward.
bool IsCavity(std::vector<Shell> const& shells, Shell const& shell);
