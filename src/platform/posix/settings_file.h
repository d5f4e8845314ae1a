// A SettingsFile is the settings store of systems without a registry: one file that any number of programs
// may use at once. The composition root owns it; one thread uses one object.
//
// A file that is missing holds no settings and is made by the first write. A file that is damaged or cannot
// be reached answers a status to every operation and is left as it is.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/posix/settings_database.h"
#include "platform/settings_store.h"

namespace platform::posix {

/// The user's settings file: $TYINDEXER_SETTINGS, else $XDG_CONFIG_HOME/tessaly/settings.db, else
/// ~/.config/tessaly/settings.db.
[[nodiscard]] std::string settingsPath();

/// What a status says about the file, for a person.
[[nodiscard]] std::string describe(SettingsStatus status);

class SettingsFile : public SettingsStore {
  public:
    explicit SettingsFile(std::string path);

    /// There is one root; whichever is named stands for it.
    SettingsStatus openKey(RootKey root, std::string_view path, KeyHandle& key) override;
    SettingsStatus createKey(RootKey root, std::string_view path, KeyHandle& key) override;

    SettingsStatus queryValue(KeyHandle key, std::string_view name, ValueType& type, std::uint8_t* data,
                              std::uint32_t& size) override;
    /// Answers notFound when the key was deleted meanwhile.
    SettingsStatus setValue(KeyHandle key, std::string_view name, ValueType type, const std::uint8_t* data,
                            std::uint32_t size) override;
    SettingsStatus deleteValue(KeyHandle key, std::string_view name) override;
    SettingsStatus enumValue(KeyHandle key, std::uint32_t index, char* name, std::uint32_t& nameSize,
                             ValueType& type, std::uint8_t* data, std::uint32_t& dataSize) override;
    void closeKey(KeyHandle key) override;

    /// Text is kept as UTF-8, unchanged; neither raises.
    [[nodiscard]] std::string encodeText(std::string_view text) const override;
    [[nodiscard]] std::string decodeText(std::string_view bytes) const override;

    /// For tools. Names of the keys right below one (an empty path stands for the root), and all values of
    /// one, both as they were first spelled and in the order in which they were made.
    SettingsStatus subKeys(std::string_view path, std::vector<std::string>& names);
    SettingsStatus values(std::string_view path, std::vector<SettingsValue>& values);

    /// Deletes a key with everything in it and below it; notFound when there is none.
    SettingsStatus deleteKey(std::string_view path);

  private:
    /// The folded path behind a handle, or null.
    [[nodiscard]] const std::string* pathOf(KeyHandle key) const;
    KeyHandle handleTo(std::string folded);

    SettingsDatabase database_;
    std::map<KeyHandle, std::string> handles_;
    std::uint64_t lastHandle_ = 0;
};

}  // namespace platform::posix
