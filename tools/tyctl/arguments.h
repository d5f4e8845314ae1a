// What the commands require of their arguments, and how a wrong command line is told: which command, which
// argument, what it takes.
#pragma once

#include <cstdint>
#include <string>

namespace CLI {
class App;
class ParseError;
class Validator;
}  // namespace CLI

namespace tyctl {

/// A whole number within limits.
CLI::Validator wholeNumber(std::int64_t lowest, std::int64_t highest);

/// Any text but an empty one, which is most often a variable of a script that is not set.
CLI::Validator notEmpty();

/// What is wrong with the command line that a program could not read, on one line.
std::string complaint(const CLI::App& program, const CLI::ParseError& error);

}  // namespace tyctl
