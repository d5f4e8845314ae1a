// The operator of the tests on a screen that is not the operator's alone.
#include "fakes/win32_driver.h"

#include <gtest/gtest.h>

namespace {

/// Takes the focus away whenever a message is fetched, as another program does that comes to the front just
/// then.
class RestlessScreen {
  public:
    RestlessScreen() : hook_(SetWindowsHookExW(WH_GETMESSAGE, &procedure, nullptr, GetCurrentThreadId())) {}
    RestlessScreen(const RestlessScreen&) = delete;
    RestlessScreen& operator=(const RestlessScreen&) = delete;
    ~RestlessScreen() { UnhookWindowsHookEx(hook_); }

  private:
    static LRESULT CALLBACK procedure(int code, WPARAM first, LPARAM second) {
        if (code == HC_ACTION && first == PM_REMOVE) {
            SetFocus(nullptr);
        }
        return CallNextHookEx(nullptr, code, first, second);
    }

    HHOOK hook_;
};

class Win32Operator : public testing::Test {
  protected:
    std::unique_ptr<WindowDriver> operator_ = makeWin32Driver();
    platform::Toolkit& toolkit = operator_->toolkit();
    platform::Form& form = toolkit.createForm("Main", "a window", 5775, 3255);
    platform::CheckBox& check = form.addCheckBox({"chk", {120, 480, 1000, 285}, 0}, "Log it");
    platform::Button& button = form.addButton({"cmd", {120, 840, 1000, 375}, 1}, "S&top");

    Win32Operator() { form.show(); }
};

TEST_F(Win32Operator, ClicksAndPressesThoughTheFocusIsTakenAwayTimeAndAgain) {
    int clicks = 0;
    int presses = 0;
    button.onClick([&] { ++clicks; });
    check.onChange([&] { ++presses; });
    const RestlessScreen screen;
    operator_->click("cmd");
    operator_->press("chk");
    toolkit.processEvents();
    EXPECT_EQ(clicks, 1);
    EXPECT_EQ(presses, 1);
    operator_->clickTwice("cmd");
    operator_->pressTwice("chk");
    toolkit.processEvents();
    EXPECT_EQ(clicks, 3);
    EXPECT_EQ(presses, 3);
}

}  // namespace
