#include <array>

#include "unit/platform/win32/window_fixture.h"

namespace {

using win32_test::nameOf;
using win32_test::pressKey;
using win32_test::typeOver;
using win32_test::windowNamed;

class Win32Controls : public Win32Window {
  protected:
    static std::string focused() { return nameOf(GetFocus()); }

    /// Where a control stands inside the form, in pixels.
    static std::array<LONG, 4> placeOf(std::string_view name) {
        RECT place{};
        GetWindowRect(windowNamed(name), &place);
        MapWindowPoints(nullptr, windowNamed("Main"), reinterpret_cast<POINT*>(&place), 2);
        return {place.left, place.top, place.right - place.left, place.bottom - place.top};
    }
};

TEST_F(Win32Controls, StandWhereTheirTwipsAreOnThisScreen) {
    const HDC screen = GetDC(nullptr);
    const int dotsPerInch = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    ASSERT_EQ(dotsPerInch, 96) << "the numbers below are those of a screen with 96 dots per inch";
    RECT inside{};
    GetClientRect(windowNamed("Main"), &inside);
    EXPECT_EQ(inside.right, 385);
    EXPECT_EQ(inside.bottom, 217);
    using Place = std::array<LONG, 4>;
    EXPECT_EQ(placeOf("lblPoll"), (Place{8, 16, 113, 17}));
    EXPECT_EQ(placeOf("txtPollInterval"), (Place{128, 14, 49, 19}));
    EXPECT_EQ(placeOf("lstStatus"), (Place{8, 48, 369, 82}));
    EXPECT_EQ(placeOf("chkLogit"), (Place{8, 144, 57, 17}));
    EXPECT_EQ(placeOf("cmdStartStop"), (Place{24, 184, 73, 25}));
    EXPECT_EQ(placeOf("cmdExit"), (Place{288, 184, 73, 25}));
}

TEST_F(Win32Controls, CarryTheirNameAndTheNumberOfTheirPlaceInTheTabOrder) {
    EXPECT_EQ(nameOf(windowNamed("chkLogit")), "chkLogit");
    EXPECT_EQ(GetDlgCtrlID(windowNamed("chkLogit")), platform::win32::firstControlId + 3);
    EXPECT_EQ(GetDlgItem(windowNamed("Main"), platform::win32::firstControlId), windowNamed("cmdStartStop"));
}

TEST_F(Win32Controls, TakeTheFocusInTabOrderWhateverOrderTheyWereMadeIn) {
    toolkit.processEvents();
    EXPECT_EQ(focused(), "cmdStartStop");
    for (const char* const next : {"lstStatus", "cmdExit", "chkLogit", "txtPollInterval", "cmdStartStop"}) {
        pressKey(GetFocus(), VK_TAB);
        toolkit.processEvents();
        EXPECT_EQ(focused(), next);
    }
}

TEST_F(Win32Controls, ALabelStandsBeforeTheTextBoxThatItNames) {
    EXPECT_EQ(GetWindow(windowNamed("txtPollInterval"), GW_HWNDPREV), windowNamed("lblPoll"));
}

TEST_F(Win32Controls, TheFocusComesBackWithTheWindow) {
    SetFocus(windowNamed("txtPollInterval"));
    post("Main", WM_SYSCOMMAND, SC_MINIMIZE);
    toolkit.processEvents();
    post("Main", WM_SYSCOMMAND, SC_RESTORE);
    toolkit.processEvents();
    EXPECT_EQ(focused(), "txtPollInterval");
}

TEST_F(Win32Controls, AMnemonicPressesItsButton) {
    stop.onClick(note("stop"));
    exit.onClick(note("exit"));
    SetFocus(windowNamed("txtPollInterval"));
    constexpr LPARAM altIsDown = 1 << 29;
    post("txtPollInterval", WM_SYSCHAR, 'x', altIsDown);
    toolkit.processEvents();
    EXPECT_EQ(seen, Seen{"exit"});
}

TEST_F(Win32Controls, EnterPressesTheButtonThatHasTheFocus) {
    stop.onClick(note("stop"));
    exit.onClick(note("exit"));
    SetFocus(windowNamed("cmdExit"));
    pressKey(windowNamed("cmdExit"), VK_RETURN);
    toolkit.processEvents();
    EXPECT_EQ(seen, Seen{"exit"});
}

TEST_F(Win32Controls, EnterAndEscapeInATextBoxPressNoButton) {
    stop.onClick(note("stop"));
    exit.onClick(note("exit"));
    SetFocus(windowNamed("cmdStartStop"));
    SetFocus(windowNamed("txtPollInterval"));
    pressKey(windowNamed("txtPollInterval"), VK_RETURN);
    pressKey(windowNamed("txtPollInterval"), VK_ESCAPE);
    toolkit.processEvents();
    EXPECT_TRUE(seen.empty());
    EXPECT_FALSE(form.closing());
}

TEST_F(Win32Controls, TheMouseClicksAButton) {
    exit.onClick(note("exit"));
    post("cmdExit", WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
    post("cmdExit", WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
    toolkit.processEvents();
    EXPECT_EQ(seen, Seen{"exit"});
}

TEST_F(Win32Controls, AClickIsCalledOffWhenTheFocusIsLostBeforeTheRelease) {
    exit.onClick(note("exit"));
    post("cmdExit", WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
    toolkit.processEvents();
    SetFocus(nullptr);  // as when another program comes to the front
    post("cmdExit", WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
    toolkit.processEvents();
    EXPECT_TRUE(seen.empty());
    post("cmdExit", WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
    post("cmdExit", WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
    toolkit.processEvents();
    EXPECT_EQ(seen, Seen{"exit"});
}

TEST_F(Win32Controls, TheSpaceBarPressesACheckBox) {
    SetFocus(windowNamed("chkLogit"));
    pressKey(windowNamed("chkLogit"), VK_SPACE);
    toolkit.processEvents();
    EXPECT_EQ(check.value(), 1);
}

TEST_F(Win32Controls, EachTypedCharacterIsAChange) {
    text.onChange([this] { seen.push_back(text.text()); });
    typeOver("txtPollInterval", L"2.5");
    toolkit.processEvents();
    EXPECT_EQ(seen, (Seen{"2", "2.", "2.5"}));
}

TEST_F(Win32Controls, AnEmptiedTextBoxIsAChange) {
    text.onChange([this] { seen.push_back("<" + text.text() + ">"); });
    typeOver("txtPollInterval", L"\b");
    toolkit.processEvents();
    EXPECT_EQ(seen, Seen{"<>"});
}

TEST_F(Win32Controls, WhatIsTypedNextStandsBehindWhatTheProgramWrote) {
    text.onChange([this] {
        if (text.text() == "0") {
            text.setText("1");
        }
    });
    typeOver("txtPollInterval", L"05");
    toolkit.processEvents();
    EXPECT_EQ(text.text(), "15");
}

TEST_F(Win32Controls, ATextFromAnotherProgramIsAChangeByTheOperator) {
    text.onChange([this] { seen.push_back(text.text()); });
    SendMessageW(windowNamed("txtPollInterval"), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"7"));
    EXPECT_TRUE(seen.empty());
    toolkit.processEvents();
    EXPECT_EQ(seen, Seen{"7"});
}

TEST_F(Win32Controls, AnyLanguageGoesInAndComesOut) {
    const std::string written = "r\xC3\xA9sum\xC3\xA9 \xE6\x97\xA5 \xF0\x9F\x93\x84";
    text.setText(written);
    list.insert(0, written);
    stop.setCaption(written);
    EXPECT_EQ(text.text(), written);
    EXPECT_EQ(list.line(0), written);
    EXPECT_EQ(stop.caption(), written);
    typeOver("txtPollInterval", L"\x65E5\xD83D\xDCC4");
    toolkit.processEvents();
    EXPECT_EQ(text.text(), "\xE6\x97\xA5\xF0\x9F\x93\x84");
}

TEST_F(Win32Controls, ATextBoxTakesAPathOfAnyLength) {
    const std::string path(40000, 'p');
    text.setText(path);
    EXPECT_EQ(text.text(), path);
}

TEST_F(Win32Controls, AListCanBeScrolledToTheEndOfALongLine) {
    const HWND box = windowNamed("lstStatus");
    list.insert(0, "short");
    EXPECT_LT(SendMessageW(box, LB_GETHORIZONTALEXTENT, 0, 0), 369);
    list.insert(0, std::string(200, 'w'));
    EXPECT_GT(SendMessageW(box, LB_GETHORIZONTALEXTENT, 0, 0), 1000);
    list.remove(0);
    EXPECT_LT(SendMessageW(box, LB_GETHORIZONTALEXTENT, 0, 0), 369);
}

TEST_F(Win32Controls, ATextThatIsTooWideForItsLabelGetsNarrowerLetters) {
    const HWND shown = windowNamed("lblPoll");
    const HDC context = GetDC(shown);
    const auto font = reinterpret_cast<HFONT>(SendMessageW(shown, WM_GETFONT, 0, 0));
    ASSERT_NE(font, nullptr);
    const HGDIOBJ before = SelectObject(context, font);
    const std::wstring caption = L"Poll Index Queue every";
    SIZE size{};
    GetTextExtentPoint32W(context, caption.c_str(), static_cast<int>(caption.size()), &size);
    SelectObject(context, before);
    ReleaseDC(shown, context);
    EXPECT_LE(size.cx, 113);
    EXPECT_GT(size.cx, 80);
    EXPECT_LE(size.cy, 15) << "a text box has 15 pixels between its edges";
}

}  // namespace
