#pragma once

#include <string>

#include "Report.h"
#include "varnet/Part.h"

// What is to be said of a part.

/// Rows about what was found in the file and done to it, and about the part.
void AddIntake(Report& report, varnet::Part const& part);
void AddMeasures(Report& report, varnet::Part const& part);
void AddBodies(Report& report, varnet::Part const& part);

nlohmann::json ToJson(varnet::Box3 const& box);
std::string TextOf(varnet::Box3 const& box);
