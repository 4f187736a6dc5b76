#pragma once

#include <optional>
#include <string>

#include "varnet/SliceFile.h"

/// Writes every layer of a slice file in another mode ("ascii", "binary", "coc"; empty: its own), reads the
/// result back and reports what it has cost. Throws varnet::Error, also where less came back than was
/// written.
void ConvertSlices(std::string const& input, std::string const& output, std::string const& mode, bool json);

/// The mode of "ascii", "binary" or "coc"; nothing for another word.
std::optional<varnet::SliceMode> SliceModeOf(std::string const& word);
