// What every window toolkit must do. A toolkit's test includes this file once, writes a UiDriver, which plays
// the operator, and instantiates the suite:
//
//   INSTANTIATE_TEST_SUITE_P(Headless, UiContract, testing::Values(&makeHeadlessDriver));
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "base/runtime_error.h"
#include "fakes/ui_driver.h"
#include "platform/ui.h"

using UiDriverMaker = std::unique_ptr<UiDriver> (*)();

class UiContract : public testing::TestWithParam<UiDriverMaker> {
  protected:
    std::unique_ptr<UiDriver> operator_ = GetParam()();
    platform::Toolkit& toolkit = operator_->toolkit();
    platform::Form& form = toolkit.createForm("Main", "a window", 5775, 3255);
    platform::TextBox& text = form.addTextBox({"txt", {120, 120, 1000, 285}, 0}, "old");
    platform::CheckBox& check = form.addCheckBox({"chk", {120, 480, 1000, 285}, 1}, "Log it");
    platform::Button& button = form.addButton({"cmd", {120, 840, 1000, 375}, 2}, "S&top");
    platform::Button& otherButton = form.addButton({"other", {120, 1240, 1000, 375}, 3}, "&Other");
    platform::ListBox& list = form.addListBox({"lst", {120, 1640, 1000, 1230}, 4});
    platform::Timer& timer = form.addTimer("tmr", 50);
    std::vector<std::string> seen;

    UiContract() { form.show(); }

    platform::Handler note(std::string what) {
        return [this, what] { seen.push_back(what); };
    }
    static int numberOf(const std::function<void()>& statement) {
        try {
            statement();
        } catch (const base::RuntimeError& error) {
            return error.number();
        }
        return 0;
    }
};

using Seen = std::vector<std::string>;

TEST_P(UiContract, ControlsShowWhatTheyWereMadeWith) {
    platform::Label& label = form.addLabel({"lbl", {0, 0, 855, 255}, 5}, "seconds");
    EXPECT_EQ(form.name(), "Main");
    EXPECT_EQ(label.name(), "lbl");
    EXPECT_EQ(label.caption(), "seconds");
    EXPECT_EQ(text.text(), "old");
    EXPECT_EQ(check.value(), 0);
    EXPECT_EQ(button.caption(), "S&top");
    EXPECT_EQ(list.count(), 0U);
    EXPECT_EQ(timer.interval(), 50);
    EXPECT_FALSE(timer.enabled());
}

TEST_P(UiContract, TheFormIsHiddenUntilItIsShown) {
    const std::unique_ptr<UiDriver> fresh = GetParam()();
    platform::Form& hidden = fresh->toolkit().createForm("Main", "a window", 100, 100);
    EXPECT_FALSE(hidden.visible());
    hidden.show();
    EXPECT_TRUE(hidden.visible());
    hidden.hide();
    EXPECT_FALSE(hidden.visible());
}

TEST_P(UiContract, AChangeByTheProgramCallsTheHandlerBeforeItReturns) {
    text.onChange([this] { seen.push_back(text.text()); });
    text.setText("new");
    EXPECT_EQ(seen, Seen{"new"});
}

TEST_P(UiContract, AChangeByTheOperatorCallsTheHandlerWhenEventsAreHandled) {
    text.onChange(note("changed"));
    operator_->typeText("txt", "typed");
    EXPECT_TRUE(seen.empty());
    toolkit.processEvents();
    EXPECT_FALSE(seen.empty());
    EXPECT_EQ(text.text(), "typed");
}

TEST_P(UiContract, SettingWhatIsThereAlreadyCallsNoHandler) {
    text.onChange(note("text"));
    check.onChange(note("check"));
    text.setText("old");
    check.setValue(0);
    EXPECT_TRUE(seen.empty());
}

TEST_P(UiContract, AHandlerMayChangeItsOwnControlAgain) {
    text.onChange([this] {
        seen.push_back(text.text());
        if (text.text() == "0") {
            text.setText("1");
        }
    });
    text.setText("0");
    EXPECT_EQ(seen, (Seen{"0", "1"}));
    EXPECT_EQ(text.text(), "1");
}

