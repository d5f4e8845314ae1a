// What lies under a SettingsDatabase: one open SQLite file with its prepared statements. The database owns it
// and drops it when the file is no longer the one at the path.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/posix/settings_database.h"
#include "platform/posix/settings_memory.h"
#include "platform/settings_store.h"

struct sqlite3;
struct sqlite3_stmt;

namespace platform::posix {

/// What tells one file at a path from another, and a changed file from an unchanged one.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modified = 0;  // nanoseconds
    bool isPlain = false;       // neither a folder nor a device

    [[nodiscard]] bool isSameFile(const FileIdentity& other) const {
        return device == other.device && inode == other.inode;
    }
};

/// Looks at the file at a path, through links. Gives 0, or the system's error number.
int identify(const std::string& path, FileIdentity& file);

enum class SettingsStatement : std::size_t {
    findKey,
    makeKey,
    removeKey,
    keysBetween,
    readValue,
    storeValue,
    removeValue,
    valueAt,
    values,
    begin,
    commit,
    count,
};

/// One run of a prepared statement; its end is the end of the run.
class SettingsQuery {
  public:
    SettingsQuery(SettingsStatus prepared, sqlite3_stmt* statement)
        : status_(prepared), statement_(statement) {}
    SettingsQuery(const SettingsQuery&) = delete;
    SettingsQuery& operator=(const SettingsQuery&) = delete;
    ~SettingsQuery();

    /// Parameters in their order; a text must outlive the run.
    SettingsQuery& text(std::string_view value);
    SettingsQuery& bytes(std::string_view value);
    SettingsQuery& number(std::int64_t value);

    /// True while it stands on a row. False behind the last row and after a fault, which status() tells.
    bool step();
    [[nodiscard]] SettingsStatus status() const { return status_; }

    [[nodiscard]] std::string columnBytes(int column) const;
    [[nodiscard]] std::int64_t columnNumber(int column) const;

  private:
    SettingsStatus status_;
    sqlite3_stmt* statement_;
    int bound_ = 0;
};

class SettingsDatabase::Connection {
  public:
    enum class Mode { shared, unchanging };

    /// Opens the file, which exists; verify tells whether it could be. `unchanging` is for a place where
    /// nothing can be written, not even the files that readers share.
    Connection(const std::string& path, Mode mode, const FileIdentity& identity);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    [[nodiscard]] Mode mode() const { return mode_; }

    /// True when what stands at the path is still this file.
    [[nodiscard]] bool isOf(const FileIdentity& identity) const;

    /// To be called at the start of every operation, with what the path shows: forgets what was read unless
    /// the file still is as it was then.
    void recall(const FileIdentity& identity);
    [[nodiscard]] SettingsMemory& memory() { return memory_; }

    /// True when the file is still as it was recalled: what was read meanwhile may be remembered.
    [[nodiscard]] bool isAsRecalled() const;

    /// The file's state at this moment, if it tells it: it does when it has a write-ahead log.
    [[nodiscard]] std::optional<SettingsState> state() const;

    /// success for a settings file, notFound for one without any table yet, damaged for anything else.
    SettingsStatus verify();
    SettingsStatus makeTables();

    SettingsQuery query(SettingsStatement statement);
    SettingsStatus execute(const char* statements);
    /// Rows changed by the last statement.
    [[nodiscard]] std::int64_t changes() const;

    /// The file is no longer at its path: its companions, which a new file there would take for its own, go
    /// with it.
    void forsake();

  private:
    struct CloseDatabase {
        void operator()(sqlite3* database) const;
    };
    struct FinalizeStatement {
        void operator()(sqlite3_stmt* statement) const;
    };
    using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

    SettingsStatus prepare(std::string_view text, Statement& statement);
    SettingsStatus readNumber(std::string_view text, std::int64_t& number);
    void rememberLog();
    void findLogHeader();

    std::string path_;
    Mode mode_;
    FileIdentity identity_;
    FileIdentity log_;  // of the write-ahead log beside the file
    bool hasLog_ = false;
    FileIdentity recalled_;  // the file when the operation began
    SettingsMemory memory_;
    const volatile std::uint32_t* logHeader_ = nullptr;  // in the library's mapping of the log's index
    bool verified_ = false;
    SettingsStatus status_ = SettingsStatus::success;  // of opening it
    std::unique_ptr<sqlite3, CloseDatabase> database_;
    std::array<Statement, static_cast<std::size_t>(SettingsStatement::count)> statements_;
};

}  // namespace platform::posix
