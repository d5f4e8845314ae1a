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
#include <utility>

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

/// Items that follow for certain when the last call of a sequence gives their number, which may be unknown.
struct ExpectedItems {
    std::string_view method;  // each of a known number, by its index
    std::string_view more;    // whether there is another of an unknown number
    std::string_view next;    // the other
    std::int64_t most = 0;    // in the answer to the sequence
};

/// Calls that go in one request, and the first of the items that the last of them counts.
struct ExpectedSequence {
    std::span<const ExpectedCall> calls;
    const ExpectedItems* items = nullptr;
};

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

    /// What the answer to a sequence held behind the results of its calls, once: the first of the items and
    /// how they end. Nothing for a process that knows of no items in a sequence.
    std::optional<PluginAnswer> takeItems() { return std::exchange(items_, std::nullopt); }

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
    std::optional<PluginError> error_;   // comes after the results
    std::optional<PluginAnswer> items_;  // that came with the results
};

}  // namespace platform::posix
