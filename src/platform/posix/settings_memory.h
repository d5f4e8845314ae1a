// What a SettingsDatabase has read, kept for as long as nobody has changed the file.
//
// A service asks for the same few settings a hundred times a document, and every question put to the file is
// a transaction with its locks. Any program may change the settings at any time, though, and the next read
// must see it. So the memory holds what was read at one state of the file, and forgets everything once the
// file is at another.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/posix/settings_database.h"
#include "platform/settings_store.h"

namespace platform::posix {

/// What changes with every change of a settings file that has a write-ahead log.
struct SettingsState {
    /// The header of the log's index: every commit, restart and recovery of the log changes it.
    /// https://www.sqlite.org/walformat.html names its fields.
    using Header = std::array<std::uint32_t, 12>;
    Header header{};

    /// Of the file itself, which changes when the log is copied into it and when somebody writes over it.
    std::int64_t size = 0;
    std::int64_t modified = 0;

    bool operator==(const SettingsState&) const = default;

    /// False while the index was not filled yet.
    [[nodiscard]] bool isWritten() const;

    /// True when exactly one transaction was added to the same log between the two.
    [[nodiscard]] bool isNextAfter(const SettingsState& before) const;
};

class SettingsMemory {
  public:
    /// Keeps what is remembered when the file is still at the state at which it was read. No state stands for
    /// a file that does not tell it: nothing is remembered then.
    void meet(const std::optional<SettingsState>& state);

    /// The state to which everything here belongs.
    [[nodiscard]] const std::optional<SettingsState>& state() const { return state_; }

    /// Whether there is such a key; nothing when that is not known.
    [[nodiscard]] std::optional<bool> key(std::string_view folded) const;

    /// What is known of a value: null for nothing, and an empty one for a value that is not there.
    [[nodiscard]] const std::optional<SettingsValue>* value(std::string_view folded,
                                                            std::string_view foldedName) const;

    void rememberKey(std::string_view folded, bool present);
    void rememberValue(std::string_view folded, std::string_view foldedName,
                       const std::optional<SettingsValue>& value);

    /// This process made the one change between the state of the memory and another.
    void follow(const SettingsState& state, std::string_view folded, std::string_view foldedName,
                const SettingsValue& stored);

  private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
    };
    template <class Content>
    using ByName = std::unordered_map<std::string, Content, Hash, std::equal_to<>>;

    struct Key {
        std::optional<bool> present;
        ByName<std::optional<SettingsValue>> values;
    };

    void forget();
    /// Makes room for an entry of this size; false when it is too big to be kept.
    bool admit(std::size_t bytes);
    Key& keyAt(std::string_view folded);

    std::optional<SettingsState> state_;
    ByName<Key> keys_;
    std::size_t bytes_ = 0;  // about what the entries take
};

}  // namespace platform::posix
