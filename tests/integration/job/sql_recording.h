// Notes what SQLite really runs: the storage layer's own statements and what triggers do as well as the
// statements of the service.
#pragma once

#include <set>
#include <string>
#include <string_view>

namespace job_tests {

/// Listens, as long as it lives, to every connection that is opened meanwhile. There is one at a time.
class SqlRecording {
  public:
    SqlRecording();
    SqlRecording(const SqlRecording&) = delete;
    SqlRecording& operator=(const SqlRecording&) = delete;
    ~SqlRecording();

    /// Each text once, without values.
    [[nodiscard]] const std::set<std::string>& statements() const { return statements_; }

    /// What ran on behalf of another statement: triggers, their steps, and what SQLite asks itself.
    [[nodiscard]] const std::set<std::string>& nested() const { return nested_; }

    /// A text as SQLite tells it.
    void note(std::string_view text);

  private:
    std::set<std::string> statements_;
    std::set<std::string> nested_;
};

}  // namespace job_tests
