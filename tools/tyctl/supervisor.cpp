#include "tyctl/supervisor.h"

#include <fcntl.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): sigtimedwait is not in <csignal>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <utility>

#include "infra/tysRegistry.h"
#include "platform/posix/system_clock.h"
#include "tyctl/failure.h"

namespace tyctl {
namespace {

const SettingName& mark() {
    static const SettingName name{std::string(infra::masterKey), {}};
    return name;
}

void say(const std::string& text) {
    const platform::posix::SystemClock clock;
    // In one piece: the service writes to the same place, and its lines must not tear this one.
    std::string line = clock.now().longText();
    line.append(": tyctl supervise: ").append(text).append("\n");
    std::cerr << line << std::flush;
}

std::string secondsText(double seconds) {
    return std::to_string(static_cast<int>(seconds)) + " s";
}

std::int32_t finishedDocuments(Settings& settings) {
    return settings.number(infra::masterKey, "DocsIndexedSinceCompaction", 0);
}

}  // namespace

Supervisor::Supervisor(Settings& settings, std::vector<std::string> command,
                       std::chrono::duration<double> poll, std::chrono::duration<double> grace)
    : settings_(settings), command_(std::move(command)), poll_(poll.count()), grace_(grace.count()) {
    sigemptyset(&awaited_);
    for (const int signal : {SIGCHLD, SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&awaited_, signal);
    }
    sigprocmask(SIG_BLOCK, &awaited_, &formerSignals_);
}

Supervisor::~Supervisor() {
    child_.reset();
    try {
        removeMark();
    } catch (const std::exception& error) {
        std::cerr << "tyctl supervise: " << error.what() << '\n';
    }
    if (lock_ >= 0) {
        close(lock_);
    }
    sigprocmask(SIG_SETMASK, &formerSignals_, nullptr);
}

bool Supervisor::run() {
    lockOutOthers();
    setMark();
    try {
        child_.emplace(command_);
    } catch (const std::system_error& error) {
        throw Failure(error.what());
    }
    for (;;) {
        supervision_.started(now(), settings_.heartbeat());
        const std::int32_t finishedBefore = finishedDocuments(settings_);
        say("started " + command_.front() + " as process " + std::to_string(child_->id()));
        if (!watch()) {
            return stopChild();
        }
        const RunEnd end{lastEnd_.failed(), finishedDocuments(settings_) != finishedBefore};
        const double delay = supervision_.delayAfter(now(), end);
        say("process " + std::to_string(child_->id()) + " ended with " + lastEnd_.text() +
            (delay > 0 ? "; waiting " + secondsText(delay) + " before the next start" : "; starting again"));
        child_.reset();
        forgetJobInWork();
        if (!pause(delay)) {
            return true;
        }
        startAgainUntilItRuns();
        if (!child_) {
            return true;
        }
    }
}

void Supervisor::lockOutOthers() {
    const std::string path = settings_.path() + ".supervisor";
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
    lock_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (lock_ < 0) {
        throw Failure("cannot open " + path + ": " + std::generic_category().message(errno));
    }
    if (flock(lock_, LOCK_EX | LOCK_NB) != 0) {
        throw Failure("another tyctl supervise is at work with the settings in " + settings_.path() +
                      "; stop that one first");
    }
}

void Supervisor::setMark() {
    // A mark that is there was left by a supervisor that could not take it away, such as by a power cut, and
    // with it its service's last job.
    if (settings_.find(mark())) {
        forgetJobInWork();
    }
    settings_.putText(mark(), "tyctl supervise, process " + std::to_string(getpid()));
    marked_ = true;
}

void Supervisor::removeMark() {
    if (std::exchange(marked_, false)) {
        settings_.remove(mark());
    }
}

/// The service clears these at the end of a job only. Left by a run that is over, they would make the next
/// one, which may find the queue empty, look like a job that hangs.
void Supervisor::forgetJobInWork() {
    const std::string key(infra::indexerKey);
    if (settings_.number(key, "IndexingQueueNumber", 0) != 0) {
        settings_.putNumber({key, "IndexingQueueNumber"}, 0);
        settings_.putText({key, "IndexingKey"}, "");
    }
}

Supervisor::Event Supervisor::waitFor(double seconds) const {
    constexpr double nanoseconds = 1e9;
    timespec time{};
    time.tv_sec = static_cast<time_t>(seconds);
    time.tv_nsec = static_cast<long>((seconds - static_cast<double>(time.tv_sec)) * nanoseconds);
    switch (sigtimedwait(&awaited_, nullptr, &time)) {
        case SIGCHLD:
            return Event::childChanged;
        case SIGTERM:
        case SIGINT:
        case SIGHUP:
            return Event::stop;
        default:
            return Event::none;
    }
}

bool Supervisor::watch() {
    for (;;) {
        if (const auto end = child_->ended()) {
            lastEnd_ = *end;
            return true;
        }
        const Heartbeat heartbeat = settings_.heartbeat();
        if (supervision_.isStale(now(), heartbeat)) {
            say("queue entry " + std::to_string(heartbeat.queueNumber) + " has shown no sign of life for " +
                std::to_string(heartbeat.deadMansSwitchSeconds) + " s (last one: " + heartbeat.lastTouch +
                "); killing process " + std::to_string(child_->id()));
            lastEnd_ = child_->kill();
            return true;
        }
        if (waitFor(poll_) == Event::stop) {
            return false;
        }
    }
}

bool Supervisor::pause(double seconds) const {
    const double until = now() + seconds;
    double left = seconds;
    while (left > 0) {
        if (waitFor(left) == Event::stop) {
            return false;
        }
        left = until - now();
    }
    return true;
}

void Supervisor::startAgainUntilItRuns() {
    while (!child_) {
        supervision_.started(now(), settings_.heartbeat());
        try {
            child_.emplace(command_);
        } catch (const std::system_error& error) {
            const double delay = supervision_.delayAfter(now(), {true, false});
            say(std::string(error.what()) + "; trying again in " + secondsText(delay));
            if (!pause(delay)) {
                return;
            }
        }
    }
}

bool Supervisor::stopChild() {
    say("stopping process " + std::to_string(child_->id()));
    child_->terminate();
    const double until = now() + grace_;
    while (!child_->ended()) {
        const double left = until - now();
        if (left <= 0 || waitFor(left) == Event::stop) {
            say(left <= 0 ? "it did not end within " + secondsText(grace_) + "; killing it"
                          : "told to stop a second time; killing it");
            child_->kill();
            return false;
        }
    }
    say("stopped with " + child_->ended()->text());
    return true;
}

double Supervisor::now() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace tyctl
