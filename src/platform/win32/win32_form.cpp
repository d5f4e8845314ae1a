#include "platform/win32/win32_form.h"

#include <exception>
#include <iterator>

#include "platform/win32/win32_toolkit.h"

namespace platform::win32 {

namespace {

constexpr DWORD formStyle = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN;

/// The program's icon; without one, the system's for programs that have none.
HICON programIcon(int widthMetric, int heightMetric) {
    const HANDLE icon = LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(iconResource), IMAGE_ICON,
                                   GetSystemMetrics(widthMetric), GetSystemMetrics(heightMetric), LR_SHARED);
    return icon != nullptr ? static_cast<HICON>(icon) : LoadIconW(nullptr, IDI_APPLICATION);
}

}  // namespace

Win32Form::Win32Form(Events& events, Handler eventHandled, std::string_view name, std::string_view caption,
                     const Bounds& inside)
    : events_(events), eventHandled_(std::move(eventHandled)), window_(plan(name, caption, inside)) {
    SetWindowLongPtrW(handle(), GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

Win32Form::~Win32Form() {
    // The messages of the end find no form any more.
    SetWindowLongPtrW(handle(), GWLP_USERDATA, 0);
}

const wchar_t* Win32Form::windowClass() {
    static constexpr const wchar_t* name = L"tyIndexerForm";
    static const ATOM registered = [] {
        WNDCLASSEXW described{};
        described.cbSize = sizeof described;
        described.lpfnWndProc = &Win32Form::procedure;
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

WindowPlan Win32Form::plan(std::string_view name, std::string_view caption, const Bounds& inside) {
    RECT frame = toPixels({0, 0, inside.width, inside.height});
    AdjustWindowRectEx(&frame, formStyle, FALSE, 0);
    const RECT place{CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT + frame.right - frame.left,
                     CW_USEDEFAULT + frame.bottom - frame.top};
    return {windowClass(), name, caption, formStyle, 0, place, nullptr, 0, nullptr};
}

template <class Kind>
Kind& Win32Form::keep(const Layout& layout, std::unique_ptr<Kind> control) {
    Kind& kept = *control;
    controls_.push_back(std::move(control));
    putInTabOrder(kept.handle(), layout.tabIndex);
    return kept;
}

/// The tab order of a window is the order of its controls from front to back. Readers for the blind take the
/// label before a text box as its name.
void Win32Form::putInTabOrder(HWND control, int tabIndex) {
    const auto place = tabOrder_.emplace(tabIndex, control);
    const HWND before = place == tabOrder_.begin() ? HWND_TOP : std::prev(place)->second;
    SetWindowPos(control, before, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
}

Label& Win32Form::addLabel(const Layout& layout, std::string_view caption) {
    return keep(layout, std::make_unique<Win32Label>(Place{handle(), layout, events_}, caption));
}

TextBox& Win32Form::addTextBox(const Layout& layout, std::string_view text) {
    return keep(layout, std::make_unique<Win32TextBox>(Place{handle(), layout, events_}, text));
}

CheckBox& Win32Form::addCheckBox(const Layout& layout, std::string_view caption) {
    return keep(layout, std::make_unique<Win32CheckBox>(Place{handle(), layout, events_}, caption));
}

Button& Win32Form::addButton(const Layout& layout, std::string_view caption) {
    return keep(layout, std::make_unique<Win32Button>(Place{handle(), layout, events_}, caption));
}

ListBox& Win32Form::addListBox(const Layout& layout) {
    return keep(layout, std::make_unique<Win32ListBox>(Place{handle(), layout, events_}));
}

Timer& Win32Form::addTimer(std::string_view name, int milliseconds) {
    auto timer = std::make_unique<Win32Timer>(handle(), name);
    timer->setInterval(milliseconds);
    timers_.push_back(timer.get());
    controls_.push_back(std::move(timer));
    return *timers_.back();
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
    if (!visible()) {
        changeShown(SW_SHOW);
        UpdateWindow(handle());
    }
}

void Win32Form::hide() {
    changeShown(SW_HIDE);
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

LRESULT CALLBACK Win32Form::procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
    auto* const form = reinterpret_cast<Win32Form*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (form == nullptr) {
        return DefWindowProcW(window, message, first, second);
    }
    bool dealtWith = false;
    try {
        dealtWith = form->take(message, first, second);
    } catch (...) {
        // No exception finds its way through the system's frames.
        form->events_.fail(std::current_exception());
    }
    form->eventHandled_();
    return dealtWith ? 0 : DefWindowProcW(window, message, first, second);
}

bool Win32Form::take(UINT message, WPARAM first, LPARAM second) {
    switch (message) {
        case WM_COMMAND:
            if (Notifier* const control = Notifier::behind(reinterpret_cast<HWND>(second));
                control != nullptr) {
                control->notified(HIWORD(first));
            }
            return true;
        case WM_TIMER:
            tick(first);
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
        case WM_ACTIVATE:
            if (LOWORD(first) == WA_INACTIVE) {
                rememberFocus();
            }
            return false;
        case WM_SETFOCUS:
            giveFocusBack();
            return true;
        default:
            return false;
    }
}

void Win32Form::tick(UINT_PTR id) {
    for (const Win32Timer* timer : timers_) {
        if (timer->waitsUnder(id)) {
            events_.takeNowOrNever([timer] { timer->tick(); });
            return;
        }
    }
}

void Win32Form::rememberFocus() {
    const HWND focus = GetFocus();
    if (IsChild(handle(), focus) != 0) {
        focus_ = focus;
    }
}

void Win32Form::giveFocusBack() {
    SetFocus(focus_ != nullptr ? focus_ : GetNextDlgTabItem(handle(), nullptr, FALSE));
}

}  // namespace platform::win32
