#include "platform/headless/headless_toolkit.h"

#include <gtest/gtest.h>

#include "fakes/headless_driver.h"
#include "unit/platform/contract/ui_contract.h"

namespace {

using platform::WindowState;
using platform::headless::HeadlessTextBox;
using platform::headless::HeadlessToolkit;

std::unique_ptr<UiDriver> makeHeadlessDriver() {
    return std::make_unique<HeadlessDriver>();
}

INSTANTIATE_TEST_SUITE_P(Headless, UiContract, testing::Values(&makeHeadlessDriver));

class Headless : public testing::Test {
  protected:
    fakes::ManualWaiter waiter;
    std::vector<std::string> boxes;
    HeadlessToolkit toolkit{waiter, [this](std::string_view text) { boxes.emplace_back(text); }};
    platform::Form& form = toolkit.createForm("Main", "orlentbar indexer", 5775, 3255);
    std::vector<std::string> seen;
};

TEST_F(Headless, AMessageBoxIsPrintedAndCountsAsAnswered) {
    toolkit.messageBox("Unable to connect");
    EXPECT_EQ(boxes, std::vector<std::string>{"Unable to connect"});
}

TEST_F(Headless, WithoutASinkAMessageBoxGoesToStandardError) {
    HeadlessToolkit plain(waiter);
    testing::internal::CaptureStderr();
    plain.messageBox("Unable to connect\r\nto the library");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Unable to connect\nto the library\n");
}

TEST_F(Headless, AFileDialogIsCancelledUnlessATestAnswersIt) {
    EXPECT_EQ(toolkit.saveFileDialog({}, ".log"), std::nullopt);
    toolkit.onSaveFileDialog([](std::span<const platform::FileFilter>, std::string_view extension) {
        return std::optional<std::string>("/var/log/tessaly" + std::string(extension));
    });
    EXPECT_EQ(toolkit.saveFileDialog({}, ".log"), "/var/log/tessaly.log");
}

TEST_F(Headless, TicksComeInTheOrderOfTheirMoments) {
    platform::Timer& slow = form.addTimer("slow", 250);
    platform::Timer& fast = form.addTimer("fast", 100);
    slow.onTick([this] { seen.push_back("slow " + std::to_string(waiter.moment.count())); });
    fast.onTick([this] { seen.push_back("fast " + std::to_string(waiter.moment.count())); });
    slow.setEnabled(true);
    fast.setEnabled(true);
    waiter.advance(toolkit, std::chrono::milliseconds(300));
    EXPECT_EQ(seen, (std::vector<std::string>{"fast 100", "fast 200", "slow 250", "fast 300"}));
}

TEST_F(Headless, ALongHandlerIsNotFollowedByABurstOfTicks) {
    platform::Timer& timer = form.addTimer("timer", 100);
    timer.onTick([this] {
        seen.emplace_back("tick");
        waiter.moment += std::chrono::milliseconds(1000);
    });
    timer.setEnabled(true);
    waiter.moment += std::chrono::milliseconds(100);
    toolkit.processEvents();
    EXPECT_EQ(seen.size(), 1U);
}

TEST_F(Headless, RunWaitsUntilTheNextTick) {
    platform::Timer& timer = form.addTimer("timer", 1000);
    timer.onTick([this] { form.close(); });
    timer.setEnabled(true);
    waiter.onWait = [this](std::optional<std::chrono::milliseconds> until) {
        seen.push_back(std::to_string(until->count()));
        waiter.moment = *until;
    };
    toolkit.run();
    EXPECT_EQ(seen, std::vector<std::string>{"1000"});
}

TEST_F(Headless, ASignalClosesTheWindowAsTheOperatorWould) {
    form.onClose([this] { seen.emplace_back("closed"); });
    waiter.onWait = [this](std::optional<std::chrono::milliseconds>) { waiter.close = true; };
    toolkit.run();
    EXPECT_EQ(seen, std::vector<std::string>{"closed"});
}

TEST_F(Headless, ASignalDuringAJobIsSeenWhenTheJobHandlesEvents) {
    form.onClose([this] { seen.emplace_back("closed"); });
    platform::Timer& timer = form.addTimer("timer", 1);
    timer.onTick([this] {
        waiter.close = true;
        toolkit.processEvents();
        seen.emplace_back(form.closing() ? "closing" : "open");
    });
    timer.setEnabled(true);
    waiter.onWait = [this](std::optional<std::chrono::milliseconds> until) { waiter.moment = *until; };
    toolkit.run();
    EXPECT_EQ(seen, (std::vector<std::string>{"closing", "closed"}));
}

TEST_F(Headless, AnUnknownControlIsAnErrorThatNamesIt) {
    toolkit.click("cmdExti");
    try {
        toolkit.processEvents();
        FAIL() << "no error";
    } catch (const base::RuntimeError& error) {
        EXPECT_NE(error.description().find("cmdExti"), std::string::npos);
    }
}

TEST_F(Headless, AControlIsFoundByItsKindOnly) {
    form.addButton({"cmd", {1, 2, 3, 4}, 5}, "a");
    EXPECT_THROW(static_cast<void>(toolkit.form().find<HeadlessTextBox>("cmd")), base::RuntimeError);
    const auto& found = toolkit.form().find<platform::headless::HeadlessButton>("cmd");
    EXPECT_EQ(found.bounds().height, 4);
    EXPECT_EQ(found.tabIndex(), 5);
}

TEST_F(Headless, RunWithoutAWindowIsAnError) {
    HeadlessToolkit empty(waiter);
    EXPECT_THROW(empty.run(), base::RuntimeError);
}

}  // namespace
