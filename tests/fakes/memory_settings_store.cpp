#include "fakes/memory_settings_store.h"

#include <algorithm>
#include <cstring>

#include "base/runtime_error.h"
#include "base/text.h"

namespace fakes {

using platform::KeyHandle;
using platform::SettingsStatus;
using platform::ValueType;

namespace {

std::string numberBytes(std::int32_t number) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<char>(static_cast<std::uint32_t>(number) >> shift));
    }
    return bytes;
}

std::int32_t bytesNumber(std::string_view bytes) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        number |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) << (8 * i);
    }
    return static_cast<std::int32_t>(number);
}

std::string keyPath(std::string_view path) {
    while (path.ends_with('\\')) {
        path.remove_suffix(1);
    }
    return base::fold(path);
}

}  // namespace

SettingsStatus MemorySettingsStore::openKey(platform::RootKey, std::string_view path, KeyHandle& key) {
    if (failWith) {
        return *failWith;
    }
    if (!keys_.contains(keyPath(path))) {
        return SettingsStatus::notFound;
    }
    key = handleTo(keyPath(path));
    return SettingsStatus::success;
}

SettingsStatus MemorySettingsStore::createKey(platform::RootKey, std::string_view path, KeyHandle& key) {
    if (failWith) {
        return *failWith;
    }
    const std::string whole = keyPath(path);
    for (std::size_t end = whole.find('\\'); end != std::string::npos; end = whole.find('\\', end + 1)) {
        keys_[whole.substr(0, end)];
    }
    keys_[whole];
    key = handleTo(whole);
    return SettingsStatus::success;
}

SettingsStatus MemorySettingsStore::queryValue(KeyHandle key, std::string_view name, ValueType& type,
                                               std::uint8_t* data, std::uint32_t& size) {
    Key* values = keyOf(key);
    if (failWith || values == nullptr) {
        return failWith.value_or(SettingsStatus::invalidHandle);
    }
    for (const Value& value : *values) {
        if (base::equalsIgnoringCase(value.name, name)) {
            const std::uint32_t room = size;
            type = value.type;
            size = static_cast<std::uint32_t>(value.data.size());
            if (data != nullptr && room < size) {
                return SettingsStatus::moreData;
            }
            if (data != nullptr) {
                std::memcpy(data, value.data.data(), value.data.size());
            }
            return SettingsStatus::success;
        }
    }
    return SettingsStatus::notFound;
}

SettingsStatus MemorySettingsStore::setValue(KeyHandle key, std::string_view name, ValueType type,
                                             const std::uint8_t* data, std::uint32_t size) {
    Key* values = keyOf(key);
    if (failWith || values == nullptr) {
        return failWith.value_or(SettingsStatus::invalidHandle);
    }
    std::string bytes(size, '\0');
    std::copy(data, data + size, bytes.begin());
    writes.push_back(std::string(name) + "=" +
                     (type == ValueType::number && size == 4 ? std::to_string(bytesNumber(bytes)) : bytes));
    const auto same = [name](const Value& value) { return base::equalsIgnoringCase(value.name, name); };
    const auto found = std::find_if(values->begin(), values->end(), same);
    if (found != values->end()) {
        found->type = type;
        found->data = bytes;
    } else {
        values->push_back({std::string(name), type, bytes});
    }
    return SettingsStatus::success;
}

SettingsStatus MemorySettingsStore::deleteValue(KeyHandle key, std::string_view name) {
    Key* values = keyOf(key);
    if (failWith || values == nullptr) {
        return failWith.value_or(SettingsStatus::invalidHandle);
    }
    if (deleteFailsWith) {
        return *deleteFailsWith;
    }
    const auto removed = std::erase_if(
        *values, [name](const Value& value) { return base::equalsIgnoringCase(value.name, name); });
    return removed == 0 ? SettingsStatus::notFound : SettingsStatus::success;
}

SettingsStatus MemorySettingsStore::enumValue(KeyHandle key, std::uint32_t index, char* name,
                                              std::uint32_t& nameSize, ValueType& type, std::uint8_t* data,
                                              std::uint32_t& dataSize) {
    Key* values = keyOf(key);
    if (failWith || values == nullptr) {
        return failWith.value_or(SettingsStatus::invalidHandle);
    }
    if (index >= values->size()) {
        return SettingsStatus::noMoreItems;
    }
    const Value& value = (*values)[index];
    if (value.name.size() + 1 > nameSize || value.data.size() > dataSize) {
        return SettingsStatus::moreData;
    }
    std::copy(value.name.begin(), value.name.end(), name);
    name[value.name.size()] = '\0';
    nameSize = static_cast<std::uint32_t>(value.name.size());
    type = value.type;
    std::copy(value.data.begin(), value.data.end(), data);
    dataSize = static_cast<std::uint32_t>(value.data.size());
    return SettingsStatus::success;
}

void MemorySettingsStore::closeKey(KeyHandle key) {
    handles_.erase(key);
}

std::string MemorySettingsStore::encodeText(std::string_view text) const {
    if (conversionFails) {
        throw base::RuntimeError(base::ErrorNumber::invalidProcedureCall, "text cannot be converted");
    }
    return std::string(text);
}

std::string MemorySettingsStore::decodeText(std::string_view bytes) const {
    return encodeText(bytes);
}

void MemorySettingsStore::put(std::string_view path, std::string_view name, std::string_view text) {
    KeyHandle key{};
    createKey(platform::RootKey::currentUser, path, key);
    const std::string bytes(text);
    setValue(key, name, ValueType::text, reinterpret_cast<const std::uint8_t*>(bytes.data()),
             static_cast<std::uint32_t>(bytes.size()));
    closeKey(key);
    writes.pop_back();
}

void MemorySettingsStore::put(std::string_view path, std::string_view name, std::int32_t number) {
    KeyHandle key{};
    createKey(platform::RootKey::currentUser, path, key);
    const std::string bytes = numberBytes(number);
    setValue(key, name, ValueType::number, reinterpret_cast<const std::uint8_t*>(bytes.data()), 4);
    closeKey(key);
    writes.pop_back();
}

std::optional<std::string> MemorySettingsStore::text(std::string_view path, std::string_view name) {
    for (const Value& value : keys_[keyPath(path)]) {
        if (base::equalsIgnoringCase(value.name, name) && value.type == ValueType::text) {
            return value.data;
        }
    }
    return std::nullopt;
}

std::optional<std::int32_t> MemorySettingsStore::number(std::string_view path, std::string_view name) {
    for (const Value& value : keys_[keyPath(path)]) {
        if (base::equalsIgnoringCase(value.name, name) && value.type == ValueType::number) {
            return bytesNumber(value.data);
        }
    }
    return std::nullopt;
}

MemorySettingsStore::Key* MemorySettingsStore::keyOf(KeyHandle handle) {
    const auto found = handles_.find(handle);
    return found == handles_.end() ? nullptr : &keys_[found->second];
}

KeyHandle MemorySettingsStore::handleTo(const std::string& path) {
    const KeyHandle handle{++lastHandle_};
    handles_[handle] = path;
    return handle;
}

}  // namespace fakes
