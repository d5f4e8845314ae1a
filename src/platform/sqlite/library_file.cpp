#include "platform/sqlite/library_file.h"

#include <sqlite3.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <exception>
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

bool isSameFile(const FileStatus& one, const FileStatus& other) {
    return one.kind == other.kind && one.device == other.device && one.number == other.number;
}

bool hasLog(const std::string& path) {
    return fileStatus(path + "-wal").size > 0;
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

FileStatus LibraryFile::status() const {
    FileStatus found = fileStatus(path_);
    switch (found.kind) {
        case FileStatus::Kind::file:
            return found;
        case FileStatus::Kind::other:
            fail("is not a file");
        case FileStatus::Kind::missing:
            fail("does not exist; correct DataBasePath or make a library there");
        case FileStatus::Kind::unreachable:
            break;
    }
    fail("cannot be reached: " + found.error);
}

LibraryFile::End LibraryFile::checkContent(sqlite3* database) {
    sqlite3_file* file = openFile(database);
    sqlite3_int64 size = 0;
    if (file->pMethods->xFileSize(file, &size) != SQLITE_OK) {
        fail("cannot be read");
    }
    return checkContent(file, size);
}

sqlite3_file* LibraryFile::openFile(sqlite3* database) const {
    sqlite3_file* file = nullptr;
    if (sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK ||
        file == nullptr || file->pMethods == nullptr) {
        fail("cannot be read");
    }
    return file;
}

LibraryFile::End LibraryFile::checkContent(sqlite3_file* file, std::int64_t size) {
    Header header{};
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
    const FileStatus now = status();
    if (!isSameFile(now, seen_)) {
        fail("has been replaced by another file since it was opened");
    }
    if (now.size == 0) {
        fail("has been emptied since it was opened");
    }
    // Every statement outside a transaction asks this, so the file is not asked for its size once more, and
    // its header is not read again as long as nobody has written to the file.
    if (now.changed && now.changed == whole_) {
        return;
    }
    const End end = checkContent(openFile(database), now.size);
    whole_ = end == End::isThere ? now.changed : std::nullopt;
}

bool LibraryFile::isInPlace() const noexcept {
    try {
        return isSameFile(fileStatus(path_), seen_);
    } catch (const std::exception&) {  // there is no memory left to look with
        return false;
    }
}

void LibraryFile::fail(const std::string& what) const {
    throw base::RuntimeError(base::ErrorNumber::databaseError, "The library \"" + path_ + "\" " + what);
}

}  // namespace platform::sqlite
