// The command line as Unicode. What `main` is given has lost every character that the system's ANSI code page
// does not have.
#pragma once

#include <string>
#include <vector>

namespace platform::windows {

/// The program's name and its arguments, as UTF-8. Raises a RuntimeError when the system cannot tell them.
std::vector<std::string> commandLine();

/// The same of a command line that is not empty, split at blanks outside quotation marks as the system does.
std::vector<std::string> argumentsOf(const std::wstring& commandLine);

}  // namespace platform::windows
