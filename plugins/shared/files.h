// How the plug-ins read the files that the service names: regular files only, so that a pipe or a device can
// never make a plug-in wait. Every failure is an ExtractionError that names the path and the reason.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>

#include "base/date_time.h"
#include "base/variant.h"
#include "sdk/extractor.h"

namespace shared {

/// Numbers of the errors that a plug-in gives for a document it cannot open.
enum class OpenError : std::int32_t {
    cannotRead = 1,
    isNotThatFormat = 2,
    cannotWriteAttachment = 3,
};

/// An ExtractionError with the text "<path>: <reason>".
sdk::ExtractionError openError(OpenError error, const std::string& path, const std::string& reason);

/// A regular file opened for reading; it is closed with the object.
class InputFile {
  public:
    explicit InputFile(const std::string& path);
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile();

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] int descriptor() const { return descriptor_; }
    [[nodiscard]] std::int64_t size() const { return size_; }
    [[nodiscard]] base::DateTime lastModified() const { return lastModified_; }

    /// The first bytes of the file, at most `count` of them.
    [[nodiscard]] std::string head(std::size_t count) const;

    /// Appends what the file holds behind the bytes that were read of it, to these bytes.
    void readRest(std::string& bytes) const;

    /// All bytes of the file.
    [[nodiscard]] std::string readAll() const;

  private:
    std::string path_;
    int descriptor_;
    std::int64_t size_ = 0;
    base::DateTime lastModified_;
};

/// The moment in local time; the zero date where the calendar of a DateTime has no such moment.
base::DateTime localTime(std::time_t moment);

/// The properties that every document has. The service keeps sizes in 32 bits and cannot index a document
/// that is larger by its own account: such a file counts as one of 2147483647 bytes.
void setFileProperties(sdk::Document& document, const InputFile& file);

}  // namespace shared
