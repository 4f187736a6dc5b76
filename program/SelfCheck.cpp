// The same bits on every system: a hash of what the operations of each room give on generated models.

#include <cstdio>
#include <memory>
#include <random>

#include "Commands.h"
#include "Console.h"
#include "Reading.h"
#include "SelfCheckTable.h"
#include "selfcheck/Record.h"

namespace fs = std::filesystem;

namespace {

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

void Run(SelfCheckOptions const& options) {
    WorkFolder const folder;
    selfcheck::Record record;
    selfcheck::CheckLibrary(record, folder.Path());
    ThrowIfStopped();
    selfcheck::CheckKit(record, folder.Path());
    Report report("selfcheck");
    nlohmann::json hashes;
    nlohmann::json apart;
    for (auto const& [name, hash] : selfcheck::HashesOf(record)) hashes[name] = hash;
    for (auto const& [name, value] : record.Apart()) apart[name] = value;
    report.AddJson("hashes", hashes);
    report.AddJson("apart", apart);
    if (!options.json) {
        for (auto const& [name, hash] : selfcheck::HashesOf(record))
            std::printf("%s = %s\n", name.c_str(), hash.c_str());
        std::printf(
            "# Systems may round these differently: they rest on the C library's sine and the like.\n");
        for (auto const& [name, value] : record.Apart())
            std::printf("%s ~ %s\n", name.c_str(), selfcheck::AllDigits(value).c_str());
    }
    bool const same = options.against.empty() || selfcheck::Compare(record, PathOf(options.against), report);
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
