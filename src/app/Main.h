// Main is the control window: it starts the service, polls the queue, shows the status and takes the
// operator's orders. The composition root makes the one there is; it lives until the program ends.
//
// Creating it builds the window, start() brings the service up, and from then on everything happens in the
// handlers that the toolkit calls while it runs.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "infra/Services.h"
#include "infra/tysDataBase.h"
#include "platform/database.h"
#include "platform/process.h"
#include "platform/ui.h"

namespace app {

/// What a polling cycle came to.
enum class CycleOutcome {
    nothingToDo,   // the queue had no entry to claim
    entryClaimed,  // an entry was claimed and processed, well or not
    failed,        // an error stopped the cycle; the database was opened anew
};

class Main {
  public:
    /// Processes the claimed queue entry of that id. False when the job failed.
    using DoIndex = std::function<bool(std::int32_t id)>;

    /// Builds the window, hidden. `doIndex` is the engine's queue job.
    Main(infra::Services& services, DoIndex doIndex);
    Main(const Main&) = delete;
    Main& operator=(const Main&) = delete;
    ~Main() = default;

    /// Brings the service up and enables the polling timer. Ends the process when a step fails.
    void start();

    /// Takes the interval as if it were typed into the window.
    void takePollInterval(std::string_view seconds) { txtPollInterval_.setText(seconds); }

    /// Closes the window, as its Exit button does.
    void close() { form_.close(); }

    /// Puts a line with the time on top of the status list, which keeps the 50 newest, and echoes it to the
    /// log where the operator asked for that. Raises nothing.
    void SetStatus(std::string_view message);

    /// Deletes the temporary files that earlier runs registered and never removed. Raises nothing.
    void ClearOldTempFiles();

    /// Called after each polling cycle that did not end the process.
    void onCycleEnd(std::function<void(CycleOutcome)> observer) { cycleEnded_ = std::move(observer); }

    /// Called with the error that stops start-up, before the process ends.
    void onStartUpError(std::function<void(std::string_view)> observer) {
        startUpFailed_ = std::move(observer);
    }

  private:
    void connectHandlers();

    void startUp();
    void choosePriority();
    void fillControls();
    void connectToDatabase();
    [[nodiscard]] bool supervisorIsPresent();

    void tick();
    [[nodiscard]] CycleOutcome lookAtQueue();
    [[nodiscard]] bool claimAndProcess(std::int32_t id);
    void recoverFromCycleError(std::string_view description);
    void finishCycle();

    void startStopClicked();
    void logItChanged();
    void logFileChanged();
    void pollIntervalChanged();
    void browseClicked();
    void resized();
    void shutDown();

    void deleteTemporaryFile(const std::string& path);
    void WriteLog(std::string_view message, infra::LogLevel level);

    infra::Services& services_;
    DoIndex doIndex_;
    std::function<void(CycleOutcome)> cycleEnded_;
    std::function<void(std::string_view)> startUpFailed_;

    platform::Form& form_;
    platform::Button& cmdStartStop_;
    platform::ListBox& lstStatus_;
    platform::Button& cmdExit_;
    platform::CheckBox& chkLogit_;
    platform::TextBox& txtLogFile_;
    platform::TextBox& txtPollInterval_;
    platform::Button& btnBrowse_;
    platform::Timer& Timer1_;

    platform::ProcessHandle process_{};
    std::int32_t docsClaimed_ = 0;
    std::int32_t maxDocsBeforeRestart_ = 0;  // 0 means no limit
    std::unique_ptr<infra::tysDataBase> database_;
    std::unique_ptr<platform::Recordset> queue_;
    std::string acceptedPollInterval_;
    bool cycleAtWork_ = false;
};

}  // namespace app
