#pragma once

#include <Varnet64.h>

#include <memory>
#include <string>
#include <vector>

#include "Commands.h"

/// A down-facing region of a model, and what becomes of it.
struct SupportRegion {
    CFeatureSurface* pSurface;
    bool bSupported;  ///< gets a solid
    std::string why;
};

/// What hangs on a model. The regions and chains belong to it.
struct SupportPlan {
    std::vector<SupportRegion> regions;
    std::vector<CFeatureEdge*> chains;  ///< those that are long enough
};

/// Finds the regions and edges that need support: detection, filter, suspended edges.
SupportPlan PlanSupport(CSTLModel& model, SupportOptions const& options);

/// The solids of the plan, first those below regions, then those below chains.
std::vector<std::unique_ptr<CSTLModel>> BuildSolids(CSTLModel& model, SupportPlan const& plan,
                                                    SupportOptions const& options);

/// Adds the solids of the plan to the target, and returns how many there are.
int BuildSupport(CSTLModel& model, SupportPlan const& plan, SupportOptions const& options, CSTLModel& target);

/// Paints the regions: supported ones red, the others yellow.
void WriteSupportPly(std::string const& file, CSTLModel const& model, SupportPlan const& plan);
