// The one place where SQLite's errors become ours.
#pragma once

#include <string>
#include <string_view>

struct sqlite3;

namespace platform::sqlite {

/// Raises a RuntimeError with what was being done, SQLite's code and message, and the beginning of the
/// statement. The database may be null when it could not be opened at all.
[[noreturn]] void raiseError(sqlite3* database, int code, const std::string& doing,
                             std::string_view statement = {});

/// The beginning of a statement, long enough to find it by.
std::string shortened(std::string_view statement);

}  // namespace platform::sqlite
