#include "SelfCheckTable.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <locale>
#include <map>
#include <sstream>

#include "Console.h"
#include "varnet/Error.h"

namespace fs = std::filesystem;

namespace {

// Numbers that rest on the C library's sine and the like may differ by this much of their size.
constexpr double kMostApart = 1e-9;

std::string Hexadecimal(std::uint64_t n) {
    std::array<char, 17> text{};
    std::snprintf(text.data(), text.size(), "%016llx", static_cast<unsigned long long>(n));
    return text.data();
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

}  // namespace

namespace selfcheck {

std::string AllDigits(double value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.17g", value);
    return text.data();
}

std::vector<std::pair<std::string, std::string>> HashesOf(Record const& record) {
    std::vector<std::pair<std::string, std::string>> lines;
    for (auto const& [name, hash] : record.Rooms()) lines.emplace_back(name, Hexadecimal(hash));
    lines.emplace_back("all", Hexadecimal(record.All()));
    return lines;
}

bool Compare(Record const& record, fs::path const& path, Report& report) {
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

}  // namespace selfcheck