TEST_P(UiContract, AHandlerMayChangeItsOwnControlAgainWhenTheOperatorChangedIt) {
    text.onChange([this] {
        seen.push_back(text.text());
        if (text.text() == "0") {
            text.setText("1");
        }
    });
    operator_->typeText("txt", "0");
    toolkit.processEvents();
    EXPECT_EQ(seen.back(), "1");
    EXPECT_EQ(text.text(), "1");
}

TEST_P(UiContract, TypingWhatIsThereAlreadyCallsNoHandler) {
    operator_->typeText("txt", "5");
    toolkit.processEvents();
    text.onChange(note("changed"));
    operator_->typeText("txt", "5");
    toolkit.processEvents();
    EXPECT_TRUE(seen.empty());
}

TEST_P(UiContract, TheProgramsChangeShowsWhatTheOperatorTypesOver) {
    operator_->typeText("txt", "5");
    toolkit.processEvents();
    text.setText("7");
    text.onChange([this] { seen.push_back(text.text()); });
    operator_->typeText("txt", "5");
    toolkit.processEvents();
    EXPECT_EQ(seen, Seen{"5"});
}

TEST_P(UiContract, AnErrorInAHandlerRisesOutOfTheProgramsChange) {
    text.onChange([] { throw base::RuntimeError(13, "Type mismatch"); });
    EXPECT_EQ(numberOf([this] { text.setText("x"); }), 13);
}

TEST_P(UiContract, AnErrorInAHandlerRisesOutOfTheOperatorsChangeWhenEventsAreHandled) {
    text.onChange([] { throw base::RuntimeError(13, "Type mismatch"); });
    operator_->typeText("txt", "");
    EXPECT_EQ(numberOf([this] { toolkit.processEvents(); }), 13);
    EXPECT_EQ(text.text(), "");
}

TEST_P(UiContract, CheckBoxesTakeThreeValuesOnly) {
    for (const int value : {2, 1, 0}) {
        check.setValue(value);
        EXPECT_EQ(check.value(), value);
    }
    EXPECT_EQ(numberOf([this] { check.setValue(3); }), 380);
    EXPECT_EQ(numberOf([this] { check.setValue(-1); }), 380);
    EXPECT_EQ(check.value(), 0);
}

TEST_P(UiContract, PressingACheckBoxTurnsItOnAndOff) {
    check.onChange([this] { seen.push_back(std::to_string(check.value())); });
    operator_->press("chk");
    toolkit.processEvents();
    operator_->press("chk");
    toolkit.processEvents();
    EXPECT_EQ(seen, (Seen{"1", "0"}));
}

TEST_P(UiContract, TwoQuickPressesAreTwoPresses) {
    check.onChange([this] { seen.push_back(std::to_string(check.value())); });
    button.onClick(note("clicked"));
    operator_->pressTwice("chk");
    toolkit.processEvents();
    operator_->clickTwice("cmd");
    toolkit.processEvents();
    EXPECT_EQ(seen, (Seen{"1", "0", "clicked", "clicked"}));
}

TEST_P(UiContract, PressingAGreyedCheckBoxClearsIt) {
    check.setValue(2);
    check.onChange([this] { seen.push_back(std::to_string(check.value())); });
    operator_->press("chk");
    toolkit.processEvents();
    EXPECT_EQ(seen, Seen{"0"});
}

TEST_P(UiContract, AHandlerMayClearItsOwnCheckBoxAgain) {
    check.onChange([this] {
        seen.push_back(std::to_string(check.value()));
        check.setValue(0);
    });
    operator_->press("chk");
    toolkit.processEvents();
    operator_->press("chk");
    toolkit.processEvents();
    EXPECT_EQ(seen, (Seen{"1", "0", "1", "0"}));
    EXPECT_EQ(check.value(), 0);
}

