// A Failure ends a command; its text goes to standard error as it is.
#pragma once

#include <stdexcept>
#include <string>

namespace tyctl {

/// Exit statuses of tyctl.
inline constexpr int succeeded = 0;
inline constexpr int failed = 1;

class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace tyctl
