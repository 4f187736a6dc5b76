#pragma once

#include <Varnet64.h>

/// What a repair did.
struct RepairResult {
    int nTurned = 0;  ///< facets whose winding was turned to agree with their shell
    int nShells = 0;
    int nShellsTurned = 0;  ///< shells that were inside out
    int nCavities = 0;      ///< shells that rightly face inward
};

/// Makes the winding of each shell consistent, and outward, or inward where the shell bounds a cavity.
RepairResult Repair(CSTLModel& model);
