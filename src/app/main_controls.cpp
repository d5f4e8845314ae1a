// Main: what the operator's controls do. Everything that the operator changes is saved at once.
#include <array>

#include "app/Main.h"
#include "app/poll_interval.h"
#include "base/checked.h"

namespace app {

using platform::RootKey;

namespace {

constexpr std::string_view stopCaption = "S&top";
constexpr std::string_view startCaption = "S&tart";

constexpr std::array<platform::FileFilter, 2> logFileFilters{{
    {"Log Files (*.log)", "*.log"},
    {"All Files (*.*)", "*.*"},
}};

}  // namespace

void Main::startStopClicked() {
    if (cmdStartStop_.caption() == stopCaption) {
        Timer1_.setEnabled(false);
        SetStatus("Indexing stopped.");
        cmdStartStop_.setCaption(startCaption);
    } else {
        Timer1_.setEnabled(true);
        SetStatus("Indexing started.");
        cmdStartStop_.setCaption(stopCaption);
    }
}

void Main::logItChanged() {
    if (txtLogFile_.text().empty() && chkLogit_.value() == 1) {
        services_.system.toolkit.messageBox("Logging cannot be enabled until you choose a log file.");
        chkLogit_.setValue(0);  // comes back here and saves the 0
        return;
    }
    services_.registry.SaveSettingLong(RootKey::currentUser, infra::indexerKey, "LoggingOn",
                                       chkLogit_.value());
}

void Main::logFileChanged() {
    services_.registry.SaveSettingString(RootKey::currentUser, infra::indexerKey, "LogFilePath",
                                         txtLogFile_.text());
    services_.support.setLogFilePath(txtLogFile_.text());
}

/// No trap on purpose: a text that is not a number, an emptied field included, ends the program.
void Main::pollIntervalChanged() {
    const double seconds = pollSeconds(txtPollInterval_.text());
    if (seconds == 0) {
        txtPollInterval_.setText("1");  // comes back here and saves the 1
    } else if (!pollMilliseconds(seconds)) {
        SetStatus("Poll interval must be between 0.001 and 65.535 seconds.");
        txtPollInterval_.setText(acceptedPollInterval_);
        return;
    }
    acceptedPollInterval_ = txtPollInterval_.text();
    services_.registry.SaveSettingLong(RootKey::currentUser, infra::indexerKey, "PollInterval",
                                       base::round32(pollSeconds(acceptedPollInterval_)));
}

void Main::browseClicked() {
    const std::optional<std::string> path = services_.system.toolkit.saveFileDialog(logFileFilters, ".log");
    if (path) {
        txtLogFile_.setText(*path);
    }
}

void Main::resized() {
    if (!supervisorIsPresent()) {
        return;
    }
    if (form_.windowState() == platform::WindowState::minimised) {
        form_.hide();
    } else {
        form_.show();
    }
}

}  // namespace app