TEST_P(UiContract, ButtonsAreClickedAndChangeTheirCaption) {
    button.onClick([this] { button.setCaption("S&tart"); });
    operator_->click("cmd");
    toolkit.processEvents();
    EXPECT_EQ(button.caption(), "S&tart");
}

TEST_P(UiContract, ListsKeepTheirLinesInOrder) {
    list.insert(0, "second");
    list.insert(0, "first");
    list.insert(2, "third");
    EXPECT_EQ(list.count(), 3U);
    EXPECT_EQ(list.line(0), "first");
    EXPECT_EQ(list.line(2), "third");
    list.remove(1);
    EXPECT_EQ(list.line(1), "third");
}

TEST_P(UiContract, LinesComeInAtTheTopAndLeaveAtTheBottom) {
    for (int i = 1; i <= 5; ++i) {
        list.insert(0, std::to_string(i));
        if (list.count() > 3) {
            list.remove(list.count() - 1);
        }
    }
    EXPECT_EQ(list.count(), 3U);
    EXPECT_EQ(list.line(0), "5");
    EXPECT_EQ(list.line(2), "3");
    EXPECT_EQ(numberOf([this] { static_cast<void>(list.line(3)); }), 5);
}

TEST_P(UiContract, ListsRefuseAnIndexOutsideThem) {
    EXPECT_EQ(numberOf([this] { list.insert(1, "line"); }), 5);
    EXPECT_EQ(numberOf([this] { list.remove(0); }), 5);
    EXPECT_EQ(list.count(), 0U);
}

TEST_P(UiContract, TimersTakeAnIntervalUpToTheirLimit) {
    timer.setInterval(65535);
    EXPECT_EQ(timer.interval(), 65535);
    EXPECT_EQ(numberOf([this] { timer.setInterval(65536); }), 380);
    EXPECT_EQ(numberOf([this] { timer.setInterval(-1); }), 380);
    EXPECT_EQ(timer.interval(), 65535);
}

TEST_P(UiContract, ATimerTicksWhileItIsEnabled) {
    timer.onTick([this] {
        seen.emplace_back("tick");
        timer.setEnabled(seen.size() < 3);
    });
    operator_->letTimePass(std::chrono::milliseconds(300));
    EXPECT_TRUE(seen.empty());
    timer.setEnabled(true);
    operator_->letTimePass(std::chrono::milliseconds(300));
    EXPECT_EQ(seen.size(), 3U);
}

TEST_P(UiContract, ATimerWithoutAnIntervalNeverTicks) {
    timer.onTick(note("tick"));
    timer.setInterval(0);
    timer.setEnabled(true);
    operator_->letTimePass(std::chrono::milliseconds(60));
    EXPECT_TRUE(seen.empty());
}

TEST_P(UiContract, SettingTheIntervalStartsTheWaitAnew) {
    timer.onTick(note("tick"));
    timer.setInterval(400);
    timer.setEnabled(true);
    operator_->letTimePass(std::chrono::milliseconds(100));
    timer.setInterval(400);
    operator_->letTimePass(std::chrono::milliseconds(100));
    EXPECT_TRUE(seen.empty());
}

TEST_P(UiContract, ATimerMayBeStoppedAndStartedAgainInsideItsOwnTick) {
    timer.onTick([this] {
        seen.emplace_back("tick");
        timer.setEnabled(false);
        if (seen.size() < 3) {
            timer.setInterval(100);
            timer.setEnabled(true);
        }
    });
    timer.setEnabled(true);
    operator_->letTimePass(std::chrono::milliseconds(60));
    EXPECT_EQ(seen.size(), 1U);
    operator_->letTimePass(std::chrono::milliseconds(100));
    EXPECT_EQ(seen.size(), 2U);
    operator_->letTimePass(std::chrono::milliseconds(500));
    EXPECT_EQ(seen.size(), 3U);
    EXPECT_FALSE(timer.enabled());
    EXPECT_EQ(timer.interval(), 100);
}

