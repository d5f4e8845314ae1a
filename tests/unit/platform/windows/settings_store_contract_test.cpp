#include "unit/platform/contract/settings_store_contract.h"

#include "fakes/memory_settings_store.h"
#include "platform/windows/windows_settings.h"
#include "unit/platform/windows/scratch_registry.h"

namespace contract {

namespace {

class ScratchSettings : public platform::windows::WindowsSettings {
  private:
    ScratchRegistry registry_;
};

std::unique_ptr<SettingsStore> registryStore(const fakes::TemporaryFolder& /*folder*/) {
    return std::make_unique<ScratchSettings>();
}

std::unique_ptr<SettingsStore> memoryStore(const fakes::TemporaryFolder& /*folder*/) {
    return std::make_unique<fakes::MemorySettingsStore>();
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Registry, SettingsStoreContract,
                         ::testing::Values(StoreKind{&registryStore, std::string(1, '\0'),
                                                     StoreKind::Order::ofItsOwn}));
INSTANTIATE_TEST_SUITE_P(Memory, SettingsStoreContract, ::testing::Values(StoreKind{&memoryStore}));

}  // namespace contract
