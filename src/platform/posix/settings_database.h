// A SettingsDatabase is the SQLite file that keeps settings: key paths, and typed values in each. A
// SettingsFile owns it and gives it the shape of a settings store.
//
// Every operation is a transaction of its own and looks first whether the file is still the one it knows, so
// that a file which another program made, replaced or deleted is met as it is now. A look for a key or a
// value is answered from memory where nobody has changed the file since it was last read. Nothing throws and
// nothing is printed: the answer is a status. A file that is damaged, or is not a settings file, is never
// written to.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/settings_store.h"

namespace platform::posix {

struct FileIdentity;

/// Another process kept the file locked for longer than a service should wait.
inline constexpr SettingsStatus settingsBusy{170};

struct SettingsValue {
    std::string name;
    ValueType type = ValueType::none;
    std::string data;
};

class SettingsDatabase {
  public:
    explicit SettingsDatabase(std::string path);
    SettingsDatabase(const SettingsDatabase&) = delete;
    SettingsDatabase& operator=(const SettingsDatabase&) = delete;
    ~SettingsDatabase();

    /// Keys are named by their folded path, without a separator at its end.
    SettingsStatus findKey(const std::string& folded);

    /// Makes a key and every missing one above it, and the file with its folder where they are missing.
    SettingsStatus makeKey(std::string_view path);

    /// Deletes a key with everything in it and below it.
    SettingsStatus removeKey(const std::string& folded);

    /// Last names of the keys right below one, in the order in which they were made; an empty path stands for
    /// the root.
    SettingsStatus subKeys(const std::string& folded, std::vector<std::string>& names);

    SettingsStatus readValue(const std::string& folded, std::string_view name, SettingsValue& value);
    SettingsStatus storeValue(const std::string& folded, std::string_view name, ValueType type,
                              std::string_view data);
    SettingsStatus removeValue(const std::string& folded, std::string_view name);

    /// The value at a position in the order in which values were first stored; noMoreItems past the last.
    SettingsStatus valueAt(const std::string& folded, std::uint32_t index, SettingsValue& value);
    SettingsStatus values(const std::string& folded, std::vector<SettingsValue>& values);

  private:
    class Connection;
    enum class Purpose { read, erase, write };

    /// Runs an operation on the file. A file found damaged is let go of, so that a mended one is seen.
    template <class Operation>
    SettingsStatus run(Purpose purpose, Operation operation);

    /// Opens the file where it is not open; makes it, for a write, where it is missing.
    SettingsStatus reach(Purpose purpose);
    /// notFound for a file without any table yet.
    SettingsStatus connect(const FileIdentity& file, Purpose purpose);
    [[nodiscard]] SettingsStatus makeFile() const;

    /// The value, or success with none where there is none.
    static SettingsStatus look(Connection& connection, const std::string& folded,
                               const std::string& foldedName, std::optional<SettingsValue>& value);

    /// Stores a value in a transaction of its own; tells whether anything was written.
    static SettingsStatus write(Connection& connection, const std::string& folded,
                                const std::string& foldedName, const SettingsValue& value, bool& stored);

    std::string path_;
    std::unique_ptr<Connection> connection_;
};

}  // namespace platform::posix
