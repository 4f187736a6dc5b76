// The manual page and the completions of shells, made from the options as they stand.

#include <cstdio>
#include <memory>

#include "Commands.h"

namespace {

using Commands = std::vector<CLI::App*>;

Commands CommandsOf(CLI::App& app) {
    Commands commands;
    for (CLI::App* const command : app.get_subcommands([](CLI::App*) { return true; })) {
        if (command->get_name() != "manual") commands.push_back(command);
    }
    return commands;
}

std::vector<CLI::Option const*> OptionsOf(CLI::App const& command) {
    std::vector<CLI::Option const*> options;
    for (CLI::Option const* const option : command.get_options()) options.push_back(option);
    return options;
}

// Text as roff takes it: a backslash, a hyphen and a point at the start of a line mean something else there.
std::string Roff(std::string const& text) {
    std::string roff;
    for (char const c : text) {
        if (c == '\\' || c == '-') roff += '\\';
        roff += c;
    }
    return roff.empty() || (roff[0] != '.' && roff[0] != '\'') ? roff : "\\&" + roff;
}

void PrintOptions(CLI::App const& command) {
    for (CLI::Option const* const option : OptionsOf(command)) {
        std::string name = option->get_name(false, true);
        if (name.empty()) name = option->get_name(true);
        std::printf(".TP\n.B %s", Roff(name).c_str());
        if (option->get_items_expected_max() > 0) std::printf(" \\fIvalue\\fR");
        std::printf("\n%s", Roff(option->get_description()).c_str());
        if (!option->get_default_str().empty()) std::printf(" (%s)", Roff(option->get_default_str()).c_str());
        std::printf("\n");
    }
}

void PrintMan(CLI::App& app) {
    std::printf(".TH VARNET 1 \"\" \"varnet " VARNET_VERSION "\"\n.SH NAME\nvarnet \\- %s\n",
                Roff(app.get_description()).c_str());
    std::printf(".SH SYNOPSIS\n.B varnet\n\\fIcommand\\fR [\\fIoptions\\fR]\n.SH COMMANDS\n");
    for (CLI::App* const command : CommandsOf(app)) {
        std::printf(".SS %s\n%s.\n", command->get_name().c_str(), Roff(command->get_description()).c_str());
        PrintOptions(*command);
    }
    std::printf(
        ".SH EXIT STATUS\n0 when the work was done; 1 when it could not be done, with a line on standard "
        "error that "
        "says why; 2 when the command line asks for something that there is not.\n");
}

// The words behind a command: its options.
std::string WordsOf(CLI::App const& command) {
    std::string words;
    for (CLI::Option const* const option : OptionsOf(command)) {
        for (std::string const& name : option->get_lnames()) words += " --" + name;
        for (std::string const& name : option->get_snames()) words += " -" + name;
    }
    return words;
}

void PrintBash(CLI::App& app) {
    std::printf("_varnet() {\n    local word=${COMP_WORDS[COMP_CWORD]} words=\"--help --version");
    for (CLI::App* const command : CommandsOf(app)) std::printf(" %s", command->get_name().c_str());
    std::printf("\"\n    if [ \"$COMP_CWORD\" -gt 1 ]; then\n        case ${COMP_WORDS[1]} in\n");
    for (CLI::App* const command : CommandsOf(app)) {
        std::printf("            %s) words=\"%s\" ;;\n", command->get_name().c_str(),
                    WordsOf(*command).c_str());
    }
    std::printf(
        "            *) words=\"\" ;;\n        esac\n        case $word in -*) ;; *) words=\"\" ;; esac\n    "
        "fi\n"
        "    COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n"
        "    [ ${#COMPREPLY[@]} -gt 0 ] || COMPREPLY=($(compgen -f -- \"$word\"))\n}\n"
        "complete -o filenames -F _varnet varnet\n");
}

// A description between single quotes, in which colons and brackets mean something to the shell.
std::string ZshText(std::string const& text) {
    std::string zsh;
    for (char const c : text) {
        if (c == '\'') {
            zsh += "'\\''";
        } else {
            if (c == ':' || c == '[' || c == ']') zsh += '\\';
            zsh += c;
        }
    }
    return zsh;
}

void PrintZsh(CLI::App& app) {
    std::printf(
        "#compdef varnet\n_varnet() {\n    if (( CURRENT == 2 )); then\n        local -a commands=(\n");
    for (CLI::App* const command : CommandsOf(app)) {
        std::printf("            '%s:%s'\n", command->get_name().c_str(),
                    ZshText(command->get_description()).c_str());
    }
    std::printf(
        "        )\n        _describe command commands\n        return\n    fi\n    case $words[2] in\n");
    for (CLI::App* const command : CommandsOf(app)) {
        std::printf("        %s) _arguments", command->get_name().c_str());
        for (CLI::Option const* const option : OptionsOf(*command)) {
            for (std::string const& name : option->get_lnames()) {
                std::printf(" \\\n            '--%s[%s]%s'", name.c_str(),
                            ZshText(option->get_description()).c_str(),
                            option->get_items_expected_max() > 0 ? ":value:_files" : "");
            }
        }
        std::printf(" \\\n            '*:file:_files' ;;\n");
    }
    std::printf("    esac\n}\n_varnet \"$@\"\n");
}

}  // namespace

void AddManual(CLI::App& app) {
    auto const kind = std::make_shared<std::string>();
    CLI::App* const command = app.add_subcommand(
        "manual", "Print the manual page (man), or what a shell needs to complete words (bash, zsh)");
    command->add_option("KIND", *kind, "man, bash or zsh")
        ->required()
        ->check(CLI::IsMember({"man", "bash", "zsh"}));
    command->callback([&app, kind] {
        if (*kind == "man") PrintMan(app);
        if (*kind == "bash") PrintBash(app);
        if (*kind == "zsh") PrintZsh(app);
    });
}
