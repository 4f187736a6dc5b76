#pragma once

#include <functional>

#include "slice/Pulse.h"

namespace varnet {

/// Runs work(i, pulse) for each i below a count, the first in this thread and the others each in one of their
/// own. Where the system gives no more threads, this one does the rest afterwards.
///
/// What the caller's pulse throws, and what else the first one throws, ends all. What others throw is kept
/// until all are done, and that of the lowest i is thrown then.
void RunTogether(int count, Pulse& pulse, std::function<void(int, Pulse&)> const& work);

}  // namespace varnet
