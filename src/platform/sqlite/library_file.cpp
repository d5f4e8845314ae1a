#include "platform/sqlite/library_file.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "base/runtime_error.h"

namespace platform::sqlite {
namespace {

constexpr std::size_t headerSize = 100;
using Header = std::array<unsigned char, headerSize>;

std::int64_t bigEndian(const Header& header, std::size_t position, std::size_t bytes) {
    std::int64_t value = 0;
    for (std::size_t i = 0; i < bytes; ++i) {
        value = value * 256 + header.at(position + i);
    }
    return value;
}

/// Bytes that the file must have by its own header; 0 when the header does not tell.
std::int64_t sizeByHeader(const Header& header) {
    const std::int64_t pageSize = bigEndian(header, 16, 2);
    const bool countIsValid = bigEndian(header, 24, 4) == bigEndian(header, 92, 4);
    return countIsValid ? (pageSize == 1 ? 65536 : pageSize) * bigEndian(header, 28, 4) : 0;
}

bool hasLog(const std::string& path) {
    struct stat log {};
    return ::stat((path + "-wal").c_str(), &log) == 0 && log.st_size > 0;
}

}  // namespace

LibraryFile::LibraryFile(std::string path) : path_(std::move(path)) {
    if (path_.empty()) {
        throw base::RuntimeError(base::ErrorNumber::databaseError,
                                 "No library is named: the setting DataBasePath is empty");
    }
    if (path_.find('\0') != std::string::npos) {
        fail("has a NUL in its path");
    }
    seen_ = status();
    if (seen_.size == 0) {
        fail("is empty; restore it from a copy");
    }
}

LibraryFile::Status LibraryFile::status() const {
    struct stat found {};
    if (::stat(path_.c_str(), &found) != 0) {
        const int error = errno;
        fail(error == ENOENT || error == ENOTDIR
                 ? "does not exist; correct DataBasePath or make a library there"
                 : std::string("cannot be reached: ") + std::strerror(error));
    }
    if (!S_ISREG(found.st_mode)) {
        fail("is not a file");
    }
    return {found.st_dev, found.st_ino, found.st_size};
}

LibraryFile::End LibraryFile::checkContent(sqlite3* database) {
    sqlite3_file* file = nullptr;
    Header header{};
    sqlite3_int64 size = 0;
    if (sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK ||
        file == nullptr || file->pMethods == nullptr || file->pMethods->xFileSize(file, &size) != SQLITE_OK) {
        fail("cannot be read");
    }
    constexpr std::string_view magic{"SQLite format 3\0", 16};
    if (size < static_cast<std::int64_t>(headerSize) ||
        file->pMethods->xRead(file, header.data(), headerSize, 0) != SQLITE_OK ||
        std::memcmp(header.data(), magic.data(), magic.size()) != 0) {
        fail("is not a library (no SQLite file)");
    }
    if (size >= sizeByHeader(header)) {
        seen_.size = size;
        return End::isThere;
    }
    // Pages that a checkpoint was writing when its process ended are still in the log, but no checkpoint
    // shortens a file below what its header says.
    if (size < seen_.size || !hasLog(path_)) {
        fail("is truncated: its end is missing; restore it from a copy");
    }
    seen_.size = size;
    return End::mayBeInLog;
}

void LibraryFile::checkSame(sqlite3* database) {
    const Status now = status();
    if (now.device != seen_.device || now.inode != seen_.inode) {
        fail("has been replaced by another file since it was opened");
    }
    if (now.size == 0) {
        fail("has been emptied since it was opened");
    }
    static_cast<void>(checkContent(database));
}

bool LibraryFile::isInPlace() const noexcept {
    struct stat found {};
    return ::stat(path_.c_str(), &found) == 0 && found.st_dev == seen_.device && found.st_ino == seen_.inode;
}

void LibraryFile::fail(const std::string& what) const {
    throw base::RuntimeError(base::ErrorNumber::databaseError, "The library \"" + path_ + "\" " + what);
}

}  // namespace platform::sqlite
