// References to automation objects are given back, whichever way a call ends: exactly as many as were taken.
#include <gtest/gtest.h>

#include <array>
#include <optional>

#include "base/runtime_error.h"
#include "platform/windows/com_automation.h"
#include "platform/windows/dispatch.h"
#include "windows/com/counted_object.h"
#include "windows/com_server/live_objects.h"

namespace {

using com_tests::CountedObject;
using platform::windows::Argument;
using platform::windows::Dispatch;

class ComReferences : public testing::Test {
  protected:
    /// The service holds the one reference; nobody holds the child.
    void expectUnchanged() {
        EXPECT_EQ(object_.references(), 1);
        EXPECT_EQ(child().references(), 0);
    }

    CountedObject& child() { return object_.child(); }

    const bool hasChild_ = true;
    CountedObject object_{hasChild_};
    std::optional<Dispatch> dispatch_{Dispatch(object_.referred(), "Counted")};
};

TEST_F(ComReferences, AreGivenBackWithTheOwner) {
    EXPECT_EQ(object_.references(), 1);
    CountedObject other;
    Dispatch moved = std::move(*dispatch_);
    EXPECT_EQ(object_.references(), 1);
    dispatch_.reset();
    EXPECT_EQ(object_.references(), 1);
    moved = Dispatch(other.referred(), "Other");
    EXPECT_EQ(object_.references(), 0);
    EXPECT_EQ(other.references(), 1);
}

TEST_F(ComReferences, ToAnObjectInAnObjectLiveAsLongAsItsOwner) {
    {
        const Dispatch read = dispatch_->getObject("Child");
        EXPECT_EQ(child().references(), 1);
        const Dispatch called = dispatch_->callForObject("GiveChild");
        EXPECT_EQ(child().references(), 2);
    }
    expectUnchanged();
}

TEST_F(ComReferences, ToAnObjectThatIsPassedStayTheCallers) {
    CountedObject passed;
    {
        const Dispatch argument(passed.referred(), "Passed");
        const base::Variant text("text");
        const std::array<Argument, 2> arguments = {&argument, &text};
        dispatch_->call("Take", arguments);
        EXPECT_EQ(passed.references(), 1);
        EXPECT_THROW(dispatch_->call("FailWithObject", {arguments.data(), 1}), base::RuntimeError);
        EXPECT_EQ(passed.references(), 1);
        EXPECT_THROW(dispatch_->call("Answer", {arguments.data(), 1}), base::RuntimeError);
        EXPECT_EQ(passed.references(), 1);
    }
    EXPECT_EQ(passed.references(), 0);
    expectUnchanged();
}

TEST_F(ComReferences, ToAResultThatIsRefusedAreGivenBack) {
    for (const char* method : {"GiveChild", "GiveChildByReference", "GiveArray"}) {
        const long before = child().everReferred();
        EXPECT_THROW(static_cast<void>(dispatch_->callAny(method, {})), base::RuntimeError) << method;
        EXPECT_GT(child().everReferred(), before) << method;
        expectUnchanged();
    }
    EXPECT_THROW(static_cast<void>(dispatch_->get("Child")), base::RuntimeError);
    expectUnchanged();
}

TEST_F(ComReferences, ToAResultThatIsNotWantedAreNotTaken) {
    dispatch_->call("GiveChild");
    expectUnchanged();
}

TEST_F(ComReferences, InAVariableThatIsRefusedAreGivenBack) {
    base::Variant variable;
    const Argument argument = &variable;
    EXPECT_THROW(dispatch_->call("FillWithChild", {&argument, 1}), base::RuntimeError);
    EXPECT_EQ(child().everReferred(), 1);
    expectUnchanged();
}

TEST_F(ComReferences, AreGivenBackAfterAnError) {
    EXPECT_THROW(static_cast<void>(dispatch_->callAny("FailLate", {})), base::RuntimeError);
    expectUnchanged();
    EXPECT_THROW(static_cast<void>(dispatch_->callForObject("GiveChildAndFail")), base::RuntimeError);
    expectUnchanged();
    EXPECT_THROW(static_cast<void>(dispatch_->callAny("NoSuchMethod", {})), base::RuntimeError);
    expectUnchanged();
    EXPECT_THROW(static_cast<void>(dispatch_->callForObject("Fail")), base::RuntimeError);
    expectUnchanged();
}

/// The same on the whole way, with an object that is created by its ProgID.
TEST(ComObjects, LiveAsLongAsTheirOwners) {
    const platform::windows::ComApartment apartment;
    platform::windows::ComAutomationFactory factory;
    const auto live = [] { return com_server::liveObjectsOf(L"test_plugin.dll"); };
    const base::Variant object("OBJECT");
    {
        const auto probe = factory.create("TyTest.Probe");
        EXPECT_EQ(live(), 1);
        const auto plugin = factory.create("TyTest.Text");
        EXPECT_EQ(live(), 2);
        EXPECT_THROW(probe->callByValue("Give", {&object, 1}), base::RuntimeError);
        EXPECT_THROW(probe->call("FailAsControl"), base::RuntimeError);
        EXPECT_EQ(live(), 2);
    }
    EXPECT_EQ(live(), 0);
}

}  // namespace
