#include <windows.h>

#include <filesystem>
#include <memory>
#include <system_error>

#include "platform/sqlite/file_status.h"

namespace platform::sqlite {
namespace {

struct HandleCloser {
    using pointer = HANDLE;
    void operator()(HANDLE file) const { ::CloseHandle(file); }
};

constexpr std::uint64_t joined(DWORD high, DWORD low) {
    return (std::uint64_t{high} << 32U) + low;
}

FileStatus notReached(DWORD error) {
    FileStatus status;
    const bool isMissing =
        error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND || error == ERROR_INVALID_NAME;
    status.kind = isMissing ? FileStatus::Kind::missing : FileStatus::Kind::unreachable;
    status.error = std::system_category().message(static_cast<int>(error));
    return status;
}

}  // namespace

FileStatus fileStatus(const std::string& path) {
    const std::filesystem::path name(std::u8string(path.begin(), path.end()));
    // A look at the file takes no right to it; a folder opens with the backup flag alone.
    const HANDLE opened =
        ::CreateFileW(name.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        return notReached(::GetLastError());
    }
    const std::unique_ptr<HANDLE, HandleCloser> file(opened);
    BY_HANDLE_FILE_INFORMATION found{};
    if (::GetFileInformationByHandle(file.get(), &found) == FALSE) {
        return notReached(::GetLastError());
    }
    FileStatus status;
    const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    status.kind = isFolder ? FileStatus::Kind::other : FileStatus::Kind::file;
    status.device = found.dwVolumeSerialNumber;
    status.number = joined(found.nFileIndexHigh, found.nFileIndexLow);
    status.size = static_cast<std::int64_t>(joined(found.nFileSizeHigh, found.nFileSizeLow));
    return status;
}

}  // namespace platform::sqlite
