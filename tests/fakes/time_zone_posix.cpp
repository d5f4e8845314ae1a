#include <cstdlib>
#include <ctime>

#include "fakes/time_zone.h"

namespace fakes {

void TimeZone::set(const std::optional<std::string>& zone) {
    if (zone) {
        setenv("TZ", zone->c_str(), 1);
    } else {
        unsetenv("TZ");
    }
    tzset();
}

}  // namespace fakes
