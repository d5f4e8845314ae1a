#include "windows/com_server/server_object.h"

#include <algorithm>
#include <exception>

namespace com_server {
namespace {

bool isLeftOut(const VARIANT& argument) {
    return V_VT(&argument) == VT_ERROR && V_ERROR(&argument) == DISP_E_PARAMNOTFOUND;
}

BSTR makeString(std::wstring_view text) {
    return ::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

/// Bare function pointers carry no context: the description of the one error that is told late.
std::wstring lateDescription;  // NOLINT(cert-err58-cpp)

HRESULT STDMETHODCALLTYPE fillInLate(EXCEPINFO* details) {
    details->bstrDescription = makeString(lateDescription);
    return S_OK;
}

HRESULT tell(const ServerError& error, EXCEPINFO* details) {
    if (details == nullptr) {
        return error.code;
    }
    *details = {};
    details->wCode = error.number;
    details->scode = error.number != 0 ? 0 : error.code;
    if (error.deferred) {
        lateDescription = error.description;
        details->pfnDeferredFillIn = fillInLate;
    } else if (!error.description.empty()) {
        details->bstrDescription = makeString(error.description);
    }
    return DISP_E_EXCEPTION;
}

}  // namespace

std::wstring Call::text(std::size_t argument) const {
    const VARIANT* value = arguments.at(argument);
    if (value == nullptr) {
        return {};
    }
    BSTR string = (V_VT(value) & VT_BYREF) != 0 ? *V_BSTRREF(value) : V_BSTR(value);
    return {string, ::SysStringLen(string)};
}

LONG Call::number(std::size_t argument, LONG otherwise) const {
    const VARIANT* value = arguments.at(argument);
    return value == nullptr                    ? otherwise
           : V_VT(value) == (VT_BYREF | VT_I2) ? *V_I2REF(value)
           : V_VT(value) == (VT_BYREF | VT_I4) ? *V_I4REF(value)
           : V_VT(value) == VT_I2              ? V_I2(value)
                                               : V_I4(value);
}

void Call::give(const std::wstring& text) const {
    if (result != nullptr) {
        V_BSTR(result) = makeString(text);
        V_VT(result) = VT_BSTR;
    }
}

void Call::give(LONG number) const {
    if (result != nullptr) {
        V_I4(result) = number;
        V_VT(result) = VT_I4;
    }
}

void Call::give(SHORT number) const {
    if (result != nullptr) {
        V_I2(result) = number;
        V_VT(result) = VT_I2;
    }
}

void Call::give(bool flag) const {
    if (result != nullptr) {
        V_BOOL(result) = flag ? VARIANT_TRUE : VARIANT_FALSE;
        V_VT(result) = VT_BOOL;
    }
}

void Call::give(IDispatch* object) const {
    if (result == nullptr) {
        object->Release();
        return;
    }
    V_DISPATCH(result) = object;
    V_VT(result) = VT_DISPATCH;
}

HRESULT ServerObject::QueryInterface(REFIID id, void** object) {
    if (id != IID_IUnknown && id != IID_IDispatch) {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    *object = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
}

ULONG ServerObject::AddRef() {
    return ++references_;
}

ULONG ServerObject::Release() {
    const ULONG left = --references_;
    if (left == 0) {
        delete this;
    }
    return left;
}

HRESULT ServerObject::GetTypeInfoCount(UINT* count) {
    *count = 0;
    return S_OK;
}

HRESULT ServerObject::GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** info) {
    *info = nullptr;
    return DISP_E_BADINDEX;
}

HRESULT ServerObject::GetIDsOfNames(REFIID id, LPOLESTR* names, UINT count, LCID /*locale*/,
                                    DISPID* members) {
    if (id != IID_NULL || count != 1) {
        return DISP_E_UNKNOWNNAME;
    }
    const std::wstring name = names[0];
    const auto found = std::find_if(members_.begin(), members_.end(), [&name](const Member& member) {
        return ::_wcsicmp(member.name.c_str(), name.c_str()) == 0;
    });
    if (found == members_.end()) {
        members[0] = DISPID_UNKNOWN;
        return DISP_E_UNKNOWNNAME;
    }
    members[0] = static_cast<DISPID>(found - members_.begin()) + 1;
    return S_OK;
}

HRESULT ServerObject::Invoke(DISPID member, REFIID id, LCID /*locale*/, WORD flags, DISPPARAMS* parameters,
                             VARIANT* result, EXCEPINFO* details, UINT* badArgument) {
    if (id != IID_NULL) {
        return DISP_E_UNKNOWNINTERFACE;
    }
    try {
        const Member& called = find(member, flags);
        Call call = read(called, *parameters, result);
        used(called.name, called.kind, call);
        called.action(call);
        return S_OK;
    } catch (const Refusal& refusal) {
        if (badArgument != nullptr) {
            *badArgument = refusal.argument;
        }
        return refusal.status;
    } catch (const ServerError& error) {
        return tell(error, details);
    } catch (const std::exception& error) {
        return tell({E_UNEXPECTED, utf16(error.what())}, details);
    }
}

void ServerObject::method(const std::wstring& name, std::vector<Parameter> parameters, Action action) {
    members_.push_back({name, DISPATCH_METHOD, std::move(parameters), std::move(action)});
}

void ServerObject::readable(const std::wstring& name, std::vector<Parameter> parameters, Action action) {
    members_.push_back({name, DISPATCH_PROPERTYGET, std::move(parameters), std::move(action)});
}

void ServerObject::writable(const std::wstring& name, VARTYPE type, Action action) {
    members_.push_back({name, DISPATCH_PROPERTYPUT, {{type}}, std::move(action)});
}

/// A caller that wants a result may ask for a method or a property in one; nobody may mix in a put.
const ServerObject::Member& ServerObject::find(DISPID member, WORD flags) const {
    if (member < 1 || static_cast<std::size_t>(member) > members_.size()) {
        throw Refusal{DISP_E_MEMBERNOTFOUND};
    }
    const std::wstring& name = members_[static_cast<std::size_t>(member) - 1].name;
    const bool isRead = (flags & ~(DISPATCH_METHOD | DISPATCH_PROPERTYGET)) == 0;
    for (const Member& candidate : members_) {
        if (candidate.name == name && (isRead ? (flags & candidate.kind) != 0 : flags == candidate.kind)) {
            return candidate;
        }
    }
    throw Refusal{DISP_E_MEMBERNOTFOUND};
}

Call ServerObject::read(const Member& member, const DISPPARAMS& parameters, VARIANT* result) {
    const bool isPut = member.kind == DISPATCH_PROPERTYPUT;
    if (parameters.cNamedArgs != (isPut ? 1U : 0U)) {
        throw Refusal{DISP_E_NONAMEDARGS};
    }
    if (isPut && parameters.rgdispidNamedArgs[0] != DISPID_PROPERTYPUT) {
        throw Refusal{DISP_E_PARAMNOTFOUND};
    }
    if (parameters.cArgs > member.parameters.size()) {
        throw Refusal{DISP_E_BADPARAMCOUNT};
    }
    Call call;
    call.result = result;
    for (std::size_t i = 0; i < member.parameters.size(); ++i) {
        const Parameter& expected = member.parameters[i];
        const std::size_t place = parameters.cArgs - 1 - i;
        if (i >= parameters.cArgs || isLeftOut(parameters.rgvarg[place])) {
            if (!expected.isOptional) {
                throw Refusal{i >= parameters.cArgs ? DISP_E_BADPARAMCOUNT : DISP_E_PARAMNOTOPTIONAL};
            }
            call.arguments.push_back(nullptr);
        } else if (expected.type != VT_VARIANT && V_VT(&parameters.rgvarg[place]) != expected.type) {
            throw Refusal{DISP_E_TYPEMISMATCH, static_cast<UINT>(place)};
        } else {
            call.arguments.push_back(&parameters.rgvarg[place]);
        }
    }
    return call;
}

std::string utf8(std::wstring_view text) {
    const int wide = static_cast<int>(text.size());
    std::string narrow(text.size() * 3, '\0');
    narrow.resize(static_cast<std::size_t>(::WideCharToMultiByte(
        CP_UTF8, 0, text.data(), wide, narrow.data(), static_cast<int>(narrow.size()), nullptr, nullptr)));
    return narrow;
}

std::wstring utf16(std::string_view text) {
    std::wstring wide(text.size(), L'\0');
    wide.resize(static_cast<std::size_t>(::MultiByteToWideChar(
        CP_UTF8, 0, text.data(), static_cast<int>(text.size()), wide.data(), static_cast<int>(wide.size()))));
    return wide;
}

}  // namespace com_server
