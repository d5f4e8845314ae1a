#include "platform/sqlite/log_vfs.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <string>

namespace platform::sqlite {
namespace {

// SQLite's file format: 24 bytes stand before each page, the second four of which are zero unless the page is
// the last of a transaction.
constexpr int frameHeaderSize = 24;
constexpr std::size_t commitMark = 4;
constexpr std::size_t commitMarkEnd = 8;

// SQLite's own layer cannot write 128 KiB at once.
constexpr std::size_t mostBuffered = std::size_t{64} * 1024;

constexpr std::size_t largestPage = 65536;

/// What has been added to a log and is not in the file yet. As long as no page leaves the cache before its
/// transaction ends, SQLite adds the pages of a transaction one after the other, all in one go that ends with
/// the commit mark: nothing is ever left here, to be written over what others have added meanwhile.
class LogBuffer {
  public:
    /// All the memory there is need of: SQLite does not count on a write that fails for want of it.
    explicit LogBuffer(sqlite3_file& file) : file_(file) {
        bytes_.reserve(mostBuffered + frameHeaderSize + largestPage);
    }

    int write(const void* data, int size, sqlite3_int64 offset) {
        if (size == frameHeaderSize) {
            return addHeader(static_cast<const unsigned char*>(data), offset);
        }
        if (hasHeader_ && offset == end()) {
            return addPage(static_cast<const char*>(data), static_cast<std::size_t>(size));
        }
        const int code = flush();
        return code == SQLITE_OK ? file_.pMethods->xWrite(&file_, data, size, offset) : code;
    }

    int flush() {
        hasHeader_ = false;
        if (bytes_.empty()) {
            return SQLITE_OK;
        }
        const int code =
            file_.pMethods->xWrite(&file_, bytes_.data(), static_cast<int>(bytes_.size()), start_);
        bytes_.clear();  // a transaction whose pages cannot be written fails as a whole
        return code;
    }

  private:
    [[nodiscard]] sqlite3_int64 end() const { return start_ + static_cast<sqlite3_int64>(bytes_.size()); }

    int addHeader(const unsigned char* header, sqlite3_int64 offset) {
        if (offset != end()) {
            if (const int code = flush(); code != SQLITE_OK) {
                return code;
            }
        }
        if (bytes_.empty()) {
            start_ = offset;
        }
        bytes_.append(reinterpret_cast<const char*>(header), frameHeaderSize);
        hasHeader_ = true;
        isLast_ = std::any_of(header + commitMark, header + commitMarkEnd,
                              [](unsigned char byte) { return byte != 0; });
        return SQLITE_OK;
    }

    int addPage(const char* page, std::size_t size) {
        bytes_.append(page, size);
        hasHeader_ = false;
        return isLast_ || bytes_.size() >= mostBuffered ? flush() : SQLITE_OK;
    }

