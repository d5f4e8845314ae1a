#include "platform/sqlite/handle.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <thread>
#include <utility>

#include "base/runtime_error.h"
#include "platform/sqlite/index_statistics.h"
#include "platform/sqlite/log_vfs.h"
#include "platform/sqlite/sqlite_error.h"

namespace platform::sqlite {
namespace {

// The service has some sixty shapes; more come only from an operator's own statements.
constexpr std::size_t mostShapes = 512;

// How long to look for the end of a file that is being written.
constexpr int mostLooks = 10;
constexpr std::chrono::milliseconds betweenLooks{50};

const jet::Dialect dialect{"1", "0", [](std::size_t number) { return "?" + std::to_string(number); }, false};

// Nobody asks SQLite how much memory it has, and its count takes a lock in every allocation: some thirty for
// each row where it is built without lookaside memory. The count can only be left out before the first file
// is opened, which may be another part's; where that has happened it goes on.
const int memoryCountResult = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);

sqlite3* openFile(const std::string& path) {
    sqlite3* database = nullptr;
    const int code =
        sqlite3_open_v2(path.c_str(), &database,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, logVfs());
    if (code != SQLITE_OK) {
        try {
            raiseError(database, code, "Opening the library \"" + path + "\"");
        } catch (...) {
            sqlite3_close_v2(database);
            throw;
        }
    }
    return database;
}

}  // namespace

void Handle::Closer::operator()(sqlite3* database) const {
    sqlite3_close_v2(database);
}

Handle::Handle(const std::string& path, const HandleOptions& options, std::atomic<std::size_t>& prepared,
               Checkpointer& checkpointer)
    : file_(path),
      database_(openFile(path)),
      catalog_(database_.get()),
      prepared_(prepared),
      checkpointer_(checkpointer) {
    auto end = LibraryFile::End::isThere;
    try {
        end = findEnd();
        openDatabase(options);
        if (end == LibraryFile::End::mayBeInLog) {
            checkPages();
        }
        checkIsLibrary();
        restoreIndexStatistics(database_.get());
    } catch (...) {
        stopCheckpoints();
        forgetIdleShapes();  // a file with statements left is not closed
        if (end == LibraryFile::End::mayBeInLog) {
            // Whoever mends the file may need it and what is in the log as they were found.
            leaveLogAlone();
        }
        throw;
    }
}

