#include "Demo.h"

#include <chrono>
#include <cmath>
#include <cstdio>

#include "Commands.h"
#include "Failure.h"
#include "ModelFile.h"

namespace fs = std::filesystem;

void Checks::That(bool bHolds, std::string const& what) {
    if (!bHolds) throw Failure("the demo's check failed: " + what);
    ++m_nDone;
}

std::string DemoRun::File(std::string const& name) {
    files.push_back(name);
    return (folder / name).string();
}

bool IsNear(double a, double b) { return std::fabs(a - b) <= 1e-4 * std::fabs(b); }

void Show(DemoRun& run, Table const& table) {
    table.Print();
    run.page.AddTable(table);
}

void RunDemo(DemoOptions const& options) {
    auto const start = std::chrono::steady_clock::now();
    std::error_code error;
    fs::create_directories(options.folder, error);
    if (error) throw Failure(options.folder, "cannot be made: " + error.message());

    DemoRun run(options.folder);
    CSTLModel model;
    ShowMesh(run, model);
    ShowDivision(run);
    ShowCsm(run, model);
    auto const supports = ShowSupport(run, model);
    ShowSlices(run, model, supports);

    run.page.BeginSection("Files", "All of them stand in this folder, beside this page.");
    run.page.AddFiles(run.files);
    std::chrono::duration<double> const seconds = std::chrono::steady_clock::now() - start;
    char closing[80];
    std::snprintf(closing, sizeof closing, "%d checks passed in %.2f seconds", run.checks.Done(),
                  seconds.count());
    WriteBytes((run.folder / "index.html").string(), run.page.Html(closing));
    std::printf("%s; files are in %s, and index.html shows them\n", closing, options.folder.c_str());
}