    sqlite3_file& file_;
    std::string bytes_;
    sqlite3_int64 start_ = 0;  // of the bytes, in the file
    bool hasHeader_ = false;   // the bytes end with the header of a page
    bool isLast_ = false;      // and that page is the last of a transaction
};

/// A log as SQLite sees it. SQLite's own file stands behind it in the same piece of memory, which SQLite
/// provides.
struct LogFile {
    sqlite3_file base;
    LogBuffer* buffer;
};

sqlite3_file& fileOf(sqlite3_file* log) {
    return *reinterpret_cast<sqlite3_file*>(reinterpret_cast<LogFile*>(log) + 1);
}

LogBuffer& bufferOf(sqlite3_file* log) {
    return *reinterpret_cast<LogFile*>(log)->buffer;
}

/// Calls a method of SQLite's own file when what is buffered has got there.
template <class Method, class... Arguments>
int passOn(sqlite3_file* log, Method method, Arguments... arguments) {
    const int code = bufferOf(log).flush();
    sqlite3_file& file = fileOf(log);
    return code == SQLITE_OK ? (file.pMethods->*method)(&file, arguments...) : code;
}

int closeLog(sqlite3_file* log) {
    delete &bufferOf(log);
    return fileOf(log).pMethods->xClose(&fileOf(log));
}

int readLog(sqlite3_file* log, void* data, int size, sqlite3_int64 offset) {
    return passOn(log, &sqlite3_io_methods::xRead, data, size, offset);
}

int writeLog(sqlite3_file* log, const void* data, int size, sqlite3_int64 offset) {
    return bufferOf(log).write(data, size, offset);
}

using Methods = sqlite3_io_methods;

const Methods logMethods = [] {
    Methods methods{};
    methods.iVersion = 1;
    methods.xClose = closeLog;
    methods.xRead = readLog;
    methods.xWrite = writeLog;
    methods.xTruncate = [](sqlite3_file* log, sqlite3_int64 size) {
        return passOn(log, &Methods::xTruncate, size);
    };
    methods.xSync = [](sqlite3_file* log, int flags) { return passOn(log, &Methods::xSync, flags); };
    methods.xFileSize = [](sqlite3_file* log, sqlite3_int64* size) {
        return passOn(log, &Methods::xFileSize, size);
    };
    methods.xLock = [](sqlite3_file* log, int level) { return passOn(log, &Methods::xLock, level); };
    methods.xUnlock = [](sqlite3_file* log, int level) { return passOn(log, &Methods::xUnlock, level); };
    methods.xCheckReservedLock = [](sqlite3_file* log, int* isReserved) {
        return passOn(log, &Methods::xCheckReservedLock, isReserved);
    };
    methods.xFileControl = [](sqlite3_file* log, int operation, void* argument) {
        return passOn(log, &Methods::xFileControl, operation, argument);
    };
    methods.xSectorSize = [](sqlite3_file* log) { return fileOf(log).pMethods->xSectorSize(&fileOf(log)); };
    methods.xDeviceCharacteristics = [](sqlite3_file* log) {
        return fileOf(log).pMethods->xDeviceCharacteristics(&fileOf(log));
    };
    return methods;
}();

sqlite3_vfs* ownVfs(sqlite3_vfs* vfs) {
    return static_cast<sqlite3_vfs*>(vfs->pAppData);
}

int openFile(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    sqlite3_vfs* own = ownVfs(vfs);
    if ((flags & SQLITE_OPEN_WAL) == 0) {
        return own->xOpen(own, name, file, flags, outFlags);
    }
    file->pMethods = nullptr;  // no file, unless all goes well
    std::unique_ptr<LogBuffer> buffer;
    try {
        buffer = std::make_unique<LogBuffer>(fileOf(file));
    } catch (const std::bad_alloc&) {
        return SQLITE_NOMEM;
    }
    const int code = own->xOpen(own, name, &fileOf(file), flags, outFlags);
    if (code != SQLITE_OK) {
        return code;
    }
    reinterpret_cast<LogFile*>(file)->buffer = buffer.release();
    file->pMethods = &logMethods;
    return SQLITE_OK;
}

/// SQLite's own file system but for the opening of files, which alone needs the structure that it belongs to.
const char* registerVfs() {
    sqlite3_vfs* own = sqlite3_vfs_find(nullptr);
    if (own == nullptr) {
        return nullptr;  // SQLite cannot start, and says so when a file is opened
    }
    static sqlite3_vfs vfs;
    vfs = *own;
    vfs.zName = "tyindexer-log";
    vfs.pNext = nullptr;
    vfs.pAppData = own;
    vfs.szOsFile = static_cast<int>(sizeof(LogFile)) + own->szOsFile;
    vfs.xOpen = openFile;
    return sqlite3_vfs_register(&vfs, 0) == SQLITE_OK ? vfs.zName : nullptr;
}

}  // namespace

const char* logVfs() {
    // Not before SQLite has been configured.
    static const char* const name = registerVfs();
    return name;
}

}  // namespace platform::sqlite
