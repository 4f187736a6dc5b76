// The files of a folder of models, where the environment names one, against the table that stands with them.

#include <Varnet64.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "PartChecks.h"
#include "TestFiles.h"

namespace varnet {
namespace {

namespace fs = std::filesystem;

struct Row {
    std::int64_t facets = 0;
    std::int64_t vertices = 0;
    std::int64_t boundary = 0;
    std::int64_t conflict = 0;
    std::int64_t many = 0;
    double volume = 0.0;
};

std::vector<std::string> CellsOf(std::string const& line) {
    std::vector<std::string> cells;
    std::istringstream stream(line);
    for (std::string cell; std::getline(stream, cell, '|');) {
        std::size_t const begin = cell.find_first_not_of(' ');
        std::size_t const end = cell.find_last_not_of(' ');
        cells.push_back(begin == std::string::npos ? "" : cell.substr(begin, end - begin + 1));
    }
    return cells;
}

std::map<std::string, Row> ReadTable(fs::path const& folder) {
    std::map<std::string, Row> table;
    std::ifstream file(folder / "README.md");
    for (std::string line; std::getline(file, line);) {
        std::vector<std::string> const cells = CellsOf(line);
        if (cells.size() < 14 || !cells[1].starts_with("`stl/")) continue;
        std::string const name = cells[1].substr(1, cells[1].size() - 2);
        table[name] = {std::stoll(cells[6]),  std::stoll(cells[7]),  std::stoll(cells[9]),
                       std::stoll(cells[10]), std::stoll(cells[11]), std::stod(cells[13])};
    }
    return table;
}

TEST(Models, AreCountedAsTheTableSays) {
    char const* const folder = std::getenv("VARNET_MODELS");
    if (folder == nullptr) GTEST_SKIP() << "VARNET_MODELS names no folder";
    std::map<std::string, Row> const table = ReadTable(folder);
    if (table.empty()) GTEST_SKIP() << "no table stands in the folder";
    for (auto const& [name, row] : table) {
        SCOPED_TRACE(name);
        if (row.facets == 0) {
            EXPECT_THROW(Part::Read(fs::path(folder) / name), Error);
            continue;
        }
        IntakeSettings settings;
        settings.heal = false;
        Part const part = Part::Read(fs::path(folder) / name, settings);
        EXPECT_EQ(static_cast<std::int64_t>(part.Triangles().size()), row.facets);
        EXPECT_EQ(static_cast<std::int64_t>(part.Points().size()), row.vertices);
        EXPECT_EQ(part.Report().openEdgesExact, row.boundary + 2 * row.conflict);
        EXPECT_EQ(part.Report().manyFacetEdges, row.many);
        EXPECT_NEAR(part.Measures().volume, row.volume, 1e-5 * std::fabs(row.volume) + 1e-12);
    }
}

TEST(Models, ThatAreClosedStayClosedInThePartAndInEachBodysModel) {
    char const* const folder = std::getenv("VARNET_MODELS");
    if (folder == nullptr) GTEST_SKIP() << "VARNET_MODELS names no folder";
    for (auto const& entry : fs::recursive_directory_iterator(folder)) {
        std::string const extension = entry.path().extension().string();
        if (!entry.is_regular_file() || (extension != ".stl" && extension != ".STL")) continue;
        SCOPED_TRACE(entry.path().string());
        std::optional<Part> part;
        try {
            part = Part::Read(entry.path());
        } catch (Error const&) {
            continue;
        }
        if (part->Report().openEdgesExact != 0) continue;
        EXPECT_EQ(part->Report().openEdges, 0);
        EXPECT_EQ(OpenEdgesOf(FacetsOf(*part)), 0);
        for (Body const& body : part->Bodies()) {
            EXPECT_EQ(body.Measures().openEdges, 0);
            std::int64_t refused = 0;
            Part const model(*body.Model(&refused));
            EXPECT_EQ(refused, 0);
            EXPECT_EQ(model.Report().openEdgesExact, 0);
        }
    }
}

}  // namespace
}  // namespace varnet
