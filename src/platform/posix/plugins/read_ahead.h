// Read-ahead fetches the items that the engine is about to ask for in large answers, and asks for the next of
// them while the engine works on those it has. What the engine sees is what plain calls would give: the same
// values, and an error when the item that failed is asked for. A PluginObject owns one reader of each kind.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/variant.h"
#include "platform/posix/plugins/plugin_process.h"
#include "platform/posix/plugins/plugin_target.h"

namespace platform::posix {

/// Reads items 1 to a known count, each through one or two methods that are asked in turn.
class RangeReader {
  public:
    RangeReader(PluginTarget target, std::string_view countMethod, std::vector<std::string_view> methods);

    /// Takes note of a count, when it is this reader's; what was read before counts no more.
    void learn(std::string_view method, const base::Variant& result);

    /// The answer to a call that asks for the next item in order; nothing when the call is another one and
    /// has to be made as it is.
    std::optional<base::Variant> serve(std::string_view method, std::span<const base::Variant> arguments);

    /// Whether its count says that there are any.
    [[nodiscard]] bool hasItems() const { return count_ > 0; }

    /// Asks for the first items right away, for a caller that knows that they are asked for next. False when
    /// there are none, or when the process knows no such request.
    bool start();

    /// Begins with the items that came with their number, of which `most` were asked for, and asks for the
    /// next ones. Without items nor an error it just starts.
    void start(std::string_view called, PluginAnswer& arrived, std::int64_t most);

    /// True once after the last item has arrived.
    bool takeEnd() { return std::exchange(ended_, false); }

    /// Forgets everything.
    void reset();

  private:
    bool isNext(std::string_view method, std::span<const base::Variant> arguments);
    void begin();
    void ask();
    bool receive(std::string_view called);
    void takeResults(std::string_view called, PluginAnswer& answer);

    PluginTarget target_;
    std::string_view countMethod_;
    std::vector<std::string_view> methods_;
    std::int64_t count_ = 0;
    std::int64_t nextIndex_ = 0;  // of the item that would be asked in order; 0 when not reading
    std::size_t nextMethod_ = 0;
    std::int64_t fetched_ = 0;  // items that have arrived
    std::int64_t asked_ = 0;    // the last item of the request that is under way
    std::optional<PluginProcess::RequestId> pending_;
    std::deque<base::Variant> items_;
    std::optional<PluginError> error_;  // comes after the items
    bool ended_ = false;
};

/// Reads sentences whose number nobody knows: MoreSentences and GetNextSentence in turn.
class WhileReader {
  public:
    explicit WhileReader(PluginTarget target) : target_(target) {}

    void learn(std::string_view method, const base::Variant& result);
    std::optional<base::Variant> serve(std::string_view method, std::span<const base::Variant> arguments);

    /// Whether their number is unknown and they have not all been read.
    [[nodiscard]] bool isReading() const { return reading_; }

    /// Asks for the first sentences right away.
    void start();

    /// Begins with the sentences that came with the news that their number is unknown, as RangeReader does.
    void start(std::string_view called, PluginAnswer& arrived, std::int64_t most);

    bool takeEnd() { return std::exchange(ended_, false); }
    void reset();

  private:
    bool fill(std::string_view called);
    bool receive(std::string_view called);
    void takeResults(std::string_view called, PluginAnswer& answer, std::int64_t most);
    void ask();

    PluginTarget target_;
    bool reading_ = false;
    bool more_ = false;  // whether the process has told that it is not at the end
    std::optional<PluginProcess::RequestId> pending_;
    std::deque<base::Variant> items_;
    std::optional<PluginError> error_;  // comes after the items
    bool ended_ = false;
};

}  // namespace platform::posix
