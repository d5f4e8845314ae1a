// Win32Form is the form: a window with its controls, which hands to the Events what the operator and the
// system do. Win32Toolkit owns it. Private to this folder.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/headless/headless_form.h"
#include "platform/waiter.h"
#include "platform/win32/events.h"
#include "platform/win32/win32_controls.h"
#include "platform/win32/window.h"

namespace platform::win32 {

/// What the form tells its toolkit.
class FormObserver {
  public:
    FormObserver() = default;
    FormObserver(const FormObserver&) = delete;
    FormObserver& operator=(const FormObserver&) = delete;
    virtual ~FormObserver() = default;

    /// The system has kept the time that wakeUpIn() asked for.
    virtual void wokenUp() = 0;
    /// A message was dealt with; handlers may have been called.
    virtual void messageHandled() = 0;
};

class Win32Form final : public Form {
  public:
    Win32Form(Events& events, Waiter& waiter, FormObserver& observer, std::string_view name,
              std::string_view caption, const Bounds& inside);
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
    [[nodiscard]] WindowHandle handle() const { return window_.handle(); }
    [[nodiscard]] std::string caption() const { return window_.text(); }
    /// The control of that name, or nothing.
    [[nodiscard]] Control* find(std::string_view name) const;

    /// The timers are those of the headless window: they tell when they are due, the toolkit has them tick.
    [[nodiscard]] const std::vector<headless::HeadlessTimer*>& timers() const { return timers_; }
    void wakeUpIn(Waiter::Milliseconds time) const;
    void letSleep() const;

    /// For the window procedure: true when the message is dealt with. Throws nothing.
    bool receive(MessageCode message, FirstArgument first, SecondArgument second);

  private:
    template <class Kind>
    Kind& keep(std::unique_ptr<Kind> control);
    template <class Kind>
    Kind& place(const Layout& layout, std::unique_ptr<Kind> control);
    void changeShown(int command);
    bool take(MessageCode message, FirstArgument first, SecondArgument second);
    void controlNotifies(WindowHandle control, unsigned code);

    Events& events_;
    Waiter& waiter_;
    FormObserver& observer_;
    Window window_;
    std::map<std::string, std::unique_ptr<Control>, std::less<>> controls_;
    std::vector<headless::HeadlessTimer*> timers_;
    std::multimap<int, WindowHandle> tabOrder_;
    WindowHandle focus_ = nullptr;  // the last control that had the focus
    bool changedByProgram_ = false;
    Handler resized_;
    Handler closed_;
};

}  // namespace platform::win32
