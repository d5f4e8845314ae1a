// Main: one tick of Timer1 claims at most one queue entry and has it processed.
#include <exception>

#include "app/Main.h"
#include "app/poll_interval.h"
#include "base/checked.h"
#include "base/variant.h"
#include "infra/retryFailing.h"
#include "platform/clock.h"

namespace app {

using infra::LogLevel;
using platform::CursorType;
using platform::LockType;

namespace {

/// True while a polling cycle is at work.
class CycleMark {
  public:
    explicit CycleMark(bool& atWork) : atWork_(atWork) { atWork_ = true; }
    CycleMark(const CycleMark&) = delete;
    CycleMark& operator=(const CycleMark&) = delete;
    ~CycleMark() { atWork_ = false; }

  private:
    bool& atWork_;
};

}  // namespace

void Main::tick() {
    // The operator can stop and start the timer in the middle of a job; cycles never overlap all the same.
    if (cycleAtWork_) {
        return;
    }
    const CycleMark mark(cycleAtWork_);
    CycleOutcome outcome = CycleOutcome::failed;
    try {
        outcome = lookAtQueue();
    } catch (const std::exception& error) {
        recoverFromCycleError(error.what());
    }
    for (bool finished = false; !finished;) {
        try {
            finishCycle();
            finished = true;
        } catch (const std::exception& error) {
            // What fails here is met again in the next round: a poll interval that is no number keeps the
            // service in this loop. The log and the missing heartbeat tell the operator and the supervisor.
            recoverFromCycleError(error.what());
            services_.system.clock.pause(infra::retryPause);
        }
    }
    if (cycleEnded_) {
        cycleEnded_(outcome);
    }
}

CycleOutcome Main::lookAtQueue() {
    if (docsClaimed_ == 0) {
        // What is marked before this process has claimed anything brought an earlier run down: it is dropped,
        // not tried again.
        database_->getConnection()->execute("DELETE * FROM file_index_queue WHERE flag_dirty = true");
    }
    WriteLog("Main.Timer Fire", LogLevel::crashDetection);
    SetStatus("Checking file index queue...");
    Timer1_.setEnabled(false);
    queue_->open("SELECT id FROM file_index_queue WHERE flag_dirty = false", *database_->getConnection(),
                 CursorType::forwardOnly, LockType::readOnly);
    WriteLog("Main.Timer - Looking for queue entry", LogLevel::crashDetection);
    bool claimed = false;
    if (!queue_->eof()) {
        const base::Variant id = queue_->field("id");
        if (!id.isNull()) {
            claimed = claimAndProcess(id.toInt32());
        }
    }
    queue_->close();
    return claimed ? CycleOutcome::entryClaimed : CycleOutcome::nothingToDo;
}

bool Main::claimAndProcess(std::int32_t id) {
    WriteLog("Main.Timer - Queue entry found", LogLevel::crashDetection);
    if (id == 0) {
        return false;
    }
    database_->getConnection()->execute("UPDATE file_index_queue SET flag_dirty = true WHERE id = " +
                                        std::to_string(id));
    docsClaimed_ = base::add32(docsClaimed_, 1);
    if (!doIndex_(id)) {
        SetStatus("ERROR while updating database.");
    }
    return true;
}

/// Logs the error and opens the database anew. The queue recordset, which may still be open, is released with
/// the old connection. An error in here ends the program.
void Main::recoverFromCycleError(std::string_view description) {
    WriteLog("Main.Timer - Failed to read queue: " + std::string(description), LogLevel::errorReport);
    if (database_ == nullptr) {
        database_ = std::make_unique<infra::tysDataBase>(services_);
    } else {
        database_->finalise();
    }
    database_->initialise();
}

void Main::finishCycle() {
    if (maxDocsBeforeRestart_ != 0 && docsClaimed_ > maxDocsBeforeRestart_) {
        WriteLog("Main.Timer - Restarting to synchronise Caches", LogLevel::interest);
        services_.system.process.endProcess(platform::ExitStatus::stopped);
    }
    WriteLog("Main.Timer Action Complete", LogLevel::crashDetection);
    Timer1_.setInterval(base::round32(pollSeconds(txtPollInterval_.text()) * 1000));
    // A window that was closed during the job gets no further tick. Otherwise the timer goes on, also when
    // the operator stopped it in the middle of the job: a stop holds only when given between cycles.
    if (!form_.closing()) {
        Timer1_.setEnabled(true);
    }
}

}  // namespace app
