// A BriefSpin keeps a processor awake for some microseconds for what is about to happen on another one:
// falling asleep and being woken takes longer than most answers of a process that is at work. Each end of an
// exchange owns one.
#pragma once

#include <chrono>
#include <thread>

namespace base {

class BriefSpin {
  public:
    /// Long enough for a short answer, and too short to be noticed where none comes.
    static constexpr std::chrono::microseconds usual{40};

    explicit BriefSpin(std::chrono::microseconds most = usual,
                       unsigned processors = std::thread::hardware_concurrency())
        : most_(most), processors_(processors) {}

    /// Asks `isReady` again and again. True as soon as it is; false when it is time to sleep. With one
    /// processor, and most of the time where it has been in vain lately, it is that at once.
    template <class IsReady>
    bool until(IsReady isReady) {
        if (!isWorthwhile()) {
            return false;
        }
        const auto end = std::chrono::steady_clock::now() + most_;
        do {
            if (isReady()) {
                inVain_ = 0;
                return true;
            }
        } while (std::chrono::steady_clock::now() < end);
        ++inVain_;
        return false;
    }

  private:
    bool isWorthwhile() {
        constexpr unsigned trusted = 8;
        constexpr unsigned probe = 16;
        return processors_ > 1 && (inVain_ < trusted || ++passed_ % probe == 0);
    }

    std::chrono::microseconds most_;
    unsigned processors_;
    unsigned inVain_ = 0;  // in a row
    unsigned passed_ = 0;
};

}  // namespace base
