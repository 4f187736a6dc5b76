// Memory and time of slicing from disk, for blocks of a gyroid of a million facets each, as many as one says:
// a Markdown table, beside the ordinary slicer where that is asked for. Each run is a process of its own, so
// that its peak is its own. The file stands in a folder of one's choice, and is removed.
//
// varnet_stream [--ordinary] FOLDER MILLIONS...

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>

#include "SizedShapes.h"
#include "varnet/Part.h"
#include "varnet/StreamSlicer.h"
#include "varnet/Supports.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kBlock = 1'000'000;
constexpr int kLayers = 1000;

// The file, while the object lives.
class BlocksFile {
public:
    BlocksFile(fs::path const& folder, int blocks) : m_Path(folder / "varnet-stream-bench.stl") {
        shapes::Mesh const block = shapes::GyroidOfAbout(kBlock);
        float size = 0.0f;
        for (shapes::Triangle const& triangle : block) {
            for (shapes::Corner const& corner : triangle) size = std::max(size, corner.z);
        }
        // Powers of two apart, so that corners keep most of their digits.
        float const step = std::exp2(std::ceil(std::log2(size * 1.01f)));
        int const side = std::max(1, static_cast<int>(std::lround(std::cbrt(blocks))));
        m_Facets = block.size() * static_cast<std::size_t>(blocks);
        std::FILE* const file = std::fopen(m_Path.c_str(), "wb");
        if (file == nullptr) throw std::runtime_error("no file can be made in " + folder.string());
        for (int i = 0; i < blocks; ++i) {
            float const z = step * static_cast<float>(i / side / side);
            std::string bytes = shapes::ToBinaryStl(shapes::Moved(
                block, step * static_cast<float>(i % side), step * static_cast<float>(i / side % side), z));
            for (unsigned k = 0; k < 4; ++k) bytes[80 + k] = static_cast<char>(m_Facets >> 8 * k & 0xFF);
            std::size_t const skipped = i == 0 ? 0 : 84;
            std::fwrite(bytes.data() + skipped, 1, bytes.size() - skipped, file);
            m_Height = static_cast<double>(z + size);
        }
        if (std::fclose(file) != 0) throw std::runtime_error("the file could not be written");
    }
    BlocksFile(BlocksFile const&) = delete;
    BlocksFile& operator=(BlocksFile const&) = delete;
    ~BlocksFile() {
        std::error_code ignored;
        fs::remove(m_Path, ignored);
    }
    fs::path const& Path() const { return m_Path; }
    std::size_t Facets() const { return m_Facets; }
    double Height() const { return m_Height; }

private:
    fs::path m_Path;
    std::size_t m_Facets = 0;
    double m_Height = 0.0;
};

// What a job told, and what the system did of its process.
struct Outcome {
    double prepared = 0.0;  // seconds
    double sliced = 0.0;
    double temporary = 0.0;  // bytes
    double points = 0.0;
    double peak = 0.0;  // bytes
};

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

Outcome InItsOwnProcess(std::function<Outcome()> const& job) {
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("no pipe");
    pid_t const child = fork();
    if (child == 0) {
        Outcome const outcome = job();
        bool const written = write(ends[1], &outcome, sizeof outcome) == sizeof outcome;
        _exit(written ? 0 : 1);
    }
    close(ends[1]);
    Outcome outcome;
    bool const isRead = read(ends[0], &outcome, sizeof outcome) == sizeof outcome;
    close(ends[0]);
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    if (!isRead || status != 0) throw std::runtime_error("the job failed");
    outcome.peak = static_cast<double>(usage.ru_maxrss) * 1024.0;
    return outcome;
}

varnet::SliceSettings SettingsFor(BlocksFile const& file) {
    varnet::SliceSettings settings;
    settings.layer = file.Height() / kLayers;
    settings.hatch = 0.0;
    return settings;
}

template <class AnySlicer>
void Slice(AnySlicer& slicer, Outcome& outcome) {
    Clock::time_point const start = Clock::now();
    slicer.ForEachLayer(
        [&outcome](varnet::Layer&& layer) { outcome.points += static_cast<double>(layer.points.size()); });
    outcome.sliced = SecondsSince(start);
}

Outcome Stream(BlocksFile const& file, fs::path const& folder) {
    Clock::time_point const start = Clock::now();
    varnet::StreamSettings settings;
    settings.slice = SettingsFor(file);
    settings.temp = folder;
    varnet::StreamSlicer slicer(file.Path(), settings);
    Outcome outcome;
    outcome.prepared = SecondsSince(start);
    outcome.temporary = static_cast<double>(slicer.Stream().temporaryBytes);
    Slice(slicer, outcome);
    return outcome;
}

Outcome Ordinary(BlocksFile const& file) {
    Clock::time_point const start = Clock::now();
    varnet::Part const part = varnet::Part::Read(file.Path());
    varnet::Slicer slicer(varnet::SlicerInputs(part), SettingsFor(file));
    Outcome outcome;
    outcome.prepared = SecondsSince(start);
    Slice(slicer, outcome);
    return outcome;
}

void PrintRow(char const* how, BlocksFile const& file, Outcome const& outcome) {
    auto const facets = static_cast<double>(file.Facets());
    std::printf("| %s | %.1f | %.2f | %.2f | %.0f | %.1f | %.1f | %.2f | %.1f |\n", how, facets / 1e6,
                facets * 50 / 1e9, outcome.temporary / 1e9, outcome.peak / 1e6, outcome.prepared,
                outcome.sliced, (outcome.prepared + outcome.sliced) * 1e6 / facets, outcome.points / 1e6);
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    int at = 1;
    bool const ordinary = argc > at && std::string(argv[at]) == "--ordinary";
    if (ordinary) ++at;
    if (argc < at + 2) {
        std::fputs("usage: varnet_stream [--ordinary] FOLDER MILLIONS...\n", stderr);
        return 2;
    }
    fs::path const folder = argv[at++];
    std::printf(
        "| | Million facets | File, GB | Temporary file, GB | Peak memory, MB | Read and sort, s | 1,000 "
        "layers, s | us a facet | Million points |\n|---|--:|--:|--:|--:|--:|--:|--:|--:|\n");
    try {
        for (; at < argc; ++at) {
            BlocksFile const file(folder, std::max(1, std::atoi(argv[at])));
            PrintRow("from disk", file, InItsOwnProcess([&] { return Stream(file, folder); }));
            if (ordinary) PrintRow("in memory", file, InItsOwnProcess([&] { return Ordinary(file); }));
        }
    } catch (std::exception const& error) {
        std::fprintf(stderr, "varnet_stream: %s\n", error.what());
        return 1;
    }
    return 0;
}
