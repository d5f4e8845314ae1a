#include "unit/platform/contract/settings_store_contract.h"

#include "fakes/memory_settings_store.h"
#include "platform/posix/settings_file.h"

namespace contract {

namespace {

std::unique_ptr<SettingsStore> memoryStore(const fakes::TemporaryFolder& /*folder*/) {
    return std::make_unique<fakes::MemorySettingsStore>();
}

std::unique_ptr<SettingsStore> fileStore(const fakes::TemporaryFolder& folder) {
    return std::make_unique<platform::posix::SettingsFile>(folder / "settings.db");
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Memory, SettingsStoreContract, ::testing::Values(&memoryStore));
INSTANTIATE_TEST_SUITE_P(File, SettingsStoreContract, ::testing::Values(&fileStore));

}  // namespace contract
