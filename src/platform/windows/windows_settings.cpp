#include "platform/windows/windows_settings.h"

#include <windows.h>

#include <bit>
#include <vector>

#include "platform/windows/ansi_text.h"

namespace platform::windows {
namespace {

// The registry calls its handles pointers; the service calls them numbers.

HKEY rootOf(RootKey root) {
    // The predefined handles are signed: a wider pointer repeats their highest bit.
    return std::bit_cast<HKEY>(static_cast<LONG_PTR>(static_cast<LONG>(root)));
}

HKEY keyOf(KeyHandle key) {
    return std::bit_cast<HKEY>(static_cast<ULONG_PTR>(key));
}

KeyHandle handleOf(HKEY key) {
    return KeyHandle{reinterpret_cast<ULONG_PTR>(key)};
}

SettingsStatus statusOf(LSTATUS status) {
    return SettingsStatus{static_cast<std::int32_t>(status)};
}

}  // namespace

SettingsStatus WindowsSettings::openKey(RootKey root, std::string_view path, KeyHandle& key) {
    HKEY opened = nullptr;
    const LSTATUS status = ::RegOpenKeyA(rootOf(root), std::string(path).c_str(), &opened);
    if (status == ERROR_SUCCESS) {
        key = handleOf(opened);
    }
    return statusOf(status);
}

SettingsStatus WindowsSettings::createKey(RootKey root, std::string_view path, KeyHandle& key) {
    HKEY opened = nullptr;
    const LSTATUS status = ::RegCreateKeyA(rootOf(root), std::string(path).c_str(), &opened);
    if (status == ERROR_SUCCESS) {
        key = handleOf(opened);
    }
    return statusOf(status);
}

SettingsStatus WindowsSettings::queryValue(KeyHandle key, std::string_view name, ValueType& type,
                                           std::uint8_t* data, std::uint32_t& size) {
    DWORD kind = 0;
    DWORD room = size;
    const LSTATUS status =
        ::RegQueryValueExA(keyOf(key), std::string(name).c_str(), nullptr, &kind, data, &room);
    if (status == ERROR_SUCCESS || status == ERROR_MORE_DATA) {
        type = ValueType{kind};
        size = room;
    }
    return statusOf(status);
}

SettingsStatus WindowsSettings::setValue(KeyHandle key, std::string_view name, ValueType type,
                                         const std::uint8_t* data, std::uint32_t size) {
    // The registry looks at the byte behind a text to see whether a NUL ends it.
    std::vector<BYTE> bytes(data, data + size);
    bytes.push_back(0);
    return statusOf(::RegSetValueExA(keyOf(key), std::string(name).c_str(), 0, static_cast<DWORD>(type),
                                     bytes.data(), size));
}

SettingsStatus WindowsSettings::deleteValue(KeyHandle key, std::string_view name) {
    return statusOf(::RegDeleteValueA(keyOf(key), std::string(name).c_str()));
}

SettingsStatus WindowsSettings::enumValue(KeyHandle key, std::uint32_t index, char* name,
                                          std::uint32_t& nameSize, ValueType& type, std::uint8_t* data,
                                          std::uint32_t& dataSize) {
    DWORD kind = 0;
    DWORD nameRoom = nameSize;
    DWORD dataRoom = dataSize;
    const LSTATUS status =
        ::RegEnumValueA(keyOf(key), index, name, &nameRoom, nullptr, &kind, data, &dataRoom);
    if (status == ERROR_SUCCESS) {
        type = ValueType{kind};
        nameSize = nameRoom;
        dataSize = dataRoom;
    }
    return statusOf(status);
}

void WindowsSettings::closeKey(KeyHandle key) {
    ::RegCloseKey(keyOf(key));
}

std::string WindowsSettings::encodeText(std::string_view text) const {
    return toAnsi(text);
}

std::string WindowsSettings::decodeText(std::string_view bytes) const {
    return fromAnsi(bytes);
}

}  // namespace platform::windows
