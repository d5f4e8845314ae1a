#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "tyctl/commands.h"
#include "tyctl/console.h"
#include "tyctl/failure.h"

namespace {

/// The words of a command line that stopped at one which is no command; empty when it stopped elsewhere.
std::string unknownCommand(CLI::App& program) {
    const CLI::App* command = &program;
    std::string path = program.get_name();
    for (auto below = command->get_subcommands(); !below.empty(); below = command->get_subcommands()) {
        command = below.front();
        path += " " + command->get_name();
    }
    const std::vector<std::string> rest = command->remaining();
    if (command->get_require_subcommand_min() == 0 || rest.empty()) {
        return {};
    }
    const std::string kind = rest.front().starts_with('-') ? "option" : "command";
    return path + ": no " + kind + " \"" + rest.front() + "\"; see " + path + " --help";
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App program("Sets up a document library, queues documents for indexing and searches them.", "tyctl");
    program.require_subcommand(1);
    program.failure_message(CLI::FailureMessage::simple);
    program.set_version_flag("--version", "tyctl " TYINDEXER_VERSION);
    program.footer("The settings are those of the user, or of the file that $TYINDEXER_SETTINGS names.");
    int status = tyctl::succeeded;
    try {
        tyctl::addInitCommand(program, status);
        tyctl::addAddCommand(program, status);
        tyctl::addQueueCommand(program, status);
        tyctl::addStatusCommand(program, status);
        tyctl::addSearchCommand(program, status);
        tyctl::addSettingsCommand(program, status);
        tyctl::addSuperviseCommand(program, status);
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        constexpr int wrongUse = 2;
        const std::string unknown = error.get_exit_code() == 0 ? std::string() : unknownCommand(program);
        if (!unknown.empty()) {
            std::cerr << unknown << '\n';
            return wrongUse;
        }
        return program.exit(error) == 0 ? tyctl::succeeded : wrongUse;
    } catch (const std::exception& error) {
        tyctl::note(error.what());
        return tyctl::failed;
    }
    return status;
}
