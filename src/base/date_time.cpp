#include "base/date_time.h"

#include <array>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <limits>

#include "base/text.h"

namespace base {
namespace {

using std::chrono::days;
using std::chrono::sys_days;

constexpr std::int64_t secondsPerDay = 86400;
constexpr sys_days zeroDay{std::chrono::year{1899} / 12 / 30};
constexpr std::array<std::string_view, 12> monthNames = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

std::string format(const char* pattern, auto... values) {
    std::array<char, 64> buffer{};
    const int size = std::snprintf(buffer.data(), buffer.size(), pattern, values...);
    return {buffer.data(), static_cast<std::size_t>(size)};
}

/// Reads a text from left to right; every reader leaves the position where it was when it does not fit.
class Reader {
  public:
    explicit Reader(std::string_view text) : text_(text) {}

    [[nodiscard]] bool atEnd() const { return position_ == text_.size(); }

    bool take(char wanted) {
        if (atEnd() || text_[position_] != wanted) {
            return false;
        }
        ++position_;
        return true;
    }

    std::optional<int> number(std::size_t fewest, std::size_t most) {
        std::size_t digits = 0;
        int value = 0;
        while (digits < most && position_ + digits < text_.size() && isDigit(text_[position_ + digits])) {
            value = value * 10 + (text_[position_ + digits] - '0');
            ++digits;
        }
        if (digits < fewest) {
            return std::nullopt;
        }
        position_ += digits;
        return value;
    }

    std::optional<int> month() {
        const std::string_view name = text_.substr(position_, 3);
        for (std::size_t i = 0; i < monthNames.size(); ++i) {
            if (equalsIgnoringCase(name, monthNames[i])) {
                position_ += 3;
                return static_cast<int>(i) + 1;
            }
        }
        return std::nullopt;
    }

    /// Passes over digits; false without any.
    bool skipDigits() {
        const std::size_t begin = position_;
        while (!atEnd() && isDigit(text_[position_])) {
            ++position_;
        }
        return position_ > begin;
    }

  private:
    static bool isDigit(char c) { return c >= '0' && c <= '9'; }

