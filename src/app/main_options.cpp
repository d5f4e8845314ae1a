#include "app/main_options.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <sstream>

#include "app/poll_interval.h"

namespace app {

namespace {

/// What is wrong with a poll interval; empty for a good one.
std::string checkPollInterval(const std::string& text) {
    try {
        const double seconds = pollSeconds(text);
        if (seconds == 0 || pollMilliseconds(seconds)) {
            return {};
        }
        return "must be between 0.001 and 65.535 seconds, not " + text;
    } catch (const std::exception&) {
        return "\"" + text + "\" is not a number; give seconds, such as 0.5";
    }
}

void describe(CLI::App& program, const std::string& notes, ServiceOptions& options) {
    program.set_version_flag("--version", program.get_name() + " " TYINDEXER_VERSION);
    program.add_flag(
        "--until-idle", options.untilIdle,
        "Exit when the queue has been looked at and holds no entry to claim, or, as without this "
        "option, after more than MaxDocsBeforeRestart documents");
    program
        .add_option("--poll-interval", options.pollInterval,
                    "Seconds between two looks at the queue, from 0.001 to 65.535; saved like an interval "
                    "typed into the window, as the nearest whole number")
        ->type_name("SECONDS")
        ->check(CLI::Validator(checkPollInterval, ""));
    program
        .add_option("--trace-sql", options.traceFile,
                    "Append each statement to this file before it runs, one a line; a statement with line "
                    "breaks stands between empty lines")
        ->type_name("FILE");
    program.footer(
        notes +
        "\n\n"
        "Exit status: 0 stopped, or ended to be started again after more than MaxDocsBeforeRestart\n"
        "documents; 1 the start, the database or an argument failed, or another error ended the program;\n"
        "2 the records of a document could not be set up.");
}

}  // namespace

std::optional<CommandLineAnswer> readCommandLine(int argc, char** argv, const ProgramDescription& description,
                                                 ServiceOptions& options) {
    CLI::App program(description.purpose, description.name);
    program.failure_message(CLI::FailureMessage::simple);
    describe(program, description.notes, options);
    try {
        program.parse(argc, argv);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        std::ostringstream text;
        const bool asked = program.exit(error, text, text) == 0;
        return CommandLineAnswer{asked ? platform::ExitStatus::stopped : platform::ExitStatus::failed,
                                 text.str()};
    }
}

}  // namespace app
