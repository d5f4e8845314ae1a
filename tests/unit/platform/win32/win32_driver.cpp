#include "unit/platform/win32/win32_driver.h"

#include <gtest/gtest.h>

#include <array>
#include <utility>

namespace win32_test {

namespace {

using Clock = std::chrono::steady_clock;

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

bool isDialog(HWND window) {
    std::array<wchar_t, 16> className{};
    GetClassNameW(window, className.data(), static_cast<int>(className.size()));
    return std::wstring_view(className.data()) == L"#32770";
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
    EXPECT_NE(search.found, nullptr) << "no window is named " << name;
    return search.found;
}

void letTimePass(platform::Toolkit& toolkit, std::chrono::milliseconds time) {
    const Clock::time_point end = Clock::now() + time;
    for (auto left = time; left.count() > 0;
         left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now())) {
        MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(left.count()), QS_ALLINPUT,
                                    MWMO_INPUTAVAILABLE);
        toolkit.processEvents();
    }
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
      hook_(SetWindowsHookExW(WH_CBT, &DialogWatcher::procedure, nullptr, GetCurrentThreadId())) {
    current = this;
}

DialogWatcher::~DialogWatcher() {
    UnhookWindowsHookEx(hook_);
    current = nullptr;
}

LRESULT CALLBACK DialogWatcher::procedure(int code, WPARAM first, LPARAM second) {
    const auto window = reinterpret_cast<HWND>(first);
    if (code == HCBT_ACTIVATE && current != nullptr && isDialog(window)) {
        current->shown_(window);
    }
    return CallNextHookEx(nullptr, code, first, second);
}

}  // namespace win32_test