TEST_P(UiContract, AStoppedTimerDoesNotTickWhileItsHandlerHandlesEvents) {
    timer.onTick([this] {
        seen.emplace_back("tick");
        timer.setEnabled(false);
        operator_->letTimePass(std::chrono::milliseconds(500));
    });
    timer.setEnabled(true);
    operator_->letTimePass(std::chrono::milliseconds(60));
    EXPECT_EQ(seen.size(), 1U);
}

TEST_P(UiContract, ATimerTicksWhileTheWindowIsHiddenOrMinimised) {
    timer.onTick(note("tick"));
    timer.setEnabled(true);
    form.hide();
    operator_->letTimePass(std::chrono::milliseconds(60));
    EXPECT_EQ(seen.size(), 1U);
    form.show();
    operator_->minimise();
    operator_->letTimePass(std::chrono::milliseconds(60));
    EXPECT_EQ(seen.size(), 2U);
}

TEST_P(UiContract, ResizingTellsTheWindowsState) {
    form.onResize([this] { seen.push_back(std::to_string(static_cast<int>(form.windowState()))); });
    operator_->minimise();
    toolkit.processEvents();
    operator_->restore();
    toolkit.processEvents();
    operator_->maximise();
    toolkit.processEvents();
    ASSERT_GE(seen.size(), 3U);
    EXPECT_EQ(seen.front(), "1");
    EXPECT_EQ(seen.back(), "2");
    EXPECT_EQ(form.windowState(), platform::WindowState::maximised);
}

TEST_P(UiContract, AMinimisedWindowCanBeHiddenAndShownAgain) {
    form.onResize([this] {
        if (form.windowState() == platform::WindowState::minimised) {
            form.hide();
        } else {
            form.show();
        }
    });
    operator_->minimise();
    toolkit.processEvents();
    EXPECT_FALSE(form.visible());
    EXPECT_EQ(form.windowState(), platform::WindowState::minimised);
    operator_->restore();
    toolkit.processEvents();
    EXPECT_TRUE(form.visible());
    EXPECT_EQ(form.windowState(), platform::WindowState::normal);
}

TEST_P(UiContract, ShowingAndHidingByTheProgramIsNoResize) {
    form.onResize(note("resized"));
    form.hide();
    toolkit.processEvents();
    form.show();
    toolkit.processEvents();
    EXPECT_TRUE(seen.empty());
}

TEST_P(UiContract, APlainResizeLeavesTheStateNormal) {
    form.onResize(note("resized"));
    operator_->resize();
    toolkit.processEvents();
    EXPECT_FALSE(seen.empty());
    EXPECT_EQ(form.windowState(), platform::WindowState::normal);
}

TEST_P(UiContract, RunEndsWhenTheOperatorClosesTheWindow) {
    form.onClose(note("closed"));
    operator_->closeWindow();
    toolkit.run();
    EXPECT_EQ(seen, Seen{"closed"});
    EXPECT_TRUE(form.closing());
    EXPECT_FALSE(form.visible());
}

TEST_P(UiContract, TheOperatorsCloseDuringAJobWaitsForTheJob) {
    form.onClose(note("closed"));
    button.onClick([this] {
        operator_->closeWindow();
        toolkit.processEvents();
        seen.emplace_back(form.visible() ? "visible" : "job goes on");
    });
    operator_->click("cmd");
    toolkit.run();
    EXPECT_EQ(seen, (Seen{"job goes on", "closed"}));
}

TEST_P(UiContract, AnErrorInTheCloseHandlerEndsRun) {
    form.onClose([] { throw base::RuntimeError(91, "Object not set"); });
    operator_->closeWindow();
    EXPECT_EQ(numberOf([this] { toolkit.run(); }), 91);
}

TEST_P(UiContract, AWindowThatClosesIsNotShownAgain) {
    button.onClick([this] {
        form.close();
        form.show();
        seen.emplace_back(form.visible() ? "visible" : "hidden");
    });
    operator_->click("cmd");
    toolkit.run();
    EXPECT_EQ(seen, Seen{"hidden"});
}

