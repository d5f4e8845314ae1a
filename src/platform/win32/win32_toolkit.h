// Win32Toolkit shows the window with the system's own controls on Windows. The composition root owns it; it
// lives on the thread that runs it.
//
// Time comes from a Waiter, as it does for the window without a screen, so the two behave alike; a timer of
// the system only wakes the toolkit up when a tick is due while a dialog, an open menu, the frame that is
// being dragged or a scroll bar that is held has a loop of its own. Most of these belong to a control, and
// the form hears nothing of their beginning: the timer is set whenever messages are dispatched.
//
// Other programs, such as readers for the blind and test tools, find a control by its number, which is
// firstControlId plus its place in the tab order, or by its name: the window property controlNameProperty
// holds a global atom of it.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/ui.h"
#include "platform/waiter.h"
#include "platform/win32/events.h"
#include "platform/win32/win32_form.h"

struct tagMSG;

namespace platform::win32 {

inline constexpr const wchar_t* controlNameProperty = L"tyIndexer.ControlName";
/// Numbers 1 and 2 mean the keys Enter and Escape to the system, so that no control has them.
inline constexpr int firstControlId = 100;
/// The number of the program's icon among its resources.
inline constexpr int iconResource = 1;

class Win32Toolkit final : public Toolkit, private FormObserver {
  public:
    explicit Win32Toolkit(Waiter& waiter);

    Form& createForm(std::string_view name, std::string_view caption, int width, int height) override;
    void processEvents() override;
    void run() override;
    /// While the window closes there is nobody to answer: the text goes to standard error.
    void messageBox(std::string_view text) override;
    std::optional<std::string> saveFileDialog(std::span<const FileFilter> filters,
                                              std::string_view defaultExtension) override;

    /// The form. Raises error 91 before it has been created.
    [[nodiscard]] Win32Form& form() const;

    /// The moment of the next tick of any timer, by the waiter's time.
    [[nodiscard]] std::optional<Waiter::Milliseconds> nextTick() const;

  private:
    void wokenUp() override;
    void messageHandled() override;

    void handleDeferred();
    void dispatch(tagMSG& message);
    [[nodiscard]] bool takenByDialog(tagMSG& message) const;
    void tickDueTimers();
    [[nodiscard]] headless::HeadlessTimer* timerDueAt(Waiter::Milliseconds moment) const;
    void wakeUpAtNextTick();
    void leaveSystemLoops() const;
    template <class Dialog>
    auto showDialog(const Dialog& dialog);

    Waiter& waiter_;
    Events events_;
    std::unique_ptr<Win32Form> form_;
    int openDialogs_ = 0;
    std::optional<Waiter::Milliseconds> wakeUp_;  // the moment that the system's timer is set to
};

}  // namespace platform::win32
