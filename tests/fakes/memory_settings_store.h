// A settings store in memory, which can be told to fail.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/settings_store.h"

namespace fakes {

class MemorySettingsStore : public platform::SettingsStore {
  public:
    platform::SettingsStatus openKey(platform::RootKey root, std::string_view path,
                                     platform::KeyHandle& key) override;
    platform::SettingsStatus createKey(platform::RootKey root, std::string_view path,
                                       platform::KeyHandle& key) override;
    platform::SettingsStatus queryValue(platform::KeyHandle key, std::string_view name,
                                        platform::ValueType& type, std::uint8_t* data,
                                        std::uint32_t& size) override;
    platform::SettingsStatus setValue(platform::KeyHandle key, std::string_view name,
                                      platform::ValueType type, const std::uint8_t* data,
                                      std::uint32_t size) override;
    platform::SettingsStatus deleteValue(platform::KeyHandle key, std::string_view name) override;
    platform::SettingsStatus enumValue(platform::KeyHandle key, std::uint32_t index, char* name,
                                       std::uint32_t& nameSize, platform::ValueType& type, std::uint8_t* data,
                                       std::uint32_t& dataSize) override;
    void closeKey(platform::KeyHandle key) override;
    [[nodiscard]] std::string encodeText(std::string_view text) const override;
    [[nodiscard]] std::string decodeText(std::string_view bytes) const override;

    /// Short cuts for tests.
    void put(std::string_view path, std::string_view name, std::string_view text);
    void put(std::string_view path, std::string_view name, std::int32_t number);
    std::optional<std::string> text(std::string_view path, std::string_view name);
    std::optional<std::int32_t> number(std::string_view path, std::string_view name);
    [[nodiscard]] std::size_t openHandles() const { return handles_.size(); }

    /// Every operation answers this while it is set.
    std::optional<platform::SettingsStatus> failWith;
    /// deleteValue answers this while it is set, as settings do that may only be read.
    std::optional<platform::SettingsStatus> deleteFailsWith;
    /// encodeText and decodeText raise while it is set.
    bool conversionFails = false;
    /// Every text or number that was stored, as "name=value", in order.
    std::vector<std::string> writes;

  private:
    struct Value {
        std::string name;
        platform::ValueType type;
        std::string data;
    };
    using Key = std::vector<Value>;

    Key* keyOf(platform::KeyHandle handle);
    platform::KeyHandle handleTo(const std::string& path);

    std::map<std::string, Key> keys_;  // by folded path
    std::map<platform::KeyHandle, std::string> handles_;
    std::uint64_t lastHandle_ = 0;
};

}  // namespace fakes
