// A SettingsStore keeps typed values under key paths, as the registry of a Windows user does.
// The composition root owns it; infra/tysRegistry is its only caller in the service.
//
// Key paths are separated by "\". Keys and value names are found without regard to letter case. No operation
// throws: each answers a status, and a store that is missing, damaged or read-only answers a status like any
// other.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

/// The statuses that callers tell apart; a store may answer others. The numbers are those of the registry.
enum class SettingsStatus : std::int32_t {
    success = 0,
    notFound = 2,
    accessDenied = 5,
    invalidHandle = 6,
    moreData = 234,
    noMoreItems = 259,
    damaged = 1009,
};

/// Value types. Any other number is kept and given back as it is.
enum class ValueType : std::uint32_t {
    none = 0,
    text = 1,            // REG_SZ
    expandableText = 2,  // REG_EXPAND_SZ
    binary = 3,          // REG_BINARY
    number = 4,          // REG_DWORD, 4 bytes, low byte first
};

/// Roots under which key paths lie. The service uses the current user's alone.
enum class RootKey : std::uint32_t { currentUser = 0x80000001U };

/// A key that has been opened; it stays valid until it is closed.
enum class KeyHandle : std::uint64_t { none = 0 };

class SettingsStore {
  public:
    SettingsStore() = default;
    SettingsStore(const SettingsStore&) = delete;
    SettingsStore& operator=(const SettingsStore&) = delete;
    virtual ~SettingsStore() = default;

    /// Opens an existing key; notFound when there is none.
    virtual SettingsStatus openKey(RootKey root, std::string_view path, KeyHandle& key) = 0;

    /// Opens a key and makes every missing key of the path first.
    virtual SettingsStatus createKey(RootKey root, std::string_view path, KeyHandle& key) = 0;

    /// Reads a value. In: `size` is the room at `data` in bytes. Out: its type and its full size in bytes.
    /// With `data` null, only type and size are told. moreData when the room is too small (nothing is copied
    /// then).
    virtual SettingsStatus queryValue(KeyHandle key, std::string_view name, ValueType& type,
                                      std::uint8_t* data, std::uint32_t& size) = 0;

    /// Stores `size` bytes under the name, in place of what was there. A store may end a text that is not
    /// empty with a NUL, as the registry does; it counts in the value's size then.
    virtual SettingsStatus setValue(KeyHandle key, std::string_view name, ValueType type,
                                    const std::uint8_t* data, std::uint32_t size) = 0;

    virtual SettingsStatus deleteValue(KeyHandle key, std::string_view name) = 0;

    /// The value at a 0-based index. In: the room for the name (with its ending NUL) and for the data. Out:
    /// characters of the name without the NUL, bytes of the data. noMoreItems past the last; moreData when a
    /// room is too small. The order is the store's own (that in which the values were first stored, or that
    /// of their names); storing and deleting values moves those behind.
    virtual SettingsStatus enumValue(KeyHandle key, std::uint32_t index, char* name, std::uint32_t& nameSize,
                                     ValueType& type, std::uint8_t* data, std::uint32_t& dataSize) = 0;

    virtual void closeKey(KeyHandle key) = 0;

    /// Text to the bytes in which the store keeps text, and back: the ANSI code page on Windows, UTF-8
    /// elsewhere. Raises a RuntimeError when a text cannot be converted.
    [[nodiscard]] virtual std::string encodeText(std::string_view text) const = 0;
    [[nodiscard]] virtual std::string decodeText(std::string_view bytes) const = 0;
};

}  // namespace platform
