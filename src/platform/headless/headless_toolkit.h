// HeadlessToolkit is a window toolkit without a screen: the daemon's, and every test's. It keeps the one form
// in memory; its operator is whoever calls the operator's operations below. The composition root owns it.
//
// What the operator does waits in a queue and is handled by processEvents() and run(), as a window handles
// what was typed into it. A message box is printed and counts as answered: an unattended service never waits
// for a click.
#pragma once

#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/headless/headless_form.h"
#include "platform/ui.h"
#include "platform/waiter.h"

namespace platform::headless {

/// How an error in an event's handler leaves a job that has let the window handle its events: it ends the
/// program, so on purpose no std::exception, which the job's own traps would catch. run() gives the error
/// itself to its caller.
struct HandlerFailed {
    std::exception_ptr error;
};

class HeadlessToolkit final : public Toolkit {
  public:
    using MessageSink = std::function<void(std::string_view text)>;
    using SaveFileDialog = std::function<std::optional<std::string>(std::span<const FileFilter> filters,
                                                                    std::string_view defaultExtension)>;

    explicit HeadlessToolkit(Waiter& waiter, MessageSink messages = printToStandardError);

    Form& createForm(std::string_view name, std::string_view caption, int width, int height) override;
    void processEvents() override;
    void run() override;
    void messageBox(std::string_view text) override { messages_(text); }
    std::optional<std::string> saveFileDialog(std::span<const FileFilter> filters,
                                              std::string_view defaultExtension) override;

    // What the operator does. Raises error 5 when the event is handled and there is no control of that name.
    void typeText(std::string_view textBox, std::string_view text);
    void click(std::string_view button);
    /// Presses a check box: a cleared one becomes checked, any other cleared.
    void press(std::string_view checkBox);
    void setWindowState(WindowState state);
    void resize();
    void closeWindow();

    /// Answers the file dialogs from now on; without it they are cancelled.
    void onSaveFileDialog(SaveFileDialog dialog) { saveFileDialog_ = std::move(dialog); }

    /// The form. Raises error 91 before it has been created.
    [[nodiscard]] HeadlessForm& form() const;

    /// The moment of the next tick of any timer, by the waiter's time.
    [[nodiscard]] std::optional<Milliseconds> nextTick() const;

    static void printToStandardError(std::string_view text);

  private:
    friend class HeadlessForm;
    using Event = std::function<void()>;

    void post(Event event) { events_.push_back(std::move(event)); }
    [[nodiscard]] bool closing() const { return form_ != nullptr && form_->closing(); }
    [[nodiscard]] HeadlessTimer* timerDueAt(Milliseconds moment) const;
    void handle(const Event& event);
    void callHandler(const Event& event);
    void formIsClosing();
    void finishClosing();

    Waiter& waiter_;
    MessageSink messages_;
    SaveFileDialog saveFileDialog_;
    std::unique_ptr<HeadlessForm> form_;
    std::deque<Event> events_;
    int handlersAtWork_ = 0;
    bool closed_ = false;
};

}  // namespace platform::headless
