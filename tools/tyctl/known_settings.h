// The settings that the service reads: of which kind each is, and which values it has a meaning for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/settings_store.h"
#include "tyctl/setting_paths.h"

namespace tyctl {

/// The kind of a setting, by its name alone wherever below the product's key it stands; nothing for an
/// unknown one.
std::optional<platform::ValueType> knownTypeOf(const SettingName& setting);

/// What speaks against a value, as the rest of a sentence that begins with the setting: "takes low, normal or
/// high, not "fast"". Empty for a good value, and for every value of a setting that the service does not
/// read.
std::string objectionToNumber(const SettingName& setting, std::int32_t number);
std::string objectionToText(const SettingName& setting, std::string_view text);

}  // namespace tyctl
