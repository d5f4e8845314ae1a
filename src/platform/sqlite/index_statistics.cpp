#include "platform/sqlite/index_statistics.h"

#include <sqlite3.h>

namespace platform::sqlite {
namespace {

constexpr const char* hasGroupedIndexes =
    "SELECT 1 FROM sqlite_schema WHERE type = 'index' AND name = 'word_index_id_root_word' AND sql LIKE "
    "'%/%'";

// The same rows as in schema/sqlite.sql. Figures of a real, large library would lead searches astray: SQLite
// then holds it for cheaper to read the words of every document than to go through the groups of an index.
constexpr const char* differs =
    "SELECT 1 WHERE 3 <> (SELECT count(*) FROM sqlite_stat1 WHERE (idx, stat) IN "
    "(VALUES ('root_word_word', '150000 2048 1'), ('word_index_id_document_object', '3000000 760'), "
    "('word_index_id_root_word', '3000000 12160 2'))) "
    "OR 3 <> (SELECT count(*) FROM sqlite_stat1 WHERE tbl IN ('root_word', 'word_index'))";

constexpr const char* restore =
    "BEGIN IMMEDIATE;"
    "ANALYZE sqlite_schema;"
    "DELETE FROM sqlite_stat1 WHERE tbl IN ('root_word', 'word_index');"
    "INSERT INTO sqlite_stat1 (tbl, idx, stat) VALUES ('root_word', 'root_word_word', '150000 2048 1'),"
    " ('word_index', 'word_index_id_document_object', '3000000 760'),"
    " ('word_index', 'word_index_id_root_word', '3000000 12160 2');"
    "COMMIT;"
    "ANALYZE sqlite_schema;";

enum class Found { row, none, failed };

Found find(sqlite3* database, const char* query) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(database, query, -1, &statement, nullptr) != SQLITE_OK) {
        return Found::failed;
    }
    const int code = sqlite3_step(statement);
    sqlite3_finalize(statement);
    return code == SQLITE_ROW ? Found::row : (code == SQLITE_DONE ? Found::none : Found::failed);
}

}  // namespace

void restoreIndexStatistics(sqlite3* database) noexcept {
    // Without sqlite_stat1 the second question fails, and the figures are missing as well.
    if (find(database, hasGroupedIndexes) != Found::row || find(database, differs) == Found::none) {
        return;
    }
    if (sqlite3_exec(database, restore, nullptr, nullptr, nullptr) != SQLITE_OK &&
        sqlite3_get_autocommit(database) == 0) {
        sqlite3_exec(database, "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

}  // namespace platform::sqlite
