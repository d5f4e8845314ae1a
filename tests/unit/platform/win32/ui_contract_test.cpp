#include "unit/platform/contract/ui_contract.h"
#include "fakes/win32_driver.h"

namespace {

std::unique_ptr<UiDriver> makeDriver() {
    return makeWin32Driver();
}

INSTANTIATE_TEST_SUITE_P(Win32, UiContract, testing::Values(&makeDriver));

}  // namespace
