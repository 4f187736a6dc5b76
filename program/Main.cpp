// varnet: from a part to a slice file, on the command line.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "Commands.h"
#include "Console.h"
#include "varnet/Error.h"

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;

constexpr char const* kVersion = "varnet " VARNET_VERSION " (" VARNET_COMPILER ")";

struct Command {
    std::string_view name;
    void (*add)(CLI::App& app);
};

constexpr Command kCommands[] = {
    {"info", AddInfo},         {"repair", AddRepair},       {"convert", AddConvert}, {"split", AddSplit},
    {"surfaces", AddSurfaces}, {"support", AddSupport},     {"slice", AddSlice},     {"layers", AddLayers},
    {"order", AddOrder},       {"join", AddJoin},           {"whole", AddWhole},     {"view", AddView},
    {"demo", AddDemo},         {"selfcheck", AddSelfCheck}, {"manual", AddManual},
};

// All options of all commands take longer to set up than a small part to read: where the first argument names
// a command, that one alone is added.
void AddCommands(CLI::App& app, std::vector<char const*> const& arguments) {
    std::string_view const first = arguments.size() > 1 ? arguments[1] : "";
    auto const* const named = std::find_if(std::begin(kCommands), std::end(kCommands),
                                           [first](Command const& c) { return c.name == first; });
    // The manual is about all of them.
    if (named != std::end(kCommands) && named->add != AddManual) return named->add(app);
    for (Command const& command : kCommands) command.add(app);
}

// The arguments are UTF-8, the program's name first.
int Run(std::vector<char const*> const& arguments) {
    CLI::App app("Varnet64: reads, repairs, supports, slices and orders the parts of 3D printing.", "varnet");
    app.require_subcommand(0, 1);
    app.set_version_flag("--version", kVersion, "Print the version, and what it was built with");
    AddCommands(app, arguments);
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
