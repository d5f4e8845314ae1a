#include "platform/jet/parameter_value.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/runtime_error.h"

namespace {

using namespace platform::jet;
using ::testing::HasSubstr;

Literal text(std::string_view value) {
    return {Literal::Kind::text, value};
}

Literal number(std::string_view value) {
    return {Literal::Kind::number, value};
}

ParameterValue valueOf(const Literal& literal, ColumnType type) {
    return parameterValue(literal, {type, "t.c"});
}

TEST(ParameterValueOf, ADateHasOneFormInADateColumn) {
    const ParameterValue stored = std::string("2026-11-16 01:47:03");
    EXPECT_EQ(valueOf(text("16 Nov 2026 01:47:03"), ColumnType::date), stored);
    EXPECT_EQ(valueOf(text("2026-11-16 01:47:03"), ColumnType::date), stored);
}

TEST(ParameterValueOf, ATextThatReadsAsADateIsUntouchedInATextColumn) {
    for (const ColumnType type : {ColumnType::text, ColumnType::number, ColumnType::unknown}) {
        EXPECT_EQ(valueOf(text("16 Nov 2026"), type), ParameterValue(std::string_view("16 Nov 2026")));
    }
}

TEST(ParameterValueOf, ATextThatIsNoDateRaisesInADateColumn) {
    try {
        valueOf(text("soon"), ColumnType::date);
        FAIL() << "nothing was raised";
    } catch (const base::RuntimeError& error) {
        EXPECT_EQ(error.number(), static_cast<int>(base::ErrorNumber::typeMismatch));
        EXPECT_THAT(error.description(), HasSubstr("the column t.c holds dates, and 'soon' does not"));
    }
}

TEST(ParameterValueOf, NumbersAreWholeWhereTheyCanBe) {
    EXPECT_EQ(valueOf(number("-12"), ColumnType::number), ParameterValue(std::int64_t{-12}));
    EXPECT_EQ(valueOf(number("1.5"), ColumnType::number), ParameterValue(1.5));
    EXPECT_EQ(valueOf(number(".5"), ColumnType::unknown), ParameterValue(0.5));
    EXPECT_EQ(valueOf(number("1e3"), ColumnType::text), ParameterValue(1000.0));
}

TEST(ParameterValueOf, AnyNumberButZeroIsTrueInAYesNoColumn) {
    EXPECT_EQ(valueOf(number("-1"), ColumnType::boolean), ParameterValue(std::int64_t{1}));
    EXPECT_EQ(valueOf(number("0.5"), ColumnType::boolean), ParameterValue(std::int64_t{1}));
    EXPECT_EQ(valueOf(number("0"), ColumnType::boolean), ParameterValue(std::int64_t{0}));
}

}  // namespace
