#include "platform/windows/dispatch.h"

#include <windows.h>
// windows.h stands first: the automation headers need it.
#include <oleauto.h>

#include <utility>
#include <vector>

#include "base/runtime_error.h"
#include "platform/windows/com_error.h"
#include "platform/windows/com_values.h"
#include "platform/windows/utf16.h"

namespace platform::windows {
namespace {

/// A VARIANT that is cleared.
class OwnedVariant {
  public:
    OwnedVariant() { ::VariantInit(&variant_); }
    OwnedVariant(const OwnedVariant&) = delete;
    OwnedVariant& operator=(const OwnedVariant&) = delete;
    ~OwnedVariant() { ::VariantClear(&variant_); }

    VARIANT& operator*() { return variant_; }
    VARIANT* operator->() { return &variant_; }

  private:
    VARIANT variant_{};
};

/// The arguments of one call as IDispatch takes them: last first, with room for what references refer to.
class CallArguments {
  public:
    explicit CallArguments(std::span<const Argument> arguments)
        : arguments_(arguments), owned_(arguments.size()), passed_(arguments.size()) {
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            pass(arguments[i], *owned_[i], passed_[arguments.size() - 1 - i]);
        }
    }

    std::vector<VARIANT>& passed() { return passed_; }

    /// What the object has left in the variables.
    void takeBack() {
        for (std::size_t i = 0; i < arguments_.size(); ++i) {
            if (auto* const* variable = std::get_if<base::Variant*>(&arguments_[i])) {
                **variable = fromAutomation(*owned_[i]);
            }
        }
    }

  private:
    static void pass(const Argument& argument, VARIANT& owned, VARIANT& passed) {
        ::VariantInit(&passed);
        if (const auto* const* object = std::get_if<const Dispatch*>(&argument)) {
            V_VT(&passed) = VT_DISPATCH;
            V_DISPATCH(&passed) = (*object)->object();
        } else if (const auto* const* value = std::get_if<const base::Variant*>(&argument)) {
            toAutomation(**value, owned);
            passed = owned;  // lent: the object does not free what it is given by value
        } else if (auto* const* variable = std::get_if<base::Variant*>(&argument)) {
            toAutomation(**variable, owned);
            refer(owned, passed);
        } else {
            V_VT(&passed) = VT_ERROR;
            V_ERROR(&passed) = DISP_E_PARAMNOTFOUND;
        }
    }

    /// As a variable of its own type; one without a type goes as a variant.
    static void refer(VARIANT& owned, VARIANT& passed) {
        if (V_VT(&owned) == VT_EMPTY || V_VT(&owned) == VT_NULL) {
            V_VT(&passed) = VT_BYREF | VT_VARIANT;
            V_VARIANTREF(&passed) = &owned;
            return;
        }
        V_VT(&passed) = static_cast<VARTYPE>(VT_BYREF | V_VT(&owned));
        V_BYREF(&passed) = &V_NONE(&owned);  // all plain values stand at the same place
    }

    std::span<const Argument> arguments_;
    std::vector<OwnedVariant> owned_;
    std::vector<VARIANT> passed_;  // borrows from owned_
};

/// What an object tells about its error.
class ErrorDetails {
  public:
    ErrorDetails() = default;
    ErrorDetails(const ErrorDetails&) = delete;
    ErrorDetails& operator=(const ErrorDetails&) = delete;
    ~ErrorDetails() {
        ::SysFreeString(details_.bstrSource);
        ::SysFreeString(details_.bstrDescription);
        ::SysFreeString(details_.bstrHelpFile);
    }

    EXCEPINFO* out() { return &details_; }

    [[noreturn]] void raise(const std::string& doing) {
        if (details_.pfnDeferredFillIn != nullptr) {
            details_.pfnDeferredFillIn(&details_);
        }
        raiseComError(DISP_E_EXCEPTION, doing, &details_);
    }

  private:
    EXCEPINFO details_{};
};

}  // namespace

