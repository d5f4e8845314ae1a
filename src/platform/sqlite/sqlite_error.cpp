#include "platform/sqlite/sqlite_error.h"

#include <sqlite3.h>

#include "base/runtime_error.h"
#include "base/text.h"

namespace platform::sqlite {

std::string shortened(std::string_view statement) {
    constexpr std::size_t shown = 200;
    std::string text(base::left(statement, shown));
    return text.size() < statement.size() ? text + "..." : text;
}

void raiseError(sqlite3* database, int code, const std::string& doing, std::string_view statement) {
    // The message belongs to the last call on the database; a code from elsewhere has its own general text.
    const bool isLast = database != nullptr && (sqlite3_errcode(database) & 0xFF) == (code & 0xFF);
    const char* message = isLast ? sqlite3_errmsg(database) : sqlite3_errstr(code);
    std::string text = doing + ": " + message + " (SQLite error " + std::to_string(code) + ")";
    if (!statement.empty()) {
        text += " in: " + shortened(statement);
    }
    throw base::RuntimeError(base::ErrorNumber::databaseError, text);
}

}  // namespace platform::sqlite
