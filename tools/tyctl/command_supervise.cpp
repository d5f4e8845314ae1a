#include <CLI/CLI.hpp>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "base/variant.h"
#include "infra/tysRegistry.h"
#include "tyctl/arguments.h"
#include "tyctl/commands.h"
#include "tyctl/failure.h"
#include "tyctl/settings.h"
#include "tyctl/supervisor.h"

namespace tyctl {
namespace {

struct Options {
    double poll = 1;
    double grace = 0;
    std::vector<std::string> command;
};

int supervise(const Options& options) {
    using Seconds = std::chrono::duration<double>;
    constexpr std::int32_t usualGrace = 60;
    Settings settings;
    // A job may be as long without a sign of life, so that long it may take to reach its end.
    const double grace = options.grace > 0
                             ? options.grace
                             : settings.number(infra::indexerKey, "DeadMansSwitchSeconds", usualGrace);
    Supervisor supervisor(settings, options.command, Seconds(options.poll), Seconds(grace));
    return supervisor.run() ? succeeded : failed;
}

/// A number of seconds within limits; unlike the library's own range, it refuses "nan".
CLI::Validator secondsBetween(double least, double most) {
    const std::string range = base::numberText(least) + " to " + base::numberText(most);
    return {[least, most, range](const std::string& text) {
                double seconds = 0;
                const bool fits = base::parseNumber(text, seconds) && seconds >= least && seconds <= most;
                return fits ? std::string() : "\"" + text + "\" is no number of seconds from " + range;
            },
            "SECONDS"};
}

}  // namespace

void addSuperviseCommand(CLI::App& program, int& status) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("supervise", "Keep the indexing service running");
    command->footer(
        "The service is started again when it ends, and killed and started again when a job shows no sign "
        "of\n"
        "life for too long. SIGTERM ends both.");
    command->add_option("--poll", options->poll, "Seconds between two looks at the heartbeat")
        ->check(secondsBetween(0.01, 60))
        ->capture_default_str();
    command
        ->add_option("--grace", options->grace,
                     "Seconds that the service may take to stop (default: DeadMansSwitchSeconds)")
        ->check(secondsBetween(0.1, 3600));
    command->add_option("COMMAND", options->command, "The service and its arguments, after \"--\"")
        ->required()
        ->check(notEmpty().application_index(0));
    command->callback([options, &status] { status = supervise(*options); });
}

}  // namespace tyctl
