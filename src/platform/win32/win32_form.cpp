#include "platform/win32/win32_form.h"

#include <windows.h>

#include <bit>
#include <exception>
#include <iterator>

#include "platform/win32/win32_toolkit.h"

namespace platform::win32 {

namespace {

constexpr DWORD formStyle = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN;
constexpr UINT_PTR wakeUpTimer = 1;

LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
    auto* const form = std::bit_cast<Win32Form*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (form != nullptr && form->receive(message, first, second)) {
        return 0;
    }
    return DefWindowProcW(window, message, first, second);
}

/// The program's icon; without one, the system's for programs that have none.
HICON programIcon(int widthMetric, int heightMetric) {
    const HANDLE icon = LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(iconResource), IMAGE_ICON,
                                   GetSystemMetrics(widthMetric), GetSystemMetrics(heightMetric), LR_SHARED);
    return icon != nullptr ? static_cast<HICON>(icon) : LoadIconW(nullptr, IDI_APPLICATION);
}

const wchar_t* windowClass() {
    static constexpr const wchar_t* name = L"tyIndexerForm";
    static const ATOM registered = [] {
        WNDCLASSEXW described{};
        described.cbSize = sizeof described;
        described.lpfnWndProc = &procedure;
        described.hInstance = GetModuleHandleW(nullptr);
        described.hIcon = programIcon(SM_CXICON, SM_CYICON);
        described.hIconSm = programIcon(SM_CXSMICON, SM_CYSMICON);
        described.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        described.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
        described.lpszClassName = name;
        return RegisterClassExW(&described);
    }();
    if (registered == 0) {
        raiseSystemError("The window's class could not be registered");
    }
    return name;
}

WindowPlan planFor(std::string_view name, std::string_view caption, const Bounds& inside) {
    const Pixels size = toPixels({0, 0, inside.width, inside.height});
    RECT frame{0, 0, size.width, size.height};
    AdjustWindowRectEx(&frame, formStyle, FALSE, 0);
    const Pixels place{CW_USEDEFAULT, CW_USEDEFAULT, static_cast<int>(frame.right - frame.left),
                       static_cast<int>(frame.bottom - frame.top)};
    return {windowClass(), name, caption, formStyle, 0, place, nullptr, 0};
}

}  // namespace

