#include "platform/qt/display.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using platform::qt::displayTrouble;
using testing::HasSubstr;
using testing::Optional;

class DisplayTrouble : public testing::Test {
  protected:
    DisplayTrouble() {
        for (const char* variable : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
            unsetenv(variable);
        }
    }
};

TEST_F(DisplayTrouble, IsThatNoDisplayIsNamed) {
    EXPECT_THAT(displayTrouble(), Optional(HasSubstr("neither DISPLAY nor WAYLAND_DISPLAY is set")));
}

TEST_F(DisplayTrouble, IsThatTheDisplayCannotBeUsed) {
    setenv("DISPLAY", "nowhere.invalid:7", 1);
    EXPECT_THAT(displayTrouble(), Optional(HasSubstr("\"nowhere.invalid:7\" cannot be used")));
}

TEST_F(DisplayTrouble, IsThatThePlatformOfQtIsUnknown) {
    setenv("QT_QPA_PLATFORM", "carrier-pigeon", 1);
    EXPECT_THAT(displayTrouble(),
                Optional(HasSubstr("no display can be used with QT_QPA_PLATFORM=carrier-pigeon")));
}

TEST_F(DisplayTrouble, IsNoneWithAScreenInMemory) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    EXPECT_EQ(displayTrouble(), std::nullopt);
}

}  // namespace
