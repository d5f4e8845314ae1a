// The operator of a window without a screen.
#pragma once

#include <span>
#include <stdexcept>
#include <string>

#include "fakes/window_driver.h"
#include "platform/headless/headless_toolkit.h"

class HeadlessDriver : public WindowDriver {
  public:
    HeadlessDriver() {
        toolkit_.onSaveFileDialog(
            [this](std::span<const platform::FileFilter> filters, std::string_view extension) {
                for (const platform::FileFilter& filter : filters) {
                    offered.push_back(std::string(filter.description) + "|" + std::string(filter.pattern));
                }
                offered.emplace_back(extension);
                return fileChosen();
            });
    }

    platform::headless::HeadlessToolkit& toolkit() override { return toolkit_; }
    [[nodiscard]] platform::headless::HeadlessForm& form() override { return toolkit_.form(); }
    void typeText(std::string_view textBox, std::string_view text) override {
        toolkit_.typeText(textBox, text);
    }
    void click(std::string_view button) override { toolkit_.click(button); }
    void press(std::string_view checkBox) override { toolkit_.press(checkBox); }
    void clickTwice(std::string_view button) override {
        click(button);
        click(button);
    }
    void pressTwice(std::string_view checkBox) override {
        press(checkBox);
        press(checkBox);
    }
    void minimise() override { toolkit_.setWindowState(platform::WindowState::minimised); }
    void maximise() override { toolkit_.setWindowState(platform::WindowState::maximised); }
    void restore() override { toolkit_.setWindowState(platform::WindowState::normal); }
    void resize() override { toolkit_.resize(); }
    void closeWindow() override { toolkit_.closeWindow(); }
    void letTimePass(std::chrono::milliseconds time) override { waiter.advance(toolkit_, time); }

    [[nodiscard]] Seen see(std::string_view name) override {
        using namespace platform::headless;
        Seen seen;
        platform::Control& found = control(name);
        const bool known = look<HeadlessLabel>(found, seen) || look<HeadlessTextBox>(found, seen) ||
                           look<HeadlessCheckBox>(found, seen) || look<HeadlessButton>(found, seen) ||
                           look<HeadlessListBox>(found, seen);
        return known ? seen : throw std::logic_error("nothing is seen of " + std::string(name));
    }
    [[nodiscard]] std::string title() override { return form().caption(); }

  protected:
    [[nodiscard]] platform::Control& control(std::string_view name) override {
        return toolkit_.form().find<platform::Control>(name);
    }

  private:
    template <class Kind>
    static bool look(platform::Control& control, Seen& seen) {
        const auto* const shown = dynamic_cast<Kind*>(&control);
        if (shown == nullptr) {
            return false;
        }
        seen.bounds = shown->bounds();
        seen.tabIndex = shown->tabIndex();
        if constexpr (requires { shown->caption(); }) {
            seen.caption = shown->caption();
        }
        return true;
    }

    platform::headless::HeadlessToolkit toolkit_{waiter, [this](std::string_view text) {
                                                     beforeAnswer();
                                                     boxes.emplace_back(text);
                                                     std::erase(boxes.back(), '\r');
                                                 }};
};