Win32Form::Win32Form(Events& events, Waiter& waiter, FormObserver& observer, std::string_view name,
                     std::string_view caption, const Bounds& inside)
    : events_(events), waiter_(waiter), observer_(observer), window_(planFor(name, caption, inside)) {
    SetWindowLongPtrW(handle(), GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

Win32Form::~Win32Form() {
    // The messages of the end find no form any more.
    SetWindowLongPtrW(handle(), GWLP_USERDATA, 0);
}

template <class Kind>
Kind& Win32Form::keep(std::unique_ptr<Kind> control) {
    Kind& kept = *control;
    controls_.insert_or_assign(kept.name(), std::move(control));
    return kept;
}

/// The tab order of a window is the order of its controls from front to back. Readers for the blind take the
/// label before a text box as its name.
template <class Kind>
Kind& Win32Form::place(const Layout& layout, std::unique_ptr<Kind> control) {
    const auto own = tabOrder_.emplace(layout.tabIndex, control->handle());
    const HWND before = own == tabOrder_.begin() ? HWND_TOP : std::prev(own)->second;
    SetWindowPos(control->handle(), before, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    return keep(std::move(control));
}

Label& Win32Form::addLabel(const Layout& layout, std::string_view caption) {
    return place(layout, std::make_unique<Win32Label>(Place{handle(), layout, events_}, caption));
}

TextBox& Win32Form::addTextBox(const Layout& layout, std::string_view text) {
    return place(layout, std::make_unique<Win32TextBox>(Place{handle(), layout, events_}, text));
}

CheckBox& Win32Form::addCheckBox(const Layout& layout, std::string_view caption) {
    return place(layout, std::make_unique<Win32CheckBox>(Place{handle(), layout, events_}, caption));
}

Button& Win32Form::addButton(const Layout& layout, std::string_view caption) {
    return place(layout, std::make_unique<Win32Button>(Place{handle(), layout, events_}, caption));
}

ListBox& Win32Form::addListBox(const Layout& layout) {
    return place(layout, std::make_unique<Win32ListBox>(Place{handle(), layout, events_}));
}

Timer& Win32Form::addTimer(std::string_view name, int milliseconds) {
    headless::HeadlessTimer& timer = keep(std::make_unique<headless::HeadlessTimer>(name, 0, waiter_));
    timer.setInterval(milliseconds);
    timers_.push_back(&timer);
    return timer;
}

Control* Win32Form::find(std::string_view name) const {
    const auto found = controls_.find(name);
    return found == controls_.end() ? nullptr : found->second.get();
}

WindowState Win32Form::windowState() const {
    if (IsIconic(handle()) != 0) {
        return WindowState::minimised;
    }
    return IsZoomed(handle()) != 0 ? WindowState::maximised : WindowState::normal;
}

bool Win32Form::visible() const {
    return IsWindowVisible(handle()) != 0;
}

void Win32Form::show() {
    if (!visible() && !closing()) {
        changeShown(SW_SHOW);
        UpdateWindow(handle());
    }
}

/// Only a window that is seen: the first order of a process to show or hide one is taken by the system for
/// what its launcher has asked for, and a hidden window must not come up by it.
void Win32Form::hide() {
    if (visible()) {
        changeShown(SW_HIDE);
    }
}

void Win32Form::changeShown(int command) {
    const Mark mark(changedByProgram_);
    ShowWindow(handle(), command);
}

void Win32Form::close() {
    if (closing()) {
        return;
    }
    hide();
    events_.startClosing();
}

void Win32Form::runCloseHandler() const {
    if (closed_) {
        closed_();
    }
}

void Win32Form::wakeUpIn(Waiter::Milliseconds time) const {
    SetTimer(handle(), wakeUpTimer, static_cast<UINT>(time.count()), nullptr);
}

void Win32Form::letSleep() const {
    KillTimer(handle(), wakeUpTimer);
}

bool Win32Form::receive(MessageCode message, FirstArgument first, SecondArgument second) {
    bool dealtWith = false;
    try {
        dealtWith = take(message, first, second);
    } catch (...) {
        // No exception finds its way through the system's frames.
        events_.fail(std::current_exception());
    }
    observer_.messageHandled();
    return dealtWith;
}

bool Win32Form::take(MessageCode message, FirstArgument first, SecondArgument second) {
    switch (message) {
        case WM_COMMAND:
            controlNotifies(std::bit_cast<HWND>(second), HIWORD(first));
            return true;
        case WM_TIMER:
            observer_.wokenUp();
            return true;
        case WM_SIZE:
            if (!changedByProgram_ && resized_) {
                events_.take([this] { resized_(); });
            }
            return false;
        case WM_CLOSE:
            events_.take([this] { close(); });
            return true;
        case WM_ENDSESSION:
            // Whoever logs off ends the service as Exit does. When no job is at work the library is closed
            // before this returns; the system ends the process soon after.
            if (first != 0) {
                events_.take([this] { close(); });
            }
            return true;
        case WM_SETFOCUS:
            // The operator comes back to the control that was left.
            SetFocus(focus_ != nullptr ? focus_ : GetNextDlgTabItem(handle(), nullptr, FALSE));
            return true;
        default:
            return false;
    }
}

void Win32Form::controlNotifies(WindowHandle control, unsigned code) {
    if (control == nullptr) {
        return;  // the Enter or the Escape key, which press nothing by themselves
    }
    if (GetFocus() == control) {
        focus_ = control;
    }
    if (Notifier* const notifier = Notifier::behind(control); notifier != nullptr) {
        notifier->notified(code);
    }
}

}  // namespace platform::win32
