#include "platform/windows/windows_process.h"

#include <windows.h>

#include <bit>
#include <string>

#include "platform/windows/utf16.h"

namespace platform::windows {
namespace {

/// The system tells nothing about the room that a path needs: it fills the room and says so.
std::wstring programPath() {
    constexpr std::size_t longest = 32768;
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size() || path.size() >= longest) {
            path.resize(length < path.size() ? length : 0);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

}  // namespace

ProcessHandle WindowsProcess::currentProcess() {
    return ProcessHandle{reinterpret_cast<LONG_PTR>(::GetCurrentProcess())};
}

bool WindowsProcess::setPriorityClass(ProcessHandle process, PriorityClass priority) {
    const auto handle = std::bit_cast<HANDLE>(static_cast<LONG_PTR>(process));
    return ::SetPriorityClass(handle, static_cast<DWORD>(priority)) != FALSE;
}

void WindowsProcess::endProcess(ExitStatus status) {
    ::ExitProcess(static_cast<UINT>(status));
}

std::string WindowsProcess::programDirectory() {
    const std::wstring path = programPath();
    const std::size_t separator = path.find_last_of(L'\\');
    return separator == std::wstring::npos ? "." : toUtf8(path.substr(0, separator));
}

}  // namespace platform::windows
