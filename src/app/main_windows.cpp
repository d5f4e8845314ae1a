// tyIndexer.exe: the indexing service with its control window on Windows.
#include <algorithm>
#include <exception>
#include <iostream>
#include <string>

#include "app/main_options.h"
#include "app/main_run.h"
#include "app/statement_trace.h"
#include "infra/Services.h"
#include "platform/win32/message_waiter.h"
#include "platform/win32/win32_toolkit.h"
#include "platform/windows/ado_engine.h"
#include "platform/windows/com_automation.h"
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

    platform::ExitStatus run() {
        try {
            app::runUntilClosed(services_, options_, &printError);
            return platform::ExitStatus::stopped;
        } catch (const std::exception& error) {
            tellOperator(error.what());
            return platform::ExitStatus::failed;
        }
    }

  private:
    /// The window is gone when an error ends the program. Under a supervisor nobody sits in front of it, and
    /// the next start must not wait for a click.
    void tellOperator(const std::string& error) {
        printError(error);
        if (!std::cerr &&
            services_.registry.GetSettingString(platform::RootKey::currentUser, infra::masterKey, "")
                .empty()) {
            toolkit_.messageBox("The service has ended because of an error: " + error);
        }
    }

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

/// Help and complaints are shown where nobody reads what the program prints.
platform::ExitStatus tell(const app::CommandLineAnswer& answer, platform::Waiter& waiter) {
    std::ostream& out = answer.status == platform::ExitStatus::stopped ? std::cout : std::cerr;
    out << answer.text << std::flush;
    if (!out) {
        platform::win32::Win32Toolkit(waiter).messageBox(answer.text);
    }
    return answer.status;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        platform::win32::MessageWaiter waiter;
        app::ServiceOptions options;
        const auto answer = app::readCommandLine(argc, argv, description, options);
        return static_cast<int>(answer ? tell(*answer, waiter) : Service(waiter, options).run());
    } catch (const std::exception& error) {
        printError(error.what());
        return static_cast<int>(platform::ExitStatus::failed);
    }
}
