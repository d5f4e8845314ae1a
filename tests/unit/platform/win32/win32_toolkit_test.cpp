#include "platform/win32/win32_toolkit.h"

#include <array>
#include <stdexcept>

#include "base/runtime_error.h"
#include "platform/win32/message_waiter.h"
#include "unit/platform/win32/window_fixture.h"

namespace {

using win32_test::DialogWatcher;
using win32_test::openDialog;
using win32_test::windowNamed;

class Win32 : public Win32Window {
  protected:
    /// A message loop that is not the toolkit's, such as runs inside a call to an automation object.
    static void runForeignLoop() {
        for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0;) {
            DispatchMessageW(&message);
        }
    }
    static void openMenuOf(std::string_view textBox) {
        const HWND box = windowNamed(textBox);
        SendMessageW(box, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(box), MAKELPARAM(40, 40));
    }
    /// The lower arrow of the list's scroll bar. Returns when it is let go.
    void holdScrollBar() {
        for (std::size_t i = 0; i < 50; ++i) {
            list.insert(i, "line");
        }
        const HWND box = windowNamed("lstStatus");
        RECT place{};
        GetWindowRect(box, &place);
        SendMessageW(box, WM_NCLBUTTONDOWN, HTVSCROLL, MAKELPARAM(place.right - 6, place.bottom - 6));
    }
    static void releaseScrollBar() { post("lstStatus", WM_LBUTTONUP); }
    static void answer(HWND dialog) { PostMessageW(dialog, WM_COMMAND, IDOK, 0); }
    static std::string messageOf(HWND box) {
        std::array<char, 256> text{};
        constexpr int staticText = 0xFFFF;
        GetDlgItemTextA(box, staticText, text.data(), static_cast<int>(text.size()));
        return text.data();
    }
};

TEST_F(Win32, RunWithoutAWindowIsAnError) {
    platform::win32::Win32Toolkit empty(waiter);
    EXPECT_THROW(empty.run(), base::RuntimeError);
}

TEST_F(Win32, TheWindowShowsItsCaption) {
    std::array<char, 64> caption{};
    GetWindowTextA(windowNamed("Main"), caption.data(), static_cast<int>(caption.size()));
    EXPECT_STREQ(caption.data(), "orlentbar indexer");
}

TEST_F(Win32, TheWindowCanBeMinimisedMaximisedAndResized) {
    const LONG_PTR style = GetWindowLongPtrW(windowNamed("Main"), GWL_STYLE);
    EXPECT_EQ(style & WS_OVERLAPPEDWINDOW, WS_OVERLAPPEDWINDOW);
}

TEST_F(Win32, TimePassesWhileRunWaits) {
    platform::win32::MessageWaiter realTime;
    platform::win32::Win32Toolkit real(realTime);
    platform::Form& window = real.createForm("Real", "a window", 1000, 1000);
    platform::Timer& soon = window.addTimer("soon", 20);
    soon.onTick([&] { window.close(); });
    soon.setEnabled(true);
    real.run();
    EXPECT_TRUE(window.closing());
}

TEST_F(Win32, EventsThatArriveInsideAForeignCallWaitForTheToolkit) {
    exit.onClick(note("exit"));
    text.onChange(note("typed"));
    stop.onClick([this] {
        post("cmdExit", BM_CLICK);
        win32_test::typeOver("txtPollInterval", L"7");
        runForeignLoop();
        seen.emplace_back("call made");
        toolkit.processEvents();
        seen.emplace_back("end");
    });
    post("cmdStartStop", BM_CLICK);
    toolkit.processEvents();
    EXPECT_EQ(seen, (Seen{"call made", "exit", "typed", "end"}));
}

TEST_F(Win32, EventsThatArriveInTheLastForeignCallAreHandledByRun) {
    exit.onClick([this] { form.close(); });
    stop.onClick([this] {
        post("cmdExit", BM_CLICK);
        runForeignLoop();
    });
    post("cmdStartStop", BM_CLICK);
    toolkit.run();
    EXPECT_TRUE(form.closing());
}

TEST_F(Win32, EventsThatArriveInTheLastForeignCallOfATickAreHandledByRun) {
    exit.onClick([this] { form.close(); });
    timer.onTick([this] {
        timer.setEnabled(false);
        post("cmdExit", BM_CLICK);
        runForeignLoop();
    });
    timer.setEnabled(true);
    waiter.moment += std::chrono::milliseconds(10);
    toolkit.run();
    EXPECT_TRUE(form.closing());
}

TEST_F(Win32, AMessageBoxShowsItsTextUntilItIsAnswered) {
    const DialogWatcher watcher([this](HWND box) {
        seen.push_back(messageOf(box));
        answer(box);
    });
    stop.onClick([this] {
        toolkit.messageBox("Unable to connect");
        seen.emplace_back("answered");
    });
    post("cmdStartStop", BM_CLICK);
    toolkit.processEvents();
    EXPECT_EQ(seen, (Seen{"Unable to connect", "answered"}));
}

