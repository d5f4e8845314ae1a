#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstring>

#include "platform/sqlite/file_status.h"

namespace platform::sqlite {
namespace {

using namespace std::chrono_literals;

// The clock that stamps files goes in ticks of some milliseconds. What is changed twice in one tick gets the
// same stamp twice.
constexpr auto longestTick = 100ms;

std::optional<std::int64_t> stampOf(const timespec& changed) {
    const auto stamp = std::chrono::seconds(changed.tv_sec) + std::chrono::nanoseconds(changed.tv_nsec);
    const bool isOver = stamp < std::chrono::system_clock::now().time_since_epoch() - longestTick;
    const bool isFine = changed.tv_nsec != 0;  // not of a file system that counts whole seconds
    return isOver && isFine ? std::optional(stamp.count()) : std::nullopt;
}

}  // namespace

FileStatus fileStatus(const std::string& path) {
    FileStatus status;
    struct stat found {};
    if (::stat(path.c_str(), &found) != 0) {
        const int error = errno;
        const bool isMissing = error == ENOENT || error == ENOTDIR;
        status.kind = isMissing ? FileStatus::Kind::missing : FileStatus::Kind::unreachable;
        status.error = std::strerror(error);
        return status;
    }
    status.kind = S_ISREG(found.st_mode) ? FileStatus::Kind::file : FileStatus::Kind::other;
    status.device = found.st_dev;
    status.number = found.st_ino;
    status.size = found.st_size;
    status.changed = stampOf(found.st_ctim);
    return status;
}

}  // namespace platform::sqlite
