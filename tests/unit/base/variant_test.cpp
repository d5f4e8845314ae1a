#include "base/variant.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "base/runtime_error.h"

namespace {

using base::DateTime;
using base::Variant;

constexpr std::int16_t small = 7;
const DateTime noon = *DateTime::parse("1900-01-01 12:00:00");  // 2.5 days after the zero date

std::string errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const base::RuntimeError& error) {
        return std::to_string(error.number()) + " " + error.description();
    }
    return "none";
}

/// What every conversion of the value says.
std::vector<std::string> everyConversion(const Variant& value) {
    return {errorOf([&] { static_cast<void>(value.toBool()); }),
            errorOf([&] { static_cast<void>(value.toInt16()); }),
            errorOf([&] { static_cast<void>(value.toInt32()); }),
            errorOf([&] { static_cast<void>(value.toDouble()); }),
            errorOf([&] { static_cast<void>(value.toDate()); }),
            errorOf([&] { static_cast<void>(value.toText()); })};
}

TEST(Variant, EmptyIsNothingInEveryType) {
    const Variant empty;
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_FALSE(empty.isNull());
    EXPECT_FALSE(empty.toBool());
    EXPECT_EQ(empty.toInt16(), 0);
    EXPECT_EQ(empty.toInt32(), 0);
    EXPECT_EQ(empty.toDouble(), 0);
    EXPECT_TRUE(empty.toDate().isZero());
    EXPECT_EQ(empty.toText(), "");
}

TEST(Variant, NullConvertsToNothing) {
    const Variant null = base::Null{};
    EXPECT_TRUE(null.isNull());
    EXPECT_FALSE(null.isEmpty());
    EXPECT_EQ(everyConversion(null), std::vector<std::string>(6, "94 Invalid use of Null"));
}

TEST(Variant, TrueIsMinusOneAsANumber) {
    EXPECT_EQ(Variant(true).toInt16(), -1);
    EXPECT_EQ(Variant(true).toDouble(), -1.0);
    EXPECT_EQ(Variant(false).toInt32(), 0);
    EXPECT_EQ(Variant(true).toText(), "True");
    EXPECT_EQ(Variant(false).toText(), "False");
}

TEST(Variant, EveryNumberButZeroIsTrue) {
    EXPECT_TRUE(Variant(small).toBool());
    EXPECT_TRUE(Variant(-0.1).toBool());
    EXPECT_FALSE(Variant(0.0).toBool());
    EXPECT_TRUE(Variant("TRUE").toBool());
    EXPECT_FALSE(Variant("False").toBool());
    EXPECT_TRUE(Variant("1").toBool());
    EXPECT_FALSE(Variant("0").toBool());
    EXPECT_EQ(errorOf([] { static_cast<void>(Variant("yes").toBool()); }), "13 Type mismatch");
}

TEST(Variant, RoundsHalvesToEven) {
    EXPECT_EQ(Variant(2.5).toInt32(), 2);
    EXPECT_EQ(Variant(3.5).toInt32(), 4);
    EXPECT_EQ(Variant(-2.5).toInt16(), -2);
    EXPECT_EQ(Variant("1.5").toInt16(), 2);
    EXPECT_EQ(Variant("0.5").toInt32(), 0);
}

TEST(Variant, RaisesOverflowForWhatDoesNotFit) {
    EXPECT_EQ(Variant(std::int32_t{32767}).toInt16(), 32767);
    EXPECT_EQ(errorOf([] { static_cast<void>(Variant(std::int32_t{32768}).toInt16()); }), "6 Overflow");
    EXPECT_EQ(errorOf([] { static_cast<void>(Variant("-32769").toInt16()); }), "6 Overflow");
    EXPECT_EQ(errorOf([] { static_cast<void>(Variant(2147483648.0).toInt32()); }), "6 Overflow");
    EXPECT_EQ(errorOf([] { static_cast<void>(Variant(1e300).toDate()); }), "6 Overflow");
    EXPECT_EQ(errorOf([] { static_cast<void>(Variant("1e999").toDouble()); }), "6 Overflow");
}

TEST(Variant, ReadsNumbersFromText) {
    EXPECT_EQ(Variant(" 42 ").toInt32(), 42);
    EXPECT_EQ(Variant("+42").toInt16(), 42);
    EXPECT_DOUBLE_EQ(Variant("-1.5e2").toDouble(), -150);
    EXPECT_DOUBLE_EQ(Variant(".5").toDouble(), 0.5);
    EXPECT_DOUBLE_EQ(Variant("5.").toDouble(), 5);
}

