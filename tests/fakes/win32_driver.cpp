#include "fakes/win32_driver.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

namespace win32_test {

namespace {

struct Search {
    std::string_view name;
    HWND found;
};

BOOL CALLBACK compare(HWND window, LPARAM argument) {
    auto& search = *reinterpret_cast<Search*>(argument);
    if (nameOf(window) == search.name) {
        search.found = window;
        return FALSE;
    }
    EnumChildWindows(window, &compare, argument);
    return search.found == nullptr ? TRUE : FALSE;
}

std::wstring classOf(HWND window) {
    std::array<wchar_t, 32> name{};
    GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    return name.data();
}

bool isDialog(HWND window) {
    return classOf(window) == L"#32770";
}

BOOL CALLBACK takeDialog(HWND window, LPARAM argument) {
    if (isDialog(window) && IsWindowVisible(window) != 0) {
        *reinterpret_cast<HWND*>(argument) = window;
        return FALSE;
    }
    return TRUE;
}

}  // namespace

std::string nameOf(HWND window) {
    const HANDLE atom = GetPropW(window, platform::win32::controlNameProperty);
    std::array<char, 64> name{};
    if (atom != nullptr) {
        GlobalGetAtomNameA(static_cast<ATOM>(reinterpret_cast<ULONG_PTR>(atom)), name.data(),
                           static_cast<int>(name.size()));
    }
    return name.data();
}

HWND windowNamed(std::string_view name) {
    Search search{name, nullptr};
    EnumThreadWindows(GetCurrentThreadId(), &compare, reinterpret_cast<LPARAM>(&search));
    if (search.found == nullptr) {
        throw std::logic_error("no window is named " + std::string(name));
    }
    return search.found;
}

void typeOver(std::string_view textBox, std::wstring_view text) {
    const HWND box = windowNamed(textBox);
    PostMessageW(box, EM_SETSEL, 0, -1);
    for (const wchar_t unit : text) {
        PostMessageW(box, WM_CHAR, unit, 1);
    }
}

void pressKey(HWND control, WPARAM key) {
    PostMessageW(control, WM_KEYDOWN, key, 1);
    PostMessageW(control, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001U));
}

HWND openDialog() {
    HWND dialog = nullptr;
    EnumThreadWindows(GetCurrentThreadId(), &takeDialog, reinterpret_cast<LPARAM>(&dialog));
    return dialog;
}

DialogWatcher* DialogWatcher::current = nullptr;

DialogWatcher::DialogWatcher(std::function<void(HWND dialog)> shown)
    : shown_(std::move(shown)),
      hook_(SetWindowsHookExW(WH_CBT, &DialogWatcher::procedure, nullptr, GetCurrentThreadId())),
      before_(std::exchange(current, this)) {}

DialogWatcher::~DialogWatcher() {
    UnhookWindowsHookEx(hook_);
    current = before_;
}

LRESULT CALLBACK DialogWatcher::procedure(int code, WPARAM first, LPARAM second) {
    const auto window = reinterpret_cast<HWND>(first);
    if (code == HCBT_ACTIVATE && current != nullptr && current->seen_ != window && isDialog(window)) {
        current->seen_ = window;
        current->shown_(window);
    }
    return CallNextHookEx(nullptr, code, first, second);
}

Errands::Errands()
    : window_(CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Errands::procedure));
}

Errands::~Errands() {
    DestroyWindow(window_);
}

void Errands::post(std::function<void()> errand) {
    waiting_.push_back(std::move(errand));
    PostMessageW(window_, WM_APP, 0, 0);
}

LRESULT CALLBACK Errands::procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
    auto* const errands = reinterpret_cast<Errands*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_APP && !errands->waiting_.empty()) {
        const std::function<void()> errand = std::move(errands->waiting_.front());
        errands->waiting_.pop_front();
        errand();
        return 0;
    }
    return DefWindowProcW(window, message, first, second);
}

namespace {

// The numbers that the dialogs' own templates give their controls.
constexpr int messageText = 0xFFFF;
constexpr int kindList = 0x470;
constexpr int fileName = 0x47C;

std::string textOf(HWND window) {
    std::array<char, 1024> text{};
    GetWindowTextA(window, text.data(), static_cast<int>(text.size()));
    return text.data();
}

/// Plays the operator by posting what the operator does, so that it happens when events are handled.
class Win32Driver final : public WindowDriver {
  public:
    platform::win32::Win32Toolkit& toolkit() override { return toolkit_; }
    [[nodiscard]] platform::win32::Win32Form& form() override { return toolkit_.form(); }

