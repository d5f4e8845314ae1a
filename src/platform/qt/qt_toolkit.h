// QtToolkit is the window toolkit of a desktop. The composition root owns it, and a Display that lives
// longer.
//
// Time comes from a Waiter, as it does for the window without a screen, so the two behave alike; Qt's own
// timer only wakes the event loop up when the next tick is due.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/qt/handler_calls.h"
#include "platform/qt/qt_form.h"
#include "platform/ui.h"
#include "platform/waiter.h"

class QDialog;
class QEventLoop;
class QTimer;

namespace platform::qt {

class QtToolkit final : public Toolkit {
  public:
    /// `wakeUpDescriptor`, when there is one, becomes readable when the waiter is told to close the window.
    explicit QtToolkit(Waiter& waiter, std::optional<int> wakeUpDescriptor = std::nullopt);
    ~QtToolkit() override;

    Form& createForm(std::string_view name, std::string_view caption, int width, int height) override;
    void processEvents() override;
    void run() override;
    /// While the window closes there is nobody to answer: the text goes to standard error.
    void messageBox(std::string_view text) override;
    std::optional<std::string> saveFileDialog(std::span<const FileFilter> filters,
                                              std::string_view defaultExtension) override;

    /// The form. Raises error 91 before it has been created.
    [[nodiscard]] QtForm& form() const;

    /// The moment of the next tick of any timer, by the waiter's time.
    [[nodiscard]] std::optional<Waiter::Milliseconds> nextTick() const;

    /// For the form and its controls: calls the handler of an event, unless the window closes or an error is
    /// on its way out. Throws nothing.
    void handle(const Handler& event);
    void formIsClosing();

  private:
    [[nodiscard]] bool closing() const { return form_ != nullptr && form_->closing(); }
    [[nodiscard]] headless::HeadlessTimer* timerDueAt(Waiter::Milliseconds moment) const;
    void wakeUp();
    void wakeUpAtNextTick();
    void finishClosing();
    void dismissDialogs();
    void leaveLoops();
    bool ask(QDialog& dialog);

    Waiter& waiter_;
    HandlerCalls handlers_;
    std::unique_ptr<QtForm> form_;
    std::unique_ptr<QTimer> wakeUp_;
    QEventLoop* running_ = nullptr;
    std::vector<QDialog*> dialogs_;
    bool closed_ = false;
};

}  // namespace platform::qt