TEST_F(Win32, TheTimerTicksBehindAMessageBox) {
    timer.onTick([this] {
        seen.emplace_back("tick");
        timer.setEnabled(false);
        answer(openDialog());
    });
    timer.setEnabled(true);
    const DialogWatcher watcher([this](HWND) { waiter.moment += std::chrono::milliseconds(10); });
    stop.onClick([this] {
        toolkit.messageBox("Logging cannot be enabled");
        seen.emplace_back("answered");
    });
    post("cmdStartStop", BM_CLICK);
    toolkit.processEvents();
    EXPECT_EQ(seen, (Seen{"tick", "answered"}));
}

TEST_F(Win32, TheTimerTicksWhileTheOperatorHoldsAMenuOpen) {
    timer.onTick([this] {
        seen.emplace_back("tick");
        timer.setEnabled(false);
        EndMenu();
    });
    timer.setEnabled(true);
    win32_test::Errands errands;
    errands.post([this] {
        waiter.moment += std::chrono::milliseconds(10);
        SendMessageW(windowNamed("Main"), WM_SYSCOMMAND, SC_KEYMENU, ' ');
        seen.emplace_back("menu closed");
    });
    toolkit.processEvents();
    EXPECT_EQ(seen, (Seen{"tick", "menu closed"}));
}

TEST_F(Win32, TheTimerTicksWhileTheOperatorHoldsTheMenuOfATextBoxOpen) {
    timer.onTick([this] {
        seen.emplace_back("tick");
        timer.setEnabled(seen.size() < 3);
        if (seen.size() < 3) {
            waiter.moment += std::chrono::milliseconds(10);
        } else {
            EndMenu();
        }
    });
    timer.setEnabled(true);
    win32_test::Errands errands;
    errands.post([this] {
        waiter.moment += std::chrono::milliseconds(10);
        openMenuOf("txtPollInterval");
        seen.emplace_back("menu closed");
    });
    toolkit.processEvents();
    EXPECT_EQ(seen, (Seen{"tick", "tick", "tick", "menu closed"}));
}

TEST_F(Win32, TheTimerTicksWhileTheOperatorHoldsAScrollBar) {
    timer.onTick([this] {
        seen.emplace_back("tick");
        timer.setEnabled(false);
        releaseScrollBar();
    });
    timer.setEnabled(true);
    win32_test::Errands errands;
    errands.post([this] {
        waiter.moment += std::chrono::milliseconds(10);
        holdScrollBar();
        seen.emplace_back("let go");
    });
    toolkit.processEvents();
    EXPECT_EQ(seen, (Seen{"tick", "let go"}));
}

TEST_F(Win32, AWindowThatIsClosedBehindTheMenuOfATextBoxTakesItAlong) {
    form.onClose(note("closed"));
    win32_test::Errands errands;
    errands.post([this] {
        post("Main", WM_CLOSE);
        openMenuOf("txtPollInterval");
        seen.emplace_back("menu closed");
    });
    toolkit.run();
    EXPECT_EQ(seen, (Seen{"closed", "menu closed"}));
}

TEST_F(Win32, AWindowThatIsClosedBehindItsMenuTakesItAlong) {
    form.onClose(note("closed"));
    win32_test::Errands errands;
    errands.post([this] {
        post("Main", WM_CLOSE);
        SendMessageW(windowNamed("Main"), WM_SYSCOMMAND, SC_KEYMENU, ' ');
        seen.emplace_back("menu closed");
    });
    toolkit.run();
    EXPECT_EQ(seen, (Seen{"closed", "menu closed"}));
}

TEST_F(Win32, AWindowThatIsClosedWhileItIsMovedIsNotHeldUpByIt) {
    form.onClose(note("closed"));
    win32_test::Errands errands;
    errands.post([this] {
        post("Main", WM_CLOSE);
        SendMessageW(windowNamed("Main"), WM_SYSCOMMAND, SC_MOVE | HTCAPTION, MAKELPARAM(200, 10));
        seen.emplace_back("let go");
    });
    toolkit.run();
    EXPECT_EQ(seen, (Seen{"closed", "let go"}));
}

TEST_F(Win32, AWindowThatIsClosedBehindAHeldScrollBarIsNotHeldUpByIt) {
    form.onClose(note("closed"));
    win32_test::Errands errands;
    errands.post([this] {
        post("Main", WM_CLOSE);
        holdScrollBar();
        seen.emplace_back("let go");
    });
    toolkit.run();
    EXPECT_EQ(seen, (Seen{"closed", "let go"}));
}

TEST_F(Win32, AMessageBoxOutsideOfAHandlerIsNotWokenUpForTicks) {
    timer.setEnabled(true);
    waiter.moment += std::chrono::milliseconds(10);
    const DialogWatcher watcher([this](HWND box) {
        PostMessageW(windowNamed("Main"), WM_NULL, 0, 0);
        runForeignLoop();
        seen.emplace_back(KillTimer(windowNamed("Main"), 1) != 0 ? "woken up" : "left alone");
        answer(box);
    });
    toolkit.messageBox("Unable to connect");
    EXPECT_EQ(seen, Seen{"left alone"});
}

