#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>

#include "tyctl/arguments.h"
#include "tyctl/commands.h"
#include "tyctl/console.h"
#include "tyctl/failure.h"

int main(int argc, char** argv) {
    CLI::App program("Sets up a document library, queues documents for indexing and searches them.", "tyctl");
    program.require_subcommand(1);
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
        if (error.get_exit_code() == 0) {
            return program.exit(error);  // help or the version
        }
        std::cerr << tyctl::complaint(program, error) << '\n';
        return tyctl::wrongUse;
    } catch (const tyctl::WrongUse& error) {
        tyctl::note(error.what());
        return tyctl::wrongUse;
    } catch (const std::exception& error) {
        tyctl::note(error.what());
        return tyctl::failed;
    }
    return status;
}