Dispatch Dispatch::create(std::string_view progId) {
    const std::string name(progId);
    const auto check = [&name](HRESULT status, const char* what) {
        if (FAILED(status)) {
            throw base::RuntimeError(
                base::ErrorNumber::cannotCreateObject,
                "The automation object \"" + name + "\" " + what + ": " + statusText(status));
        }
    };
    CLSID classId{};
    check(::CLSIDFromProgID(toUtf16(progId).c_str(), &classId), "is not registered");
    void* object = nullptr;
    check(::CoCreateInstance(classId, nullptr, CLSCTX_SERVER, IID_IDispatch, &object), "cannot be created");
    return {static_cast<IDispatch*>(object), name};
}

void Dispatch::Releaser::operator()(IDispatch* object) const {
    object->Release();
}

base::Variant Dispatch::callAny(std::string_view name, std::span<const Argument> arguments) {
    return invokeForValue(name, DISPATCH_METHOD | DISPATCH_PROPERTYGET, arguments);
}

void Dispatch::call(std::string_view method, std::span<const Argument> arguments) {
    invoke(method, DISPATCH_METHOD, arguments, nullptr);
}

Dispatch Dispatch::callForObject(std::string_view method, std::span<const Argument> arguments) {
    return invokeForObject(method, DISPATCH_METHOD, arguments);
}

base::Variant Dispatch::get(std::string_view property) {
    return invokeForValue(property, DISPATCH_PROPERTYGET, {});
}

Dispatch Dispatch::getObject(std::string_view property, std::span<const Argument> arguments) {
    return invokeForObject(property, DISPATCH_PROPERTYGET, arguments);
}

void Dispatch::put(std::string_view property, const base::Variant& value) {
    const Argument argument = &value;
    invoke(property, DISPATCH_PROPERTYPUT, {&argument, 1}, nullptr);
}

base::Variant Dispatch::invokeForValue(std::string_view name, unsigned kind,
                                       std::span<const Argument> arguments) {
    OwnedVariant result;
    invoke(name, kind, arguments, &*result);
    return fromAutomation(*result);
}

Dispatch Dispatch::invokeForObject(std::string_view name, unsigned kind,
                                   std::span<const Argument> arguments) {
    OwnedVariant result;
    invoke(name, kind, arguments, &*result);
    if (V_VT(&*result) != VT_DISPATCH || V_DISPATCH(&*result) == nullptr) {
        throw base::RuntimeError(base::ErrorNumber::typeMismatch, memberText(name) + " gave no object");
    }
    V_VT(&*result) = VT_EMPTY;  // the reference goes to the new owner
    return {V_DISPATCH(&*result), name_ + "." + std::string(name)};
}

void Dispatch::invoke(std::string_view name, unsigned kind, std::span<const Argument> arguments,
                      tagVARIANT* result) {
    const DISPID member = memberId(name);
    CallArguments callArguments(arguments);
    DISPID valuePut = DISPID_PROPERTYPUT;
    const bool isPut = kind == DISPATCH_PROPERTYPUT;
    DISPPARAMS parameters{callArguments.passed().data(), isPut ? &valuePut : nullptr,
                          static_cast<UINT>(arguments.size()), isPut ? 1U : 0U};
    ErrorDetails details;
    UINT badArgument = 0;
    const HRESULT status = object_->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, static_cast<WORD>(kind),
                                           &parameters, result, details.out(), &badArgument);
    if (status == DISP_E_EXCEPTION) {
        details.raise(memberText(name));
    }
    if (FAILED(status)) {
        raiseComError(status, memberText(name));
    }
    callArguments.takeBack();
}

long Dispatch::memberId(std::string_view name) {
    const auto known = memberIds_.find(name);
    if (known != memberIds_.end()) {
        return known->second;
    }
    std::wstring wide = toUtf16(name);
    wchar_t* names = wide.data();
    DISPID member = DISPID_UNKNOWN;
    const HRESULT status = object_->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &member);
    if (FAILED(status)) {
        raiseComError(status, memberText(name));
    }
    memberIds_.emplace(name, member);
    return member;
}

std::string Dispatch::memberText(std::string_view name) const {
    return name_ + "." + std::string(name);
}

}  // namespace platform::windows
