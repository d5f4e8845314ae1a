// Window owns a window of the system, a control being one as well, under the name that the program gave it.
// Private to this folder: it brings <windows.h> along.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "platform/ui.h"

namespace platform::win32 {

/// Text between the program's UTF-8 and the system's two encodings.
[[nodiscard]] std::wstring toWide(std::string_view text);
[[nodiscard]] std::string toUtf8(std::wstring_view text);
[[nodiscard]] std::string toAnsi(std::string_view text);
[[nodiscard]] std::string ansiToUtf8(std::string_view text);

/// Raises the system's last error as a base::RuntimeError; `attempt` says what was tried.
[[noreturn]] void raiseSystemError(std::string_view attempt);

/// A rectangle in twips as pixels of this screen. Edges are rounded, not sizes, so that what touches in twips
/// touches on the screen.
[[nodiscard]] RECT toPixels(const Bounds& bounds);

/// The font of dialogs, at this screen's resolution. It lives as long as the program.
[[nodiscard]] HFONT dialogFont();

/// What a window is made with.
struct WindowPlan {
    const wchar_t* windowClass;
    std::string_view name;
    std::string_view text;
    DWORD style;
    DWORD extendedStyle;
    RECT place;
    HWND parent;
    int id;
    void* argument;
};

/// True while it exists: what the window procedure is told meanwhile comes from the program itself.
class Mark {
  public:
    explicit Mark(bool& flag) : flag_(flag) { flag_ = true; }
    Mark(const Mark&) = delete;
    Mark& operator=(const Mark&) = delete;
    ~Mark() { flag_ = false; }

  private:
    bool& flag_;
};

class Window {
  public:
    /// Raises a base::RuntimeError when the system makes no window.
    explicit Window(const WindowPlan& plan);
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    ~Window();

    [[nodiscard]] HWND handle() const { return handle_; }
    [[nodiscard]] const std::string& name() const { return name_; }

    [[nodiscard]] std::string text() const;
    void setText(std::string_view text);

    LRESULT send(UINT message, WPARAM first = 0, LPARAM second = 0) const {
        return SendMessageW(handle_, message, first, second);
    }

  private:
    std::string name_;
    HWND handle_ = nullptr;
};

}  // namespace platform::win32
