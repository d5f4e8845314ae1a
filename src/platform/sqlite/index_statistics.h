// What SQLite has to know of the library's grouped indexes in order to use them.
#pragma once

struct sqlite3;

namespace platform::sqlite {

/// Puts the figures back with which a library was made, when another program's ANALYZE has replaced them or
/// they are lost. Does nothing in a library without grouped indexes, and leaves it for the next time when it
/// cannot.
void restoreIndexStatistics(sqlite3* database) noexcept;

}  // namespace platform::sqlite
