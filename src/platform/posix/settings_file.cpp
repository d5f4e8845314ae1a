#include "platform/posix/settings_file.h"

#include <cstdlib>
#include <cstring>
#include <utility>

#include <pwd.h>
#include <unistd.h>

#include "base/text.h"

namespace platform::posix {

namespace {

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::string homeFolder() {
    std::string home = environment("HOME");
    if (!home.empty()) {
        return home;
    }
    const passwd* user = getpwuid(getuid());
    return user == nullptr ? std::string("/") : std::string(user->pw_dir);
}

/// Without separators at its ends and with single ones between: no key has an empty name.
std::string tidyPath(std::string_view path) {
    std::string tidy;
    tidy.reserve(path.size());
    for (const char byte : path) {
        if (byte != '\\' || !(tidy.empty() || tidy.ends_with('\\'))) {
            tidy += byte;
        }
    }
    if (tidy.ends_with('\\')) {
        tidy.pop_back();
    }
    return tidy;
}

std::string foldedPath(std::string_view path) {
    return base::fold(tidyPath(path));
}

void copyOut(const std::string& bytes, void* room) {
    if (!bytes.empty()) {
        std::memcpy(room, bytes.data(), bytes.size());
    }
}

}  // namespace

std::string settingsPath() {
    std::string named = environment("TYINDEXER_SETTINGS");
    if (!named.empty()) {
        return named;
    }
    const std::string configuration = environment("XDG_CONFIG_HOME");
    return (configuration.empty() ? homeFolder() + "/.config" : configuration) + "/tessaly/settings.db";
}

std::string describe(SettingsStatus status) {
    if (status == settingsBusy) {
        return "another program kept the settings file locked for too long; try again";
    }
    switch (status) {
        case SettingsStatus::success:
            return "done";
        case SettingsStatus::notFound:
            return "there is none";
        case SettingsStatus::accessDenied:
            return "the settings file cannot be read or written here";
        case SettingsStatus::damaged:
            return "the settings file is damaged or is no settings file; put a backup in its place or delete "
                   "it";
        default:
            return "status " + std::to_string(static_cast<std::int32_t>(status));
    }
}

SettingsFile::SettingsFile(std::string path) : database_(std::move(path)) {}

SettingsStatus SettingsFile::openKey(RootKey /*root*/, std::string_view path, KeyHandle& key) {
    std::string folded = foldedPath(path);
    const SettingsStatus status = database_.findKey(folded);
    if (status == SettingsStatus::success) {
        key = handleTo(std::move(folded));
    }
    return status;
}

SettingsStatus SettingsFile::createKey(RootKey /*root*/, std::string_view path, KeyHandle& key) {
    const SettingsStatus status = database_.makeKey(tidyPath(path));
    if (status == SettingsStatus::success) {
        key = handleTo(foldedPath(path));
    }
    return status;
}

SettingsStatus SettingsFile::queryValue(KeyHandle key, std::string_view name, ValueType& type,
                                        std::uint8_t* data, std::uint32_t& size) {
    const std::string* path = pathOf(key);
    if (path == nullptr) {
        return SettingsStatus::invalidHandle;
    }
    SettingsValue value;
    const SettingsStatus status = database_.readValue(*path, name, value);
    if (status != SettingsStatus::success) {
        return status;
    }
    const std::uint32_t room = size;
    type = value.type;
    size = static_cast<std::uint32_t>(value.data.size());
    if (data == nullptr) {
        return SettingsStatus::success;
    }
    if (room < size) {
        return SettingsStatus::moreData;
    }
    copyOut(value.data, data);
    return SettingsStatus::success;
}

SettingsStatus SettingsFile::setValue(KeyHandle key, std::string_view name, ValueType type,
                                      const std::uint8_t* data, std::uint32_t size) {
    const std::string* path = pathOf(key);
    if (path == nullptr) {
        return SettingsStatus::invalidHandle;
    }
    return database_.storeValue(*path, name, type,
                                std::string_view(reinterpret_cast<const char*>(data), size));
}

SettingsStatus SettingsFile::deleteValue(KeyHandle key, std::string_view name) {
    const std::string* path = pathOf(key);
    return path == nullptr ? SettingsStatus::invalidHandle : database_.removeValue(*path, name);
}

SettingsStatus SettingsFile::enumValue(KeyHandle key, std::uint32_t index, char* name,
                                       std::uint32_t& nameSize, ValueType& type, std::uint8_t* data,
                                       std::uint32_t& dataSize) {
    const std::string* path = pathOf(key);
    if (path == nullptr) {
        return SettingsStatus::invalidHandle;
    }
    SettingsValue value;
    const SettingsStatus status = database_.valueAt(*path, index, value);
    if (status != SettingsStatus::success) {
        return status;
    }
    if (value.name.size() >= nameSize || value.data.size() > dataSize) {
        return SettingsStatus::moreData;
    }
    copyOut(value.name, name);
    name[value.name.size()] = '\0';
    nameSize = static_cast<std::uint32_t>(value.name.size());
    type = value.type;
    copyOut(value.data, data);
    dataSize = static_cast<std::uint32_t>(value.data.size());
    return SettingsStatus::success;
}

void SettingsFile::closeKey(KeyHandle key) {
    handles_.erase(key);
}

std::string SettingsFile::encodeText(std::string_view text) const {
    return std::string(text);
}

std::string SettingsFile::decodeText(std::string_view bytes) const {
    return std::string(bytes);
}

SettingsStatus SettingsFile::subKeys(std::string_view path, std::vector<std::string>& names) {
    return database_.subKeys(foldedPath(path), names);
}

SettingsStatus SettingsFile::values(std::string_view path, std::vector<SettingsValue>& values) {
    return database_.values(foldedPath(path), values);
}

SettingsStatus SettingsFile::deleteKey(std::string_view path) {
    return database_.removeKey(foldedPath(path));
}

const std::string* SettingsFile::pathOf(KeyHandle key) const {
    const auto found = handles_.find(key);
    return found == handles_.end() ? nullptr : &found->second;
}

KeyHandle SettingsFile::handleTo(std::string folded) {
    const KeyHandle handle{++lastHandle_};
    handles_.emplace(handle, std::move(folded));
    return handle;
}

}  // namespace platform::posix
