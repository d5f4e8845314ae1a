// LocalFiles are real files through the standard library alone, for tests of what lies above the platform.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "base/runtime_error.h"
#include "platform/file_system.h"

namespace fakes {

class LocalFiles : public platform::FileSystem {
  public:
    void prepare() override {}

    void deleteFile(const std::string& path) override {
        std::error_code error;
        // Where a file's own permissions bind, a read-only one could not be deleted.
        std::filesystem::permissions(path, std::filesystem::perms::owner_write,
                                     std::filesystem::perm_options::add, error);
        const bool folder = std::filesystem::is_directory(path, error);
        if (folder || !std::filesystem::remove(path, error)) {
            fail("cannot delete " + path + ": " + (error ? error.message() : "no such file"));
        }
    }

    std::uint32_t temporaryFolder(std::uint32_t size, char* path) override {
        std::string folder = std::filesystem::temp_directory_path().string();
        if (folder.back() != std::filesystem::path::preferred_separator) {
            folder += static_cast<char>(std::filesystem::path::preferred_separator);
        }
        if (folder.size() >= size) {
            return static_cast<std::uint32_t>(folder.size() + 1);
        }
        folder.copy(path, folder.size());
        path[folder.size()] = '\0';
        return static_cast<std::uint32_t>(folder.size());
    }

    void append(const std::string& path, const std::string& bytes) override {
        std::ofstream file(path, std::ios::binary | std::ios::app);
        if (!file) {
            fail("cannot open " + path + " for appending");
        }
        if (!(file << bytes) || !file.flush()) {
            fail("cannot append to " + path);
        }
    }

  private:
    [[noreturn]] static void fail(const std::string& description) {
        constexpr int ioError = 5;
        throw base::RuntimeError(ioError, description);
    }
};

}  // namespace fakes
