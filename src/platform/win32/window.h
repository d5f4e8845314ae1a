// Window owns a window of the system, a control being one as well, under the name that the program gave it.
// Private to this folder.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/ui.h"

// The system's own names. NOLINTBEGIN(bugprone-reserved-identifier)
struct HFONT__;
struct HWND__;
// NOLINTEND(bugprone-reserved-identifier)

namespace platform::win32 {

// The system's types, without its header.
using WindowHandle = HWND__*;
using MessageCode = unsigned int;
using FirstArgument = std::uintptr_t;
using SecondArgument = std::intptr_t;

/// Text between the program's UTF-8 and the system's two encodings.
[[nodiscard]] std::wstring toWide(std::string_view text);
[[nodiscard]] std::string toUtf8(std::wstring_view text);
[[nodiscard]] std::string toAnsi(std::string_view text);
[[nodiscard]] std::string ansiToUtf8(std::string_view text);

/// Raises the system's last error as a base::RuntimeError; `attempt` says what was tried.
[[noreturn]] void raiseSystemError(std::string_view attempt);

/// Position and size on this screen.
struct Pixels {
    int left;
    int top;
    int width;
    int height;
};

/// Twips as pixels of this screen. Edges are rounded, not sizes, so that what touches in twips touches on the
/// screen.
[[nodiscard]] Pixels toPixels(const Bounds& bounds);

/// What a window is made with.
struct WindowPlan {
    const wchar_t* windowClass;
    std::string_view name;
    std::string_view text;
    unsigned long style;
    unsigned long extendedStyle;
    Pixels place;
    WindowHandle parent;
    int id;
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

    [[nodiscard]] WindowHandle handle() const { return handle_; }
    [[nodiscard]] const std::string& name() const { return name_; }

    [[nodiscard]] std::string text() const;
    void setText(std::string_view text);

    SecondArgument send(MessageCode message, FirstArgument first = 0, SecondArgument second = 0) const;

    /// How many pixels a line of text takes in the window's font.
    [[nodiscard]] int widthOf(const std::wstring& text) const;

    /// Has the text fit into that many pixels, in narrower letters where it must.
    void fitText(int width);

  private:
    struct FontDeleter {
        void operator()(HFONT__* font) const;
    };

    std::string name_;
    WindowHandle handle_ = nullptr;
    std::unique_ptr<HFONT__, FontDeleter> ownFont_;
};

}  // namespace platform::win32
