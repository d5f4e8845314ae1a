// tysSupport writes the service's log and turns paths on mapped drives into network paths and back.
// Services owns it. Nothing here raises: a log line that cannot be written is dropped, a path without another
// form has an empty one.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "infra/tysRegistry.h"
#include "platform/clock.h"
#include "platform/drives.h"
#include "platform/file_system.h"

namespace infra {

/// What a log line tells. Levels 1 to 5 can be switched on and off one by one; level 0 is always written.
enum class LogLevel : int {
    unknown = 0,
    crashDetection = 1,
    logicPath = 2,
    errorReport = 3,
    interest = 4,
    uiOutput = 5,
};

class tysSupport {
  public:
    tysSupport(tysRegistry& registry, platform::FileSystem& files, platform::Clock& clock,
               platform::Drives& drives);

    /// Appends one line to the log file when its level is on. Any number but 0 to 5 writes nothing.
    void WriteLog(std::string_view message, LogLevel level);

    /// Reads the five level switches; the first WriteLog does it once.
    void LoadLogLevels();

    /// The log file of every line from now on; an empty path makes the next line read it from the settings.
    void setLogFilePath(std::string_view path);

    /// The share behind the drive letter that the text begins with (\\server\share), or empty text.
    std::string getNetworkConnection(std::string_view drive);

    /// A network path spelled through the first drive letter from C to Z whose share is a prefix of it, or
    /// empty text.
    std::string getMappedDrivePath(std::string_view networkPath);

  private:
    /// False when it is being read already.
    bool readLogFilePath();

    tysRegistry& registry_;
    platform::FileSystem& files_;
    platform::Clock& clock_;
    platform::Drives& drives_;
    std::string logFilePath_;
    bool readingLogFilePath_ = false;
    bool levelsLoaded_ = false;
    std::array<bool, 6> levelIsOn_{};  // by level; 0 is not used
};

}  // namespace infra
