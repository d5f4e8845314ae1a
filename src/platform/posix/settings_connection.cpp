#include "platform/posix/settings_connection.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform::posix {

namespace {

constexpr int busyMilliseconds = 5000;
constexpr std::int64_t checkpointBytes = 4LL * 1024 * 1024;  // of the log, which then moves into the file
constexpr std::int64_t applicationId = 0x54595353;  // "TYSS" in the file's header: a Tessaly settings store

// A setting of a few bytes takes a whole page of the log when it is written. A file that has pages already
// keeps their size.
constexpr const char* smallPages = "PRAGMA page_size = 1024";

constexpr const char* tables =
    "BEGIN IMMEDIATE;"
    "CREATE TABLE IF NOT EXISTS setting_key ("
    " id INTEGER PRIMARY KEY, folded TEXT NOT NULL UNIQUE, spelling TEXT NOT NULL);"
    "CREATE TABLE IF NOT EXISTS setting_value ("
    " id INTEGER PRIMARY KEY, key_id INTEGER NOT NULL REFERENCES setting_key (id) ON DELETE CASCADE,"
    " folded TEXT NOT NULL, name TEXT NOT NULL, type INTEGER NOT NULL, data BLOB NOT NULL,"
    " UNIQUE (key_id, folded));"
    "CREATE INDEX IF NOT EXISTS setting_value_order ON setting_value (key_id, id);"
    "PRAGMA application_id = 1415140179;"
    "COMMIT;";

/// In the order of SettingsStatement.
constexpr std::array<std::string_view, static_cast<std::size_t>(SettingsStatement::count)> statementTexts{
    "SELECT id FROM setting_key WHERE folded = ?1",
    "INSERT OR IGNORE INTO setting_key (folded, spelling) VALUES (?1, ?2)",
    "DELETE FROM setting_key WHERE folded = ?1 OR (folded > ?2 AND folded < ?3)",
    "SELECT folded, spelling FROM setting_key WHERE folded > ?1 AND folded < ?2 ORDER BY id",
    "SELECT v.name, v.type, v.data FROM setting_key k JOIN setting_value v ON v.key_id = k.id"
    " WHERE k.folded = ?1 AND v.folded = ?2",
    // The row keeps its place and its first spelling; an unchanged value is not written.
    "INSERT INTO setting_value (key_id, folded, name, type, data)"
    " SELECT id, ?2, ?3, ?4, ?5 FROM setting_key WHERE folded = ?1"
    " ON CONFLICT (key_id, folded) DO UPDATE SET type = excluded.type, data = excluded.data"
    " WHERE type <> excluded.type OR data <> excluded.data",
    "DELETE FROM setting_value WHERE folded = ?2"
    " AND key_id = (SELECT id FROM setting_key WHERE folded = ?1)",
    "SELECT name, type, data FROM setting_value"
    " WHERE key_id = (SELECT id FROM setting_key WHERE folded = ?1) ORDER BY id LIMIT 1 OFFSET ?2",
    "SELECT name, type, data FROM setting_value"
    " WHERE key_id = (SELECT id FROM setting_key WHERE folded = ?1) ORDER BY id",
    "BEGIN IMMEDIATE",
    "COMMIT",
};

/// What a result code of the database library means to the callers of a settings store.
SettingsStatus statusOf(int code) {
    constexpr int primaryCode = 0xFF;
    switch (code & primaryCode) {
        case SQLITE_OK:
        case SQLITE_ROW:
        case SQLITE_DONE:
            return SettingsStatus::success;
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return settingsBusy;
        case SQLITE_ERROR:  // the file's tables are not those of a settings file
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB:
        case SQLITE_FORMAT:
            return SettingsStatus::damaged;
        default:
            return SettingsStatus::accessDenied;
    }
}

const char* dataOf(std::string_view bytes) {
    return bytes.data() == nullptr ? "" : bytes.data();
}

/// The path as a file name that carries an option.
std::string unchangingUri(const std::string& path) {
    std::string uri = "file:";
    for (const char byte : path) {
        if (byte == '%' || byte == '?' || byte == '#') {
            std::array<char, 4> escaped{};
            static_cast<void>(
                std::snprintf(escaped.data(), escaped.size(), "%%%02X", static_cast<unsigned>(byte)));
            uri += escaped.data();
        } else {
            uri += byte;
        }
    }
    return uri + "?immutable=1";
}

}  // namespace

int identify(const std::string& path, FileIdentity& file) {
    struct stat found {};
    if (::stat(path.c_str(), &found) != 0) {
        return errno;
    }
    constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;
    file = {found.st_dev, found.st_ino, found.st_size,
            found.st_mtim.tv_sec * nanosecondsPerSecond + found.st_mtim.tv_nsec, S_ISREG(found.st_mode)};
    return 0;
}

