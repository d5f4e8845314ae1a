#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "platform/sqlite/file_status.h"

namespace platform::sqlite {

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
    return status;
}

}  // namespace platform::sqlite
