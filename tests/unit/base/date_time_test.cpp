#include "base/date_time.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "fakes/time_zone.h"

namespace {

using base::DateTime;

std::string read(std::string_view text) {
    const auto date = DateTime::parse(text);
    return date ? date->text() : "no date";
}

TEST(DateTime, ReadsTheDefaultForm) {
    EXPECT_EQ(read("2002-03-05 09:07:04"), "2002-03-05 09:07:04");
    EXPECT_EQ(read("2002-03-05 09:07"), "2002-03-05 09:07:00");
    EXPECT_EQ(read("2002-03-05 9:07"), "2002-03-05 09:07:00");
    EXPECT_EQ(read("2002-03-05"), "2002-03-05 00:00:00");
}

TEST(DateTime, ReadsEnglishMonthNamesWithoutRegardToCase) {
    EXPECT_EQ(read("16 Nov 2026 01:47:03"), "2026-11-16 01:47:03");
    EXPECT_EQ(read("5 mar 2002 09:07"), "2002-03-05 09:07:00");
    EXPECT_EQ(read("05 DEC 2002"), "2002-12-05 00:00:00");
}

TEST(DateTime, ReadsSlashesDayFirst) {
    EXPECT_EQ(read("5/3/2002 9:07"), "2002-03-05 09:07:00");
    EXPECT_EQ(read("05/03/2002 09:07:04"), "2002-03-05 09:07:04");
    EXPECT_EQ(read("5/3/2002"), "2002-03-05 00:00:00");
}

TEST(DateTime, ReadsSlashesMonthFirstWhereOnlyThatIsPossible) {
    EXPECT_EQ(read("3/25/2002 9:07:04"), "2002-03-25 09:07:04");
    EXPECT_EQ(read("25/3/2002"), "2002-03-25 00:00:00");
    EXPECT_EQ(read("13/13/2002"), "no date");
}

TEST(DateTime, ReadsRfc3339AsLocalTime) {
    const fakes::TimeZone zone("TST-3");  // three hours east of Greenwich
    EXPECT_EQ(read("2002-03-05T09:07:04Z"), "2002-03-05 12:07:04");
    EXPECT_EQ(read("2002-03-05t09:07:04z"), "2002-03-05 12:07:04");
    EXPECT_EQ(read("2002-03-05T22:30:00.987+01:00"), "2002-03-06 00:30:00");
    EXPECT_EQ(read("2002-03-05 09:07:04-02:30"), "2002-03-05 14:37:04");
    EXPECT_EQ(read("2002-03-05T09:07:04"), "2002-03-05 09:07:04");
}

TEST(DateTime, ReadsRfc3339FarAwayAsLocalTime) {
    const fakes::TimeZone zone("TST-3");
    EXPECT_EQ(read("1901-02-28T22:00:00Z"), "1901-03-01 01:00:00");
    EXPECT_EQ(read("1969-12-31T23:59:59Z"), "1970-01-01 02:59:59");
    EXPECT_EQ(read("2038-01-19T03:14:08Z"), "2038-01-19 06:14:08");
    EXPECT_EQ(read("9998-12-31T23:00:00Z"), "9999-01-01 02:00:00");
    EXPECT_EQ(read("9999-12-31T23:00:00Z"), "no date");
}

TEST(DateTime, IgnoresBlanksAroundTheText) {
    EXPECT_EQ(read("  2002-03-05 "), "2002-03-05 00:00:00");
}

TEST(DateTime, RefusesWhatIsNoDate) {
    for (const char* text : {"",
                             " ",
                             "soon",
                             "12:30",
                             "42",
                             "2002",
                             "2002-03",
                             "2002-3-5",
                             "02-03-05",
                             "2002-02-29",
                             "2002-13-01",
                             "2002-03-05 24:00:00",
                             "2002-03-05 09:60",
                             "2002-03-05 09:07:60",
                             "2002-03-05x",
                             "2002-03-05 09:07:04 more",
                             "2002-03-05 09:07:04.",
                             "2002-03-05 09:07.5",
                             "2002-03-05T09:07:04.Z",
                             "30 Feb 2002",
                             "5 Foo 2002",
                             "5 Mar 02",
                             "5/3/02",
                             "0/3/2002",
                             "5/0/2002",
                             "0099-01-01",
                             "2002-03-05T09:07:04+25:00",
                             "2002-03-05T09:07:04+0100"}) {
        EXPECT_EQ(read(text), "no date") << text;
    }
}

TEST(DateTime, KnowsLeapYears) {
    EXPECT_EQ(read("2000-02-29"), "2000-02-29 00:00:00");
    EXPECT_EQ(read("1900-02-29"), "no date");
    EXPECT_EQ(read("2024-02-29"), "2024-02-29 00:00:00");
}

TEST(DateTime, RefusesPartsOutOfRange) {
    EXPECT_FALSE(DateTime::fromCivil({2002, 2, 30}).has_value());
    EXPECT_FALSE(DateTime::fromCivil({2002, 0, 1}).has_value());
    EXPECT_FALSE(DateTime::fromCivil({2002, -1, 1}).has_value());
    EXPECT_FALSE(DateTime::fromCivil({2002, 1, 257}).has_value());
    EXPECT_FALSE(DateTime::fromCivil({2002, 257, 1}).has_value());
    EXPECT_FALSE(DateTime::fromCivil({2002, 1, 1, 24, 0, 0}).has_value());
    EXPECT_FALSE(DateTime::fromCivil({2002, 1, 1, 0, 0, -1}).has_value());
    EXPECT_FALSE(DateTime::fromCivil({10000, 1, 1}).has_value());
    EXPECT_FALSE(DateTime::fromCivil({99, 12, 31}).has_value());
}

TEST(DateTime, CountsFromTheZeroDate) {
    EXPECT_TRUE(DateTime().isZero());
    EXPECT_EQ(DateTime().text(), "1899-12-30 00:00:00");
    EXPECT_EQ(DateTime::fromSeconds(86400 + 61).text(), "1899-12-31 00:01:01");
    EXPECT_EQ(DateTime::parse("1899-12-30 00:00:00")->seconds(), 0);
}

TEST(DateTime, HoldsMomentsBeforeTheZeroDate) {
    const DateTime before = DateTime::fromSeconds(-1);
    EXPECT_EQ(before.text(), "1899-12-29 23:59:59");
    EXPECT_EQ(before.dayNumber(), -1);
    EXPECT_EQ(DateTime::fromSeconds(-86400).dayNumber(), -1);
    EXPECT_EQ(DateTime::fromSeconds(-86401).dayNumber(), -2);
    EXPECT_EQ(DateTime::parse("0100-01-01")->text(), "0100-01-01 00:00:00");
    EXPECT_EQ(DateTime::parse("9999-12-31 23:59:59")->text(), "9999-12-31 23:59:59");
}

TEST(DateTime, CalendarDaysCountMidnightsNotHours) {
    const auto days = [](const char* from, const char* to) {
        return DateTime::parse(to)->dayNumber() - DateTime::parse(from)->dayNumber();
    };
    EXPECT_EQ(days("2002-03-05 23:59:00", "2002-03-06 00:01:00"), 1);
    EXPECT_EQ(days("2002-03-05 00:00:00", "2002-03-05 23:59:59"), 0);
    EXPECT_EQ(days("2002-03-06 00:01:00", "2002-03-05 23:59:00"), -1);
    EXPECT_EQ(days("2000-02-28", "2000-03-01"), 2);
}

TEST(DateTime, WritesEveryTextForm) {
    const DateTime moment = *DateTime::parse("2002-03-05 09:07:04");
    EXPECT_EQ(moment.text(), "2002-03-05 09:07:04");
    EXPECT_EQ(moment.longText(), "05 Mar 2002 09:07:04");
    EXPECT_EQ(moment.timeText(), "09:07:04");
}

TEST(DateTime, ReadsEveryFormThatItWrites) {
    for (int month = 1; month <= 12; ++month) {
        const DateTime moment = *DateTime::fromCivil({2026, month, 28, 23, 1, 9});
        EXPECT_EQ(DateTime::parse(moment.text()), moment);
        EXPECT_EQ(DateTime::parse(moment.longText()), moment);
    }
    EXPECT_EQ(base::monthName(1), "Jan");
    EXPECT_EQ(base::monthName(12), "Dec");
}

TEST(DateTime, ComparesByMoment) {
    EXPECT_LT(*DateTime::parse("2002-03-05"), *DateTime::parse("2002-03-05 00:00:01"));
    EXPECT_EQ(*DateTime::parse("5/3/2002"), *DateTime::parse("05 Mar 2002"));
}

}  // namespace
