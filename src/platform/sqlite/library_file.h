// A LibraryFile watches whether the file at a library's path is still the one that was opened. Each handle
// owns one. It looks at the file's name only: opening the file a second time and closing it would drop
// SQLite's locks on it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/sqlite/file_status.h"

struct sqlite3;
struct sqlite3_file;

namespace platform::sqlite {

class LibraryFile {
  public:
    /// Raises a RuntimeError when there is no file at the path, or one that cannot be a library.
    explicit LibraryFile(std::string path);

    [[nodiscard]] const std::string& path() const { return path_; }

    /// Whether the file ends where its header says, or earlier with a log beside it that may hold the rest.
    enum class End { isThere, mayBeInLog };

    /// Raises a RuntimeError when what the handle has open is no SQLite file or has lost its end.
    End checkContent(sqlite3* database);

    /// Raises a RuntimeError when the file at the path is gone, is another one, or has lost its end.
    void checkSame(sqlite3* database);

    /// Whether the path still leads to the file that was opened, whatever that file holds by now.
    [[nodiscard]] bool isInPlace() const noexcept;

  private:
    [[nodiscard]] FileStatus status() const;
    [[nodiscard]] sqlite3_file* openFile(sqlite3* database) const;
    End checkContent(sqlite3_file* file, std::int64_t size);
    [[noreturn]] void fail(const std::string& what) const;

    std::string path_;
    FileStatus seen_;
    std::optional<std::int64_t> whole_;  // the stamp at which the header was read and the end was there
};

}  // namespace platform::sqlite
