#include "platform/win32/win32_toolkit.h"

#include <windows.h>

#include <commctrl.h>
#include <commdlg.h>

#include <algorithm>

#include "base/runtime_error.h"
#include "platform/headless/headless_toolkit.h"

namespace platform::win32 {

using Milliseconds = Waiter::Milliseconds;

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

bool isDialog(HWND window) {
    constexpr ULONG_PTR dialogClass = 0x8002;
    return GetClassLongPtrW(window, GCW_ATOM) == dialogClass;
}

}  // namespace

Win32Toolkit::Win32Toolkit(Waiter& waiter) : waiter_(waiter), events_([this] { form().runCloseHandler(); }) {
    // Ties the program to the controls that its manifest names.
    const INITCOMMONCONTROLSEX standard{sizeof standard, ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&standard);
}

Form& Win32Toolkit::createForm(std::string_view name, std::string_view caption, int width, int height) {
    form_ = std::make_unique<Win32Form>(events_, waiter_, static_cast<FormObserver&>(*this), name, caption,
                                        Bounds{0, 0, width, height});
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
    if (form_ != nullptr && waiter_.closeRequested()) {
        events_.take([this] { form_->close(); });
    }
    handleDeferred();
    for (MSG message; nextMessage(message); handleDeferred()) {
        if (message.message == WM_QUIT && openDialogs_ > 0) {
            // Meant for the dialog that this loop runs inside of.
            PostQuitMessage(0);
            return;
        }
        wakeUpAtNextTick();
        dispatch(message);
    }
    tickDueTimers();
    // A tick is a job, and its last call to an automation object may have let the operator's click through.
    handleDeferred();
}

void Win32Toolkit::handleDeferred() {
    events_.handleDeferred();
    events_.rethrow();
}

void Win32Toolkit::dispatch(MSG& message) {
    if (message.message == WM_QUIT) {
        // Nobody else ends this thread's loop: it is one more way to ask the program to end.
        events_.take([this] { form().close(); });
    } else if (!takenByDialog(message)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

/// Keys such as Tab and Enter belong to a whole window of controls: to a dialog when a job handles events on
/// top of it, else to the form.
bool Win32Toolkit::takenByDialog(MSG& message) const {
    const HWND root = GetAncestor(message.hwnd, GA_ROOT);
    const HWND owner = isDialog(root) ? root : form_ != nullptr ? form_->handle() : nullptr;
    return owner != nullptr && IsDialogMessageW(owner, &message) != 0;
}

void Win32Toolkit::run() {
    static_cast<void>(form());
    while (!events_.closed()) {
        processEvents();
        if (!events_.closed()) {
            waiter_.wait(nextTick());
        }
    }
}

std::optional<Milliseconds> Win32Toolkit::nextTick() const {
    return headless::nextTickOf(form().timers());
}

headless::HeadlessTimer* Win32Toolkit::timerDueAt(Milliseconds moment) const {
    return form_ == nullptr || events_.over() ? nullptr : headless::dueAt(moment, form_->timers());
}

/// The moment is taken once: each timer ticks at most once, however long the handlers take.
void Win32Toolkit::tickDueTimers() {
    const Milliseconds moment = waiter_.now();
    for (headless::HeadlessTimer* timer = timerDueAt(moment); timer != nullptr; timer = timerDueAt(moment)) {
        events_.take([timer] { timer->tick(); });
    }
}

void Win32Toolkit::wokenUp() {
    wakeUp_.reset();
    form_->letSleep();
    if (events_.open()) {
        tickDueTimers();
        events_.handleDeferred();
    }
}

void Win32Toolkit::messageHandled() {
    if (events_.over()) {
        leaveSystemLoops();
    } else {
        wakeUpAtNextTick();
    }
}

/// No event will be handled any more: the loops that the system runs around the toolkit's own have to return.
void Win32Toolkit::leaveSystemLoops() const {
    if (openDialogs_ > 0) {
        PostQuitMessage(0);
    }
    GUITHREADINFO now{};
    now.cbSize = sizeof now;
    GetGUIThreadInfo(GetCurrentThreadId(), &now);
    if ((now.flags & GUI_INMENUMODE) != 0) {
        PostMessageW(now.hwndMenuOwner, WM_CANCELMODE, 0, 0);
    }
    if ((now.flags & GUI_INMOVESIZE) != 0) {
        // The key that ends a move everywhere; Wine's loop goes on through a cancelled mode.
        PostMessageW(now.hwndMoveSize, WM_KEYDOWN, VK_ESCAPE, 0);
    }
    if (now.hwndCapture != nullptr) {
        PostMessageW(now.hwndCapture, WM_CANCELMODE, 0, 0);
    }
}

/// While no event would be handled, nothing is due: a tick that waits must not wake the thread up again and
/// again.
void Win32Toolkit::wakeUpAtNextTick() {
    if (form_ == nullptr || !events_.open()) {
        return;
    }
    const std::optional<Milliseconds> next = nextTick();
    if (next && next != wakeUp_) {
        form_->wakeUpIn(std::max(Milliseconds(0), *next - waiter_.now()));
        wakeUp_ = next;
    }
}

/// Runs a dialog, which handles messages until it is answered. When events are over, it is taken away: the
/// program ends and nobody needs its answer.
template <class Dialog>
auto Win32Toolkit::showDialog(const Dialog& dialog) {
    // Outside of a handler, as during start-up, the program is not ready for events.
    const Events::Gate gate(events_, events_.handlerAtWork());
    const bool shown = form_ != nullptr && form_->visible();
    ++openDialogs_;
    wakeUpAtNextTick();
    auto answer = dialog(shown ? form_->handle() : nullptr);
    --openDialogs_;
    MSG quit;
    PeekMessageW(&quit, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE);
    if (openDialogs_ > 0 && events_.over()) {
        PostQuitMessage(0);  // for the one that this one stood on
    }
    events_.rethrow();
    return answer;
}

void Win32Toolkit::messageBox(std::string_view text) {
    if (events_.over()) {
        headless::HeadlessToolkit::printToStandardError(text);
        return;
    }
    const std::wstring shown = toWide(text);
    const std::wstring title = form_ != nullptr ? toWide(form_->caption()) : std::wstring();
    showDialog([&](HWND owner) {
        return MessageBoxW(owner, shown.c_str(), title.c_str(), MB_OK | MB_SETFOREGROUND);
    });
}

std::optional<std::string> Win32Toolkit::saveFileDialog(std::span<const FileFilter> filters,
                                                        std::string_view defaultExtension) {
    if (events_.over()) {
        return std::nullopt;
    }
    DWORD error = 0;
    const std::string path = showDialog([&](HWND owner) {
        std::string chosen = askForPath(owner, filters, defaultExtension);
        error = chosen.empty() ? CommDlgExtendedError() : 0;
        return chosen;
    });
    if (error != 0) {
        // No reason to end the service: the operator has no file, as after a cancelled dialog.
        messageBox("The file dialog could not be shown: its error is " + std::to_string(error) +
                   ". Type the path instead.");
    }
    return path.empty() ? std::nullopt : std::optional(path);
}

}  // namespace platform::win32
