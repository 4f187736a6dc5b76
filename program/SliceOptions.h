#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Reading.h"
#include "varnet/Slicer.h"

/// What the command line says of slicing.
struct SliceOptions {
    std::vector<std::string> inputs;
    std::string output;
    std::string page;    // HTML file to look at; none when empty
    std::string layers;  // "A:B"
    std::string shard;   // "K/N"
    std::string rule = "winding";
    std::string mode = "binary";
    bool noFill = false;
    bool support = false;
    bool order = false;
    bool splice = false;
    bool strict = false;
    bool json = false;
    bool stream = false;
    std::string temp;                 // a folder; the system's when empty
    std::vector<std::uint64_t> seed;  // empty: not given
    double fillHoles = 0.0;           // mm of rim; 0 for none
    varnet::SliceSettings settings;
    ReadOptions read;

    bool IsWhole() const { return layers.empty() && shard.empty(); }
    void AddTo(CLI::App& command);
    /// Takes what was given as text into the settings. A text that is no range and no shard, and an output
    /// that is an input, is a usage error.
    void Settle();
};
