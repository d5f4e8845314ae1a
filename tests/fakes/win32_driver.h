// The operator of a window on the Windows screen, and what a test sees of that window from outside: controls
// are found as another program would find them.
#pragma once

#include <windows.h>

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "fakes/window_driver.h"
#include "platform/win32/win32_toolkit.h"

namespace win32_test {

/// The window of that name: the form, or one of its controls. Raises std::logic_error when there is none.
HWND windowNamed(std::string_view name);

/// The name that another program reads from a window; empty when it has none.
std::string nameOf(HWND window);

/// Types characters into a text box, over a selection of all that it holds, key by key.
void typeOver(std::string_view textBox, std::wstring_view text);

/// A key pressed and released in a control.
void pressKey(HWND control, WPARAM key);

/// The dialog, a message box or one for files, that is open on this thread; null when there is none.
HWND openDialog();

/// Calls a function with each dialog that this thread opens: once, when it is shown and handles messages.
class DialogWatcher {
  public:
    explicit DialogWatcher(std::function<void(HWND dialog)> shown);
    DialogWatcher(const DialogWatcher&) = delete;
    DialogWatcher& operator=(const DialogWatcher&) = delete;
    ~DialogWatcher();

  private:
    static LRESULT CALLBACK procedure(int code, WPARAM first, LPARAM second);

    static DialogWatcher* current;
    std::function<void(HWND dialog)> shown_;
    HHOOK hook_;
    HWND seen_ = nullptr;
    DialogWatcher* before_;
};

/// Things to do when the thread handles messages, whoever's loop that is; forgotten when it goes.
class Errands {
  public:
    Errands();
    Errands(const Errands&) = delete;
    Errands& operator=(const Errands&) = delete;
    ~Errands();

    void post(std::function<void()> errand);

  private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM first, LPARAM second);

    HWND window_;
    std::deque<std::function<void()>> waiting_;
};

}  // namespace win32_test

std::unique_ptr<WindowDriver> makeWin32Driver();
