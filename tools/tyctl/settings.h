// The settings as the commands see them: read, written and listed with errors that name the setting.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/posix/settings_file.h"
#include "tyctl/setting_paths.h"
#include "tyctl/supervision.h"

namespace tyctl {

using StoredValue = platform::posix::SettingsValue;

class Settings {
  public:
    Settings();

    /// Nothing when there is no such value. Raises a Failure when the store cannot be read.
    [[nodiscard]] std::optional<StoredValue> find(const SettingName& setting);
    [[nodiscard]] std::string text(std::string_view key, std::string_view value);
    [[nodiscard]] std::int32_t number(std::string_view key, std::string_view value, std::int32_t otherwise);

    /// Raise a Failure when the store cannot be written.
    void putText(const SettingName& setting, std::string_view text,
                 platform::ValueType type = platform::ValueType::text);
    void putNumber(const SettingName& setting, std::int32_t number);
    /// False when there was no such value.
    bool remove(const SettingName& setting);

    [[nodiscard]] Heartbeat heartbeat();

    [[nodiscard]] platform::posix::SettingsFile& store() { return store_; }
    [[nodiscard]] const std::string& path() const { return path_; }

    /// The failure that a status of the store means for a setting.
    void require(platform::SettingsStatus status, std::string_view what, const SettingName& setting) const;

  private:
    void put(const SettingName& setting, platform::ValueType type, std::string_view bytes);

    std::string path_;
    platform::posix::SettingsFile store_;
};

/// The number in 4 bytes, low byte first; nothing when there are not 4.
std::optional<std::int32_t> numberOf(const StoredValue& value);

/// The value as people read it: the text, the number, or its bytes in hexadecimal.
std::string shown(const StoredValue& value);

}  // namespace tyctl
