#include "platform/win32/win32_controls.h"

#include <windows.h>

#include <algorithm>
#include <bit>

#include "base/runtime_error.h"
#include "platform/win32/win32_toolkit.h"

namespace platform::win32 {

using base::ErrorNumber;
using base::RuntimeError;

namespace {

constexpr DWORD controlStyle = WS_CHILD | WS_VISIBLE;

WindowPlan planFor(const Place& place, const wchar_t* windowClass, std::string_view text, DWORD style,
                   DWORD extendedStyle = 0) {
    return {windowClass,
            place.layout.name,
            text,
            controlStyle | style,
            extendedStyle | WS_EX_NOPARENTNOTIFY,
            toPixels(place.layout.bounds),
            place.parent,
            firstControlId + place.layout.tabIndex};
}

void call(const Handler& handler) {
    if (handler) {
        handler();
    }
}

[[noreturn]] void raiseNoSuchLine(const std::string& control) {
    throw RuntimeError(ErrorNumber::invalidProcedureCall, control + " has no such line");
}

[[noreturn]] void raiseInvalidValue(const std::string& control, const std::string& value) {
    throw RuntimeError(ErrorNumber::invalidPropertyValue,
                       "Invalid property value: " + control + " cannot take " + value);
}

}  // namespace

Notifier* Notifier::behind(WindowHandle window) {
    return std::bit_cast<Notifier*>(GetWindowLongPtrW(window, GWLP_USERDATA));
}

void Notifier::attachTo(WindowHandle window) {
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

Win32Label::Win32Label(const Place& place, std::string_view caption)
    : window_(planFor(place, L"STATIC", caption, SS_LEFTNOWORDWRAP)) {
    window_.fitText(toPixels(place.layout.bounds).width);
}

Win32TextBox::Win32TextBox(const Place& place, std::string_view text)
    : window_(planFor(place, L"EDIT", text, WS_TABSTOP | ES_AUTOHSCROLL, WS_EX_CLIENTEDGE)),
      events_(place.events),
      text_(window_.text()) {
    window_.send(EM_SETLIMITTEXT);  // 0: as much as there is room for
    attachTo(window_.handle());
}

void Win32TextBox::setText(std::string_view text) {
    if (text == text_) {
        return;
    }
    {
        const Mark mark(changedByProgram_);
        window_.setText(text);
        // The operator goes on behind what the program wrote.
        const int end = GetWindowTextLengthW(window_.handle());
        window_.send(EM_SETSEL, static_cast<WPARAM>(end), end);
    }
    takeOver();
}

void Win32TextBox::notified(unsigned code) {
    if (code == EN_CHANGE && !changedByProgram_) {
        events_.take([this] { takeOver(); });
    }
}

/// The text that the program knows changes here, and its handler is called, once for each other content.
void Win32TextBox::takeOver() {
    std::string shown = window_.text();
    if (shown != text_) {
        text_ = std::move(shown);
        call(changed_);
    }
}

// The system's own ways of turning a box over go through all three values; this one has the program do it.
Win32CheckBox::Win32CheckBox(const Place& place, std::string_view caption)
    : window_(planFor(place, L"BUTTON", caption, WS_TABSTOP | BS_3STATE | BS_NOTIFY)), events_(place.events) {
    attachTo(window_.handle());
}

int Win32CheckBox::value() const {
    return static_cast<int>(window_.send(BM_GETCHECK));
}

void Win32CheckBox::setValue(int value) {
    static_assert(BST_UNCHECKED == 0 && BST_CHECKED == 1 && BST_INDETERMINATE == 2);
    if (value < BST_UNCHECKED || value > BST_INDETERMINATE) {
        raiseInvalidValue(name(), std::to_string(value));
    }
    if (value != this->value()) {
        window_.send(BM_SETCHECK, static_cast<WPARAM>(value));
        call(changed_);
    }
}

void Win32CheckBox::notified(unsigned code) {
    // The second of two quick presses is told as a double click, and as nothing else.
    if (code == BN_CLICKED || code == BN_DBLCLK) {
        events_.take([this] { setValue(value() == BST_UNCHECKED ? BST_CHECKED : BST_UNCHECKED); });
    }
}

Win32Button::Win32Button(const Place& place, std::string_view caption)
    : window_(planFor(place, L"BUTTON", caption, WS_TABSTOP | BS_PUSHBUTTON | BS_NOTIFY)),
      events_(place.events) {
    attachTo(window_.handle());
}

void Win32Button::notified(unsigned code) {
    switch (code) {
        case BN_CLICKED:
        case BN_DBLCLK:
            events_.take([this] { call(clicked_); });
            break;
        case BN_SETFOCUS:
            beDefault(true);
            break;
        case BN_KILLFOCUS:
            beDefault(false);
            break;
        default:
            break;
    }
}

/// The Enter key presses the default button. It is the one that has the focus and no other: an operator who
/// ends the typing of a poll interval with Enter must not stop the service by it.
void Win32Button::beDefault(bool isDefault) {
    window_.send(BM_SETSTYLE, isDefault ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON, TRUE);
}

Win32ListBox::Win32ListBox(const Place& place)
    : window_(planFor(place, L"LISTBOX", "",
                      WS_TABSTOP | WS_VSCROLL | WS_HSCROLL | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT,
                      WS_EX_CLIENTEDGE)) {}

void Win32ListBox::insert(std::size_t index, std::string_view line) {
    if (index > count()) {
        throw RuntimeError(ErrorNumber::invalidProcedureCall, name() + " has no place for a line there");
    }
    const std::wstring text = toWide(line);
    const LRESULT placed = window_.send(LB_INSERTSTRING, index, reinterpret_cast<LPARAM>(text.c_str()));
    if (placed == LB_ERR || placed == LB_ERRSPACE) {
        raiseSystemError(name() + " took no further line");
    }
    // The list leaves a little room at both sides of a line.
    widths_.insert(widths_.begin() + static_cast<std::ptrdiff_t>(index),
                   window_.widthOf(text) + 2 * GetSystemMetrics(SM_CXEDGE));
    fitScrollBar();
}

void Win32ListBox::remove(std::size_t index) {
    if (index >= count()) {
        raiseNoSuchLine(name());
    }
    window_.send(LB_DELETESTRING, index);
    widths_.erase(widths_.begin() + static_cast<std::ptrdiff_t>(index));
    fitScrollBar();
}

std::size_t Win32ListBox::count() const {
    return static_cast<std::size_t>(window_.send(LB_GETCOUNT));
}

std::string Win32ListBox::line(std::size_t index) const {
    if (index >= count()) {
        raiseNoSuchLine(name());
    }
    std::wstring text(static_cast<std::size_t>(window_.send(LB_GETTEXTLEN, index)) + 1, L'\0');
    const LRESULT length = window_.send(LB_GETTEXT, index, reinterpret_cast<LPARAM>(text.data()));
    return toUtf8(std::wstring_view(text).substr(0, static_cast<std::size_t>(length)));
}

/// A list of the system does not see by itself that a line is longer than it is wide.
void Win32ListBox::fitScrollBar() {
    const auto widest = std::max_element(widths_.begin(), widths_.end());
    window_.send(LB_SETHORIZONTALEXTENT, widest == widths_.end() ? 0 : static_cast<WPARAM>(*widest));
}

}  // namespace platform::win32
