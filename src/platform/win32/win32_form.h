// Win32Form is the form: a window with its controls, and the window procedure that hands to the Events what
// the operator and the system do. Win32Toolkit owns it. Private to this folder.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/win32/events.h"
#include "platform/win32/win32_controls.h"
#include "platform/win32/window.h"

namespace platform::win32 {

class Win32Form final : public Form {
  public:
    /// `eventHandled` is called whenever something was handed to the events.
    Win32Form(Events& events, Handler eventHandled, std::string_view name, std::string_view caption,
              const Bounds& inside);
    Win32Form(const Win32Form&) = delete;
    Win32Form& operator=(const Win32Form&) = delete;
    ~Win32Form() override;

    [[nodiscard]] std::string name() const override { return window_.name(); }
    Label& addLabel(const Layout& layout, std::string_view caption) override;
    TextBox& addTextBox(const Layout& layout, std::string_view text) override;
    CheckBox& addCheckBox(const Layout& layout, std::string_view caption) override;
    Button& addButton(const Layout& layout, std::string_view caption) override;
    ListBox& addListBox(const Layout& layout) override;
    Timer& addTimer(std::string_view name, int milliseconds) override;

    [[nodiscard]] WindowState windowState() const override;
    [[nodiscard]] bool visible() const override;
    void show() override;
    void hide() override;
    void onResize(Handler handler) override { resized_ = std::move(handler); }
    void close() override;
    [[nodiscard]] bool closing() const override { return events_.closing(); }
    void onClose(Handler handler) override { closed_ = std::move(handler); }

    void runCloseHandler() const;
    [[nodiscard]] HWND handle() const { return window_.handle(); }
    [[nodiscard]] std::string caption() const { return window_.text(); }

  private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM first, LPARAM second);
    static const wchar_t* windowClass();
    static WindowPlan plan(std::string_view name, std::string_view caption, const Bounds& inside);

    template <class Kind>
    Kind& keep(const Layout& layout, std::unique_ptr<Kind> control);
    void putInTabOrder(HWND control, int tabIndex);
    void changeShown(int command);

    /// True when the message is dealt with.
    bool take(UINT message, WPARAM first, LPARAM second);
    void tick(UINT_PTR timer);
    void rememberFocus();
    void giveFocusBack();

    Events& events_;
    Handler eventHandled_;
    Window window_;
    std::vector<std::unique_ptr<Control>> controls_;
    std::vector<Win32Timer*> timers_;
    std::multimap<int, HWND> tabOrder_;
    HWND focus_ = nullptr;  // the control that has the focus, or had it when the window was left
    bool changedByProgram_ = false;
    Handler resized_;
    Handler closed_;
};

}  // namespace platform::win32
