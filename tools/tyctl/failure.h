// A Failure ends a command; its text goes to standard error as it is. WrongUse is the one of a command line
// that asks for what cannot be.
#pragma once

#include <stdexcept>
#include <string>

namespace tyctl {

/// Exit statuses of tyctl.
inline constexpr int succeeded = 0;
inline constexpr int failed = 1;
inline constexpr int wrongUse = 2;

class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class WrongUse : public Failure {
  public:
    using Failure::Failure;
};

}  // namespace tyctl
