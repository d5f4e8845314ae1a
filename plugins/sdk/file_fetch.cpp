#include "sdk/file_fetch.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace sdk {
namespace {

/// More than a disk gives before the file's reader comes. From there on the system reads ahead of the reader,
/// and of a file that nobody comes for (a data type that is switched off) not much has been read in vain.
constexpr off_t fetchedBytes = off_t{256} * 1024;

}  // namespace

void fetchFile(const std::string& path) noexcept {
    // Opening what is no file may do something: it lets a pipe's writer go on, or winds a tape back.
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return;
    }
    // Should it have become something else meanwhile, this does not wait, and the call below refuses it.
    const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (file < 0) {
        return;
    }
    posix_fadvise(file, 0, fetchedBytes, POSIX_FADV_WILLNEED);
    close(file);
}

}  // namespace sdk
