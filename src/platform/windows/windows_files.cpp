#include "platform/windows/windows_files.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <string>

#include "platform/automation.h"
#include "platform/windows/ansi_text.h"
#include "platform/windows/utf16.h"
#include "platform/windows/windows_error.h"

namespace platform::windows {
namespace {

constexpr const char* fileSystemObject = "Scripting.FileSystemObject";

/// The object takes patterns in a file's name and deletes all that match. No file can have such a name.
void requireOneFile(const std::string& path) {
    const std::size_t separator = path.find_last_of("\\/");
    const std::size_t name = separator == std::string::npos ? 0 : separator + 1;
    if (path.find_first_of("*?", name) != std::string::npos) {
        throw windowsError(ERROR_INVALID_NAME, "cannot delete " + path);
    }
}

/// Closes the file at the end of the operation, an error's end included.
class File {
  public:
    explicit File(HANDLE handle) : handle_(handle) {}
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() { ::CloseHandle(handle_); }

    [[nodiscard]] HANDLE handle() const { return handle_; }

  private:
    HANDLE handle_;
};

HANDLE openForAppending(const std::string& path) {
    constexpr DWORD othersMay = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE handle = ::CreateFileW(toUtf16(path).c_str(), FILE_APPEND_DATA, othersMay, nullptr,
                                        OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        throw windowsError(::GetLastError(), "cannot open " + path + " for appending");
    }
    return handle;
}

}  // namespace

WindowsFiles::WindowsFiles(AutomationFactory& automation) : automation_(automation) {}

WindowsFiles::~WindowsFiles() = default;

void WindowsFiles::prepare() {
    deleter_ = automation_.create(fileSystemObject);
}

void WindowsFiles::deleteFile(const std::string& path) {
    requireOneFile(path);
    if (!deleter_) {
        prepare();
    }
    constexpr bool readOnlyToo = true;
    const std::array<base::Variant, 2> arguments{base::Variant(path), base::Variant(readOnlyToo)};
    deleter_->callByValue("DeleteFile", arguments);
    // Not every system's object minds that a path leads to a folder.
    if (::GetFileAttributesW(toUtf16(path).c_str()) != INVALID_FILE_ATTRIBUTES) {
        throw windowsError(ERROR_ACCESS_DENIED, "cannot delete " + path);
    }
}

std::uint32_t WindowsFiles::temporaryFolder(std::uint32_t size, char* path) {
    std::string ansi(size, '\0');
    const DWORD length = ::GetTempPathA(size, ansi.data());
    if (length == 0 || length >= size) {
        return length;
    }
    const std::string folder = fromAnsi(ansi.substr(0, length));
    if (folder.size() >= size) {
        return static_cast<std::uint32_t>(folder.size() + 1);
    }
    std::copy(folder.c_str(), folder.c_str() + folder.size() + 1, path);
    return static_cast<std::uint32_t>(folder.size());
}

void WindowsFiles::append(const std::string& path, const std::string& bytes) {
    const File file(openForAppending(path));
    DWORD written = 0;
    if (::WriteFile(file.handle(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ==
            FALSE ||
        written != bytes.size()) {
        throw windowsError(::GetLastError(), "cannot append to " + path);
    }
}

}  // namespace platform::windows
