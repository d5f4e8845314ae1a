// The write-ahead log in large pieces. SQLite writes each page of a transaction with two calls of the system,
// one for the 24 bytes before it, and a document changes dozens of pages. A file system of this name passes
// everything on to SQLite's own, but keeps what is added to a log until the last page of the transaction is
// there.
#pragma once

namespace platform::sqlite {

/// The name to open a library with (null for SQLite's own file system where this one cannot be had), for
/// connections that let no page leave the cache before its transaction ends (PRAGMA cache_spill = OFF). The
/// log is in the file before a commit ends: whoever reads it, also after a crash, finds it as ever.
const char* logVfs();

}  // namespace platform::sqlite
