// Sets the local time zone of the process for as long as it lives.
#pragma once

#include <optional>
#include <string>

namespace fakes {

class TimeZone {
  public:
    /// The zone as the variable TZ tells it, such as "EST5EDT".
    explicit TimeZone(const std::string& zone);
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;
    ~TimeZone();

  private:
    /// Without a zone: the system's.
    static void set(const std::optional<std::string>& zone);

    std::optional<std::string> before_;
};

}  // namespace fakes
