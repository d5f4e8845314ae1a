#include "fakes/time_zone.h"

#include <cstdlib>

namespace fakes {

TimeZone::TimeZone(const std::string& zone) {
    if (const char* before = std::getenv("TZ")) {
        before_ = before;
    }
    set(zone);
}

TimeZone::~TimeZone() {
    set(before_);
}

}  // namespace fakes
