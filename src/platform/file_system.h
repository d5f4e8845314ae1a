// What the service does with files beside reading documents, which plug-ins do. The composition root owns it.
#pragma once

#include <cstdint>
#include <string>

namespace platform {

class FileSystem {
  public:
    FileSystem() = default;
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;
    virtual ~FileSystem() = default;

    /// Readies the file system for deletions; raises a base::RuntimeError when that cannot be done.
    virtual void prepare() = 0;

    /// Deletes a file, a read-only one included. Raises a base::RuntimeError when it is missing, is a folder
    /// or stays.
    virtual void deleteFile(const std::string& path) = 0;

    /// Writes the folder for temporary files, with the separator at its end, to `path`, which has room for
    /// `size` bytes with an ending NUL. Gives the characters written without the NUL, more than `size` when
    /// the room is too small, 0 when there is no such folder.
    virtual std::uint32_t temporaryFolder(std::uint32_t size, char* path) = 0;

    /// Opens a text file for appending (making it where it is missing), appends the bytes and closes it.
    /// Raises a base::RuntimeError when that fails.
    virtual void append(const std::string& path, const std::string& bytes) = 0;
};

}  // namespace platform
