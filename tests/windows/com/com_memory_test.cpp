// Strings and arrays that cross the border to an automation object are freed, whichever way the call ends.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>

#include "base/runtime_error.h"
#include "platform/windows/dispatch.h"
#include "windows/com/allocation_spy.h"
#include "windows/com/counted_object.h"

namespace {

using com_tests::CountedObject;
using platform::windows::Argument;
using platform::windows::Dispatch;

class ComMemory : public testing::Test {
  protected:
    /// Does the work twice: the blocks that it allocates are freed when it is over. Tells how many it were.
    std::size_t allocatedBy(const std::function<void(Dispatch&)>& work) {
        const bool hasChild = true;
        CountedObject object(hasChild);
        Dispatch dispatch(object.referred(), "Counted");
        const com_tests::AllocationSpy spy;
        work(dispatch);
        EXPECT_EQ(spy.held(), 0U);
        work(dispatch);
        EXPECT_EQ(spy.held(), 0U);
        return spy.allocated() / 2;
    }
};

TEST_F(ComMemory, OfTextsAndResultsIsFreed) {
    EXPECT_EQ(allocatedBy([](Dispatch& object) {
                  const base::Variant text("a question");
                  const Argument argument = &text;
                  EXPECT_EQ(object.callAny("Answer", {&argument, 1}).toText(), "An answer to a question");
              }),
              2U);
}

TEST_F(ComMemory, OfTextsThatTheObjectReplacesIsFreed) {
    EXPECT_GE(allocatedBy([](Dispatch& object) {
                  base::Variant text("short");
                  const Argument argument = &text;
                  object.call("Lengthen", {&argument, 1});
                  EXPECT_EQ(text.toText(), "short and much more");
              }),
              1U);
    EXPECT_EQ(allocatedBy([](Dispatch& object) {
                  base::Variant empty;
                  const Argument argument = &empty;
                  object.call("Fill", {&argument, 1});
                  EXPECT_EQ(empty.toText(), "filled");
              }),
              1U);
}

TEST_F(ComMemory, OfAnErrorsTextsIsFreed) {
    EXPECT_EQ(allocatedBy([](Dispatch& object) {
                  const base::Variant text("a question");
                  const Argument argument = &text;
                  EXPECT_THROW(object.call("Fail", {&argument, 1}), base::RuntimeError);
              }),
              4U);  // the argument, the description, the source and the help file
    EXPECT_EQ(allocatedBy([](Dispatch& object) {
                  EXPECT_THROW(static_cast<void>(object.callAny("FailLate", {})), base::RuntimeError);
              }),
              3U);
}

TEST_F(ComMemory, OfArgumentsThatAreRefusedIsFreed) {
    EXPECT_EQ(allocatedBy([](Dispatch& object) {
                  const base::Variant text("text");
                  const std::array<Argument, 2> arguments = {&text, &text};
                  EXPECT_THROW(object.call("Answer", arguments), base::RuntimeError);
              }),
              2U);
}

TEST_F(ComMemory, OfResultsThatAreRefusedIsFreed) {
    EXPECT_EQ(allocatedBy([](Dispatch& object) {
                  EXPECT_THROW(static_cast<void>(object.callAny("GiveTextAndRefuse", {})),
                               base::RuntimeError);
              }),
              1U);
    EXPECT_EQ(allocatedBy([](Dispatch& object) {
                  const base::Variant text("a question");
                  const Argument argument = &text;
                  EXPECT_THROW(static_cast<void>(object.callForObject("Answer", {&argument, 1})),
                               base::RuntimeError);
              }),
              2U);
    EXPECT_GT(allocatedBy([](Dispatch& object) {
                  EXPECT_THROW(static_cast<void>(object.callAny("GiveArray", {})), base::RuntimeError);
              }),
              1U);
}

/// The spy is worth only what it sees.
TEST_F(ComMemory, ThatIsHeldIsSeen) {
    const com_tests::AllocationSpy spy;
    BSTR text = ::SysAllocString(L"text");
    EXPECT_EQ(spy.held(), 1U);
    ::SysFreeString(text);
    EXPECT_EQ(spy.held(), 0U);
}

}  // namespace