SettingsQuery::~SettingsQuery() {
    if (statement_ != nullptr) {
        // What a reset repeats is the fault of the last step, which is known.
        static_cast<void>(sqlite3_reset(statement_));
        static_cast<void>(sqlite3_clear_bindings(statement_));
    }
}

SettingsQuery& SettingsQuery::text(std::string_view value) {
    if (status_ == SettingsStatus::success) {
        status_ = statusOf(sqlite3_bind_text64(statement_, ++bound_, dataOf(value), value.size(),
                                               SQLITE_STATIC, SQLITE_UTF8));
    }
    return *this;
}

SettingsQuery& SettingsQuery::bytes(std::string_view value) {
    if (status_ == SettingsStatus::success) {
        status_ =
            statusOf(sqlite3_bind_blob64(statement_, ++bound_, dataOf(value), value.size(), SQLITE_STATIC));
    }
    return *this;
}

SettingsQuery& SettingsQuery::number(std::int64_t value) {
    if (status_ == SettingsStatus::success) {
        status_ = statusOf(sqlite3_bind_int64(statement_, ++bound_, value));
    }
    return *this;
}

bool SettingsQuery::step() {
    if (status_ != SettingsStatus::success) {
        return false;
    }
    const int code = sqlite3_step(statement_);
    status_ = statusOf(code);
    return code == SQLITE_ROW;
}

std::string SettingsQuery::columnBytes(int column) const {
    const void* bytes = sqlite3_column_blob(statement_, column);
    const int size = sqlite3_column_bytes(statement_, column);
    return bytes == nullptr ? std::string()
                            : std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
}

std::int64_t SettingsQuery::columnNumber(int column) const {
    return sqlite3_column_int64(statement_, column);
}

void SettingsDatabase::Connection::CloseDatabase::operator()(sqlite3* database) const {
    static_cast<void>(sqlite3_close_v2(database));
}

void SettingsDatabase::Connection::FinalizeStatement::operator()(sqlite3_stmt* statement) const {
    static_cast<void>(sqlite3_finalize(statement));
}

SettingsDatabase::Connection::Connection(const std::string& path, Mode mode, const FileIdentity& identity)
    : path_(path), mode_(mode), identity_(identity) {
    const bool unchanging = mode == Mode::unchanging;
    const std::string name = unchanging ? unchangingUri(path) : path;
    const int flags =
        SQLITE_OPEN_NOMUTEX | (unchanging ? SQLITE_OPEN_READONLY | SQLITE_OPEN_URI : SQLITE_OPEN_READWRITE);
    sqlite3* opened = nullptr;
    const int code = sqlite3_open_v2(name.c_str(), &opened, flags, nullptr);
    database_.reset(opened);
    status_ = statusOf(code);
    if (status_ == SettingsStatus::success) {
        status_ = statusOf(sqlite3_busy_timeout(opened, busyMilliseconds));
    }
    if (status_ == SettingsStatus::success) {
        // A heartbeat is written many times a document; with a write-ahead log none of them waits for the
        // disk, and a power failure costs the last values at most.
        status_ = execute("PRAGMA synchronous = NORMAL; PRAGMA foreign_keys = ON;");
    }
}

SettingsDatabase::Connection::~Connection() = default;

bool SettingsDatabase::Connection::isOf(const FileIdentity& identity) const {
    // A connection that believes in an unchanging file does not look for changes itself.
    return identity.isSameFile(identity_) &&
           (mode_ == Mode::shared ||
            (identity.modified == identity_.modified && identity.size == identity_.size));
}

void SettingsDatabase::Connection::recall(const FileIdentity& identity) {
    recalled_ = identity;
    memory_.meet(state());
}

bool SettingsDatabase::Connection::isAsRecalled() const {
    return memory_.state().has_value() && state() == memory_.state();
}

std::optional<SettingsState> SettingsDatabase::Connection::state() const {
    if (logHeader_ == nullptr) {
        return std::nullopt;
    }
    // There are two copies. A writer writes the second first, so that a reader who takes the first before the
    // second and finds them equal has seen a whole one.
    SettingsState found;
    SettingsState::Header second{};
    std::copy_n(logHeader_, found.header.size(), found.header.begin());
    std::atomic_thread_fence(std::memory_order_seq_cst);
    std::copy_n(logHeader_ + found.header.size(), second.size(), second.begin());
    std::atomic_thread_fence(std::memory_order_seq_cst);
    if (found.header != second || !found.isWritten()) {
        return std::nullopt;
    }
    found.size = recalled_.size;
    found.modified = recalled_.modified;
    return found;
}

