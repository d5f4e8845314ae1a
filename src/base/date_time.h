// A DateTime is a moment in whole seconds of local time, with the text forms that the library's programs
// exchange.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace base {

/// The parts of a date: years 100 to 9999, months and days from 1.
struct CivilTime {
    int year = 1899;
    int month = 12;
    int day = 30;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

class DateTime {
  public:
    /// The zero date, 30 December 1899 at midnight, which stands for "no date".
    DateTime() = default;

    /// Empty when a part is out of its range (a 30 February, an hour 24).
    static std::optional<DateTime> fromCivil(const CivilTime& parts);

    /// A moment given in seconds since the zero date.
    static DateTime fromSeconds(std::int64_t seconds);

    /// Reads "yyyy-mm-dd[ hh:mm[:ss]]", "d mmm yyyy[ hh:mm[:ss]]" (English month), "d/m/yyyy[ h:mm[:ss]]"
    /// (month first where only that is possible) and RFC 3339 (a moment with an offset is turned into local
    /// time; fractions are cut). Blanks around the text do not matter. Anything else is empty.
    static std::optional<DateTime> parse(std::string_view text);

    [[nodiscard]] bool isZero() const { return seconds_ == 0; }
    [[nodiscard]] std::int64_t seconds() const { return seconds_; }

    /// Midnights since the zero date; the difference of two is the calendar days between two moments.
    [[nodiscard]] std::int64_t dayNumber() const;

    [[nodiscard]] CivilTime civil() const;

    /// "yyyy-mm-dd hh:mm:ss", the default text of a date.
    [[nodiscard]] std::string text() const;

    /// "dd mmm yyyy hh:mm:ss" with an English month, the form of the log, the heartbeat and the statements.
    [[nodiscard]] std::string longText() const;

    /// "hh:mm:ss".
    [[nodiscard]] std::string timeText() const;

    auto operator<=>(const DateTime&) const = default;

  private:
    explicit DateTime(std::int64_t seconds) : seconds_(seconds) {}

    std::int64_t seconds_ = 0;
};

/// The English short name of a month from 1 to 12.
std::string_view monthName(int month);

}  // namespace base
