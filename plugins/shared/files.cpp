#include "shared/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <system_error>

namespace shared {
namespace {

sdk::ExtractionError systemError(const std::string& path, const std::string& attempt, int code) {
    return openError(OpenError::cannotRead, path, attempt + ": " + std::generic_category().message(code));
}

/// Reads up to `count` bytes from `offset` on; fewer only where the file ends.
std::size_t readAt(const InputFile& file, char* to, std::size_t count, std::size_t offset) {
    std::size_t done = 0;
    while (done < count) {
        const ssize_t got =
            pread(file.descriptor(), to + done, count - done, static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            throw systemError(file.path(), "cannot read", errno);
        }
        if (got == 0) {
            break;
        }
        done += static_cast<std::size_t>(got);
    }
    return done;
}

}  // namespace

sdk::ExtractionError openError(OpenError error, const std::string& path, const std::string& reason) {
    return {static_cast<std::int32_t>(error), path + ": " + reason};
}

InputFile::InputFile(const std::string& path)
    : path_(path), descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {
    if (descriptor_ < 0) {
        throw systemError(path, "cannot open", errno);
    }
    struct stat facts {};
    const int failure = fstat(descriptor_, &facts) == 0 ? 0 : errno;
    if (failure == 0 && S_ISREG(facts.st_mode)) {
        size_ = facts.st_size;
        lastModified_ = localTime(facts.st_mtime);
        return;
    }
    close(descriptor_);
    if (failure != 0) {
        throw systemError(path, "cannot open", failure);
    }
    throw openError(OpenError::cannotRead, path,
                    S_ISDIR(facts.st_mode) ? "this is a folder, not a document"
                                           : "this is a pipe, a socket or a device, not a document");
}

InputFile::~InputFile() {
    close(descriptor_);
}

std::string InputFile::head(std::size_t count) const {
    std::string bytes(std::min(count, static_cast<std::size_t>(size_)), '\0');
    bytes.resize(readAt(*this, bytes.data(), bytes.size(), 0));
    return bytes;
}

void InputFile::readRest(std::string& bytes) const {
    const std::size_t known = bytes.size();
    bytes.resize(std::max(known, static_cast<std::size_t>(size_)));
    bytes.resize(known + readAt(*this, bytes.data() + known, bytes.size() - known, known));
}

std::string InputFile::readAll() const {
    return head(static_cast<std::size_t>(size_));
}

base::DateTime localTime(std::time_t moment) {
    std::tm parts{};
    if (localtime_r(&moment, &parts) == nullptr) {
        return {};
    }
    return base::DateTime::fromCivil({parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour,
                                      parts.tm_min, std::min(parts.tm_sec, 59)})
        .value_or(base::DateTime());
}

void setFileProperties(sdk::Document& document, const InputFile& file) {
    constexpr std::int64_t largest = std::numeric_limits<std::int32_t>::max();
    document.properties["source_url"] = "";
    document.properties["title"] = "";
    document.properties["data_size"] = static_cast<std::int32_t>(std::min(file.size(), largest));
    document.properties["last_time_modified"] = file.lastModified();
}

}  // namespace shared
