#pragma once

#include <functional>
#include <string>

// Long work: a bar on a terminal, and a clean stop on Ctrl-C.

/// From now on Ctrl-C sets a flag instead of ending the program.
void CatchInterrupt();

/// Whether Ctrl-C was pressed.
bool IsInterrupted();

/// Throws when Ctrl-C was pressed.
void ThrowIfInterrupted();

/// Runs the work in a thread of its own and waits for it. Meanwhile a bar on standard error, where that is a
/// terminal, shows the share of the work that progress() tells, from 0 to 1; and on Ctrl-C stop() is called,
/// once.
void RunWithProgress(std::string const& title, std::function<void()> const& work,
                     std::function<double()> const& progress, std::function<void()> const& stop);