TEST_P(UiContract, ClosingOutsideAnEventRunsTheCloseHandlerAtOnce) {
    form.onClose(note("closed"));
    form.close();
    EXPECT_EQ(seen, Seen{"closed"});
    toolkit.run();  // returns: there is no window left
}

TEST_P(UiContract, ClosingTwiceIsClosingOnce) {
    form.onClose(note("closed"));
    form.close();
    form.close();
    EXPECT_EQ(seen, Seen{"closed"});
}

TEST_P(UiContract, ClosingInsideAHandlerHidesNowAndClosesWhenItHasReturned) {
    form.onClose(note("closed"));
    button.onClick([this] {
        form.close();
        seen.emplace_back(form.visible() ? "visible" : "hidden");
        seen.emplace_back(form.closing() ? "closing" : "open");
    });
    operator_->click("cmd");
    toolkit.run();
    EXPECT_EQ(seen, (Seen{"hidden", "closing", "closed"}));
}

TEST_P(UiContract, AHandlerCanLetWaitingEventsBeHandled) {
    otherButton.onClick(note("other"));
    button.onClick([this] {
        seen.emplace_back("begin");
        operator_->click("other");
        toolkit.processEvents();
        seen.emplace_back("end");
    });
    operator_->click("cmd");
    toolkit.processEvents();
    EXPECT_EQ(seen, (Seen{"begin", "other", "end"}));
}

TEST_P(UiContract, ClosingInANestedEventWaitsForTheOutermostHandler) {
    form.onClose(note("closed"));
    otherButton.onClick([this] { form.close(); });
    button.onClick([this] {
        operator_->click("other");
        toolkit.processEvents();
        seen.emplace_back(form.visible() ? "visible" : "job goes on");
    });
    operator_->click("cmd");
    toolkit.run();
    EXPECT_EQ(seen, (Seen{"job goes on", "closed"}));
}

TEST_P(UiContract, NoEventIsHandledWhileTheWindowCloses) {
    otherButton.onClick(note("clicked"));
    timer.onTick(note("tick"));
    timer.setInterval(1);
    timer.setEnabled(true);
    button.onClick([this] {
        form.close();
        operator_->click("other");
        operator_->letTimePass(std::chrono::milliseconds(20));
        toolkit.processEvents();
    });
    operator_->click("cmd");
    toolkit.run();
    EXPECT_TRUE(seen.empty());
}

TEST_P(UiContract, AnErrorInAnEventsHandlerEndsRun) {
    button.onClick([] { throw base::RuntimeError(13, "Type mismatch"); });
    operator_->click("cmd");
    EXPECT_EQ(numberOf([this] { toolkit.run(); }), 13);
}

TEST_P(UiContract, AnErrorInANestedEventEndsRunPastTheTrapsOfTheJob) {
    otherButton.onClick([] { throw base::RuntimeError(13, "Type mismatch"); });
    button.onClick([this] {
        try {
            operator_->click("other");
            toolkit.processEvents();
            seen.emplace_back("went on");
        } catch (const std::exception&) {
            seen.emplace_back("trapped");
        }
    });
    operator_->click("cmd");
    EXPECT_EQ(numberOf([this] { toolkit.run(); }), 13);
    EXPECT_TRUE(seen.empty());
}

TEST_P(UiContract, ClosingUnderAMessageBoxOutsideAnEventWaitsForRun) {
    form.onClose(note("closed"));
    operator_->beforeAnswer = [this] { operator_->closeWindow(); };
    toolkit.messageBox("Unable to connect");
    seen.emplace_back("start-up goes on");
    toolkit.run();
    EXPECT_EQ(seen, (Seen{"start-up goes on", "closed"}));
}

TEST_P(UiContract, AnErrorInACloseHandlerThatHasWaitedForRunEndsRun) {
    form.onClose([] { throw base::RuntimeError(91, "Object not set"); });
    operator_->beforeAnswer = [this] { operator_->closeWindow(); };
    toolkit.messageBox("Unable to connect");
    EXPECT_EQ(numberOf([this] { toolkit.run(); }), 91);
}
