#include "platform/windows/com_automation.h"

#include <windows.h>
// windows.h stands first: COM's header needs it.
#include <objbase.h>

#include <span>
#include <utility>
#include <vector>

#include "platform/windows/com_error.h"
#include "platform/windows/dispatch.h"

namespace platform::windows {
namespace {

class ComObject : public AutomationObject {
  public:
    explicit ComObject(Dispatch object) : object_(std::move(object)) {}

    using AutomationObject::call;
    base::Variant call(std::string_view method, std::span<base::Variant> arguments) override {
        std::vector<Argument> references;
        references.reserve(arguments.size());
        for (base::Variant& argument : arguments) {
            references.emplace_back(&argument);
        }
        return object_.callAny(method, references);
    }

    base::Variant callByValue(std::string_view method, std::span<const base::Variant> arguments) override {
        std::vector<Argument> values;
        values.reserve(arguments.size());
        for (const base::Variant& argument : arguments) {
            values.emplace_back(&argument);
        }
        return object_.callAny(method, values);
    }

  private:
    Dispatch object_;
};

}  // namespace

ComApartment::ComApartment() {
    const HRESULT status = ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (FAILED(status)) {
        raiseComError(status, "COM cannot be started");
    }
}

ComApartment::~ComApartment() {
    ::CoUninitialize();
}

std::unique_ptr<AutomationObject> ComAutomationFactory::create(std::string_view progId) {
    return std::make_unique<ComObject>(Dispatch::create(progId));
}

}  // namespace platform::windows
