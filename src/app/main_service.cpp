#include "app/main_service.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <exception>
#include <iostream>
#include <string>
#include <utility>

#include "app/Main.h"
#include "app/poll_interval.h"
#include "app/statement_trace.h"
#include "indexer/Indexer.h"
#include "infra/Services.h"
#include "platform/posix/no_drives.h"
#include "platform/posix/plugins/plugin_factory.h"
#include "platform/posix/posix_files.h"
#include "platform/posix/posix_process.h"
#include "platform/posix/settings_file.h"
#include "platform/posix/signal_waiter.h"
#include "platform/posix/system_clock.h"
#include "platform/sqlite/sqlite_engine.h"
#include "platform/ui.h"

namespace app {

namespace {

struct Options {
    bool untilIdle = false;
    std::string pollInterval;  // empty: as the settings say
    std::string traceFile;     // empty: no trace
};

void printError(const Program& program, std::string_view text) {
    std::string line(text);
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
    std::cerr << program.name << ": " << line << std::endl;
}

/// The service with everything that it runs on.
class Service {
  public:
    Service(const Program& program, const Options& options) : program_(program), options_(options) {
        if (trace_.isOn()) {
            database_.setTrace([this](std::string_view statement) { trace_.write(statement); });
        }
        window_.onStartUpError([this](std::string_view error) {
            printError(program_, "The service could not start: " + std::string(error));
        });
        if (options_.untilIdle) {
            window_.onCycleEnd([this](CycleOutcome outcome) {
                if (outcome == CycleOutcome::nothingToDo) {
                    window_.close();
                }
            });
        }
    }

    void run() {
        window_.start();
        if (!options_.pollInterval.empty()) {
            window_.takePollInterval(options_.pollInterval);
        }
        toolkit_->run();
    }

  private:
    /// Read for each document, so that a change holds from the next one on.
    std::chrono::milliseconds pluginCallLimit() {
        return std::chrono::seconds(services_.registry.GetSettingLong(
            platform::RootKey::currentUser, infra::indexerKey, "PluginTimeoutSeconds", 0));
    }

    const Program& program_;
    Options options_;
    // Without a display for the window, nothing else is touched.
    platform::posix::SignalWaiter waiter_;
    std::unique_ptr<platform::Toolkit> toolkit_ = program_.makeToolkit(waiter_);
    StatementTrace trace_{options_.traceFile, [this](std::string_view text) { printError(program_, text); }};
    platform::posix::SettingsFile settings_{platform::posix::settingsPath()};
    /// The end without clean-up would leave behind what plug-ins have started.
    platform::posix::PosixProcess process_{[this] { plugins_.killProcesses(); }};
    platform::posix::PosixFiles files_;
    platform::posix::NoDrives drives_;
    platform::posix::SystemClock clock_;
    platform::SqliteEngine database_;
    platform::posix::PluginFactory plugins_{platform::posix::pluginFolders(process_.programDirectory()),
                                            [this] { return pluginCallLimit(); }};
    infra::Services services_{
        platform::System{settings_, database_, plugins_, *toolkit_, files_, process_, drives_, clock_}};
    indexer::Indexer indexer_{services_};
    Main window_{services_, [this](std::int32_t id) { return indexer_.DoIndex(id); }};
};

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

void describe(CLI::App& program, Options& options) {
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
        "The settings are those of the user, or of the file that $TYINDEXER_SETTINGS names; plug-ins come "
        "from\n"
        "the folders in $TYINDEXER_PLUGINS, then from the installed one. SIGTERM and SIGINT end the service\n"
        "after the document in work; the same signal a second time kills it.\n\n"
        "Exit status: 0 stopped, or ended to be started again after more than MaxDocsBeforeRestart\n"
        "documents; 1 the start, the database or an argument failed, or another error ended the program;\n"
        "2 the records of a document could not be set up.");
}

}  // namespace

int runService(int argc, char** argv, const Program& program) {
    constexpr int stopped = static_cast<int>(platform::ExitStatus::stopped);
    constexpr int failed = static_cast<int>(platform::ExitStatus::failed);
    try {
        CLI::App commandLine(program.purpose, program.name);
        commandLine.failure_message(CLI::FailureMessage::simple);
        Options options;
        describe(commandLine, options);
        try {
            commandLine.parse(argc, argv);
        } catch (const CLI::ParseError& error) {
            return commandLine.exit(error) == 0 ? stopped : failed;
        }
        // Whoever reads the messages may go away; that must not end the service.
        std::signal(SIGPIPE, SIG_IGN);
        Service(program, options).run();
        return stopped;
    } catch (const std::exception& error) {
        printError(program, error.what());
        return failed;
    }
}

}  // namespace app
