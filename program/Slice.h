#pragma once

#include <Varnet64.h>

#include <cstddef>
#include <string>

#include "PathOrder.h"
#include "Plate.h"
#include "SliceFile.h"

/// How slices are written.
struct SliceOutput {
    std::string file;
    SliceMode mode = SliceMode::kBinary;
    PathOrdering ordering;
};

/// What came of writing.
struct SliceWriteFigures {
    Travel travel;             ///< from the origin
    std::size_t nTooLong = 0;  ///< paths whose line of text is too long to be read back whole
};

/// Slices the plate into a CLI file, layer by layer: there is never more than one layer in memory. Shows a
/// progress bar. The file appears under its name only when it is complete. Throws Failure, also when it was
/// interrupted.
SliceWriteFigures WriteSlices(Plate& plate, SliceOutput const& output);
