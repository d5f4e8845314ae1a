#include "app/main_service.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <exception>
#include <iostream>
#include <string>
#include <utility>

#include "app/main_options.h"
#include "app/main_run.h"
#include "app/statement_trace.h"
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

/// On one line, and without what a terminal would take for an order: a path may hold any character.
void printError(const Program& program, std::string_view text) {
    std::string line(text);
    std::replace_if(
        line.begin(), line.end(), [](char c) { return (c >= '\0' && c < ' ') || c == '\x7f'; }, ' ');
    std::cerr << program.name << ": " << line << std::endl;
}

/// Why the settings name no library; empty when they do. The service itself takes settings that it cannot
/// read for missing ones, and its message then names an empty path.
std::string troubleWith(platform::posix::SettingsFile& settings) {
    using platform::SettingsStatus;
    platform::KeyHandle key{};
    platform::ValueType type{};
    std::uint32_t size = 0;
    SettingsStatus status = settings.openKey(platform::RootKey::currentUser, infra::serviceKey, key);
    if (status == SettingsStatus::success) {
        status = settings.queryValue(key, "DataBasePath", type, nullptr, size);
        settings.closeKey(key);
    }
    const bool isText = type == platform::ValueType::text || type == platform::ValueType::expandableText;
    if (status == SettingsStatus::success && isText && size > 0) {
        return {};
    }
    std::string trouble = "The settings in " + platform::posix::settingsPath();
    if (status == SettingsStatus::success || status == SettingsStatus::notFound) {
        return trouble + " name no library: set DataBasePath, or make a library with tyctl init";
    }
    return trouble + " cannot be used: " + platform::posix::describe(status);
}

/// The service with everything that it runs on.
class Service {
  public:
    Service(const Program& program, const ServiceOptions& options) : program_(program), options_(options) {
        if (trace_.isOn()) {
            database_.setTrace([this](std::string_view statement) { trace_.write(statement); });
        }
    }

    void run() {
        runUntilClosed(services_, options_, [this](std::string_view text) { printError(program_, text); });
    }

  private:
    /// Read for each document, so that a change holds from the next one on.
    std::chrono::milliseconds pluginCallLimit() {
        return std::chrono::seconds(services_.registry.GetSettingLong(
            platform::RootKey::currentUser, infra::indexerKey, "PluginTimeoutSeconds", 0));
    }

    void tellTroubleWithSettings() {
        if (const std::string trouble = troubleWith(settings_); !trouble.empty()) {
            printError(program_, trouble);
        }
    }

    const Program& program_;
    ServiceOptions options_;
    // Without a display for the window, nothing else is touched.
    platform::posix::SignalWaiter waiter_;
    std::unique_ptr<platform::Toolkit> toolkit_ = program_.makeToolkit(waiter_);
    StatementTrace trace_{options_.traceFile, [this](std::string_view text) { printError(program_, text); }};
    platform::posix::SettingsFile settings_{platform::posix::settingsPath()};
    /// The end without clean-up would leave behind what plug-ins have started.
    platform::posix::PosixProcess process_{[this] {
        plugins_.killProcesses();
        tellTroubleWithSettings();
    }};
    platform::posix::PosixFiles files_;
    platform::posix::NoDrives drives_;
    platform::posix::SystemClock clock_;
    platform::SqliteEngine database_;
    platform::posix::PluginFactory plugins_{platform::posix::pluginFolders(process_.programDirectory()),
                                            [this] { return pluginCallLimit(); }};
    infra::Services services_{
        platform::System{settings_, database_, plugins_, *toolkit_, files_, process_, drives_, clock_}};
};

constexpr const char* notes =
    "The settings are those of the user, or of the file that $TYINDEXER_SETTINGS names; plug-ins come from\n"
    "the folders in $TYINDEXER_PLUGINS, then from the installed one. SIGTERM, SIGINT and SIGHUP end\n"
    "the service after the document in work; the same signal a second time kills it.";

}  // namespace

int runService(int argc, char** argv, const Program& program) {
    constexpr int stopped = static_cast<int>(platform::ExitStatus::stopped);
    constexpr int failed = static_cast<int>(platform::ExitStatus::failed);
    try {
        ServiceOptions options;
        if (const auto answer =
                readCommandLine(argc, argv, {program.name, program.purpose, notes}, options)) {
            (answer->status == platform::ExitStatus::stopped ? std::cout : std::cerr) << answer->text;
            return static_cast<int>(answer->status);
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
