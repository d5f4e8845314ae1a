#include "windows/com/counted_object.h"

namespace com_tests {
namespace {

using com_server::Call;
using com_server::Refusal;
using com_server::ServerError;

constexpr HRESULT ownError = static_cast<HRESULT>(0x800A0E78);

/// An array of an object and a text. Takes the reference over.
void giveArray(IDispatch* object, VARIANT& result) {
    SAFEARRAYBOUND bounds{2, 0};
    SAFEARRAY* array = ::SafeArrayCreate(VT_VARIANT, 1, &bounds);
    VARIANT* elements = nullptr;
    ::SafeArrayAccessData(array, reinterpret_cast<void**>(&elements));
    V_VT(&elements[0]) = VT_DISPATCH;
    V_DISPATCH(&elements[0]) = object;
    V_VT(&elements[1]) = VT_BSTR;
    V_BSTR(&elements[1]) = ::SysAllocString(L"element");
    ::SafeArrayUnaccessData(array);
    V_VT(&result) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(&result) = array;
}

}  // namespace

CountedObject::CountedObject(bool hasChild) : child_(hasChild ? std::make_unique<CountedObject>() : nullptr) {
    texts();
    objects();
    failures();
}

ULONG CountedObject::AddRef() {
    ++everReferred_;
    return static_cast<ULONG>(++references_);
}

ULONG CountedObject::Release() {
    return static_cast<ULONG>(--references_);
}

HRESULT CountedObject::Invoke(DISPID member, REFIID id, LCID locale, WORD flags, DISPPARAMS* parameters,
                              VARIANT* result, EXCEPINFO* details, UINT* badArgument) {
    const HRESULT status =
        ServerObject::Invoke(member, id, locale, flags, parameters, result, details, badArgument);
    if (status == DISP_E_EXCEPTION && details != nullptr) {
        details->bstrSource = ::SysAllocString(L"the counted object");
        details->bstrHelpFile = ::SysAllocString(L"counted.hlp");
    }
    return status;
}

void CountedObject::texts() {
    method(L"Answer", {{VT_BSTR}}, [](Call& call) { call.give(L"An answer to " + call.text(0)); });
    method(L"Lengthen", {{VT_BYREF | VT_BSTR}}, [](Call& call) {
        ::SysReAllocString(V_BSTRREF(call.arguments[0]), (call.text(0) + L" and much more").c_str());
    });
    method(L"Fill", {{VT_BYREF | VT_VARIANT}}, [](Call& call) {
        V_BSTR(V_VARIANTREF(call.arguments[0])) = ::SysAllocString(L"filled");
        V_VT(V_VARIANTREF(call.arguments[0])) = VT_BSTR;
    });
}

void CountedObject::objects() {
    readable(L"Child", {}, [this](Call& call) { call.give(child_->referred()); });
    method(L"GiveChild", {}, [this](Call& call) { call.give(child_->referred()); });
    method(L"GiveChildByReference", {}, [this](Call& call) {
        static IDispatch* kept = nullptr;  // as in a server's own variable, which stays the server's
        kept = child_.get();
        V_VT(call.result) = VT_BYREF | VT_DISPATCH;
        V_DISPATCHREF(call.result) = &kept;
    });
    method(L"GiveArray", {}, [this](Call& call) { giveArray(child_->referred(), *call.result); });
    method(L"FillWithChild", {{VT_BYREF | VT_VARIANT}}, [this](Call& call) {
        V_DISPATCH(V_VARIANTREF(call.arguments[0])) = child_->referred();
        V_VT(V_VARIANTREF(call.arguments[0])) = VT_DISPATCH;
    });
    method(L"Take", {{VT_DISPATCH}, {VT_BSTR, true}}, [](Call&) {});
}

void CountedObject::failures() {
    method(L"Fail", {{VT_BSTR}}, [](Call&) { throw ServerError{ownError, L"It fails"}; });
    method(L"FailLate", {}, [](Call&) { throw ServerError{ownError, L"It fails when asked", true}; });
    method(L"FailWithObject", {{VT_DISPATCH}}, [](Call&) { throw ServerError{ownError, L"It fails"}; });
    method(L"GiveChildAndFail", {}, [this](Call& call) {
        call.give(child_->referred());
        throw ServerError{ownError, L"It fails after all"};
    });
    method(L"GiveTextAndRefuse", {}, [](Call& call) {
        call.give(std::wstring(L"text"));
        throw Refusal{E_OUTOFMEMORY};
    });
}

}  // namespace com_tests
