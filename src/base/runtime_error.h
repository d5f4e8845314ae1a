// A RuntimeError is the one error type of the service: engine errors, plug-in errors and value errors alike.
// Whoever raises one says in the description what failed and where; traps log the description.
#pragma once

#include <stdexcept>
#include <string>

namespace base {

/// Numbers of the errors that values raise; engines and plug-ins bring numbers of their own.
enum class ErrorNumber : int {
    invalidProcedureCall = 5,
    overflow = 6,
    subscriptOutOfRange = 9,
    divisionByZero = 11,
    typeMismatch = 13,
    objectNotSet = 91,
    invalidUseOfNull = 94,
    invalidPropertyValue = 380,
    cannotCreateObject = 429,
    automationError = 440,
    keyInUse = 457,
    noCurrentRecord = 3021,
    databaseError = 3146,
};

class RuntimeError : public std::runtime_error {
  public:
    RuntimeError(int number, const std::string& description)
        : std::runtime_error(description), number_(number) {}
    RuntimeError(ErrorNumber number, const std::string& description)
        : RuntimeError(static_cast<int>(number), description) {}

    [[nodiscard]] int number() const { return number_; }
    [[nodiscard]] std::string description() const { return what(); }

  private:
    int number_;
};

}  // namespace base
