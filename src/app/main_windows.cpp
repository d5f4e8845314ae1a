// tyIndexer.exe: the indexing service with its control window on Windows.
#include <algorithm>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "app/main_options.h"
#include "app/main_run.h"
#include "app/statement_trace.h"
#include "infra/Services.h"
#include "platform/win32/message_waiter.h"
#include "platform/win32/win32_toolkit.h"
#include "platform/windows/ado_engine.h"
#include "platform/windows/com_automation.h"
#include "platform/windows/command_line.h"
#include "platform/windows/windows_clock.h"
#include "platform/windows/windows_drives.h"
#include "platform/windows/windows_files.h"
#include "platform/windows/windows_process.h"
#include "platform/windows/windows_settings.h"

namespace {

const app::ProgramDescription description{
    "tyIndexer", "Indexes the documents that the queue of a document library names, with a control window.",
    "The settings are those of the user's registry. A closed window or a log-off ends the service after the\n"
    "document in work."};

/// A program with a window has no console, but whoever starts it may listen.
void printError(std::string_view text) {
    std::string line(text);
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
    std::cerr << description.name << ": " << line << std::endl;
}

/// The service with everything that it runs on.
class Service {
  public:
    Service(platform::Waiter& waiter, const app::ServiceOptions& options)
        : options_(options), toolkit_(waiter), trace_(options.traceFile, &printError) {
        if (trace_.isOn()) {
            database_.setTrace([this](std::string_view statement) { trace_.write(statement); });
        }
    }

    void run() { app::runUntilClosed(services_, options_, &printError); }

  private:
    app::ServiceOptions options_;
    platform::windows::ComApartment apartment_;
    platform::win32::Win32Toolkit toolkit_;
    app::StatementTrace trace_;
    platform::windows::WindowsSettings settings_;
    platform::windows::ComAutomationFactory automation_;
    platform::windows::WindowsProcess process_;
    platform::windows::WindowsFiles files_{automation_};
    platform::windows::WindowsDrives drives_;
    platform::windows::WindowsClock clock_;
    platform::windows::AdoEngine database_;
    infra::Services services_{
        platform::System{settings_, database_, automation_, toolkit_, files_, process_, drives_, clock_}};
};

/// A supervisor leaves its mark as long as it is there.
bool isSupervised() {
    platform::windows::WindowsSettings settings;
    platform::windows::ComAutomationFactory automation;
    platform::windows::WindowsFiles files(automation);
    infra::tysRegistry registry(settings, files, [](const std::string&, infra::LogLevel) {});
    return !registry.GetSettingString(platform::RootKey::currentUser, infra::masterKey, "").empty();
}

/// The service has been taken down by now, its window and its timers with it: nothing can reach its handlers
/// while the box is open. Under a supervisor nobody sits in front of the machine, and the next start must not
/// wait for a click.
void tellOperator(const std::string& error, platform::Waiter& waiter) {
    printError(error);
    if (!std::cerr && !isSupervised()) {
        platform::win32::Win32Toolkit(waiter).messageBox("The service has ended because of an error: " +
                                                         error);
    }
}

/// Help and complaints are shown where nobody reads what the program prints.
platform::ExitStatus tell(const app::CommandLineAnswer& answer, platform::Waiter& waiter) {
    std::ostream& out = answer.status == platform::ExitStatus::stopped ? std::cout : std::cerr;
    out << answer.text << std::flush;
    if (!out) {
        platform::win32::Win32Toolkit(waiter).messageBox(answer.text);
    }
    return answer.status;
}

/// Reads the options of this process.
std::optional<app::CommandLineAnswer> readOptions(app::ServiceOptions& options) {
    std::vector<std::string> arguments = platform::windows::commandLine();
    std::vector<char*> texts;
    texts.reserve(arguments.size());
    for (std::string& argument : arguments) {
        texts.push_back(argument.data());
    }
    return app::readCommandLine(static_cast<int>(texts.size()), texts.data(), description, options);
}

}  // namespace

int main() {
    platform::win32::MessageWaiter waiter;
    try {
        app::ServiceOptions options;
        if (const auto answer = readOptions(options)) {
            return static_cast<int>(tell(*answer, waiter));
        }
        Service(waiter, options).run();
        return static_cast<int>(platform::ExitStatus::stopped);
    } catch (const std::exception& error) {
        tellOperator(error.what(), waiter);
        return static_cast<int>(platform::ExitStatus::failed);
    }
}
