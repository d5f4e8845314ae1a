// The engine's contract through ADO, on the stand-in and on Jet.
#include "unit/platform/contract/database_contract.h"
#include "windows/ado/ado_library.h"

namespace contract {

INSTANTIATE_TEST_SUITE_P(StandIn, DatabaseContract, ::testing::Values(&ado_tests::standInLibrary));
INSTANTIATE_TEST_SUITE_P(Jet, DatabaseContract, ::testing::Values(&ado_tests::jetLibrary));

}  // namespace contract
