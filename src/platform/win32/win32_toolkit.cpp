#include "platform/win32/win32_toolkit.h"

#include <windows.h>

#include <commctrl.h>
#include <commdlg.h>

#include <optional>

#include "base/runtime_error.h"
#include "platform/win32/win32_form.h"

namespace platform::win32 {

namespace {

constexpr std::size_t longestPath = 32768;

/// The dialog's list of file kinds: pairs of texts, each ended by a NUL, and one more at the end.
std::string filterList(std::span<const FileFilter> filters) {
    std::string list;
    for (const FileFilter& filter : filters) {
        list += toAnsi(filter.description) + '\0' + toAnsi(filter.pattern) + '\0';
    }
    return list + '\0';
}

/// The system wants the extension without its dot.
std::string withoutDot(std::string_view extension) {
    return toAnsi(extension.substr(extension.starts_with('.') ? 1 : 0));
}

/// An empty path: the operator has cancelled.
std::string askForPath(HWND owner, std::span<const FileFilter> filters, std::string_view defaultExtension) {
    const std::string list = filterList(filters);
    const std::string extension = withoutDot(defaultExtension);
    std::string path(longestPath, '\0');
    OPENFILENAMEA dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = owner;
    dialog.lpstrFilter = list.c_str();
    dialog.lpstrDefExt = extension.c_str();
    dialog.lpstrFile = path.data();
    dialog.nMaxFile = static_cast<DWORD>(path.size());
    // No question before a file that exists: a log is written on, not over. The service's own folder stays
    // the current one, whichever the operator looks at.
    dialog.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_PATHMUSTEXIST | OFN_NOCHANGEDIR;
    if (GetSaveFileNameA(&dialog) == 0) {
        return {};
    }
    return ansiToUtf8(path.c_str());
}

/// True when another message of the queue is there, which is then taken out of it.
bool nextMessage(MSG& message) {
    return PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0;
}

}  // namespace

Win32Toolkit::Win32Toolkit() : events_([this] { form().runCloseHandler(); }) {
    // Ties the program to the controls that its manifest names.
    const INITCOMMONCONTROLSEX standard{sizeof standard, ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&standard);
}

Win32Toolkit::~Win32Toolkit() = default;

Form& Win32Toolkit::createForm(std::string_view name, std::string_view caption, int width, int height) {
    form_ = std::make_unique<Win32Form>(
        events_, [this] { endDialogs(); }, name, caption, Bounds{0, 0, width, height});
    return *form_;
}

Win32Form& Win32Toolkit::form() const {
    if (form_ == nullptr) {
        throw base::RuntimeError(base::ErrorNumber::objectNotSet, "The window has not been created");
    }
    return *form_;
}

void Win32Toolkit::processEvents() {
    const Events::Gate open(events_);
    bool goOn = true;
    handleDeferred();
    for (MSG message; goOn && nextMessage(message); handleDeferred()) {
        if (message.message == WM_QUIT && openDialogs_ > 0) {
            // Meant for the dialog that this loop runs inside of.
            PostQuitMessage(0);
            return;
        }
        // The system hands out a tick when nothing else waits. A timer that is quicker than its handler would
        // keep this loop for ever.
        goOn = form_ == nullptr || message.hwnd != form_->handle() || message.message != WM_TIMER;
        dispatch(message);
    }
}

void Win32Toolkit::handleDeferred() {
    events_.handleDeferred();
    events_.rethrow();
}

void Win32Toolkit::dispatch(MSG& message) {
    if (message.message == WM_QUIT) {
        // Nobody else ends this thread's loop: it is one more way to ask the program to end.
        events_.take([this] { form().close(); });
    } else if (form_ == nullptr || IsDialogMessageW(form_->handle(), &message) == 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

void Win32Toolkit::run() {
    static_cast<void>(form());
    while (!events_.closed()) {
        processEvents();
        if (!events_.closed()) {
            MsgWaitForMultipleObjectsEx(0, nullptr, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        }
    }
}

/// Runs a dialog, which handles messages until it is answered. When events are over, it is taken away: the
/// program ends and nobody needs its answer.
template <class Dialog>
auto Win32Toolkit::showDialog(const Dialog& dialog) {
    // Outside of a handler, as during start-up, the program is not ready for events.
    const Events::Gate gate(events_, events_.handlerAtWork());
    ++openDialogs_;
    const auto answer = dialog(form_ != nullptr ? form_->handle() : nullptr);
    --openDialogs_;
    MSG quit;
    PeekMessageW(&quit, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE);
    endDialogs();  // also those that this one stood on
    events_.rethrow();
    return answer;
}

void Win32Toolkit::endDialogs() const {
    if (openDialogs_ > 0 && events_.over()) {
        PostQuitMessage(0);
    }
}

void Win32Toolkit::messageBox(std::string_view text) {
    const std::wstring shown = toWide(text);
    const std::wstring title = form_ != nullptr ? toWide(form_->caption()) : std::wstring();
    showDialog([&](HWND owner) {
        return MessageBoxW(owner, shown.c_str(), title.c_str(),
                           MB_OK | MB_ICONEXCLAMATION | MB_SETFOREGROUND);
    });
}

std::optional<std::string> Win32Toolkit::saveFileDialog(std::span<const FileFilter> filters,
                                                        std::string_view defaultExtension) {
    DWORD error = 0;
    const std::string path = showDialog([&](HWND owner) {
        std::string chosen = askForPath(owner, filters, defaultExtension);
        error = chosen.empty() ? CommDlgExtendedError() : 0;
        return chosen;
    });
    if (error != 0) {
        throw base::RuntimeError(
            static_cast<int>(error),
            "The file dialog failed with its error " + std::to_string(error) + "; choose another file");
    }
    return path.empty() ? std::nullopt : std::optional(path);
}

}  // namespace platform::win32
