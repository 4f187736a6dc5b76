#pragma once

#include <cstddef>
#include <cstdint>

#include "Report.h"
#include "SliceOptions.h"
#include "varnet/PathOrder.h"
#include "varnet/StreamSlicer.h"

// What varnet slice says of its work.

/// What was written.
struct Written {
    varnet::Travel travel;
    std::int64_t tooLong = 0;
    std::uint64_t bytes = 0;
};

/// The empty table.
Report ReportOf(SliceOptions const& options);
/// Adds rows about a part that was sliced from disk.
void AddStream(Report& report, varnet::StreamReport const& found);
/// Adds the rows of every part, and prints the table.
void Print(SliceOptions const& options, varnet::SliceReport const& sliced, Written const& written,
           std::size_t solids, Report report);

/// Says what is not as the part was: a line on standard error, or with --strict an error.
void Judge(SliceOptions const& options, varnet::SliceReport const& sliced, Written const& written);
/// Says what of a part on disk is known only after the layers are made.
void Judge(SliceOptions const& options, varnet::StreamReport const& found);
