// The toolkits of this system, for tests that are to pass on each of them.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>

#include "fakes/headless_driver.h"
#include "fakes/window_driver.h"

struct ToolkitUnderTest {
    const char* name;
    WindowDriverMaker makeDriver;
};

inline std::ostream& operator<<(std::ostream& out, const ToolkitUnderTest& toolkit) {
    return out << toolkit.name;
}

inline const ToolkitUnderTest headlessToolkit{
    "Headless", []() -> std::unique_ptr<WindowDriver> { return std::make_unique<HeadlessDriver>(); }};
/// The one that shows the window on this system's screen.
extern const ToolkitUnderTest screenToolkit;

inline std::string toolkitName(const testing::TestParamInfo<ToolkitUnderTest>& info) {
    return info.param.name;
}
