#include "windows/plugin/probe.h"

#include <map>

namespace test_plugin {
namespace {

using com_server::Call;
using com_server::Refusal;
using com_server::ServerError;

constexpr HRESULT ownError = static_cast<HRESULT>(0x800A0E78);
constexpr HRESULT wideError = static_cast<HRESULT>(0x80040E14);

/// A value of the type that the caller names.
void give(Call& call) {
    static const std::map<std::wstring, std::pair<VARTYPE, const wchar_t*>> types = {
        {L"I1", {VT_I1, L"-7"}},
        {L"UI1", {VT_UI1, L"200"}},
        {L"I2", {VT_I2, L"-300"}},
        {L"UI2", {VT_UI2, L"60000"}},
        {L"I4", {VT_I4, L"-70000"}},
        {L"UI4", {VT_UI4, L"4000000000"}},
        {L"INT", {VT_INT, L"12"}},
        {L"I8", {VT_I8, L"-5000000000"}},
        {L"SmallI8", {VT_I8, L"-42"}},
        {L"UI8", {VT_UI8, L"18000000000000000000"}},
        {L"R4", {VT_R4, L"0.5"}},
        {L"R8", {VT_R8, L"2.25"}},
        {L"CY", {VT_CY, L"12.3456"}},
        {L"DECIMAL", {VT_DECIMAL, L"123456789.5"}},
        {L"HALVES",
         {VT_BSTR,
          L"a\xD83C"
          L"b\xDCE9"}},
        {L"BSTR", {VT_BSTR, L"na\x00EFve \U0001F30A"}}};
    const std::wstring name = call.text(0);
    if (name == L"NULL") {
        V_VT(call.result) = VT_NULL;
    } else if (name == L"BOOL") {
        call.give(true);
    } else if (name == L"DATE") {
        V_DATE(call.result) = -1.25;  // 29 December 1899, six in the morning
        V_VT(call.result) = VT_DATE;
    } else if (name == L"OBJECT") {
        call.give(static_cast<IDispatch*>(new Probe));
    } else if (name == L"BYREF") {
        static LONG kept = 31;
        V_I4REF(call.result) = &kept;
        V_VT(call.result) = VT_BYREF | VT_I4;
    } else if (name != L"EMPTY") {
        const auto& [type, text] = types.at(name);
        call.give(std::wstring(text));
        const HRESULT status = ::VariantChangeTypeEx(call.result, call.result, LOCALE_INVARIANT, 0, type);
        if (FAILED(status)) {
            throw Refusal{status};
        }
    }
}

/// Changes a variable in a way that shows which type it came with.
void change(Call& call) {
    VARIANT& variable = *call.arguments.at(0);
    switch (V_VT(&variable)) {
        case VT_BYREF | VT_BOOL:
            *V_BOOLREF(&variable) = static_cast<VARIANT_BOOL>(~*V_BOOLREF(&variable));
            break;
        case VT_BYREF | VT_I2:
            ++*V_I2REF(&variable);
            break;
        case VT_BYREF | VT_I4:
            ++*V_I4REF(&variable);
            break;
        case VT_BYREF | VT_R8:
            *V_R8REF(&variable) /= 2;
            break;
        case VT_BYREF | VT_DATE:
            *V_DATEREF(&variable) += 1;
            break;
        case VT_BYREF | VT_BSTR: {
            const std::wstring longer = call.text(0) + L" and more, so that it needs a new place";
            ::SysReAllocStringLen(V_BSTRREF(&variable), longer.data(), static_cast<UINT>(longer.size()));
            break;
        }
        case VT_BYREF | VT_VARIANT:
            V_BSTR(V_VARIANTREF(&variable)) = ::SysAllocString(L"filled");
            V_VT(V_VARIANTREF(&variable)) = VT_BSTR;
            break;
        default:
            throw Refusal{DISP_E_TYPEMISMATCH};
    }
}

}  // namespace

Probe::Probe() {
    method(L"TypeOf", {{}}, [](Call& call) { call.give(LONG{V_VT(call.arguments.at(0))}); });
    method(L"Join", {{}, {}, {}}, [](Call& call) {
        call.give(std::to_wstring(call.number(0, 0)) + L" " + std::to_wstring(call.number(1, 0)) + L" " +
                  std::to_wstring(call.number(2, 0)));
    });
    method(L"Give", {{VT_BSTR}}, give);
    method(L"CountUnits", {{VT_BSTR}}, [](Call& call) { call.give(static_cast<LONG>(call.text(0).size())); });
    method(L"Change", {{}}, change);
    readable(L"Weight", {}, [](Call& call) { call.give(LONG{81}); });
    failures();
}

void Probe::failures() {
    method(L"FailAsControl", {}, [](Call&) { throw ServerError{ownError, L"The probe is clos\x00E9"}; });
    method(L"FailWide", {}, [](Call&) { throw ServerError{wideError, L"The probe cannot read that"}; });
    method(L"FailNumbered", {}, [](Call&) { throw ServerError{0, L"The probe counts", false, 1004}; });
    method(L"FailLate", {}, [](Call&) { throw ServerError{ownError, L"The probe was asked", true}; });
    method(L"FailSilently", {}, [](Call&) { throw ServerError{E_ACCESSDENIED, L""}; });
    method(L"Refuse", {}, [](Call&) { throw Refusal{E_OUTOFMEMORY}; });
}

}  // namespace test_plugin
