// A Stage counts the calls of one kind and the time they take. The timed parts of the stages program add to
// it.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace bench {

struct Stage {
    std::uint64_t calls = 0;
    std::chrono::nanoseconds time{0};
    std::chrono::nanoseconds longest{0};  // of one call

    void add(std::chrono::nanoseconds taken) {
        time += taken;
        longest = std::max(longest, taken);
    }
    [[nodiscard]] double seconds() const { return std::chrono::duration<double>(time).count(); }
};

/// Adds the time between its making and its end to a stage, errors included.
class Timing {
  public:
    explicit Timing(Stage& stage) : stage_(stage), start_(std::chrono::steady_clock::now()) {}
    Timing(const Timing&) = delete;
    Timing& operator=(const Timing&) = delete;
    ~Timing() {
        stage_.add(std::chrono::steady_clock::now() - start_);
        ++stage_.calls;
    }

  private:
    Stage& stage_;
    std::chrono::steady_clock::time_point start_;
};

}  // namespace bench
