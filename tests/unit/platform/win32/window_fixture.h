// A window with one control of each kind, laid out as the service's own.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fakes/manual_waiter.h"
#include "fakes/win32_driver.h"
#include "platform/win32/win32_toolkit.h"

class Win32Window : public testing::Test {
  protected:
    fakes::ManualWaiter waiter;
    platform::win32::Win32Toolkit toolkit{waiter};
    platform::Form& form = toolkit.createForm("Main", "orlentbar indexer", 5775, 3255);
    platform::Button& stop = form.addButton({"cmdStartStop", {360, 2760, 1095, 375}, 0}, "S&top");
    platform::ListBox& list = form.addListBox({"lstStatus", {120, 720, 5535, 1230}, 1});
    platform::Button& exit = form.addButton({"cmdExit", {4320, 2760, 1095, 375}, 2}, "E&xit");
    platform::CheckBox& check = form.addCheckBox({"chkLogit", {120, 2160, 855, 255}, 3}, "Log it");
    platform::TextBox& text = form.addTextBox({"txtPollInterval", {1920, 210, 735, 285}, 6}, "1");
    platform::Timer& timer = form.addTimer("Timer1", 10);
    platform::Label& label = form.addLabel({"lblPoll", {120, 240, 1695, 255}, 5}, "Poll Index Queue every");
    std::vector<std::string> seen;

    Win32Window() { form.show(); }

    platform::Handler note(std::string what) {
        return [this, what] { seen.push_back(what); };
    }
    static void post(std::string_view name, UINT message, WPARAM first = 0, LPARAM second = 0) {
        PostMessageW(win32_test::windowNamed(name), message, first, second);
    }
};

using Seen = std::vector<std::string>;
