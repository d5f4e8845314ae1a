// tysRegistry is the service's only access to its settings: strings and numbers under key paths.
// Services owns it. No operation raises: a caller always gets a value back, and a failure leaves at most a
// log line.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/file_system.h"
#include "platform/settings_store.h"

namespace infra {

enum class LogLevel : int;

/// Key paths that more than one operation uses.
inline constexpr std::string_view serviceKey = R"(software\orlent corporation\tessaly\service)";
inline constexpr std::string_view indexerKey = R"(software\orlent corporation\tessaly\service\Indexer)";
inline constexpr std::string_view masterKey = R"(software\orlent corporation\tessaly\service\Master)";
inline constexpr std::string_view temporaryFilesKey =
    R"(Software\Orlent Corporation\Tessaly\Service\Indexer\Temp Files)";
/// Followed by the data type.
inline constexpr std::string_view dataTypesKey = R"(software\orlent corporation\tessaly\DataTypes\)";

class tysRegistry {
  public:
    using LogWriter = std::function<void(const std::string& message, LogLevel level)>;

    tysRegistry(platform::SettingsStore& store, platform::FileSystem& files, LogWriter log);

    /// The stored text up to its first NUL, expandable text unexpanded; the default when the key or value is
    /// missing or of another type.
    std::string GetSettingString(platform::RootKey root, std::string_view path, std::string_view name,
                                 std::string_view defaultText = {});

    /// Stores the text without an ending NUL and makes the key path where it is missing. A failed write is
    /// silent.
    void SaveSettingString(platform::RootKey root, std::string_view path, std::string_view name,
                           std::string_view text);

    /// The stored number; the default when the key or value is missing or is no number.
    std::int32_t GetSettingLong(platform::RootKey root, std::string_view path, std::string_view name,
                                std::int32_t defaultNumber = 0);

    void SaveSettingLong(platform::RootKey root, std::string_view path, std::string_view name,
                         std::int32_t number);

    /// Removes the value; the key stays.
    void DeleteValue(platform::RootKey root, std::string_view path, std::string_view name);

    /// Name and type of the value at a 0-based index. False with an empty name when there is none; false with
    /// both untouched when the key is missing.
    bool EnumValues(platform::RootKey root, std::string_view path, std::uint32_t index, std::string& name,
                    platform::ValueType& type);

    /// The system's folder for temporary files with its ending separator; empty when there is none.
    std::string getTempDirectory();

  private:
    platform::SettingsStore& store_;
    platform::FileSystem& files_;
    LogWriter log_;
};

}  // namespace infra
