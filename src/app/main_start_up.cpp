// Main: how the service comes up.
#include <exception>

#include "app/Main.h"
#include "app/poll_interval.h"
#include "base/text.h"
#include "base/variant.h"

namespace app {

using infra::LogLevel;
using platform::PriorityClass;
using platform::RootKey;

namespace {

constexpr std::int32_t defaultMaxDocsBeforeRestart = 100;

}  // namespace

void Main::start() {
    form_.show();
    WriteLog("Attempting to start Indexer.", LogLevel::logicPath);
    try {
        startUp();
    } catch (const std::exception& error) {
        SetStatus("ERROR on startup. ABORTING.");
        WriteLog("Indexer failed to start.", LogLevel::errorReport);
        if (startUpFailed_) {
            startUpFailed_(error.what());
        }
        services_.system.process.endProcess(platform::ExitStatus::failed);
    }
}

void Main::startUp() {
    process_ = services_.system.process.currentProcess();
    choosePriority();
    fillControls();
    maxDocsBeforeRestart_ = services_.registry.GetSettingLong(
        RootKey::currentUser, infra::indexerKey, "MaxDocsBeforeRestart", defaultMaxDocsBeforeRestart);
    docsClaimed_ = 0;
    SetStatus("Starting...");
    SetStatus("Checking for zombies...");
    ClearOldTempFiles();
    SetStatus("Connecting to database...");
    connectToDatabase();
    SetStatus("Connected.");
    SetStatus("Starting timers...");
    Timer1_.setEnabled(true);
    SetStatus("Running.");
    if (supervisorIsPresent()) {
        form_.hide();
    }
    WriteLog("Indexer started.", LogLevel::interest);
}

void Main::choosePriority() {
    const std::string priority = base::toLower(
        services_.registry.GetSettingString(RootKey::currentUser, infra::indexerKey, "Priority", "low"));
    PriorityClass chosen = PriorityClass::idle;
    if (priority == "normal") {
        WriteLog("Setting priority class to NORMAL.", LogLevel::interest);
        chosen = PriorityClass::normal;
    } else if (priority == "high") {
        WriteLog("Setting priority class to HIGH.", LogLevel::interest);
        chosen = PriorityClass::high;
    } else {
        WriteLog("Setting priority class to IDLE.", LogLevel::interest);
    }
    // A service that may not have its priority indexes all the same.
    static_cast<void>(services_.system.process.setPriorityClass(process_, chosen));
}

/// The controls are filled through the handlers that serve the operator: what differs is saved back, and the
/// log path is known to the log writer from here on.
void Main::fillControls() {
    infra::tysRegistry& registry = services_.registry;
    txtLogFile_.setText(registry.GetSettingString(RootKey::currentUser, infra::indexerKey, "LogFilePath"));
    chkLogit_.setValue(txtLogFile_.text().empty()
                           ? 0
                           : registry.GetSettingLong(RootKey::currentUser, infra::indexerKey, "LoggingOn"));
    txtPollInterval_.setText(
        std::to_string(registry.GetSettingLong(RootKey::currentUser, infra::indexerKey, "PollInterval", 1)));
    if (pollSeconds(txtPollInterval_.text()) == 0) {
        txtPollInterval_.setText("1");
    }
}

void Main::connectToDatabase() {
    database_ = std::make_unique<infra::tysDataBase>(services_);
    database_->initialise();
    queue_ = services_.system.database.createRecordset();
}

bool Main::supervisorIsPresent() {
    return !services_.registry.GetSettingString(RootKey::currentUser, infra::masterKey, "").empty();
}

}  // namespace app
