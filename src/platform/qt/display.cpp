#include "platform/qt/display.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <array>
#include <cerrno>
#include <clocale>
#include <cstdlib>

namespace platform::qt {

namespace {

constexpr unsigned longestConnectSeconds = 20;

std::string valueOf(const char* variable) {
    const char* const value = std::getenv(variable);
    return value == nullptr ? std::string() : std::string(value);
}

/// Connects to the display and ends. Qt aborts where it cannot; what it says then is not for the operator.
[[noreturn]] void tryToConnect() {
    const rlimit noCore{0, 0};
    static_cast<void>(setrlimit(RLIMIT_CORE, &noCore));
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    static_cast<void>(dup2(nowhere, STDERR_FILENO));
    alarm(longestConnectSeconds);
    { const Display display("tyindexer"); }
    _exit(EXIT_SUCCESS);
}

bool canConnect() {
    const pid_t child = fork();
    if (child == 0) {
        tryToConnect();
    }
    if (child < 0) {
        return true;  // Qt itself will tell
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
}

}  // namespace

std::optional<std::string> displayTrouble() {
    const std::string platform = valueOf("QT_QPA_PLATFORM");
    const std::string x11 = valueOf("DISPLAY");
    const std::string wayland = valueOf("WAYLAND_DISPLAY");
    if (platform.empty() && x11.empty() && wayland.empty()) {
        return "there is no display, neither DISPLAY nor WAYLAND_DISPLAY is set";
    }
    if (canConnect()) {
        return std::nullopt;
    }
    const std::string display = x11.empty() ? wayland : x11;
    return (display.empty() ? "no display can" : "the display \"" + display + "\" cannot") + " be used" +
           (platform.empty() ? "" : " with QT_QPA_PLATFORM=" + platform);
}

Display::Display(const char* programName)
    : programName_(programName), arguments_{programName_.data(), nullptr} {
    application_ = std::make_unique<QApplication>(argumentCount_, arguments_);
    // Qt has taken over the user's locale. What reads and writes text keeps it, nothing else does: a decimal
    // comma would spoil statements and settings.
    for (const int category : {LC_NUMERIC, LC_TIME, LC_COLLATE, LC_MONETARY, LC_MESSAGES}) {
        static_cast<void>(std::setlocale(category, "C"));
    }
    QApplication::setApplicationName(QString::fromUtf8(programName));
    // A hidden window goes on polling.
    QApplication::setQuitOnLastWindowClosed(false);
}

Display::~Display() = default;

}  // namespace platform::qt
