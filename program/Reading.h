#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <string>
#include <vector>

#include "Report.h"
#include "varnet/Layer.h"
#include "varnet/Part.h"

// What the commands share about files that are read.

/// How meshes are read: --weld, --scale, --units.
struct ReadOptions {
    double weld = -1.0;  // below 0: not given
    double scale = 1.0;
    std::string units;

    void AddTo(CLI::App& command);
    /// What every coordinate is multiplied by: --scale and --units.
    double Scale() const;
};

/// A path from the command line, which is UTF-8.
std::filesystem::path PathOf(std::string const& argument);
std::string TextOf(std::filesystem::path const& path);

/// Refuses an output that is the very file of an input, which would be lost: a usage error.
void KeepInputs(std::vector<std::string> const& inputs, std::string const& output);

/// Reads a part, with a bar. Warns where facets were lost, and where the part is so small that it may be in
/// other units.
varnet::Part ReadPart(std::string const& file, ReadOptions const& options);

/// Warns where a part is so small that it may be in other units.
void WarnOfSmall(std::string const& file, varnet::Box3 const& box);

/// Refuses text that is no finite number, with a short line.
std::string WhyNotFinite(std::string const& text);

/// Makes a folder where there is none. Throws varnet::Error.
void MakeFolder(std::filesystem::path const& folder);

/// The size of a file in bytes; 0 where that cannot be told, as of a pipe.
long long BytesOf(std::filesystem::path const& path);
