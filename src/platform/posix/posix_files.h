// PosixFiles deletes files, appends to logs and knows the folder for temporary files. The composition root
// owns it.
#pragma once

#include "platform/file_system.h"

namespace platform::posix {

class PosixFiles : public FileSystem {
  public:
    /// Nothing needs to be readied.
    void prepare() override {}

    void deleteFile(const std::string& path) override;

    /// $TMPDIR where it is set, else /tmp.
    std::uint32_t temporaryFolder(std::uint32_t size, char* path) override;

    /// The bytes go out in one write, so that lines of several processes do not mix. Only what the system
    /// leaves over of it, as on a disk that fills up, follows in further ones.
    void append(const std::string& path, const std::string& bytes) override;
};

}  // namespace platform::posix