Handle::~Handle() {
    stopCheckpoints();
    rows_.forget();
    writeNewRootWords();
    forgetIdleShapes();
    if (!file_.isInPlace()) {
        // The log belongs to the file that is open here. Left beside the one that stands in its place now, it
        // would be laid over that one at the next open.
        sqlite3_wal_checkpoint_v2(database_.get(), "main", SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
    } else if (!isSound()) {
        // Somebody has written over the file: nothing of ours goes into what it holds now.
        leaveLogAlone();
    }
}

/// Before the file is closed: the last connection to close it takes the log away, and the thread's never
/// does.
void Handle::stopCheckpoints() noexcept {
    sqlite3_wal_hook(database_.get(), nullptr, nullptr);
    checkpointer_.wait();
}

/// Somebody may be moving the log into the library just now. To wait for that is cheaper than to read every
/// page, which a file that stays without its end makes necessary.
LibraryFile::End Handle::findEnd() {
    checkpointer_.wait();
    auto end = file_.checkContent(database_.get());
    for (int look = 0; end == LibraryFile::End::mayBeInLog && look < mostLooks; ++look) {
        std::this_thread::sleep_for(betweenLooks);
        end = file_.checkContent(database_.get());
    }
    return end;
}

/// Closing the file does not move the log into it.
void Handle::leaveLogAlone() noexcept {
    sqlite3_db_config(database_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

/// Words that could not be written before: whoever locked the library may be gone by now, and a read that
/// failed may succeed. They belong to the file that is open here, wherever it lies now, unless somebody has
/// written over it.
void Handle::writeNewRootWords() noexcept {
    try {
        if (fault_ != FileFault::damaged && newRootWords_.isInUse()) {
            static_cast<void>(file_.checkContent(database_.get()));
            newRootWords_.write();
            sqlite3_busy_timeout(database_.get(), 0);  // nobody waits for keys that are never given
            newRootWords_.giveBackKeys();
        }
    } catch (const std::exception&) {
        return;  // the words are lost with what else the library could not take
    }
}

bool Handle::isSound() noexcept {
    try {
        if (fault_ == FileFault::none) {
            checkFile();
        }
        return fault_ == FileFault::none;
    } catch (const std::exception&) {
        return false;
    }
}

void Handle::checkPages() {
    static constexpr const char* check = "PRAGMA quick_check(1)";
    Statement statement = prepare(check, 0, Texts::stay);
    if (!statement.step(check) || statement.row(*statement.columns()).at(0).toText() != "ok") {
        throw base::RuntimeError(
            base::ErrorNumber::databaseError,
            "The library \"" + path() +
                "\" is damaged; restore it from a copy, and remove the -wal and -shm files "
                "that are left beside it");
    }
}

void Handle::openDatabase(const HandleOptions& options) {
    if (sqlite3_db_readonly(database_.get(), "main") != 0) {
        throw base::RuntimeError(base::ErrorNumber::databaseError,
                                 "The library \"" + path() + "\" cannot be written; allow it to this user");
    }
    sqlite3_busy_timeout(database_.get(), static_cast<int>(options.busyTimeout.count()));
    run("PRAGMA journal_mode = WAL");
    run("PRAGMA synchronous = NORMAL");
    const std::int64_t pageSize = std::max<std::int64_t>(pragmaNumber("PRAGMA page_size"), 1);
    checkpointPages_ = static_cast<int>(
        std::clamp<std::int64_t>(options.checkpointBytes / pageSize, 1, std::numeric_limits<int>::max()));
    sqlite3_wal_hook(
        database_.get(),
        [](void* handle, sqlite3* /*database*/, const char* /*name*/, int pages) {
            Handle& committed = *static_cast<Handle*>(handle);
            committed.checkpointer_.committed(committed.database_.get(), committed.file_, pages,
                                              committed.checkpointPages_);
            return SQLITE_OK;
        },
        this);
    run("PRAGMA temp_store = MEMORY");
    run("PRAGMA cache_spill = OFF");  // see log_vfs.h
    run(("PRAGMA cache_size = -" + std::to_string(options.cacheKibibytes)).c_str());
    schemaVersion_ = schemaVersion();
}

void Handle::checkIsLibrary() {
    if (catalog_.table("file_index_queue") == nullptr) {
        throw base::RuntimeError(
            base::ErrorNumber::databaseError,
            "The file \"" + path() +
                "\" is no library: it has no table file_index_queue; correct DataBasePath");
    }
}

void Handle::refresh() {
    checkFile();
    const std::int64_t version = schemaVersion();
    if (version != schemaVersion_) {
        forgetIdleShapes();
        catalog_.forget();
        newRootWords_.forgetTables();
        schemaVersion_ = version;
    }
    checkIsLibrary();
}

void Handle::run(const char* sql) {
    const int code = sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) {
        raiseError(database_.get(), code, "Opening the library \"" + path() + "\"", sql);
    }
}

std::int64_t Handle::schemaVersion() {
    return pragmaNumber("PRAGMA schema_version");
}

std::int64_t Handle::pragmaNumber(const char* pragma) {
    Statement statement = prepare(pragma, 0, Texts::stay);
    if (!statement.step(pragma)) {
        return 0;
    }
    return statement.row(*statement.columns()).at(0).toInt32();
}

bool Handle::insertLater(std::string_view text) {
    return rows_.isFor(text) && rows_.take(read(text), lexed_, text);
}

void Handle::insert(PreparedShape& shape, std::span<const jet::ParameterValue> values,
                    std::string_view text) {
    Statement statement = take(shape, text);
    statement.bind(values, text);
    statement.step(text);
}

Statement Handle::prepare(std::string_view text, std::int32_t identity, Texts texts) {
    rows_.write(text);
    PreparedShape& shape = read(text);
    if (!lexed_.isTranslatable()) {
        rows_.doubtTables();  // it changes them, or begins a transaction
    }
    Statement statement = take(shape, text);
    statement.bind(lexed_, identity, texts, text);
    return statement;
}

PreparedShape& Handle::read(std::string_view text) {
    if (!lexed_.read(text) || lastShape_ == nullptr) {
        lastShape_ = nullptr;  // until it is known: a statement may not compile
        lastShape_ = &shapeOf(text);
    }
    return *lastShape_;
}

Statement Handle::take(PreparedShape& shape, std::string_view text) {
    sqlite3_stmt* prepared = nullptr;
    if (shape.idle.empty()) {
        shape.idle.reserve(shape.inUse + 1);  // giving it back must not fail
        prepared = compile(shape.translation, text);
    } else {
        prepared = shape.idle.back();
        shape.idle.pop_back();
    }
    ++shape.inUse;
    return {database_.get(), shape, prepared, fault_};
}

PreparedShape& Handle::shapeOf(std::string_view text) {
    const auto known = shapes_.find(std::string_view(lexed_.shape()));
    if (known != shapes_.end()) {
        return known->second;
    }
    PreparedShape shape;
    if (lexed_.isTranslatable()) {
        shape.translation = jet::translate(lexed_, dialect, catalog_);
    } else {
        shape.translation.text = lexed_.shape();
        catalog_.forget();  // the statement may change a table
    }
    // A statement that does not compile leaves no shape behind.
    shape.idle.reserve(1);
    if (shapes_.size() >= mostShapes) {
        forgetIdleShapes();
    }
    sqlite3_stmt* prepared = compile(shape.translation, text);
    PreparedShape& kept = shapes_.emplace(lexed_.shape(), std::move(shape)).first->second;
    kept.idle.push_back(prepared);
    return kept;
}

sqlite3_stmt* Handle::compile(const jet::Translation& translation, std::string_view text) {
    const std::string& sql = translation.text;
    if (sql.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        raiseError(database_.get(), SQLITE_TOOBIG, "Reading a statement", text);
    }
    sqlite3_stmt* prepared = nullptr;
    const char* rest = nullptr;
    const int code = sqlite3_prepare_v3(database_.get(), sql.data(), static_cast<int>(sql.size()),
                                        SQLITE_PREPARE_PERSISTENT, &prepared, &rest);
    if (code != SQLITE_OK) {
        raiseCompileError(code, translation, text);
    }
    const std::string_view unread(rest, static_cast<std::size_t>(sql.data() + sql.size() - rest));
    if (prepared == nullptr || unread.find_first_not_of(" \t\r\n;") != std::string_view::npos) {
        sqlite3_finalize(prepared);
        throw base::RuntimeError(base::ErrorNumber::databaseError,
                                 "Not exactly one statement: " + shortened(text));
    }
    ++prepared_;
    return prepared;
}

void Handle::raiseCompileError(int code, const jet::Translation& translation, std::string_view text) {
    const int offset = sqlite3_error_offset(database_.get());
    if (offset < 0 || !lexed_.isTranslatable()) {
        raiseError(database_.get(), code, "Reading a statement", text);
    }
    lexed_.raiseAt(sqlite3_errmsg(database_.get()),
                   translation.shapePosition(static_cast<std::size_t>(offset)));
}

void Handle::finalise(PreparedShape& shape) {
    for (sqlite3_stmt* prepared : shape.idle) {
        sqlite3_finalize(prepared);
    }
    shape.idle.clear();
    if (shape.many != nullptr) {
        finalise(*shape.many);
    }
}

void Handle::forgetIdleShapes() {
    lastShape_ = nullptr;
    for (auto shape = shapes_.begin(); shape != shapes_.end();) {
        if (shape->second.inUse > 0) {
            ++shape;
        } else {
            finalise(shape->second);
            shape = shapes_.erase(shape);
        }
    }
}

bool Handle::isInTransaction() const {
    return sqlite3_get_autocommit(database_.get()) == 0;
}

bool Handle::isAtWork() const {
    return isInTransaction() || sqlite3_txn_state(database_.get(), nullptr) != SQLITE_TXN_NONE;
}

void Handle::rollBackQuietly() noexcept {
    rows_.forget();
    if (isInTransaction()) {
        sqlite3_exec(database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void Handle::rollBack() {
    static constexpr std::string_view statement = "ROLLBACK";
    rows_.forget();
    prepare(statement, 0, Texts::stay).step(statement);
}

bool Handle::notesReleasedWords() const {
    return catalog_.table("word_release") != nullptr && catalog_.table("word_purge") != nullptr;
}

std::int64_t Handle::changedRows() const {
    return sqlite3_changes64(database_.get());
}

std::int64_t Handle::lastRowKey() const {
    return sqlite3_last_insert_rowid(database_.get());
}

}  // namespace platform::sqlite
