// varnet: from a part to a slice file, on the command line.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

#include "Commands.h"
#include "Console.h"
#include "varnet/Error.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;

constexpr char const* kVersion = "varnet " VARNET_VERSION " (" VARNET_COMPILER ")";

int Run(int argc, char** argv) {
    CLI::App app("Varnet64: reads, repairs, supports, slices and orders the parts of 3D printing.", "varnet");
    app.require_subcommand(0, 1);
    app.set_version_flag("--version", kVersion, "Print the version, and what it was built with");
    AddInfo(app);
    AddRepair(app);
    AddConvert(app);
    AddSplit(app);
    AddSurfaces(app);
    AddSupport(app);
    AddSlice(app);
    AddLayers(app);
    AddOrder(app);
    AddJoin(app);
    AddWhole(app);
    AddView(app);
    AddDemo(app);
    AddManual(app);
    CatchSignals();
    try {
#if defined(_WIN32)
        argv = app.ensure_utf8(argv);
        SetConsoleOutputCP(CP_UTF8);
#endif
        app.parse(argc, argv);
        if (app.get_subcommands().empty()) std::fputs(app.help().c_str(), stdout);
    } catch (CLI::ParseError const& error) {
        return app.exit(error) == 0 ? 0 : kUsage;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        int const code = Run(argc, argv);
        if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return code;
        std::fprintf(stderr, "varnet: standard output could not be written whole\n");
    } catch (varnet::Error const& error) {
        bool const stopped = error.Kind() == varnet::ErrorKind::kCancelled;
        std::fprintf(stderr, "varnet: %s\n", stopped ? "interrupted" : error.what());
    } catch (std::bad_alloc const&) {
        std::fprintf(stderr, "varnet: there is not enough memory\n");
    } catch (std::exception const& error) {
        std::fprintf(stderr, "varnet: %s\n", error.what());
    }
    return kFailed;
}
