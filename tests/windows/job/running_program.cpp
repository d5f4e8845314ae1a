#include "windows/job/running_program.h"

#include <windows.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace job_tests {
namespace {

// When a test gives a condition up for lost, on the slowest machine; nothing waits for a fixed time.
constexpr std::chrono::seconds deadline{90};
constexpr DWORD pause = 20;  // milliseconds between two looks

enum class Kind { window, messageBox };

struct Search {
    DWORD process;
    Kind kind;
    HWND found;
};

bool isMessageBox(HWND window) {
    std::array<wchar_t, 16> name{};
    ::GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    return std::wstring_view(name.data()) == L"#32770";
}

BOOL CALLBACK look(HWND window, LPARAM parameter) {
    auto& search = *reinterpret_cast<Search*>(parameter);
    DWORD owner = 0;
    ::GetWindowThreadProcessId(window, &owner);
    if (owner == search.process && ::IsWindowVisible(window) != FALSE &&
        isMessageBox(window) == (search.kind == Kind::messageBox)) {
        search.found = window;
        return FALSE;
    }
    return TRUE;
}

HWND windowOf(DWORD process, Kind kind) {
    Search search{process, kind, nullptr};
    ::EnumWindows(look, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

}  // namespace

RunningProgram::RunningProgram(const std::string& name, const std::string& arguments) {
    std::array<wchar_t, MAX_PATH> own{};
    ::GetModuleFileNameW(nullptr, own.data(), static_cast<DWORD>(own.size()));
    std::wstring command = L'"' + std::filesystem::path(own.data()).replace_filename(name).wstring() +
                           L"\" " +
                           std::filesystem::path(std::u8string(arguments.begin(), arguments.end())).wstring();
    STARTUPINFOW start{};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;  // of which none is given
    PROCESS_INFORMATION made{};
    if (::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                         &made) == FALSE) {
        throw std::runtime_error(name + " does not start: error " + std::to_string(::GetLastError()));
    }
    ::CloseHandle(made.hThread);
    process_ = made.hProcess;
    id_ = made.dwProcessId;
}

RunningProgram::~RunningProgram() {
    ::TerminateProcess(process_, 99);
    ::WaitForSingleObject(process_, INFINITE);
    ::CloseHandle(process_);
}

bool RunningProgram::runsUntil(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (::WaitForSingleObject(process_, pause) == WAIT_OBJECT_0 ||
            std::chrono::steady_clock::now() > end) {
            return false;
        }
    }
    return true;
}

bool RunningProgram::closeWindow() {
    HWND window = nullptr;
    return runsUntil([&] { return (window = windowOf(id_, Kind::window)) != nullptr; }) &&
           ::PostMessageW(window, WM_CLOSE, 0, 0) != FALSE;
}

bool RunningProgram::answerMessage() {
    HWND box = nullptr;
    return runsUntil([&] { return (box = windowOf(id_, Kind::messageBox)) != nullptr; }) &&
           ::PostMessageW(box, WM_COMMAND, IDOK, 0) != FALSE;
}

std::string RunningProgram::message() {
    constexpr int messageText = 0xFFFF;
    std::array<char, 1024> text{};
    runsUntil([&] {
        const HWND box = windowOf(id_, Kind::messageBox);
        return box != nullptr &&
               ::GetDlgItemTextA(box, messageText, text.data(), static_cast<int>(text.size())) > 0;
    });
    return text.data();
}

std::optional<unsigned long> RunningProgram::waitForEnd() {
    DWORD status = 0;
    const auto limit = static_cast<DWORD>(std::chrono::milliseconds(deadline).count());
    if (::WaitForSingleObject(process_, limit) != WAIT_OBJECT_0 ||
        ::GetExitCodeProcess(process_, &status) == FALSE) {
        return std::nullopt;
    }
    return status;
}

std::string outputOf(const std::string& command) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(::_popen(command.c_str(), "rt"), ::_pclose);
    std::string output;
    std::array<char, 256> part{};
    while (pipe != nullptr && std::fgets(part.data(), static_cast<int>(part.size()), pipe.get()) != nullptr) {
        output += part.data();
    }
    return output;
}

}  // namespace job_tests
