#include "platform/headless/headless_form.h"

#include "base/runtime_error.h"
#include "platform/headless/headless_toolkit.h"

namespace platform::headless {

using base::ErrorNumber;
using base::RuntimeError;

namespace {

[[noreturn]] void raiseInvalidValue(const std::string& control, const std::string& value) {
    throw RuntimeError(ErrorNumber::invalidPropertyValue,
                       "Invalid property value: " + control + " cannot take " + value);
}

}  // namespace

void HeadlessTextBox::setText(std::string_view text) {
    if (text != text_) {
        text_ = text;
        call(changed_);
    }
}

void HeadlessCheckBox::setValue(int value) {
    if (value < 0 || value > 2) {
        raiseInvalidValue(name(), std::to_string(value));
    }
    if (value != value_) {
        value_ = value;
        call(changed_);
    }
}

void HeadlessListBox::insert(std::size_t index, std::string_view line) {
    if (index > lines_.size()) {
        throw RuntimeError(ErrorNumber::invalidProcedureCall, name() + " has no place for a line there");
    }
    lines_.emplace(lines_.begin() + static_cast<std::ptrdiff_t>(index), line);
}

void HeadlessListBox::remove(std::size_t index) {
    if (index >= lines_.size()) {
        throw RuntimeError(ErrorNumber::invalidProcedureCall, name() + " has no such line to remove");
    }
    lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(index));
}

std::string HeadlessListBox::line(std::size_t index) const {
    if (index >= lines_.size()) {
        throw RuntimeError(ErrorNumber::invalidProcedureCall, name() + " has no such line");
    }
    return lines_[index];
}

void HeadlessTimer::setInterval(int milliseconds) {
    if (milliseconds < 0 || milliseconds > longestInterval) {
        raiseInvalidValue(name(), std::to_string(milliseconds) + " ms");
    }
    interval_ = milliseconds;
    restart();
}

void HeadlessTimer::setEnabled(bool enabled) {
    enabled_ = enabled;
    restart();
}

std::optional<Milliseconds> HeadlessTimer::due() const {
    return enabled_ && interval_ > 0 ? std::optional(due_) : std::nullopt;
}

void HeadlessTimer::tick() {
    // The next wait counts from now on, so that a long handler is not followed by a burst of ticks.
    restart();
    call(ticked_);
}

std::optional<Milliseconds> nextTickOf(const std::vector<HeadlessTimer*>& timers) {
    std::optional<Milliseconds> next;
    for (const HeadlessTimer* timer : timers) {
        const std::optional<Milliseconds> due = timer->due();
        if (due && (!next || *due < *next)) {
            next = due;
        }
    }
    return next;
}

HeadlessTimer* dueAt(Milliseconds moment, const std::vector<HeadlessTimer*>& timers) {
    HeadlessTimer* first = nullptr;
    for (HeadlessTimer* timer : timers) {
        const std::optional<Milliseconds> due = timer->due();
        if (due && *due <= moment && (first == nullptr || *due < *first->due())) {
            first = timer;
        }
    }
    return first;
}

template <class Kind>
Kind& HeadlessForm::keep(std::unique_ptr<Kind> control) {
    Kind& kept = *control;
    controls_.insert_or_assign(kept.name(), std::move(control));
    return kept;
}

Label& HeadlessForm::addLabel(const Layout& layout, std::string_view caption) {
    return keep(std::make_unique<HeadlessLabel>(layout, caption));
}

TextBox& HeadlessForm::addTextBox(const Layout& layout, std::string_view text) {
    return keep(std::make_unique<HeadlessTextBox>(layout, text));
}

CheckBox& HeadlessForm::addCheckBox(const Layout& layout, std::string_view caption) {
    return keep(std::make_unique<HeadlessCheckBox>(layout, caption));
}

Button& HeadlessForm::addButton(const Layout& layout, std::string_view caption) {
    return keep(std::make_unique<HeadlessButton>(layout, caption));
}

ListBox& HeadlessForm::addListBox(const Layout& layout) {
    return keep(std::make_unique<HeadlessListBox>(layout));
}

Timer& HeadlessForm::addTimer(std::string_view name, int milliseconds) {
    HeadlessTimer& timer = keep(std::make_unique<HeadlessTimer>(name, 0, waiter_));
    timer.setInterval(milliseconds);
    timers_.push_back(&timer);
    return timer;
}

void HeadlessForm::close() {
    if (closing_) {
        return;
    }
    closing_ = true;
    hide();
    toolkit_.formIsClosing();
}

void HeadlessForm::resizeTo(WindowState state) {
    state_ = state;
    call(resized_);
}

void HeadlessForm::raiseNoSuchControl(std::string_view name) {
    throw RuntimeError(ErrorNumber::invalidProcedureCall,
                       "The window has no such control: " + std::string(name));
}

}  // namespace platform::headless
