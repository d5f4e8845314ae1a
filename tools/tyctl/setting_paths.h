// How settings are named on the command line.
#pragma once

#include <string>
#include <string_view>

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

/// Whether a full key path is the product's own key or lies below it.
bool isProductKey(std::string_view key);

/// The key's short form, as it can be typed; a key outside the product's is given back as it is.
std::string shortKey(std::string_view key);

}  // namespace tyctl
