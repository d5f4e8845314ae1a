// The operator in front of a window of Win32Toolkit: what is done here goes through the thread's message
// queue as keys, clicks and orders of the window's frame do, and the controls are found as another program
// would.
#pragma once

#include <windows.h>

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

#include "platform/win32/win32_toolkit.h"

namespace win32_test {

/// The window of that name: the form, or one of its controls. Fails the test when there is none.
HWND windowNamed(std::string_view name);

/// The name that another program reads from a window; empty when it has none.
std::string nameOf(HWND window);

/// Lets the toolkit handle what waits in the queue until the time is over.
void letTimePass(platform::Toolkit& toolkit, std::chrono::milliseconds time);

/// Posts the characters to a control, after a selection of all that it holds.
void typeOver(std::string_view textBox, std::wstring_view text);

/// A key pressed and released in a control.
void pressKey(HWND control, WPARAM key);

/// The dialog, a message box or one for files, that is open on this thread; null when there is none.
HWND openDialog();

/// Calls a function with each dialog that this thread opens, at the moment when it is shown.
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
};

}  // namespace win32_test
