#pragma once

#include <filesystem>
#include <string>
#include <vector>

// The commands of the varnet program. Each prints its result to standard output, and throws Failure when it
// cannot do its work.

struct InfoOptions {
    std::vector<std::string> files;
    bool bJson = false;
};
void RunInfo(InfoOptions const& options);

struct RepairOptions {
    std::string input;
    std::string output;
};
void RunRepair(RepairOptions const& options);

struct DemoOptions {
    std::string folder = "varnet-demo";
};
void RunDemo(DemoOptions const& options);
