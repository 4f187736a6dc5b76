// Parts and layers on a page for the browser.

#include <cstdlib>
#include <memory>

#if defined(_WIN32)
#include <windows.h>
// clang-format off
#include <shellapi.h>
// clang-format on
#else
#include <sys/wait.h>
#include <unistd.h>
#endif

#include "Commands.h"
#include "Console.h"
#include "Reading.h"
#include "varnet/Page.h"

namespace fs = std::filesystem;

namespace {

struct ViewOptions {
    std::vector<std::string> inputs;
    std::string output;
    std::string title;
    bool support = false;
    bool noSurfaces = false;
    bool open = false;
    bool json = false;
    ReadOptions read;
};

// Shows a file in the browser that the system prefers, and does not wait for it.
void OpenInBrowser(fs::path const& file) {
    fs::path const path = fs::absolute(file);
#if defined(_WIN32)
    bool const opened = reinterpret_cast<INT_PTR>(ShellExecuteW(nullptr, L"open", path.c_str(), nullptr,
                                                                nullptr, SW_SHOWNORMAL)) > 32;
#else
#if defined(__APPLE__)
    char const* const opener = "open";
#else
    char const* const opener = "xdg-open";
#endif
    pid_t const child = fork();
    if (child == 0) {
        // Of a grandchild nobody needs to ask what became of it.
        if (fork() == 0) {
            execlp(opener, opener, path.c_str(), static_cast<char*>(nullptr));
            _exit(127);
        }
        _exit(0);
    }
    bool const opened = child > 0;
    if (opened) waitpid(child, nullptr, 0);
#endif
    if (!opened) Warn("the browser could not be started: open " + TextOf(file) + " there");
}

void AddPart(varnet::Page& page, std::string const& input, ViewOptions const& options) {
    varnet::Part const part = ReadPart(input, options.read);
    varnet::PagePart about;
    about.name = TextOf(PathOf(input).filename());
    varnet::Supports supports;
    if (options.support) {
        varnet::SupportSettings settings;
        settings.progress = Bar("Building support");
        supports = varnet::Supports(part, settings);
        about.supports = &supports;
    }
    varnet::Surfaces surfaces;
    if (!options.noSurfaces) {
        surfaces = varnet::Surfaces(part, varnet::SurfaceRule::kNormals, Bar("Dividing"));
        about.surfaces = &surfaces;
    }
    page.AddPart(part, about);
}

void Run(ViewOptions const& options) {
    varnet::PageSettings settings;
    settings.title = options.title;
    settings.progress = Bar("Making the page");
    varnet::Page page(settings);
    for (std::string const& input : options.inputs) {
        ThrowIfStopped();
        if (varnet::SliceFile::IsOne(PathOf(input))) {
            page.AddSlices(varnet::SliceFile(PathOf(input), {false, Bar("Reading")}));
        } else {
            AddPart(page, input, options);
        }
    }
    page.Write(PathOf(options.output));
    Report report(options.output);
    report.Add("parts", "parts", static_cast<long long>(page.PartCount()));
    report.Add("layers", "layers", static_cast<long long>(page.LayerCount()));
    report.Add("bytes", "bytes", BytesOf(PathOf(options.output)));
    report.Print(options.json, options.output == "-");
    if (options.open) OpenInBrowser(PathOf(options.output));
}

}  // namespace

void AddView(CLI::App& app) {
    auto const options = std::make_shared<ViewOptions>();
    CLI::App* const command = app.add_subcommand(
        "view", "Put parts and slice files on a page to look at: one HTML file, for any browser");
    command->add_option("IN", options->inputs, "Mesh files and CLI slice files to show")->required();
    command->add_option("-o", options->output, "HTML file to write, - for standard output")->required();
    command->add_option("--title", options->title, "Of the page; the name of the first file without");
    command->add_flag("--support", options->support, "Show overhangs, hanging edges and support solids");
    command->add_flag("--no-surfaces", options->noSurfaces,
                      "Do not divide parts into surfaces: faster, and they have one colour");
    command->add_flag("--open", options->open, "Open the page in the browser");
    command->add_flag("--json", options->json, "Print JSON instead of a table");
    options->read.AddTo(*command);
    command->callback([options] {
        if (options->open && options->output == "-")
            throw CLI::ValidationError("--open", "a page on standard output cannot be opened");
        KeepInputs(options->inputs, options->output);
        Run(*options);
    });
}
