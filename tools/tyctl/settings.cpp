#include "tyctl/settings.h"

#include <vector>

#include "infra/tysRegistry.h"
#include "tyctl/failure.h"

namespace tyctl {
namespace {

using platform::SettingsStatus;
using platform::ValueType;

/// A key that is open as long as this lives.
class OpenKey {
  public:
    explicit OpenKey(platform::SettingsStore& store) : store_(store) {}
    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;
    ~OpenKey() {
        if (handle != platform::KeyHandle::none) {
            store_.closeKey(handle);
        }
    }
    platform::KeyHandle handle = platform::KeyHandle::none;

  private:
    platform::SettingsStore& store_;
};

std::string reasonOf(SettingsStatus status) {
    switch (status) {
        case SettingsStatus::notFound:
            return "there is no such setting";
        case SettingsStatus::accessDenied:
            return "access is denied; check who owns the file and its folder";
        case SettingsStatus::damaged:
            return "the file is damaged or holds no settings; restore it from a backup or move it away";
        default:
            return "the settings answered status " + std::to_string(static_cast<std::int32_t>(status));
    }
}

}  // namespace

Settings::Settings() : path_(platform::posix::settingsPath()), store_(path_) {}

void Settings::require(SettingsStatus status, std::string_view what, const SettingName& setting) const {
    if (status != SettingsStatus::success) {
        throw Failure("cannot " + std::string(what) + " \"" + shortKey(setting.key) + "\\" + setting.value +
                      "\" in " + path_ + ": " + reasonOf(status));
    }
}

std::optional<StoredValue> Settings::find(const SettingName& setting) {
    OpenKey key(store_);
    SettingsStatus status = store_.openKey(platform::RootKey::currentUser, setting.key, key.handle);
    StoredValue found{setting.value, ValueType::none, {}};
    std::uint32_t size = 0;
    if (status == SettingsStatus::success) {
        status = store_.queryValue(key.handle, setting.value, found.type, nullptr, size);
    }
    if (status == SettingsStatus::notFound) {
        return std::nullopt;
    }
    require(status, "read", setting);
    std::vector<std::uint8_t> bytes(size + 1);
    size += 1;
    status = store_.queryValue(key.handle, setting.value, found.type, bytes.data(), size);
    require(status, "read", setting);
    found.data.assign(bytes.begin(), bytes.begin() + size);
    return found;
}

std::string Settings::text(std::string_view key, std::string_view value) {
    const auto found = find({std::string(key), std::string(value)});
    if (!found || (found->type != ValueType::text && found->type != ValueType::expandableText)) {
        return {};
    }
    return store_.decodeText(found->data.substr(0, found->data.find('\0')));
}

std::int32_t Settings::number(std::string_view key, std::string_view value, std::int32_t otherwise) {
    const auto found = find({std::string(key), std::string(value)});
    return found ? numberOf(*found).value_or(otherwise) : otherwise;
}

void Settings::put(const SettingName& setting, ValueType type, std::string_view bytes) {
    OpenKey key(store_);
    require(store_.createKey(platform::RootKey::currentUser, setting.key, key.handle), "write", setting);
    const std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
    require(store_.setValue(key.handle, setting.value, type, data.data(),
                            static_cast<std::uint32_t>(data.size())),
            "write", setting);
}

void Settings::putText(const SettingName& setting, std::string_view text, ValueType type) {
    put(setting, type, store_.encodeText(text));
}

void Settings::putNumber(const SettingName& setting, std::int32_t number) {
    const auto bits = static_cast<std::uint32_t>(number);
    std::string bytes;
    for (unsigned shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>((bits >> shift) & 0xFFU);
    }
    put(setting, ValueType::number, bytes);
}

bool Settings::remove(const SettingName& setting) {
    OpenKey key(store_);
    SettingsStatus status = store_.openKey(platform::RootKey::currentUser, setting.key, key.handle);
    if (status == SettingsStatus::success) {
        status = store_.deleteValue(key.handle, setting.value);
    }
    if (status == SettingsStatus::notFound) {
        return false;
    }
    require(status, "delete", setting);
    return true;
}

Heartbeat Settings::heartbeat() {
    Heartbeat read;
    read.lastTouch = text(infra::indexerKey, "LastTouch");
    read.deadMansSwitchSeconds =
        number(infra::indexerKey, "DeadMansSwitchSeconds", read.deadMansSwitchSeconds);
    read.queueNumber = number(infra::indexerKey, "IndexingQueueNumber", read.queueNumber);
    return read;
}

std::optional<std::int32_t> numberOf(const StoredValue& value) {
    if (value.type != ValueType::number || value.data.size() != 4) {
        return std::nullopt;
    }
    std::uint32_t bits = 0;
    for (std::size_t byte = 4; byte > 0; --byte) {
        bits = bits << 8U | static_cast<std::uint8_t>(value.data[byte - 1]);
    }
    return static_cast<std::int32_t>(bits);
}

std::string shown(const StoredValue& value) {
    if (value.type == ValueType::text || value.type == ValueType::expandableText) {
        return value.data;
    }
    if (const auto number = numberOf(value)) {
        return std::to_string(*number);
    }
    constexpr std::string_view digits = "0123456789abcdef";
    std::string bytes;
    for (const char byte : value.data) {
        const auto code = static_cast<unsigned char>(byte);
        bytes += bytes.empty() ? "" : " ";
        bytes += digits[code >> 4U];
        bytes += digits[code & 0xFU];
    }
    return bytes;
}

}  // namespace tyctl