    /// As pasted over what the box holds, so that the text arrives in one piece.
    void typeText(std::string_view textBox, std::string_view text) override {
        errands_.post([box = windowNamed(textBox), typed = std::string(text)] {
            SendMessageW(box, EM_SETSEL, 0, -1);
            SendMessageA(box, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(typed.c_str()));
        });
    }
    void click(std::string_view button) override { pressMouse(button); }
    void press(std::string_view checkBox) override { pressMouse(checkBox); }
    void clickTwice(std::string_view button) override { pressMouseTwice(button); }
    void pressTwice(std::string_view checkBox) override { pressMouseTwice(checkBox); }
    void minimise() override { order(SC_MINIMIZE); }
    void maximise() override { order(SC_MAXIMIZE); }
    void restore() override { order(SC_RESTORE); }
    void resize() override {
        errands_.post([window = form().handle()] {
            SetWindowPos(window, nullptr, 0, 0, 500, 400, SWP_NOMOVE | SWP_NOZORDER);
        });
    }
    void closeWindow() override { PostMessageW(form().handle(), WM_CLOSE, 0, 0); }
    void letTimePass(std::chrono::milliseconds time) override { waiter.advance(toolkit_, time); }

    /// Fifteen twips are a pixel on a screen of 96 dots per inch, which Wine's is.
    [[nodiscard]] Seen see(std::string_view name) override {
        const HWND window = windowNamed(name);
        RECT place{};
        GetWindowRect(window, &place);
        MapWindowPoints(nullptr, form().handle(), reinterpret_cast<POINT*>(&place), 2);
        const std::wstring kind = classOf(window);
        return {{place.left * 15, place.top * 15, (place.right - place.left) * 15,
                 (place.bottom - place.top) * 15},
                GetDlgCtrlID(window) - platform::win32::firstControlId,
                kind == L"Static" || kind == L"Button" ? textOf(window) : std::string()};
    }
    [[nodiscard]] std::string title() override { return textOf(form().handle()); }

  protected:
    [[nodiscard]] platform::Control& control(std::string_view name) override {
        platform::Control* const found = form().find(name);
        if (found == nullptr) {
            throw std::logic_error("no such control: " + std::string(name));
        }
        return *found;
    }

  private:
    void order(WPARAM what) { PostMessageW(form().handle(), WM_SYSCOMMAND, what, 0); }
    /// Pressed and released in one piece: when another program comes to the front in between, the button
    /// gives the mouse up and is not clicked, as on every desktop.
    void pressMouse(std::string_view name, UINT press = WM_LBUTTONDOWN) {
        errands_.post([window = windowNamed(name), press] {
            SendMessageW(window, press, MK_LBUTTON, MAKELPARAM(5, 5));
            SendMessageW(window, WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
        });
    }
    /// The system itself makes a double click of the second press, in a window of a class that asks for it.
    void pressMouseTwice(std::string_view name) {
        const bool knowsDoubleClicks = (GetClassLongPtrW(windowNamed(name), GCL_STYLE) & CS_DBLCLKS) != 0;
        pressMouse(name);
        pressMouse(name, knowsDoubleClicks ? WM_LBUTTONDBLCLK : WM_LBUTTONDOWN);
    }

    void answer(HWND dialog) {
        if (const HWND text = GetDlgItem(dialog, messageText); text != nullptr) {
            beforeAnswer();
            boxes.push_back(textOf(text));
            std::erase(boxes.back(), '\r');
            PostMessageW(dialog, WM_COMMAND, IDOK, 0);
        } else {
            answerFileDialog(dialog);
        }
    }
    void answerFileDialog(HWND dialog) {
        const LRESULT count = SendDlgItemMessageA(dialog, kindList, CB_GETCOUNT, 0, 0);
        for (LRESULT i = 0; i < count; ++i) {
            std::array<char, 64> kind{};
            SendDlgItemMessageA(dialog, kindList, CB_GETLBTEXT, static_cast<WPARAM>(i),
                                reinterpret_cast<LPARAM>(kind.data()));
            offered.emplace_back(kind.data());
        }
        if (fileChosen()) {
            SendDlgItemMessageA(dialog, fileName, WM_SETTEXT, 0,
                                reinterpret_cast<LPARAM>(fileChosen()->c_str()));
        }
        PostMessageW(dialog, WM_COMMAND, fileChosen() ? IDOK : IDCANCEL, 0);
    }

    Errands errands_;
    DialogWatcher dialogs_{[this](HWND dialog) { errands_.post([this, dialog] { answer(dialog); }); }};
    platform::win32::Win32Toolkit toolkit_{waiter};
};

}  // namespace

}  // namespace win32_test

std::unique_ptr<WindowDriver> makeWin32Driver() {
    return std::make_unique<win32_test::Win32Driver>();
}
