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

/// What only stores that keep text as it is can do.
class UnicodeSettingsStore : public SettingsStoreContract {};

TEST_P(UnicodeSettingsStore, FindsKeysWithoutRegardToCaseInEveryScript) {
    put(make(R"(Software\ΣΟΦΟΣ)"), "name", "text");
    KeyHandle key = KeyHandle::none;
    ASSERT_EQ(store->openKey(RootKey::currentUser, R"(SOFTWARE\σοφος)", key), SettingsStatus::success);
    EXPECT_EQ(get(key, "name"), "text");
}

TEST_P(UnicodeSettingsStore, GivesEveryCharacterBack) {
    const std::string text = "ΣΟΦΟΣ \xF0\x9F\x98\x80";
    EXPECT_EQ(store->decodeText(store->encodeText(text)), text);
}

INSTANTIATE_TEST_SUITE_P(Memory, SettingsStoreContract, ::testing::Values(StoreKind{&memoryStore}));
INSTANTIATE_TEST_SUITE_P(File, SettingsStoreContract, ::testing::Values(StoreKind{&fileStore}));
INSTANTIATE_TEST_SUITE_P(Memory, UnicodeSettingsStore, ::testing::Values(StoreKind{&memoryStore}));
INSTANTIATE_TEST_SUITE_P(File, UnicodeSettingsStore, ::testing::Values(StoreKind{&fileStore}));

}  // namespace contract
