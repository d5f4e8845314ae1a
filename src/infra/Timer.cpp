#include "infra/Timer.h"

#include <exception>
#include <filesystem>

#include "base/checked.h"
#include "base/runtime_error.h"
#include "platform/file_system.h"
#include "platform/process.h"
#include "platform/ui.h"

namespace infra {

namespace {

constexpr std::string_view defaultLogFileName = "TYinxTest.log";
constexpr std::string_view profilerProgId = "Parvane.Profiler";
constexpr double ticksPerMillisecond = 10;  // the profiler counts tenths of a millisecond

}  // namespace

void Timer::setLoggin(bool flag) {
    debugOn_ = flag;
}

Timer::Timer(const platform::System& system, std::string_view logFileName)
    : system_(system),
      logFileName_(logFileName.empty() ? defaultLogFileName : logFileName),
      sectionProfiler_(createProfiler()) {
    sectionProfiler_->call("ProfileStart");
    WriteLog("Started - debug ON.");
}

void Timer::StartTimer() {
    try {
        chargeOpenSection();
        depth_ = base::add16(depth_, 1);
        sectionTime(depth_) = 0;
        sectionProfiler_->call("ProfileStart");
    } catch (const std::exception& error) {
        MyMsgBox(std::string("StartTimer: ") + error.what());
    }
}

void Timer::EndTimer(std::string_view strMessage) {
    try {
        chargeOpenSection();
        depth_ = base::add16(depth_, -1);
        std::string line;
        for (int i = 0; i < depth_ + 1; ++i) {
            line += " - ";
        }
        const Milliseconds closed = sectionTime(base::add16(depth_, 1));
        sectionTime(depth_) += closed;
        line.append("  Total time of ").append(strMessage).append(": ");
        RealWriteLog(line + std::to_string(base::round32(closed)) + " ms ");
        sectionProfiler_->call("ProfileStart");
    } catch (const std::exception& error) {
        system_.toolkit.messageBox(std::string("EndTimer ") + error.what());
    }
}

void Timer::WriteLog(std::string_view strMessage) {
    if (!debugOn_) {
        return;
    }
    try {
        if (lineProfiler_ != nullptr) {
            const std::string time = lineProfiler_->call("ProfileStop").toText();
            RealWriteLog(time + "  in 0.1 ms   : " + std::string(strMessage));
        } else {
            lineProfiler_ = createProfiler();
        }
        lineProfiler_->call("ProfileStart");
    } catch (const std::exception& error) {
        system_.toolkit.messageBox(std::string("WriteLog: ") + error.what());
    }
}

void Timer::RealWriteLog(std::string_view strMessage) {
    std::string path = system_.process.programDirectory();
    path += static_cast<char>(std::filesystem::path::preferred_separator);
    path += logFileName_;
    system_.files.append(path, std::string(strMessage) + "\r\n");
}

void Timer::MyMsgBox(std::string_view strMessage) {
    RealWriteLog(strMessage);
    system_.toolkit.messageBox(strMessage);
}

std::unique_ptr<platform::AutomationObject> Timer::createProfiler() const {
    return system_.automation.create(profilerProgId);
}

Timer::Milliseconds& Timer::sectionTime(std::int16_t depth) {
    if (depth < 0 || static_cast<std::size_t>(depth) >= sectionTimes_.size()) {
        throw base::RuntimeError(base::ErrorNumber::subscriptOutOfRange, "Subscript out of range");
    }
    return sectionTimes_.at(static_cast<std::size_t>(depth));
}

void Timer::chargeOpenSection() {
    const Milliseconds elapsed = sectionProfiler_->call("ProfileStop").toDouble() / ticksPerMillisecond;
    sectionTime(depth_) += elapsed;
}

}  // namespace infra
