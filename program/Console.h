#pragma once

#include <string>

#include "varnet/Error.h"

// What a person sees of long work, and how it is stopped.

/// From now on Ctrl-C, and the signals that ask a program to end, set a flag instead of ending it; a write
/// beyond the limit of a file's size fails instead of ending it.
void CatchSignals();

/// Whether one of them came.
bool IsStopped();

/// Throws Error of kind kCancelled where one came.
void ThrowIfStopped();

/// A bar on standard error, where that is a terminal, for work that takes longer than a moment. It stops the
/// work when IsStopped.
varnet::Progress Bar(std::string const& title);

/// A line on standard error: "varnet: warning: ...".
void Warn(std::string const& text);
