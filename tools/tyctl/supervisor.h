// A Supervisor keeps a service running: it starts it, starts it again when it ends, kills it when a job shows
// no sign of life for too long, and ends it in an orderly way when it is told to end itself.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <csignal>
#include <optional>
#include <string>
#include <vector>

#include "tyctl/child_process.h"
#include "tyctl/settings.h"
#include "tyctl/supervision.h"

namespace tyctl {

class Supervisor {
  public:
    /// `poll` is how often the heartbeat is looked at; `grace` is how long the service may take to end
    /// itself.
    Supervisor(Settings& settings, std::vector<std::string> command, std::chrono::duration<double> poll,
               std::chrono::duration<double> grace);
    Supervisor(const Supervisor&) = delete;
    Supervisor& operator=(const Supervisor&) = delete;
    ~Supervisor();

    /// Runs until SIGTERM, SIGINT or SIGHUP. Gives false when the service had to be killed at the end. Raises
    /// a Failure when another supervisor is at work on the same settings, and when the service cannot be
    /// started at all.
    bool run();

  private:
    enum class Event { none, childChanged, stop };

    void lockOutOthers();
    void setMark();
    void removeMark();
    void forgetJobInWork();
    [[nodiscard]] Event waitFor(double seconds) const;
    /// Watches the child until it ends or a stop is asked for; true when it ended.
    bool watch();
    /// False when a stop was asked for meanwhile.
    [[nodiscard]] bool pause(double seconds) const;
    bool stopChild();
    void startAgainUntilItRuns();
    [[nodiscard]] double now() const;

    Settings& settings_;
    std::vector<std::string> command_;
    double poll_;
    double grace_;
    Supervision supervision_;
    std::optional<ChildProcess> child_;
    ProcessEnd lastEnd_;
    int lock_ = -1;
    bool marked_ = false;
    sigset_t formerSignals_{};
    sigset_t awaited_{};
};

}  // namespace tyctl
