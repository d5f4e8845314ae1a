// AttachmentFiles writes a message's attachments to the system's folder for temporary files, where the
// service indexes and deletes them. The attachments of one message share it.
#pragma once

#include <ctime>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace mail {

class AttachmentFiles {
  public:
    /// `now` stands in front of every file's name, as yyyymmddhhnnss: the service knows a temporary file's
    /// own name by what follows.
    explicit AttachmentFiles(std::time_t now);
    AttachmentFiles(const AttachmentFiles&) = delete;
    AttachmentFiles& operator=(const AttachmentFiles&) = delete;
    ~AttachmentFiles() = default;

    /// Makes a file for the attachment, readable by its owner alone, lets `write` fill it through a
    /// descriptor, and gives its path, of at most 250 bytes. `write` answers false, with errno set, when it
    /// cannot; no file is left then. The file belongs to the caller.
    std::string add(const std::string& name, const std::string& mimeType,
                    const std::function<bool(int descriptor)>& write);

  private:
    std::string prefix_;
    std::map<std::string, int> used_;  // how often a name was given; many parts of a message may share one
};

/// The extension of an attachment's file: that of its name where it has one of letters and digits, else one
/// for its type, else "bin".
std::string attachmentExtension(std::string_view name, std::string_view mimeType);

/// The attachment's name as a file name without extension: no folders, nothing that a file system minds, at
/// most 80 characters, never empty.
std::string attachmentBaseName(std::string_view name);

}  // namespace mail
