#include "platform/windows/com_values.h"

#include <windows.h>
// windows.h stands first: the automation headers need it.
#include <oleauto.h>

#include <cmath>
#include <limits>
#include <new>

#include "base/checked.h"
#include "base/runtime_error.h"
#include "platform/windows/com_error.h"
#include "platform/windows/utf16.h"

namespace platform::windows {
namespace {

constexpr std::int64_t secondsOfDay = 86400;
constexpr double firstDay = -657434;  // 1 January of the year 100
constexpr double endOfDays = 2958466;

BSTR makeString(std::string_view text) {
    const std::wstring wide = toUtf16(text);
    BSTR string = ::SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
    if (string == nullptr) {
        throw std::bad_alloc();
    }
    return string;
}

class Filler {
  public:
    explicit Filler(VARIANT& variant) : variant_(variant) {}

    void operator()(std::monostate) const { V_VT(&variant_) = VT_EMPTY; }
    void operator()(base::Null) const { V_VT(&variant_) = VT_NULL; }
    void operator()(bool value) const {
        V_VT(&variant_) = VT_BOOL;
        V_BOOL(&variant_) = value ? VARIANT_TRUE : VARIANT_FALSE;
    }
    void operator()(std::int16_t value) const {
        V_VT(&variant_) = VT_I2;
        V_I2(&variant_) = value;
    }
    void operator()(std::int32_t value) const {
        V_VT(&variant_) = VT_I4;
        V_I4(&variant_) = value;
    }
    void operator()(double value) const {
        V_VT(&variant_) = VT_R8;
        V_R8(&variant_) = value;
    }
    void operator()(base::DateTime value) const {
        V_DATE(&variant_) = toAutomationDate(value);
        V_VT(&variant_) = VT_DATE;
    }
    void operator()(const std::string& value) const {
        V_BSTR(&variant_) = makeString(value);
        V_VT(&variant_) = VT_BSTR;
    }

  private:
    VARIANT& variant_;
};

template <class Whole>
base::Variant fromWhole(Whole value) {
    if (value >= Whole{0} ? value <= static_cast<Whole>(std::numeric_limits<std::int32_t>::max())
                          : static_cast<std::int64_t>(value) >= std::numeric_limits<std::int32_t>::min()) {
        return static_cast<std::int32_t>(value);
    }
    return static_cast<double>(value);
}

/// A value that the system turns into a double.
base::Variant asDouble(const VARIANT& variant) {
    VARIANT number = variant;  // plain numbers own nothing
    const HRESULT status = ::VariantChangeType(&number, &number, 0, VT_R8);
    if (FAILED(status)) {
        raiseComError(status, "A number of the automation object cannot be read");
    }
    return V_R8(&number);
}

base::Variant fromReference(const VARIANT& variant) {
    VARIANT reference = variant;  // what it refers to is the object's
    VARIANT value;
    ::VariantInit(&value);
    const HRESULT status = ::VariantCopyInd(&value, &reference);
    if (FAILED(status)) {
        raiseComError(status, "A value of the automation object cannot be read");
    }
    struct Clearer {
        VARIANT& value;
        ~Clearer() { ::VariantClear(&value); }
    } const clearer{value};
    return fromAutomation(value);
}

}  // namespace

double toAutomationDate(base::DateTime date) {
    const std::int64_t day = date.dayNumber();
    const double time = static_cast<double>(date.seconds() - day * secondsOfDay) / secondsOfDay;
    const auto days = static_cast<double>(day);
    return day < 0 ? days - time : days + time;
}

base::DateTime fromAutomationDate(double days) {
    if (!(days > firstDay - 1 && days < endOfDays)) {
        throw base::RuntimeError(base::ErrorNumber::overflow, "Overflow");
    }
    const double day = std::trunc(days);
    const double time = std::abs(days - day) * secondsOfDay;
    const std::int64_t seconds = static_cast<std::int64_t>(day) * secondsOfDay + std::llround(time);
    if (seconds >= static_cast<std::int64_t>(endOfDays) * secondsOfDay) {  // by rounding
        throw base::RuntimeError(base::ErrorNumber::overflow, "Overflow");
    }
    return base::DateTime::fromSeconds(seconds);
}

void toAutomation(const base::Variant& value, VARIANT& variant) {
    std::visit(Filler(variant), value.value());
}

base::Variant fromAutomation(const VARIANT& variant) {
    switch (V_VT(&variant)) {
        case VT_EMPTY:
            return {};
        case VT_NULL:
            return base::Null{};
        case VT_BOOL:
            return V_BOOL(&variant) != VARIANT_FALSE;
        case VT_I1:
            return static_cast<std::int16_t>(V_I1(&variant));
        case VT_UI1:
            return static_cast<std::int16_t>(V_UI1(&variant));
        case VT_I2:
            return static_cast<std::int16_t>(V_I2(&variant));
        case VT_UI2:
            return static_cast<std::int32_t>(V_UI2(&variant));
        case VT_I4:
            return static_cast<std::int32_t>(V_I4(&variant));
        case VT_INT:
            return static_cast<std::int32_t>(V_INT(&variant));
        case VT_UI4:
            return fromWhole(static_cast<std::int64_t>(V_UI4(&variant)));
        case VT_UINT:
            return fromWhole(static_cast<std::int64_t>(V_UINT(&variant)));
        case VT_I8:
            return fromWhole(static_cast<std::int64_t>(V_I8(&variant)));
        case VT_UI8:
            return fromWhole(static_cast<std::uint64_t>(V_UI8(&variant)));
        case VT_R8:
            return V_R8(&variant);
        case VT_R4:
        case VT_CY:
        case VT_DECIMAL:
            return asDouble(variant);
        case VT_DATE:
            return fromAutomationDate(V_DATE(&variant));
        case VT_BSTR:
            return toUtf8({V_BSTR(&variant), ::SysStringLen(V_BSTR(&variant))});
        default:
            break;
    }
    if ((V_VT(&variant) & VT_BYREF) != 0) {
        return fromReference(variant);
    }
    throw base::RuntimeError(base::ErrorNumber::typeMismatch, "Type mismatch");
}

}  // namespace platform::windows
