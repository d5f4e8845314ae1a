#include "infra/tysRegistry.h"

#include <array>
#include <exception>
#include <string>
#include <utility>

#include "infra/tysSupport.h"

namespace infra {

using platform::KeyHandle;
using platform::SettingsStatus;
using platform::ValueType;

namespace {

constexpr std::uint32_t enumRoom = 255;
constexpr std::uint32_t temporaryPathRoom = 255;
constexpr std::uint32_t numberSize = 4;

/// A key that is closed at the end of the operation, an error's end included.
class OpenKey {
  public:
    enum class Missing { leave, make };

    OpenKey(platform::SettingsStore& store, platform::RootKey root, std::string_view path, Missing missing)
        : store_(store) {
        const std::string encoded = store.encodeText(path);
        const SettingsStatus status = missing == Missing::make ? store.createKey(root, encoded, key_)
                                                               : store.openKey(root, encoded, key_);
        isOpen_ = status == SettingsStatus::success;
    }
    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;
    ~OpenKey() {
        if (isOpen_) {
            store_.closeKey(key_);
        }
    }

    explicit operator bool() const { return isOpen_; }
    [[nodiscard]] KeyHandle handle() const { return key_; }

  private:
    platform::SettingsStore& store_;
    KeyHandle key_ = KeyHandle::none;
    bool isOpen_ = false;
};

/// Runs one operation; an error in it leaves a log line, and whatever result had been reached.
template <class Operation>
void trapped(const tysRegistry::LogWriter& log, std::string_view label, Operation operation) {
    try {
        operation();
    } catch (const std::exception& error) {
        log(std::string(label) + error.what(), LogLevel::errorReport);
    }
}

std::string upToNul(const std::string& buffer) {
    return buffer.substr(0, buffer.find('\0'));
}

bool isText(ValueType type) {
    return type == ValueType::text || type == ValueType::expandableText;
}

/// Stores a value and says nothing about it: callers go on whether or not it could be stored.
void store(platform::SettingsStore& settings, const OpenKey& key, std::string_view name, ValueType type,
           const std::uint8_t* data, std::size_t size) {
    if (key) {
        static_cast<void>(settings.setValue(key.handle(), settings.encodeText(name), type, data,
                                            static_cast<std::uint32_t>(size)));
    }
}

}  // namespace

tysRegistry::tysRegistry(platform::SettingsStore& settings, platform::FileSystem& files, LogWriter log)
    : store_(settings), files_(files), log_(std::move(log)) {}

std::string tysRegistry::GetSettingString(platform::RootKey root, std::string_view path,
                                          std::string_view name, std::string_view defaultText) {
    std::string result(defaultText);
    trapped(log_, "tysRegistry.GetSettingString - ", [&] {
        const OpenKey key(store_, root, path, OpenKey::Missing::leave);
        if (!key) {
            return;
        }
        const std::string encodedName = store_.encodeText(name);
        ValueType type{};
        std::uint32_t size = 0;
        const SettingsStatus status = store_.queryValue(key.handle(), encodedName, type, nullptr, size);
        if (status == SettingsStatus::success && isText(type)) {
            // Only the size query decides; a value that vanishes between the two calls reads as blanks.
            std::string buffer(size, ' ');
            static_cast<void>(store_.queryValue(key.handle(), encodedName, type,
                                                reinterpret_cast<std::uint8_t*>(buffer.data()), size));
            result = store_.decodeText(upToNul(buffer));
        }
    });
    return result;
}

void tysRegistry::SaveSettingString(platform::RootKey root, std::string_view path, std::string_view name,
                                    std::string_view text) {
    trapped(log_, "tysRegistry.SaveSettingString - ", [&] {
        const OpenKey key(store_, root, path, OpenKey::Missing::make);
        const std::string bytes = store_.encodeText(text);
        store(store_, key, name, ValueType::text, reinterpret_cast<const std::uint8_t*>(bytes.data()),
              bytes.size());
    });
}

std::int32_t tysRegistry::GetSettingLong(platform::RootKey root, std::string_view path, std::string_view name,
                                         std::int32_t defaultNumber) {
    std::int32_t result = defaultNumber;
    trapped(log_, "tysRegistry.GetSettingLong - ", [&] {
        const OpenKey key(store_, root, path, OpenKey::Missing::leave);
        if (!key) {
            return;
        }
        std::array<std::uint8_t, numberSize> bytes{};
        ValueType type{};
        std::uint32_t size = numberSize;
        const SettingsStatus status =
            store_.queryValue(key.handle(), store_.encodeText(name), type, bytes.data(), size);
        if (status == SettingsStatus::success && type == ValueType::number) {
            std::uint32_t number = 0;
            for (std::size_t i = bytes.size(); i-- > 0;) {
                number = number << 8U | bytes.at(i);
            }
            result = static_cast<std::int32_t>(number);
        }
    });
    return result;
}

void tysRegistry::SaveSettingLong(platform::RootKey root, std::string_view path, std::string_view name,
                                  std::int32_t number) {
    trapped(log_, "tysRegistry.SaveSettingLong - ", [&] {
        const OpenKey key(store_, root, path, OpenKey::Missing::make);
        std::array<std::uint8_t, numberSize> bytes{};
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            bytes.at(i) = static_cast<std::uint8_t>(static_cast<std::uint32_t>(number) >> (8 * i));
        }
        store(store_, key, name, ValueType::number, bytes.data(), bytes.size());
    });
}

void tysRegistry::DeleteValue(platform::RootKey root, std::string_view path, std::string_view name) {
    trapped(log_, "tysRegistry.DeleteValue - ", [&] {
        const OpenKey key(store_, root, path, OpenKey::Missing::leave);
        if (key) {
            static_cast<void>(store_.deleteValue(key.handle(), store_.encodeText(name)));
        }
    });
}

bool tysRegistry::EnumValues(platform::RootKey root, std::string_view path, std::uint32_t index,
                             std::string& name, ValueType& type) {
    bool found = false;
    trapped(log_, "tysRegistry.EnumValues - ", [&] {
        const OpenKey key(store_, root, path, OpenKey::Missing::leave);
        if (!key) {
            return;
        }
        // A name of more than 254 characters or a value of more than 255 bytes ends a listing early.
        std::string nameBuffer(enumRoom, ' ');
        std::array<std::uint8_t, enumRoom> data{};
        std::uint32_t nameSize = enumRoom;
        std::uint32_t dataSize = enumRoom;
        const SettingsStatus status =
            store_.enumValue(key.handle(), index, nameBuffer.data(), nameSize, type, data.data(), dataSize);
        if (status == SettingsStatus::success) {
            name = store_.decodeText(nameBuffer.substr(0, nameSize));
            found = true;
        } else {
            name.clear();
        }
    });
    return found;
}

std::string tysRegistry::getTempDirectory() {
    std::string result;
    trapped(log_, "tysRegistry.getTempDirectory - ", [&] {
        std::string buffer(temporaryPathRoom, '\0');
        const std::uint32_t length = files_.temporaryFolder(temporaryPathRoom, buffer.data());
        result = buffer.substr(0, length);
    });
    return result;
}

}  // namespace infra
