#include "unit/platform/contract/ui_contract.h"

#include "unit/platform/win32/win32_driver.h"

namespace {

class Win32Driver : public UiDriver {
  public:
    platform::Toolkit& toolkit() override { return toolkit_; }
    void typeText(std::string_view textBox, std::string_view text) override {
        win32_test::typeOver(textBox, std::wstring(text.begin(), text.end()));
    }
    void click(std::string_view button) override { post(button, BM_CLICK); }
    void press(std::string_view checkBox) override { post(checkBox, BM_CLICK); }
    void minimise() override { post("Main", WM_SYSCOMMAND, SC_MINIMIZE); }
    void maximise() override { post("Main", WM_SYSCOMMAND, SC_MAXIMIZE); }
    void restore() override { post("Main", WM_SYSCOMMAND, SC_RESTORE); }
    void resize() override {
        SetWindowPos(win32_test::windowNamed("Main"), nullptr, 0, 0, 500, 400, SWP_NOMOVE | SWP_NOZORDER);
    }
    void closeWindow() override { post("Main", WM_CLOSE); }
    void letTimePass(std::chrono::milliseconds time) override { win32_test::letTimePass(toolkit_, time); }

  private:
    static void post(std::string_view name, UINT message, WPARAM argument = 0) {
        PostMessageW(win32_test::windowNamed(name), message, argument, 0);
    }

    platform::win32::Win32Toolkit toolkit_;
};

std::unique_ptr<UiDriver> makeWin32Driver() {
    return std::make_unique<Win32Driver>();
}

INSTANTIATE_TEST_SUITE_P(Win32, UiContract, testing::Values(&makeWin32Driver));

}  // namespace
