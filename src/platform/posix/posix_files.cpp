#include "platform/posix/posix_files.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

#include "platform/posix/descriptor.h"
#include "platform/posix/system_error.h"

namespace platform::posix {

namespace {

constexpr mode_t newFileMode = 0666;  // less the process's own mask

int openForAppending(const std::string& path) {
    // Without O_NONBLOCK a path that leads to a pipe that nobody reads would stop the service.
    constexpr int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    int number = -1;
    do {
        number = ::open(path.c_str(), flags, newFileMode);
    } while (number < 0 && errno == EINTR);
    if (number < 0) {
        throw systemError(errno, "cannot open " + path + " for appending");
    }
    return number;
}

}  // namespace

void PosixFiles::deleteFile(const std::string& path) {
    // A file's own permissions do not bind here, its folder's do: a read-only file goes like any other.
    // unlink refuses folders.
    if (::unlink(path.c_str()) != 0) {
        throw systemError(errno, "cannot delete " + path);
    }
}

std::uint32_t PosixFiles::temporaryFolder(std::uint32_t size, char* path) {
    const char* configured = std::getenv("TMPDIR");
    std::string folder = configured == nullptr || *configured == '\0' ? "/tmp" : configured;
    if (!folder.ends_with('/')) {
        folder += '/';
    }
    if (folder.size() >= size) {
        return static_cast<std::uint32_t>(folder.size() + 1);
    }
    std::memcpy(path, folder.c_str(), folder.size() + 1);
    return static_cast<std::uint32_t>(folder.size());
}

void PosixFiles::append(const std::string& path, const std::string& bytes) {
    const Descriptor file(openForAppending(path));
    std::string_view rest = bytes;
    while (!rest.empty()) {
        const ssize_t written = ::write(file.number(), rest.data(), rest.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            throw systemError(errno, "cannot append to " + path);
        }
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace platform::posix
