#include "bench/in_process_plugins.h"

#include <string>

#include "base/runtime_error.h"
#include "sdk/method_table.h"
#include "text/text_extractor.h"

namespace bench {
namespace {

class InProcessObject : public platform::AutomationObject {
  public:
    base::Variant call(std::string_view method, std::span<base::Variant> arguments) override {
        try {
            return sdk::callByName(extractor_, method, arguments);
        } catch (const sdk::ExtractionError& error) {
            throw base::RuntimeError(error.number(), error.what());
        }
    }

  private:
    text::TextExtractor extractor_;
};

}  // namespace

std::unique_ptr<platform::AutomationObject> InProcessPlugins::create(std::string_view progId) {
    if (progId != "Tessaly.TextExtractor") {
        throw base::RuntimeError(base::ErrorNumber::cannotCreateObject,
                                 "no \"" + std::string(progId) + "\" runs in this process");
    }
    return std::make_unique<InProcessObject>();
}

}  // namespace bench
