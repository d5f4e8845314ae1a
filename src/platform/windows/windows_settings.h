// WindowsSettings keep the settings in the registry. The composition root owns it.
//
// The registry's own manners show: a text that is stored gets an ending NUL where it has none, which counts
// in its size (an empty one stays without any byte), and values are listed in an order of the system's
// choosing.
#pragma once

#include "platform/settings_store.h"

namespace platform::windows {

class WindowsSettings : public SettingsStore {
  public:
    SettingsStatus openKey(RootKey root, std::string_view path, KeyHandle& key) override;
    SettingsStatus createKey(RootKey root, std::string_view path, KeyHandle& key) override;
    SettingsStatus queryValue(KeyHandle key, std::string_view name, ValueType& type, std::uint8_t* data,
                              std::uint32_t& size) override;
    SettingsStatus setValue(KeyHandle key, std::string_view name, ValueType type, const std::uint8_t* data,
                            std::uint32_t size) override;
    SettingsStatus deleteValue(KeyHandle key, std::string_view name) override;
    SettingsStatus enumValue(KeyHandle key, std::uint32_t index, char* name, std::uint32_t& nameSize,
                             ValueType& type, std::uint8_t* data, std::uint32_t& dataSize) override;
    void closeKey(KeyHandle key) override;

    [[nodiscard]] std::string encodeText(std::string_view text) const override;
    [[nodiscard]] std::string decodeText(std::string_view bytes) const override;
};

}  // namespace platform::windows