SettingsStatus SettingsDatabase::Connection::verify() {
    if (verified_ || status_ != SettingsStatus::success) {
        return status_;
    }
    // Tables first: another process may be making them together with the mark.
    std::int64_t tableCount = 0;
    SettingsStatus status = readNumber("SELECT count(*) FROM sqlite_master", tableCount);
    if (status != SettingsStatus::success) {
        return status;
    }
    // The library reads a file that was cut inside its last page, or to a single byte, as if it were whole.
    std::int64_t pageSize = 0;
    status = readNumber("PRAGMA page_size", pageSize);
    if (status != SettingsStatus::success) {
        return status;
    }
    if (pageSize == 0 || identity_.size % pageSize != 0) {
        return SettingsStatus::damaged;
    }
    if (tableCount == 0) {
        return SettingsStatus::notFound;
    }
    std::int64_t mark = 0;
    status = readNumber("PRAGMA application_id", mark);
    if (status != SettingsStatus::success) {
        return status;
    }
    if (mark != applicationId) {
        return SettingsStatus::damaged;
    }
    verified_ = true;
    if (mode_ == Mode::shared) {
        // Refused where the file cannot be written; readers do not need it.
        static_cast<void>(execute("PRAGMA journal_mode = WAL"));
        sqlite3_wal_autocheckpoint(database_.get(), static_cast<int>(checkpointBytes / pageSize));
        rememberLog();
        findLogHeader();
    }
    return SettingsStatus::success;
}

SettingsStatus SettingsDatabase::Connection::makeTables() {
    // The pages first: the log's mode writes one. The mode is refused while another process makes the same
    // file; verify tries again.
    static_cast<void>(execute(smallPages));
    static_cast<void>(execute("PRAGMA journal_mode = WAL"));
    const SettingsStatus status = execute(tables);
    if (status != SettingsStatus::success) {
        static_cast<void>(execute("ROLLBACK"));
        return status;
    }
    return verify();
}

SettingsQuery SettingsDatabase::Connection::query(SettingsStatement statement) {
    const auto index = static_cast<std::size_t>(statement);
    Statement& prepared = statements_.at(index);
    const SettingsStatus status =
        prepared == nullptr ? prepare(statementTexts.at(index), prepared) : SettingsStatus::success;
    return {status, prepared.get()};
}

SettingsStatus SettingsDatabase::Connection::execute(const char* statements) {
    return statusOf(sqlite3_exec(database_.get(), statements, nullptr, nullptr, nullptr));
}

std::int64_t SettingsDatabase::Connection::changes() const {
    return sqlite3_changes64(database_.get());
}

void SettingsDatabase::Connection::forsake() {
    for (Statement& statement : statements_) {
        statement.reset();
    }
    logHeader_ = nullptr;
    database_.reset();
    FileIdentity now;
    const std::string log = path_ + "-wal";
    if (hasLog_ && identify(log, now) == 0 && now.isSameFile(log_)) {
        static_cast<void>(::unlink(log.c_str()));
        static_cast<void>(::unlink((path_ + "-shm").c_str()));
    }
}

SettingsStatus SettingsDatabase::Connection::prepare(std::string_view text, Statement& statement) {
    sqlite3_stmt* prepared = nullptr;
    const int code = sqlite3_prepare_v3(database_.get(), text.data(), static_cast<int>(text.size()),
                                        SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
    statement.reset(prepared);
    return statusOf(code);
}

SettingsStatus SettingsDatabase::Connection::readNumber(std::string_view text, std::int64_t& number) {
    Statement statement;
    const SettingsStatus prepared = prepare(text, statement);
    SettingsQuery run(prepared, statement.get());
    if (run.step()) {
        number = run.columnNumber(0);
    }
    return run.status();
}

void SettingsDatabase::Connection::rememberLog() {
    hasLog_ = identify(path_ + "-wal", log_) == 0;
}

void SettingsDatabase::Connection::findLogHeader() {
    // The library maps the index when it first reads with a log. From then on the mapping stays where it is,
    // and nobody can take the log away, for as long as the connection is open.
    std::int64_t tableCount = 0;
    Statement statement;
    const SettingsStatus read = readNumber("SELECT count(*) FROM sqlite_master", tableCount);
    const SettingsStatus prepared = prepare("PRAGMA journal_mode", statement);
    SettingsQuery mode(prepared, statement.get());
    if (read != SettingsStatus::success || !mode.step() || mode.columnBytes(0) != "wal") {
        return;
    }
    // The library is asked for its mapping: a descriptor of our own would, when it is closed, drop the locks
    // that every connection of this process holds on the index.
    constexpr int mappedAtOnce = 32768;
    constexpr int versionWithIndex = 2;
    sqlite3_file* file = nullptr;
    volatile void* header = nullptr;
    if (sqlite3_file_control(database_.get(), "main", SQLITE_FCNTL_FILE_POINTER, &file) == SQLITE_OK &&
        file != nullptr && file->pMethods != nullptr && file->pMethods->iVersion >= versionWithIndex &&
        file->pMethods->xShmMap(file, 0, mappedAtOnce, 0, &header) == SQLITE_OK) {
        logHeader_ = static_cast<const volatile std::uint32_t*>(header);
    }
}

}  // namespace platform::posix
