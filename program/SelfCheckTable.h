#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "Report.h"
#include "selfcheck/Record.h"

namespace selfcheck {

/// The hash of each room by its name, and of all of them.
std::vector<std::pair<std::string, std::string>> HashesOf(Record const& record);

/// All digits that tell a number from its neighbours.
std::string AllDigits(double value);

/// Holds the record against what another build has printed, adds what differs to the report, and says whether
/// all is as it should be. Throws varnet::Error where the file cannot be read.
bool Compare(Record const& record, std::filesystem::path const& path, Report& report);

}  // namespace selfcheck
