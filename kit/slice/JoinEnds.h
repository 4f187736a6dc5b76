#pragma once

#include <cstdint>

#include "slice/Paths.h"
#include "slice/Pulse.h"

namespace varnet {

/// Ends of paths that are nearer than this (millimetres) are at one place.
inline constexpr double kMicron = 0.001;

/// What became of the ends of open paths. Lengths in millimetres.
struct JoinFigures {
    std::int64_t closed = 0;  ///< gaps that were longer than a micron
    double closedLength = 0.0;
    double longestClosed = 0.0;
    double longestOpen = 0.0;  ///< the longest way over which ends would have had to be joined further
    double openArea = 0.0;     ///< signed: what open paths would enclose, if they were joined that far
};

/// Joins open paths end to end where their ends lie within a micron of each other or, beyond that, no further
/// than `close`. The nearest ends are joined first; among ends at up to four times the same distance, those
/// of paths that run the same way. A path is not closed over a third of its own length or more. Where paths
/// that run against each other are joined, all run as the longer part of them did.
///
/// Where a path that stays open comes back to a point of its own, what goes round in between is closed by
/// itself.
///
/// What is closed, and was, goes to the one list, what stays open to the other; both are added to. The cut is
/// empty afterwards.
JoinFigures JoinEnds(Paths& cut, double close, Paths& closed, Paths& open, Pulse& pulse);

}  // namespace varnet
