// A PluginObject is one document's object in a plug-in process. Whoever created it through the factory owns
// it; destroying it releases the object in the process.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/automation.h"
#include "platform/posix/plugins/expected_calls.h"
#include "platform/posix/plugins/plugin_process.h"
#include "platform/posix/plugins/read_ahead.h"

namespace platform::posix {

class PluginObject : public AutomationObject {
  public:
    /// `object` is its handle in the process.
    PluginObject(std::shared_ptr<PluginProcess> process, std::int64_t object,
                 PluginProcess::Milliseconds limit);
    ~PluginObject() override;

    using AutomationObject::call;
    base::Variant call(std::string_view method, std::span<base::Variant> arguments) override;

  private:
    std::optional<base::Variant> serve(std::string_view method, std::span<const base::Variant> arguments);
    base::Variant callPlainly(std::string_view method, std::span<base::Variant> arguments);
    void learn(std::string_view method, const base::Variant& result);
    void startSentences(const base::Variant& count);
    void expectWhatFollowsItems();
    void forgetReadAhead();

    std::shared_ptr<PluginProcess> process_;
    PluginProcess::Milliseconds limit_;
    std::int64_t object_;
    std::vector<RangeReader> ranges_;
    WhileReader while_;
    ExpectedCalls expected_;
};

}  // namespace platform::posix
