// A Stage counts the calls of one kind and the time they take. The timed parts of the stages program add to
// it.
#pragma once

#include <chrono>
#include <cstdint>

namespace bench {

struct Stage {
    std::uint64_t calls = 0;
    std::chrono::nanoseconds time{0};

    [[nodiscard]] double seconds() const { return std::chrono::duration<double>(time).count(); }
};

/// Adds the time between its making and its end to a stage, errors included.
class Timing {
  public:
    explicit Timing(Stage& stage) : stage_(stage), start_(std::chrono::steady_clock::now()) {}
    Timing(const Timing&) = delete;
    Timing& operator=(const Timing&) = delete;
    ~Timing() {
        stage_.time += std::chrono::steady_clock::now() - start_;
        ++stage_.calls;
    }

  private:
    Stage& stage_;
    std::chrono::steady_clock::time_point start_;
};

}  // namespace bench
