// varnet: from a part to a slice file, on the command line.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "Commands.h"
#include "Console.h"
#include "varnet/Error.h"

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;

constexpr char const* kVersion = "varnet " VARNET_VERSION " (" VARNET_COMPILER ")";

// The arguments are UTF-8, the program's name first.
int Run(std::vector<char const*> const& arguments) {
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
    AddSelfCheck(app);
    AddManual(app);
    CatchSignals();
    try {
        app.parse(static_cast<int>(arguments.size()), arguments.data());
        if (app.get_subcommands().empty()) std::fputs(app.help().c_str(), stdout);
    } catch (CLI::ParseError const& error) {
        return app.exit(error) == 0 ? 0 : kUsage;
    }
    return 0;
}

int RunAndReport(std::vector<char const*> const& arguments) {
    try {
        int const code = Run(arguments);
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

}  // namespace

#if defined(_WIN32)

int wmain(int argc, wchar_t** argv) {
    Utf8Console const console;
    std::vector<std::string> texts;
    for (int i = 0; i < argc; ++i) texts.push_back(ToUtf8(argv[i]));
    std::vector<char const*> arguments;
    for (std::string const& text : texts) arguments.push_back(text.c_str());
    return RunAndReport(arguments);
}

#else

int main(int argc, char** argv) { return RunAndReport({argv, argv + argc}); }

#endif
