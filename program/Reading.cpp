#include "Reading.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "Console.h"

namespace fs = std::filesystem;

namespace {

// A part below this, on its longest side, is more likely in metres or inches.
constexpr double kSmallPart = 1.0;

}  // namespace

void ReadOptions::AddTo(CLI::App& command) {
    command
        .add_option("--weld", weld,
                    "Join corners nearer than this, mm, instead of what leaves the fewest open edges")
        ->check(WhyNotFinite)
        ->check(CLI::Range(0.0, 1e3));
    command.add_option("--scale", scale, "Multiply every coordinate")
        ->check(WhyNotFinite)
        ->check(CLI::Range(1e-9, 1e9))
        ->capture_default_str();
    command.add_option("--units", units, "Of the file, where it is not in millimetres")
        ->check(CLI::IsMember({"mm", "cm", "m", "in"}));
}

double ReadOptions::Scale() const {
    double const unit = units == "in" ? 25.4 : units == "m" ? 1000.0 : units == "cm" ? 10.0 : 1.0;
    return scale * unit;
}

fs::path PathOf(std::string const& argument) {
#if defined(_WIN32)
    return fs::path(std::u8string(argument.begin(), argument.end()));
#else
    return fs::path(argument);
#endif
}

std::string TextOf(fs::path const& path) {
    std::u8string const text = path.u8string();
    return {text.begin(), text.end()};
}

void WarnOfSmall(std::string const& file, varnet::Box3 const& box) {
    double const side =
        box.IsEmpty() ? 0.0 : std::max({box.max.x - box.min.x, box.max.y - box.min.y, box.max.z - box.min.z});
    if (side > 0.0 && side < kSmallPart) {
        Warn(file + ": the part is " + Rounded(side, 3) +
             " mm long: if the file is in metres or inches, say --units m or --units in");
    }
}

void KeepInputs(std::vector<std::string> const& inputs, std::string const& output) {
    for (std::string const& input : inputs) {
        std::error_code error;
        if (output.empty() || !fs::is_regular_file(PathOf(output), error)) return;
        if (fs::equivalent(PathOf(input), PathOf(output), error))
            throw CLI::ValidationError(output, "is an input, and would be lost");
    }
}

varnet::Part ReadPart(std::string const& file, ReadOptions const& options) {
    ThrowIfStopped();
    varnet::IntakeSettings settings;
    if (options.weld >= 0.0) settings.weld = options.weld;
    settings.scale = options.Scale();
    settings.progress = Bar("Reading " + TextOf(PathOf(file).filename()));
    varnet::Part part = varnet::Part::Read(PathOf(file), settings);
    varnet::IntakeReport const& found = part.Report();
    if (found.facetsRead < found.facetsInFile) {
        Warn(file + ": " + Count(found.facetsInFile - found.facetsRead) + " of " + Count(found.facetsInFile) +
             " facets could not be read");
    }
    WarnOfSmall(file, part.Measures().box);
    return part;
}

std::string WhyNotFinite(std::string const& text) {
    double value = 0.0;
    return CLI::detail::lexical_cast(text, value) && std::isfinite(value) ? "" : text + " is not a number";
}

void MakeFolder(fs::path const& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error)
        throw varnet::Error(varnet::ErrorKind::kFile, folder,
                            "cannot be made: " + error.default_error_condition().message());
}

long long BytesOf(fs::path const& path) {
    std::error_code error;
    std::uintmax_t const bytes = fs::is_regular_file(path, error) ? fs::file_size(path, error) : 0;
    return error ? 0 : static_cast<long long>(bytes);
}