    std::string_view text_;
    std::size_t position_ = 0;
};

enum class Fraction { refused, cut };

/// "h:mm[:ss]", or "h:mm[:ss[.f]]" with a fraction of any length.
bool readTime(Reader& reader, CivilTime& parts, Fraction fraction = Fraction::refused) {
    const auto hour = reader.number(1, 2);
    if (!hour || !reader.take(':')) {
        return false;
    }
    const auto minute = reader.number(2, 2);
    if (!minute) {
        return false;
    }
    parts.hour = *hour;
    parts.minute = *minute;
    if (reader.take(':')) {
        const auto second = reader.number(2, 2);
        if (!second) {
            return false;
        }
        parts.second = *second;
        if (fraction == Fraction::cut && reader.take('.')) {
            return reader.skipDigits();
        }
    }
    return true;
}

/// "Z" or "+hh:mm" as seconds east of Greenwich.
std::optional<int> readOffset(Reader& reader) {
    if (reader.take('Z') || reader.take('z')) {
        return 0;
    }
    const int sign = reader.take('+') ? 1 : reader.take('-') ? -1 : 0;
    const auto hours = reader.number(2, 2);
    if (sign == 0 || !hours || !reader.take(':')) {
        return std::nullopt;
    }
    const auto minutes = reader.number(2, 2);
    if (!minutes || *hours > 23 || *minutes > 59) {
        return std::nullopt;
    }
    return sign * (*hours * 3600 + *minutes * 60);
}

/// The same moment, in seconds since 1970, in a year from 1970 to 2037 that has the same calendar: years
/// repeat themselves after 28, weekdays and summer time included.
std::int64_t inAKnownYear(std::int64_t sinceEpoch) {
    constexpr std::int64_t cycle = 10227 * secondsPerDay;
    constexpr std::int64_t first = secondsPerDay;
    constexpr std::int64_t last = std::numeric_limits<std::int32_t>::max() - secondsPerDay;
    if (sinceEpoch < first) {
        return sinceEpoch + (first - sinceEpoch + cycle - 1) / cycle * cycle;
    }
    return sinceEpoch <= last ? sinceEpoch : sinceEpoch - (sinceEpoch - last + cycle - 1) / cycle * cycle;
}

std::optional<DateTime> localFromUtc(DateTime utc) {
    const std::int64_t sinceEpoch = utc.seconds() + zeroDay.time_since_epoch().count() * secondsPerDay;
    auto moment = static_cast<std::time_t>(sinceEpoch);
    const std::tm* local = moment == sinceEpoch ? std::localtime(&moment) : nullptr;
    if (local == nullptr) {
        // Some systems know no moment before 1970 or after 2038.
        moment = static_cast<std::time_t>(inAKnownYear(sinceEpoch));
        local = std::localtime(&moment);
    }
    if (local == nullptr) {
        return std::nullopt;
    }
    const auto shown =
        DateTime::fromCivil({local->tm_year + 1900, local->tm_mon + 1, local->tm_mday, local->tm_hour,
                             local->tm_min, local->tm_sec > 59 ? 59 : local->tm_sec});
    return shown ? DateTime::fromCivil(DateTime::fromSeconds(shown->seconds() + sinceEpoch - moment).civil())
                 : std::nullopt;
}

/// What follows "yyyy-mm-dd": nothing, a blank and a time, or "T", a time and an offset.
std::optional<DateTime> readIsoRest(Reader& reader, CivilTime parts) {
    if (reader.atEnd()) {
        return DateTime::fromCivil(parts);
    }
    if (!(reader.take(' ') || reader.take('T') || reader.take('t')) ||
        !readTime(reader, parts, Fraction::cut)) {
        return std::nullopt;
    }
    const auto local = DateTime::fromCivil(parts);
    if (reader.atEnd() || !local) {
        return local;
    }
    const auto offset = readOffset(reader);
    if (!offset || !reader.atEnd()) {
        return std::nullopt;
    }
    return localFromUtc(DateTime::fromSeconds(local->seconds() - *offset));
}

std::optional<DateTime> parseIso(std::string_view text) {
    Reader reader(text);
    const auto year = reader.number(4, 4);
    if (!year || !reader.take('-')) {
        return std::nullopt;
    }
    const auto month = reader.number(2, 2);
    if (!month || !reader.take('-')) {
        return std::nullopt;
    }
    const auto day = reader.number(2, 2);
    if (!day) {
        return std::nullopt;
    }
    return readIsoRest(reader, {*year, *month, *day});
}

std::optional<DateTime> readTimeRest(Reader& reader, CivilTime parts) {
    if (!reader.atEnd() && !(reader.take(' ') && readTime(reader, parts) && reader.atEnd())) {
        return std::nullopt;
    }
    return DateTime::fromCivil(parts);
}

std::optional<DateTime> parseMonthName(std::string_view text) {
    Reader reader(text);
    const auto day = reader.number(1, 2);
    if (!day || !reader.take(' ')) {
        return std::nullopt;
    }
    const auto month = reader.month();
    if (!month || !reader.take(' ')) {
        return std::nullopt;
    }
    const auto year = reader.number(4, 4);
    if (!year) {
        return std::nullopt;
    }
    return readTimeRest(reader, {*year, *month, *day});
}

std::optional<DateTime> parseSlashes(std::string_view text) {
    Reader reader(text);
    const auto first = reader.number(1, 2);
    if (!first || !reader.take('/')) {
        return std::nullopt;
    }
    const auto second = reader.number(1, 2);
    if (!second || !reader.take('/')) {
        return std::nullopt;
    }
    const auto year = reader.number(4, 4);
    if (!year) {
        return std::nullopt;
    }
    const bool monthFirst = *second > 12 && *first <= 12;
    return readTimeRest(reader,
                        monthFirst ? CivilTime{*year, *first, *second} : CivilTime{*year, *second, *first});
}

}  // namespace

std::optional<DateTime> DateTime::fromCivil(const CivilTime& parts) {
    // The calendar's own types are a byte wide and would take a day 257 for the first.
    if (parts.year < 100 || parts.year > 9999 || parts.month < 1 || parts.month > 12 || parts.day < 1 ||
        parts.day > 31) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year{parts.year},
                                           std::chrono::month{static_cast<unsigned>(parts.month)},
                                           std::chrono::day{static_cast<unsigned>(parts.day)}};
    const bool timeIsValid = parts.hour >= 0 && parts.hour < 24 && parts.minute >= 0 && parts.minute < 60 &&
                             parts.second >= 0 && parts.second < 60;
    if (!date.ok() || !timeIsValid) {
        return std::nullopt;
    }
    const std::int64_t day = (sys_days{date} - zeroDay).count();
    return DateTime(day * secondsPerDay + std::int64_t{parts.hour} * 3600 + std::int64_t{parts.minute} * 60 +
                    parts.second);
}

DateTime DateTime::fromSeconds(std::int64_t seconds) {
    return DateTime(seconds);
}

std::optional<DateTime> DateTime::parse(std::string_view text) {
    text = trim(text);
    for (const auto reader : {parseIso, parseMonthName, parseSlashes}) {
        if (const auto result = reader(text)) {
            return result;
        }
    }
    return std::nullopt;
}

std::int64_t DateTime::dayNumber() const {
    return seconds_ >= 0 ? seconds_ / secondsPerDay : (seconds_ - secondsPerDay + 1) / secondsPerDay;
}

CivilTime DateTime::civil() const {
    const std::chrono::year_month_day date{zeroDay + days{dayNumber()}};
    const auto second = static_cast<int>(seconds_ - dayNumber() * secondsPerDay);
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            second / 3600,
            second / 60 % 60,
            second % 60};
}

std::string DateTime::text() const {
    const CivilTime c = civil();
    return format("%04d-%02d-%02d %02d:%02d:%02d", c.year, c.month, c.day, c.hour, c.minute, c.second);
}

std::string DateTime::longText() const {
    const CivilTime c = civil();
    return format("%02d %s %04d %02d:%02d:%02d", c.day, monthName(c.month).data(), c.year, c.hour, c.minute,
                  c.second);
}

std::string DateTime::timeText() const {
    const CivilTime c = civil();
    return format("%02d:%02d:%02d", c.hour, c.minute, c.second);
}

std::string_view monthName(int month) {
    return monthNames.at(static_cast<std::size_t>(month - 1));
}

}  // namespace base
