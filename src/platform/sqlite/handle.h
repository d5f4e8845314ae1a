// A Handle is what lies under a connection: the open file with its page cache and its prepared statements.
// A connection owns one while it is open; between two connections the engine's pool keeps it warm.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/jet/lexer.h"
#include "platform/sqlite/checkpointer.h"
#include "platform/sqlite/library_file.h"
#include "platform/sqlite/new_root_words.h"
#include "platform/sqlite/row_batch.h"
#include "platform/sqlite/statement.h"
#include "platform/sqlite/table_catalog.h"

struct sqlite3;

namespace platform::sqlite {

struct HandleOptions {
    /// How long a statement waits for another connection's lock.
    std::chrono::milliseconds busyTimeout{30000};
    int cacheKibibytes = 2048;
    /// Bytes of pages in the write-ahead log before they are moved into the library.
    std::int64_t checkpointBytes = 64LL * 1024 * 1024;
};

class Handle {
  public:
    /// Opens a library. Raises a RuntimeError when there is none at the path. `prepared` counts the
    /// statements that are prepared; it and the checkpointer must outlive the handle.
    Handle(const std::string& path, const HandleOptions& options, std::atomic<std::size_t>& prepared,
           Checkpointer& checkpointer);
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle();

    [[nodiscard]] const std::string& path() const { return file_.path(); }

    /// Raises a RuntimeError when the file at the path is no longer the one that is open here.
    void checkFile() { file_.checkSame(database_.get()); }

    /// Readies a warm handle for a new connection: what other programs changed in the tables meanwhile is
    /// forgotten. Raises a RuntimeError when the file can no longer be used.
    void refresh();

    /// False when the file is no longer what was opened, or a statement could not read it or has found it
    /// damaged. Such a handle must not be kept.
    [[nodiscard]] bool isSound() noexcept;

    /// Takes the row that the statement inserts, to be written together with others; false when it has to
    /// run as it is. Raises a RuntimeError when rows cannot be written, and the transaction has ended then.
    bool insertLater(std::string_view text);

    /// Runs an insert with the values of its rows.
    void insert(PreparedShape& shape, std::span<const jet::ParameterValue> values, std::string_view text);

    /// A statement ready to run. Rows that wait to be inserted are written before it.
    Statement prepare(std::string_view text, std::int32_t identity, Texts texts);

    [[nodiscard]] bool isInTransaction() const;

    /// Whether a transaction is open or a statement is reading.
    [[nodiscard]] bool isAtWork() const;

    /// Changes with every change of the tables, by whomever.
    std::int64_t schemaVersion();

    /// Ends a transaction that has failed; does nothing where none is open.
    void rollBackQuietly() noexcept;

    /// Raises a RuntimeError.
    void rollBack();

    /// The root words that are not written yet. No other statement than the service's insert of a root word
    /// may run before they are.
    NewRootWords& newRootWords() { return newRootWords_; }

    /// Whether the library notes which root words may have lost their last hit.
    [[nodiscard]] bool notesReleasedWords() const;

    /// Rows that the last INSERT, UPDATE or DELETE changed, and the key of the last row inserted.
    [[nodiscard]] std::int64_t changedRows() const;
    [[nodiscard]] std::int64_t lastRowKey() const;

  private:
    struct Closer {
        void operator()(sqlite3* database) const;
    };
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };
    using Shapes = std::unordered_map<std::string, PreparedShape, Hash, std::equal_to<>>;

    void openDatabase(const HandleOptions& options);
    void checkIsLibrary();
    LibraryFile::End findEnd();
    void stopCheckpoints() noexcept;
    void checkPages();
    std::int64_t pragmaNumber(const char* pragma);
    void run(const char* sql);
    PreparedShape& read(std::string_view text);
    PreparedShape& shapeOf(std::string_view text);
    Statement take(PreparedShape& shape, std::string_view text);
    sqlite3_stmt* compile(const jet::Translation& translation, std::string_view text);
    [[noreturn]] void raiseCompileError(int code, const jet::Translation& translation, std::string_view text);
    void forgetIdleShapes();
    void leaveLogAlone() noexcept;
    void writeNewRootWords() noexcept;
    static void finalise(PreparedShape& shape);

    LibraryFile file_;
    std::unique_ptr<sqlite3, Closer> database_;
    TableCatalog catalog_;
    std::atomic<std::size_t>& prepared_;
    Checkpointer& checkpointer_;
    int checkpointPages_ = 0;
    jet::LexedStatement lexed_;
    Shapes shapes_;
    PreparedShape* lastShape_ = nullptr;  // of the statement that was read last
    NewRootWords newRootWords_{*this};
    RowBatch rows_{*this};
    std::int64_t schemaVersion_ = 0;
    FileFault fault_ = FileFault::none;
};

}  // namespace platform::sqlite
