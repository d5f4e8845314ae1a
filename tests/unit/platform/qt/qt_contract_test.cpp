#include "fakes/qt_driver.h"
#include "unit/platform/contract/ui_contract.h"

namespace {

std::unique_ptr<UiDriver> makeDriver() {
    return makeQtDriver();
}

INSTANTIATE_TEST_SUITE_P(Qt, UiContract, testing::Values(&makeDriver));

}  // namespace
