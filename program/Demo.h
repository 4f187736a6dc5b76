#pragma once

#include <Varnet64.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Page.h"

// The demo: the whole road of one part, from its making to files that are printed from. Each step prints what
// it found, checks it, and puts its pictures and figures on a page.

/// Counts what it is told, so that the last line can say how much was checked.
class Checks {
public:
    /// Throws Failure, with what should have held, when it does not.
    void That(bool bHolds, std::string const& what);
    int Done() const { return m_nDone; }

private:
    int m_nDone = 0;
};

/// What the steps share.
struct DemoRun {
    explicit DemoRun(std::filesystem::path const& in) : folder(in) {}

    /// The path of a file in the folder, which is listed on the page.
    std::string File(std::string const& name);

    std::filesystem::path folder;
    Checks checks;
    Page page{"A bracket, from mesh to slices",
              "Made, read, repaired, measured, divided, supported, sliced, ordered, written in seven "
              "formats and read back by varnet demo, the example program of Varnet64."};
    std::vector<std::string> files;
};

/// Within a ten-thousandth: what is computed in float keeps about four digits.
bool IsNear(double a, double b);

/// Prints the table, and puts it on the page.
void Show(DemoRun& run, Table const& table);

/// Makes the part, as a careless program would write it, reads and repairs it, and writes it as
/// bracket_repaired.stl. Fills the model with what is read from that file.
void ShowMesh(DemoRun& run, CSTLModel& model);
/// Divides the part into shells and surfaces.
void ShowDivision(DemoRun& run);
/// Writes the part in the three CSM layouts and reads them back.
void ShowCsm(DemoRun& run, CSTLModel& model);
/// Finds what hangs free. Gives the solids that hold it, down to the plate.
std::vector<std::unique_ptr<CSTLModel>> ShowSupport(DemoRun& run, CSTLModel& model);
/// Slices part and supports into CLI files of three modes, reads them back, and orders their paths.
void ShowSlices(DemoRun& run, CSTLModel& model, std::vector<std::unique_ptr<CSTLModel>> const& supports);
