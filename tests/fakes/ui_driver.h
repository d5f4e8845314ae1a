// The operator in front of a window, whichever toolkit shows it.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string_view>

#include "platform/ui.h"

/// The operator in front of a window. What the operator does is an event: it waits until the toolkit handles
/// events.
class UiDriver {
  public:
    UiDriver() = default;
    UiDriver(const UiDriver&) = delete;
    UiDriver& operator=(const UiDriver&) = delete;
    virtual ~UiDriver() = default;

    virtual platform::Toolkit& toolkit() = 0;

    virtual void typeText(std::string_view textBox, std::string_view text) = 0;
    virtual void click(std::string_view button) = 0;
    virtual void press(std::string_view checkBox) = 0;
    /// Two presses of the mouse, as quick as a double click.
    virtual void clickTwice(std::string_view button) = 0;
    virtual void pressTwice(std::string_view checkBox) = 0;
    virtual void minimise() = 0;
    virtual void maximise() = 0;
    virtual void restore() = 0;
    virtual void resize() = 0;
    virtual void closeWindow() = 0;

    /// Lets time pass and has the toolkit handle events meanwhile.
    virtual void letTimePass(std::chrono::milliseconds time) = 0;

    /// What the operator does when a message box has come up, before answering it.
    std::function<void()> beforeAnswer = [] {};
};
