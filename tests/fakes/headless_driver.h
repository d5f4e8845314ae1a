// The operator of a window without a screen.
#pragma once

#include "fakes/window_driver.h"
#include "platform/headless/headless_toolkit.h"

class HeadlessDriver : public WindowDriver {
  public:
    HeadlessDriver() {
        toolkit_.onSaveFileDialog([this](auto, auto) { return fileChosen(); });
    }

    platform::headless::HeadlessToolkit& toolkit() override { return toolkit_; }
    [[nodiscard]] platform::headless::HeadlessForm& form() override { return toolkit_.form(); }
    void typeText(std::string_view textBox, std::string_view text) override {
        toolkit_.typeText(textBox, text);
    }
    void click(std::string_view button) override { toolkit_.click(button); }
    void press(std::string_view checkBox) override { toolkit_.press(checkBox); }
    void minimise() override { toolkit_.setWindowState(platform::WindowState::minimised); }
    void maximise() override { toolkit_.setWindowState(platform::WindowState::maximised); }
    void restore() override { toolkit_.setWindowState(platform::WindowState::normal); }
    void resize() override { toolkit_.resize(); }
    void closeWindow() override { toolkit_.closeWindow(); }
    void letTimePass(std::chrono::milliseconds time) override { waiter.advance(toolkit_, time); }

  protected:
    [[nodiscard]] platform::Control& control(std::string_view name) override {
        return toolkit_.form().find<platform::Control>(name);
    }

  private:
    platform::headless::HeadlessToolkit toolkit_{waiter, [this](std::string_view text) {
                                                     boxes.emplace_back(text);
                                                     std::erase(boxes.back(), '\r');
                                                 }};
};
