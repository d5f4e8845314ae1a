#include "platform/windows/com_values.h"

#include <gtest/gtest.h>
#include <windows.h>
// windows.h stands before the automation headers, which need it.
#include <oleauto.h>

#include "base/runtime_error.h"

namespace {

using namespace platform::windows;

class OneWay : public testing::TestWithParam<std::pair<const char*, double>> {};

TEST_P(OneWay, DatesAreDaysWithTheTimeAwayFromZero) {
    const auto& [text, days] = GetParam();
    const base::DateTime date = *base::DateTime::parse(text);
    EXPECT_DOUBLE_EQ(toAutomationDate(date), days);
    EXPECT_EQ(fromAutomationDate(days).text(), date.text());
}

INSTANTIATE_TEST_SUITE_P(
    ComValues, OneWay,
    testing::Values(std::pair{"1899-12-30 00:00:00", 0.0}, std::pair{"1899-12-30 06:00:00", 0.25},
                    std::pair{"1899-12-29 18:00:00", -1.75}, std::pair{"1899-12-29 00:00:00", -1.0},
                    std::pair{"2002-03-05 12:00:00", 37320.5}, std::pair{"9999-12-31 00:00:00", 2958465.0}));

TEST(ComValues, RoundADateToTheNearestSecond) {
    EXPECT_EQ(fromAutomationDate(37320.379907407).text(), "2002-03-05 09:07:04");
}

TEST(ComValues, RaiseForADateBeyondTheCalendar) {
    EXPECT_THROW(static_cast<void>(fromAutomationDate(2958466)), base::RuntimeError);
    EXPECT_THROW(static_cast<void>(fromAutomationDate(-657435)), base::RuntimeError);
    EXPECT_THROW(static_cast<void>(fromAutomationDate(std::numeric_limits<double>::quiet_NaN())),
                 base::RuntimeError);
}

TEST(ComValues, RaiseForADateThatRoundsBeyondTheCalendar) {
    EXPECT_EQ(fromAutomationDate(2958465.99999).text(), "9999-12-31 23:59:59");
    try {
        static_cast<void>(fromAutomationDate(2958465.9999999));
        FAIL() << "no error";
    } catch (const base::RuntimeError& error) {
        EXPECT_EQ(error.number(), static_cast<int>(base::ErrorNumber::overflow));
        EXPECT_EQ(error.description(), "Overflow");
    }
}

TEST(ComValues, KeepATextWithANulInIt) {
    VARIANT variant;
    ::VariantInit(&variant);
    toAutomation(std::string("a\0b", 3), variant);
    EXPECT_EQ(::SysStringLen(V_BSTR(&variant)), 3U);
    EXPECT_EQ(fromAutomation(variant), base::Variant(std::string("a\0b", 3)));
    ::VariantClear(&variant);
}

TEST(ComValues, ReadAMissingTextAsAnEmptyOne) {
    VARIANT variant;
    ::VariantInit(&variant);
    V_VT(&variant) = VT_BSTR;
    V_BSTR(&variant) = nullptr;
    EXPECT_EQ(fromAutomation(variant), base::Variant(""));
}

TEST(ComValues, RefuseWhatIsNoPlainValue) {
    VARIANT variant;
    ::VariantInit(&variant);
    V_VT(&variant) = VT_ERROR;
    V_ERROR(&variant) = DISP_E_PARAMNOTFOUND;
    EXPECT_THROW(static_cast<void>(fromAutomation(variant)), base::RuntimeError);
}

}  // namespace
