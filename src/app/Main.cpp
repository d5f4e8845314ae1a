#include "app/Main.h"

#include <exception>
#include <utility>

#include "platform/clock.h"

namespace app {

using infra::LogLevel;

namespace {

// The inside of the window: the status list, its widest control, ends at 5655, the buttons, its lowest, at
// 3135. Beyond them lies the margin that the list has on its left, 120.
constexpr int formWidth = 5775;
constexpr int formHeight = 3255;

constexpr std::size_t longestStatusList = 50;

platform::Form& createForm(platform::Toolkit& toolkit) {
    return toolkit.createForm("Main", "orlentbar indexer", formWidth, formHeight);
}

void addPollLabels(platform::Form& form) {
    form.addLabel({"lblPoll", {120, 240, 1695, 255}, 5}, "Poll Index Queue every");
    form.addLabel({"lblSeconds", {2760, 240, 855, 255}, 7}, "seconds");
}

}  // namespace

Main::Main(infra::Services& services, DoIndex doIndex)
    : services_(services),
      doIndex_(std::move(doIndex)),
      form_(createForm(services.system.toolkit)),
      cmdStartStop_(form_.addButton({"cmdStartStop", {360, 2760, 1095, 375}, 0}, "S&top")),
      lstStatus_(form_.addListBox({"lstStatus", {120, 720, 5535, 1230}, 1})),
      cmdExit_(form_.addButton({"cmdExit", {4320, 2760, 1095, 375}, 2}, "E&xit")),
      chkLogit_(form_.addCheckBox({"chkLogit", {120, 2160, 855, 255}, 3}, "Log it")),
      txtLogFile_(form_.addTextBox({"txtLogFile", {1080, 2160, 3495, 285}, 4}, "")),
      txtPollInterval_(form_.addTextBox({"txtPollInterval", {1920, 210, 735, 285}, 6}, "1")),
      btnBrowse_(form_.addButton({"btnBrowse", {4800, 2115, 855, 375}, 8}, "Browse...")),
      Timer1_(form_.addTimer("Timer1", 1000)),
      acceptedPollInterval_(txtPollInterval_.text()) {
    addPollLabels(form_);
    connectHandlers();
}

void Main::connectHandlers() {
    Timer1_.onTick([this] { tick(); });
    cmdStartStop_.onClick([this] { startStopClicked(); });
    cmdExit_.onClick([this] { form_.close(); });
    chkLogit_.onChange([this] { logItChanged(); });
    txtLogFile_.onChange([this] { logFileChanged(); });
    txtPollInterval_.onChange([this] { pollIntervalChanged(); });
    btnBrowse_.onClick([this] { browseClicked(); });
    form_.onResize([this] { resized(); });
    form_.onClose([this] { shutDown(); });
}

void Main::SetStatus(std::string_view message) {
    try {
        WriteLog("Main.SetStatus", LogLevel::crashDetection);
        if (form_.windowState() == platform::WindowState::normal) {
            lstStatus_.insert(0, services_.system.clock.now().timeText() + ": " + std::string(message));
            if (lstStatus_.count() > longestStatusList) {
                lstStatus_.remove(lstStatus_.count() - 1);
            }
        }
        if (chkLogit_.value() == 1 && !txtLogFile_.text().empty()) {
            WriteLog(message, LogLevel::uiOutput);
        }
    } catch (const std::exception&) {
        // A status line is not worth the operation that it reports on.
        return;
    }
}

void Main::shutDown() {
    if (database_ != nullptr) {
        database_->finalise();
    }
    database_.reset();
    queue_.reset();
}

void Main::WriteLog(std::string_view message, LogLevel level) {
    services_.support.WriteLog(message, level);
}

}  // namespace app
