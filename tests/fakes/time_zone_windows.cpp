#include <cstdlib>
#include <ctime>

#include "fakes/time_zone.h"

namespace fakes {

void TimeZone::set(const std::optional<std::string>& zone) {
    _putenv(("TZ=" + zone.value_or("")).c_str());  // an empty value takes the variable away
    _tzset();
}

}  // namespace fakes
