// How settings are named on the command line, and which kind each known one is of.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/settings_store.h"

namespace tyctl {

/// A value and the key that it lies under.
struct SettingName {
    std::string key;
    std::string value;  // empty for the key's unnamed value

    bool operator==(const SettingName&) const = default;
};

/// The full path of a key. "service\..." and "DataTypes\..." stand below the product's own key, "Indexer",
/// "Indexer\..." and "Master" below the service's; any other path is taken as it is, without a leading
/// "HKEY_CURRENT_USER\" and without separators at its ends. "/" separates as "\" does.
std::string expandKey(std::string_view key);

/// Splits "key\value" at its last separator. One that ends with a separator names the unnamed value; one
/// without any names a value of the service's own key, except "Master", the key of the supervisor's mark.
SettingName parseSettingName(std::string_view name);

/// The kind of a setting that the service reads; nothing for an unknown one.
std::optional<platform::ValueType> knownTypeOf(const SettingName& setting);

/// What the service accepts of a number; nothing for settings that it takes as they are.
struct Limits {
    std::int32_t lowest;
    std::int32_t highest;
};
std::optional<Limits> limitsOf(const SettingName& setting);

/// The key's short form, as it can be typed; a key outside the product's is given back as it is.
std::string shortKey(std::string_view key);

}  // namespace tyctl
