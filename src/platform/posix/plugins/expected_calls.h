// ExpectedCalls asks a plug-in for what the engine is sure to ask next, several calls in one request, while
// the engine works on what it has. What the engine sees is what plain calls would give, in the same order,
// and an error when the call that failed is made. A PluginObject owns one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string_view>

#include "base/variant.h"
#include "platform/posix/plugins/plugin_process.h"
#include "platform/posix/plugins/plugin_target.h"

namespace platform::posix {

/// A call that follows for certain, as long as the one before it gave what was expected.
struct ExpectedCall {
    std::string_view method;
    std::string_view argument = {};             // none when empty
    std::optional<std::int32_t> expected = {};  // any other result ends the sequence behind it
};

/// Calls that go in one request.
using ExpectedSequence = std::span<const ExpectedCall>;

class ExpectedCalls {
  public:
    explicit ExpectedCalls(PluginTarget target) : target_(target) {}

    /// Asks for the first of the sequences now, and for each other when the one before has been answered to
    /// its end and as expected. Does nothing for a process that knows no such request. The sequences must
    /// live on.
    void ask(std::span<const ExpectedSequence> sequences);

    /// The answer to the next call in order; nothing when the call is another one and has to be made as it
    /// is. What was expected is forgotten then.
    std::optional<base::Variant> serve(std::string_view method, std::span<const base::Variant> arguments);

    /// Forgets everything.
    void reset();

  private:
    void post();
    bool receive(std::string_view called);
    void takeResults(std::string_view called, PluginAnswer& answer);
    [[nodiscard]] bool endedAsExpected() const;

    PluginTarget target_;
    std::span<const ExpectedSequence> sequences_;  // the first is the one that was asked last
    std::optional<PluginProcess::RequestId> pending_;
    std::deque<ExpectedCall> calls_;  // that have no answer yet, or one that the engine has not asked for
    std::deque<base::Variant> results_;
    std::optional<PluginError> error_;  // comes after the results
};

}  // namespace platform::posix
