// A Dispatch is an automation object that is used by the names of its members. Whoever holds it owns one
// reference to the object.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "base/variant.h"

struct IDispatch;
struct tagVARIANT;

namespace platform::windows {

class Dispatch;

/// An argument that is left out.
struct Missing {};

/// An argument of a call: left out, a value, a variable that the object may change, or an object. It refers
/// to what it is made of.
using Argument = std::variant<Missing, const base::Variant*, base::Variant*, const Dispatch*>;

class Dispatch {
  public:
    /// Raises a RuntimeError when nothing is registered under the ProgID or it cannot be started.
    static Dispatch create(std::string_view progId);

    /// Takes a reference over. `name` is what error texts call the object.
    Dispatch(IDispatch* object, std::string name) : object_(object), name_(std::move(name)) {}

    // Each raises a RuntimeError for a name that the object does not know and for an error inside it.

    /// Calls a method, or reads a property with arguments, whichever it is: late-bound callers that want a
    /// result leave that to the object.
    base::Variant callAny(std::string_view name, std::span<const Argument> arguments);

    /// Calls a method whose result, if any, is not wanted.
    void call(std::string_view method, std::span<const Argument> arguments = {});
    Dispatch callForObject(std::string_view method, std::span<const Argument> arguments = {});

    base::Variant get(std::string_view property);
    Dispatch getObject(std::string_view property, std::span<const Argument> arguments = {});
    void put(std::string_view property, const base::Variant& value);

    /// What it holds, for arguments.
    [[nodiscard]] IDispatch* object() const { return object_.get(); }

  private:
    struct Releaser {
        void operator()(IDispatch* object) const;
    };

    void invoke(std::string_view name, unsigned kind, std::span<const Argument> arguments,
                tagVARIANT* result);
    Dispatch invokeForObject(std::string_view name, unsigned kind, std::span<const Argument> arguments);
    base::Variant invokeForValue(std::string_view name, unsigned kind, std::span<const Argument> arguments);
    long memberId(std::string_view name);
    [[nodiscard]] std::string memberText(std::string_view name) const;

    std::unique_ptr<IDispatch, Releaser> object_;
    std::string name_;
    std::map<std::string, long, std::less<>> memberIds_;
};

}  // namespace platform::windows
