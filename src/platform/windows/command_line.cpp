#include "platform/windows/command_line.h"

#include <windows.h>
// windows.h stands first: the shell's header needs it.
#include <shellapi.h>

#include <memory>
#include <span>

#include "platform/windows/utf16.h"
#include "platform/windows/windows_error.h"

namespace platform::windows {
namespace {

struct LocalFreer {
    void operator()(wchar_t** arguments) const { ::LocalFree(static_cast<void*>(arguments)); }
};

}  // namespace

std::vector<std::string> commandLine() {
    return argumentsOf(::GetCommandLineW());
}

std::vector<std::string> argumentsOf(const std::wstring& commandLine) {
    int count = 0;
    const std::unique_ptr<wchar_t*, LocalFreer> split(::CommandLineToArgvW(commandLine.c_str(), &count));
    if (split == nullptr) {
        throw windowsError(::GetLastError(), "cannot read the command line");
    }
    std::vector<std::string> arguments;
    for (const wchar_t* argument : std::span(split.get(), static_cast<std::size_t>(count))) {
        arguments.push_back(toUtf8(argument));
    }
    return arguments;
}

}  // namespace platform::windows
