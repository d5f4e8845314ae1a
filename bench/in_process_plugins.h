// A factory whose objects run the text plug-in's code in this process, with no process and no exchange
// between. The fixed job of the instruction count owns it.
#pragma once

#include <memory>
#include <string_view>

#include "platform/automation.h"

namespace bench {

class InProcessPlugins : public platform::AutomationFactory {
  public:
    std::unique_ptr<platform::AutomationObject> create(std::string_view progId) override;
};

}  // namespace bench
