// Plug-ins made of a test's own lambdas: answers by method name, every call recorded, errors on demand.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/runtime_error.h"
#include "platform/automation.h"

namespace fakes {

/// One plug-in class. A method without a lambda raises an error, as an object without that method does.
struct ScriptedPlugin {
    using Method = std::function<base::Variant(std::span<base::Variant>)>;

    /// A method that always answers the same.
    void answer(const std::string& method, const base::Variant& value) {
        methods[method] = [value](std::span<base::Variant>) { return value; };
    }
    /// A method that always raises an error.
    void fail(const std::string& method, const std::string& description) {
        methods[method] = [description](std::span<base::Variant>) -> base::Variant {
            throw base::RuntimeError(base::ErrorNumber::automationError, description);
        };
    }

    std::map<std::string, Method> methods;
    std::vector<std::string> calls;  // "Method" or "Method(argument)"
    int created = 0;
    int released = 0;
};

class ScriptedAutomation : public platform::AutomationFactory {
  public:
    std::unique_ptr<platform::AutomationObject> create(std::string_view progId) override {
        const auto found = plugins.find(std::string(progId));
        if (found == plugins.end()) {
            throw base::RuntimeError(base::ErrorNumber::cannotCreateObject,
                                     "cannot create " + std::string(progId));
        }
        ++found->second.created;
        return std::make_unique<Object>(found->second);
    }

    void expectReading(const std::string& path) noexcept override {
        if (onExpectReading) {
            onExpectReading(path);
        }
    }

    std::map<std::string, ScriptedPlugin> plugins;  // by ProgID
    std::function<void(const std::string& path)> onExpectReading;

  private:
    class Object : public platform::AutomationObject {
      public:
        explicit Object(ScriptedPlugin& plugin) : plugin_(plugin) {}
        ~Object() override { ++plugin_.released; }

        using platform::AutomationObject::call;
        base::Variant call(std::string_view method, std::span<base::Variant> arguments) override {
            const std::string name(method);
            plugin_.calls.push_back(arguments.empty() ? name : name + "(" + arguments[0].toText() + ")");
            const auto found = plugin_.methods.find(name);
            if (found == plugin_.methods.end()) {
                throw base::RuntimeError(base::ErrorNumber::automationError, "no method " + name);
            }
            return found->second(arguments);
        }

      private:
        ScriptedPlugin& plugin_;
    };
};

}  // namespace fakes