TEST(Variant, RaisesTypeMismatchForTextThatIsNoNumber) {
    for (const char* text :
         {"", " ", "x", "1x", "1 2", "+-1", "--1", "1,5", "inf", "nan", "0x10", "e5", ".", "-"}) {
        EXPECT_EQ(errorOf([&] { static_cast<void>(Variant(text).toDouble()); }), "13 Type mismatch") << text;
        EXPECT_FALSE(Variant(text).isNumeric()) << text;
    }
}

TEST(Variant, TellsWhatIsNumeric) {
    EXPECT_TRUE(Variant().isNumeric());
    EXPECT_TRUE(Variant(true).isNumeric());
    EXPECT_TRUE(Variant(small).isNumeric());
    EXPECT_TRUE(Variant(0.5).isNumeric());
    EXPECT_TRUE(Variant("1e3").isNumeric());
    EXPECT_FALSE(Variant(base::Null{}).isNumeric());
    EXPECT_FALSE(Variant(noon).isNumeric());
    EXPECT_FALSE(Variant("2002-03-05").isNumeric());
}

TEST(Variant, TellsThatATextTooLargeForADoubleIsNotNumeric) {
    EXPECT_FALSE(Variant("1e999").isNumeric());
}

TEST(Variant, ATextTooNearToZeroForADoubleIsZero) {
    for (const char* text : {"1e-400", "-1e-400", "0.5e-99999999999999999999", " +12.5E-999 "}) {
        EXPECT_EQ(Variant(text).toDouble(), 0) << text;
        EXPECT_EQ(Variant(text).toInt32(), 0) << text;
        EXPECT_TRUE(Variant(text).isNumeric()) << text;
    }
}

TEST(Variant, RefusesADayThatNoCalendarHolds) {
    EXPECT_EQ(Variant(-657434.0).toDate().text(), "0100-01-01 00:00:00");
    EXPECT_EQ(Variant(2958465.5).toDate().text(), "9999-12-31 12:00:00");
    for (const double day : {-657434.5, -657435.0, 2958466.0, 2958465.9999999}) {
        EXPECT_EQ(errorOf([&] { static_cast<void>(Variant(day).toDate()); }), "6 Overflow") << day;
    }
    EXPECT_EQ(errorOf([] { static_cast<void>(Variant("2958466").toDate()); }), "6 Overflow");
}

TEST(Variant, TellsWhatIsADate) {
    EXPECT_TRUE(Variant(noon).isDate());
    EXPECT_TRUE(Variant("5/3/2002").isDate());
    EXPECT_FALSE(Variant("").isDate());
    EXPECT_FALSE(Variant("soon").isDate());
    EXPECT_FALSE(Variant(small).isDate());
    EXPECT_FALSE(Variant().isDate());
    EXPECT_FALSE(Variant(base::Null{}).isDate());
}

TEST(Variant, ADateIsItsDaysSinceTheZeroDate) {
    EXPECT_DOUBLE_EQ(Variant(noon).toDouble(), 2.5);
    EXPECT_EQ(Variant(noon).toInt32(), 2);
    EXPECT_EQ(Variant(noon).toText(), "1900-01-01 12:00:00");
    EXPECT_EQ(Variant(2.5).toDate(), noon);
    EXPECT_EQ(Variant("2.5").toDate(), noon);
    EXPECT_EQ(Variant("1 Jan 1900 12:00").toDate(), noon);
    EXPECT_EQ(errorOf([] { static_cast<void>(Variant("soon").toDate()); }), "13 Type mismatch");
}

TEST(Variant, WritesNumbersThatReadBackAsTheSame) {
    EXPECT_EQ(Variant(small).toText(), "7");
    EXPECT_EQ(Variant(std::int32_t{-2147483647}).toText(), "-2147483647");
    EXPECT_EQ(Variant(100.0).toText(), "100");
    EXPECT_EQ(Variant(-0.25).toText(), "-0.25");
    EXPECT_EQ(Variant(47.6).toText(), "47.6");
    for (const double number : {0.1, 1.0 / 3, 1e-7, 123456789.0, 1e15, 5e-324, 1.7976931348623157e308}) {
        EXPECT_EQ(Variant(base::numberText(number)).toDouble(), number);
    }
}

TEST(Variant, ComparesByTypeAndValue) {
    EXPECT_EQ(Variant("a"), Variant(std::string("a")));
    EXPECT_NE(Variant(small), Variant(std::int32_t{7}));
    EXPECT_NE(Variant(), Variant(base::Null{}));
}

}  // namespace