TEST_F(Win32, KeysAnswerAMessageBoxThatAJobWorksBehind) {
    for (const WPARAM key : {VK_RETURN, VK_ESCAPE}) {
        timer.onTick([this, key] {
            timer.setEnabled(false);
            const HWND box = openDialog();
            win32_test::pressKey(GetFocus(), key);
            toolkit.processEvents();
            if (IsWindow(box) != 0 && IsWindowVisible(box) != 0) {
                seen.emplace_back("still open");
                answer(box);
            }
        });
        timer.setEnabled(true);
        const DialogWatcher watcher([this](HWND) { waiter.moment += std::chrono::milliseconds(10); });
        stop.onClick([this] {
            toolkit.messageBox("Logging cannot be enabled");
            seen.emplace_back("answered");
        });
        post("cmdStartStop", BM_CLICK);
        toolkit.processEvents();
    }
    EXPECT_EQ(seen, (Seen{"answered", "answered"}));
}

TEST_F(Win32, AMessageBoxOutsideOfAHandlerLetsNoEventThrough) {
    exit.onClick(note("exit"));
    post("cmdExit", BM_CLICK);
    const DialogWatcher watcher([](HWND box) { answer(box); });
    toolkit.messageBox("Unable to connect");
    EXPECT_TRUE(seen.empty());
    toolkit.processEvents();
    EXPECT_EQ(seen, Seen{"exit"});
}

TEST_F(Win32, AWindowThatIsClosedBehindAMessageBoxTakesItAlong) {
    form.onClose(note("closed"));
    const DialogWatcher watcher([](HWND) { post("Main", WM_CLOSE); });
    stop.onClick([this] {
        toolkit.messageBox("Logging cannot be enabled");
        seen.emplace_back("job goes on");
    });
    post("cmdStartStop", BM_CLICK);
    toolkit.run();
    EXPECT_EQ(seen, (Seen{"job goes on", "closed"}));
}

TEST_F(Win32, WhileTheWindowClosesAMessageGoesToStandardError) {
    stop.onClick([this] {
        form.close();
        toolkit.messageBox("Unable to connect");
        EXPECT_EQ(toolkit.saveFileDialog({}, ".log"), std::nullopt);
        seen.emplace_back("job goes on");
    });
    post("cmdStartStop", BM_CLICK);
    testing::internal::CaptureStderr();
    toolkit.run();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Unable to connect\n");
    EXPECT_EQ(seen, Seen{"job goes on"});
}

TEST_F(Win32, AnErrorBehindAMessageBoxEndsRun) {
    timer.onTick([] { throw base::RuntimeError(13, "Type mismatch"); });
    timer.setEnabled(true);
    const DialogWatcher watcher([this](HWND) { waiter.moment += std::chrono::milliseconds(10); });
    stop.onClick([this] {
        try {
            toolkit.messageBox("Logging cannot be enabled");
            seen.emplace_back("went on");
        } catch (const std::exception&) {
            seen.emplace_back("trapped");
        }
    });
    post("cmdStartStop", BM_CLICK);
    EXPECT_THROW(toolkit.run(), base::RuntimeError);
    EXPECT_TRUE(seen.empty());
}

TEST_F(Win32, WhatEndsTheProgramInATestLeavesRunAsItIs) {
    struct ProcessEnded {};
    stop.onClick([] { throw ProcessEnded{}; });
    post("cmdStartStop", BM_CLICK);
    EXPECT_THROW(toolkit.run(), ProcessEnded);
}

TEST_F(Win32, LoggingOffClosesTheWindowBeforeTheSystemGoesOn) {
    form.onClose(note("closed"));
    stop.onClick(note("clicked"));
    EXPECT_NE(SendMessageW(windowNamed("Main"), WM_QUERYENDSESSION, 0, ENDSESSION_LOGOFF), 0);
    EXPECT_FALSE(form.closing());
    post("Main", WM_ENDSESSION, TRUE, ENDSESSION_LOGOFF);
    post("cmdStartStop", BM_CLICK);
    toolkit.run();
    EXPECT_EQ(seen, Seen{"closed"});
}

TEST_F(Win32, ALogOffThatIsCalledOffChangesNothing) {
    post("Main", WM_ENDSESSION, FALSE, ENDSESSION_LOGOFF);
    toolkit.processEvents();
    EXPECT_FALSE(form.closing());
}

TEST_F(Win32, LoggingOffDuringAJobClosesWhenItHasEnded) {
    form.onClose(note("closed"));
    stop.onClick([this] {
        post("Main", WM_ENDSESSION, TRUE, ENDSESSION_LOGOFF);
        toolkit.processEvents();
        seen.emplace_back(form.visible() ? "visible" : "hidden");
    });
    post("cmdStartStop", BM_CLICK);
    toolkit.run();
    EXPECT_EQ(seen, (Seen{"hidden", "closed"}));
}

TEST_F(Win32, AnOrderToQuitClosesTheWindow) {
    form.onClose(note("closed"));
    PostQuitMessage(0);
    toolkit.run();
    EXPECT_EQ(seen, Seen{"closed"});
}

}  // namespace
