#pragma once

#include <CLI/CLI.hpp>

// Each command stands in a file of its name. It adds itself to the command line: its options, and what it
// does when it is called. A command prints its result to standard output, and throws varnet::Error when it
// cannot do its work, and CLI::ParseError when it was asked for something that there is not.

void AddInfo(CLI::App& app);
void AddRepair(CLI::App& app);
void AddConvert(CLI::App& app);
void AddSplit(CLI::App& app);
void AddSurfaces(CLI::App& app);
void AddSupport(CLI::App& app);
void AddSlice(CLI::App& app);
void AddLayers(CLI::App& app);
void AddOrder(CLI::App& app);
void AddJoin(CLI::App& app);
void AddWhole(CLI::App& app);
void AddView(CLI::App& app);
void AddDemo(CLI::App& app);
void AddSelfCheck(CLI::App& app);
/// Prints the manual page, or the completions of a shell, of what has been added before.
void AddManual(CLI::App& app);
