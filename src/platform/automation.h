// Objects that are created by ProgID and called by method name: extraction plug-ins and the profiler.
// The factory belongs to the composition root, an object to whoever created it; destroying it releases it.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/variant.h"

namespace platform {

class AutomationObject {
  public:
    AutomationObject() = default;
    AutomationObject(const AutomationObject&) = delete;
    AutomationObject& operator=(const AutomationObject&) = delete;
    virtual ~AutomationObject() = default;

    /// Calls a method; arguments go by reference and may be changed by the object.
    /// Raises a base::RuntimeError for an unknown method, an error inside it, or an object that no longer
    /// answers.
    virtual base::Variant call(std::string_view method, std::span<base::Variant> arguments) = 0;

    base::Variant call(std::string_view method) { return call(method, std::span<base::Variant>()); }

    /// The same with arguments that the object cannot change, by value where the way of calling makes a
    /// difference.
    virtual base::Variant callByValue(std::string_view method, std::span<const base::Variant> arguments) {
        std::vector<base::Variant> copies(arguments.begin(), arguments.end());
        return call(method, copies);
    }
};

class AutomationFactory {
  public:
    AutomationFactory() = default;
    AutomationFactory(const AutomationFactory&) = delete;
    AutomationFactory& operator=(const AutomationFactory&) = delete;
    virtual ~AutomationFactory() = default;

    /// Raises a base::RuntimeError when nothing is registered under the ProgID or it cannot be started.
    virtual std::unique_ptr<AutomationObject> create(std::string_view progId) = 0;

    /// A hint that some object is about to be given the document at this path, so that the system may begin
    /// to read it. Does not wait, whatever the path leads to, tells no error, and may do nothing.
    virtual void expectReading(const std::string& /*path*/) noexcept {}
};

}  // namespace platform
