// The same bits on every system: a hash of what the operations of each room give on generated models.

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <sstream>

#include "Commands.h"
#include "Console.h"
#include "Reading.h"
#include "selfcheck/Record.h"

namespace fs = std::filesystem;

namespace {

// Numbers that rest on the C library's sine and the like may differ by this much of their size.
constexpr double kMostApart = 1e-9;

struct SelfCheckOptions {
    std::string against;
    bool json = false;
};

// A folder for files on the way, which goes with the object.
class WorkFolder {
public:
    WorkFolder() {
        std::random_device random;
        do {
            m_Path = fs::temp_directory_path() / ("varnet-selfcheck-" + std::to_string(random()));
        } while (!fs::create_directory(m_Path));
    }
    WorkFolder(WorkFolder const&) = delete;
    WorkFolder& operator=(WorkFolder const&) = delete;
    ~WorkFolder() {
        std::error_code ignored;
        fs::remove_all(m_Path, ignored);
    }
    fs::path const& Path() const { return m_Path; }

private:
    fs::path m_Path;
};

std::string Hexadecimal(std::uint64_t n) {
    std::array<char, 17> text{};
    std::snprintf(text.data(), text.size(), "%016llx", static_cast<unsigned long long>(n));
    return text.data();
}

// All digits that tell a number from its neighbours.
std::string AllDigits(double value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.17g", value);
    return text.data();
}

using Lines = std::vector<std::pair<std::string, std::string>>;

Lines HashesOf(selfcheck::Record const& record) {
    Lines lines;
    for (auto const& [name, hash] : record.Rooms()) lines.emplace_back(name, Hexadecimal(hash));
    lines.emplace_back("all", Hexadecimal(record.All()));
    return lines;
}

// What another system has printed: a name, a mark and a value a line; comments begin with #.
std::map<std::string, std::string> ReadTable(fs::path const& path) {
    std::ifstream file(path);
    if (!file) throw varnet::Error(varnet::ErrorKind::kFile, path, "cannot be opened");
    std::map<std::string, std::string> table;
    for (std::string line; std::getline(file, line);) {
        while (!line.empty() && line.back() == '\r') line.pop_back();
        std::size_t const mark = line.find_first_of("=~");
        if (line.starts_with('#') || mark == std::string::npos) continue;
        std::string const name = line.substr(0, line.find_last_not_of(' ', mark - 1) + 1);
        table[name] = line.substr(std::min(mark + 2, line.size()));
    }
    return table;
}

double DifferenceOf(double value, std::string const& other) {
    std::istringstream stream(other);
    stream.imbue(std::locale::classic());
    double read = std::nan("");
    stream >> read;
    double const size = std::max(std::fabs(value), std::fabs(read));
    return value == read ? 0.0 : std::fabs(value - read) / size;
}

// Adds what differs to the report, and says whether all is as it should be.
bool Compare(selfcheck::Record const& record, fs::path const& path, Report& report) {
    auto const table = ReadTable(path);
    auto const find = [&table](std::string const& name) {
        auto const it = table.find(name);
        return it == table.end() ? std::string() : it->second;
    };
    bool same = true;
    nlohmann::json different = nlohmann::json::array();
    for (auto const& [name, hash] : HashesOf(record)) {
        if (find(name) == hash) continue;
        same = false;
        different.push_back(name);
        report.AddRow("not the same",
                      name + ": " + (find(name).empty() ? "not in the table" : find(name)) + " there");
    }
    double largest = 0.0;
    std::string where = "none";
    for (auto const& [name, value] : record.Apart()) {
        double const difference = DifferenceOf(value, find(name));
        if (difference <= largest) continue;
        // What is no number stays the largest.
        largest = difference > 0.0 ? difference : 1.0;
        where = name;
    }
    report.AddJson("different", different);
    report.AddJson("largest_difference", largest);
    report.AddRow("largest share by which the others differ",
                  Number(largest) + (largest > 0.0 ? ", " + where : ""));
    return same && largest <= kMostApart;
}

void Run(SelfCheckOptions const& options) {
    WorkFolder const folder;
    selfcheck::Record record;
    selfcheck::CheckLibrary(record, folder.Path());
    ThrowIfStopped();
    selfcheck::CheckKit(record, folder.Path());
    Report report("selfcheck");
    nlohmann::json hashes;
    nlohmann::json apart;
    for (auto const& [name, hash] : HashesOf(record)) hashes[name] = hash;
    for (auto const& [name, value] : record.Apart()) apart[name] = value;
    report.AddJson("hashes", hashes);
    report.AddJson("apart", apart);
    if (!options.json) {
        for (auto const& [name, hash] : HashesOf(record))
            std::printf("%s = %s\n", name.c_str(), hash.c_str());
        std::printf(
            "# Systems may round these differently: they rest on the C library's sine and the like.\n");
        for (auto const& [name, value] : record.Apart())
            std::printf("%s ~ %s\n", name.c_str(), AllDigits(value).c_str());
    }
    bool const same = options.against.empty() || Compare(record, PathOf(options.against), report);
    if (options.json || !options.against.empty()) report.Print(options.json);
    if (!same) {
        throw varnet::Error(varnet::ErrorKind::kContent, PathOf(options.against),
                            "this build does not compute what that one did");
    }
}

}  // namespace

void AddSelfCheck(CLI::App& app) {
    auto const options = std::make_shared<SelfCheckOptions>();
    CLI::App* const command = app.add_subcommand(
        "selfcheck", "Compute on generated models, and print a hash a room: the same on every system");
    command->add_option("--against", options->against,
                        "What another build has printed: every room that differs is an error");
    command->add_flag("--json", options->json, "Print JSON instead of a table");
    command->callback([options] { Run(*options); });
}
