// What the system tells of a file: whether two looks at a path have met the same file, and how long it is.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace platform::sqlite {

struct FileStatus {
    enum class Kind : std::uint8_t { file, other, missing, unreachable };

    Kind kind = Kind::missing;
    std::uint64_t device = 0;
    std::uint64_t number = 0;  // of the file on its device
    std::int64_t size = 0;
    /// The stamp of the last change. Nothing where the system tells none (Windows), and as long as a further
    /// change might get the same.
    std::optional<std::int64_t> changed;
    std::string error;  // the system's words for why it cannot be reached
};

/// The path is UTF-8, as SQLite takes it.
FileStatus fileStatus(const std::string& path);

}  // namespace platform::sqlite
