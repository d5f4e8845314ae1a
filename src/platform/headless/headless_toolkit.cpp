#include "platform/headless/headless_toolkit.h"

#include <iostream>
#include <utility>

#include "base/runtime_error.h"

namespace platform::headless {

HeadlessToolkit::HeadlessToolkit(Waiter& waiter, MessageSink messages)
    : waiter_(waiter), messages_(std::move(messages)) {}

Form& HeadlessToolkit::createForm(std::string_view name, std::string_view caption, int width, int height) {
    form_ = std::make_unique<HeadlessForm>(*this, waiter_, name, caption, Bounds{0, 0, width, height});
    return *form_;
}

HeadlessForm& HeadlessToolkit::form() const {
    if (form_ == nullptr) {
        throw base::RuntimeError(base::ErrorNumber::objectNotSet, "The window has not been created");
    }
    return *form_;
}

void HeadlessToolkit::processEvents() {
    if (!closing() && form_ != nullptr && waiter_.closeRequested()) {
        handle([this] { form_->close(); });
    }
    while (!closing() && !events_.empty()) {
        const Event event = std::move(events_.front());
        events_.pop_front();
        handle(event);
    }
    // The moment is taken once: each timer ticks at most once, however long the handlers take.
    const Milliseconds moment = waiter_.now();
    for (HeadlessTimer* timer = timerDueAt(moment); timer != nullptr; timer = timerDueAt(moment)) {
        handle([timer] { timer->tick(); });
    }
}

void HeadlessToolkit::run() {
    static_cast<void>(form());
    while (!closed_) {
        processEvents();
        if (!closed_ && events_.empty()) {
            waiter_.wait(nextTick());
        }
    }
}

std::optional<std::string> HeadlessToolkit::saveFileDialog(std::span<const FileFilter> filters,
                                                           std::string_view defaultExtension) {
    return saveFileDialog_ ? saveFileDialog_(filters, defaultExtension) : std::nullopt;
}

void HeadlessToolkit::typeText(std::string_view textBox, std::string_view text) {
    post([this, name = std::string(textBox), typed = std::string(text)] {
        form().find<HeadlessTextBox>(name).setText(typed);
    });
}

void HeadlessToolkit::click(std::string_view button) {
    post([this, name = std::string(button)] { form().find<HeadlessButton>(name).click(); });
}

void HeadlessToolkit::press(std::string_view checkBox) {
    post([this, name = std::string(checkBox)] {
        auto& box = form().find<HeadlessCheckBox>(name);
        box.setValue(box.value() == 0 ? 1 : 0);
    });
}

void HeadlessToolkit::setWindowState(WindowState state) {
    post([this, state] { form().resizeTo(state); });
}

void HeadlessToolkit::resize() {
    post([this] { form().resizeTo(form().windowState()); });
}

void HeadlessToolkit::closeWindow() {
    post([this] { form().close(); });
}

std::optional<Milliseconds> HeadlessToolkit::nextTick() const {
    return nextTickOf(form().timers());
}

void HeadlessToolkit::printToStandardError(std::string_view text) {
    std::string lines(text);
    std::erase(lines, '\r');
    std::cerr << lines << std::endl;
}

HeadlessTimer* HeadlessToolkit::timerDueAt(Milliseconds moment) const {
    return form_ == nullptr || closing() ? nullptr : dueAt(moment, form_->timers());
}

void HeadlessToolkit::handle(const Event& event) {
    ++handlersAtWork_;
    try {
        callHandler(event);
    } catch (...) {
        --handlersAtWork_;
        throw;
    }
    --handlersAtWork_;
    if (closing() && handlersAtWork_ == 0) {
        finishClosing();
    }
}

void HeadlessToolkit::callHandler(const Event& event) {
    const bool insideAnother = handlersAtWork_ > 1;
    try {
        event();
    } catch (const std::exception&) {
        if (insideAnother) {
            throw HandlerFailed{std::current_exception()};
        }
        throw;
    } catch (const HandlerFailed& failure) {
        if (insideAnother) {
            throw;
        }
        std::rethrow_exception(failure.error);
    }
}

void HeadlessToolkit::formIsClosing() {
    if (handlersAtWork_ == 0) {
        finishClosing();
    }
}

void HeadlessToolkit::finishClosing() {
    closed_ = true;
    events_.clear();
    form_->runCloseHandler();
}

}  // namespace platform::headless
