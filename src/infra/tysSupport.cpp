#include "infra/tysSupport.h"

#include <cstdint>
#include <exception>

#include "base/checked.h"
#include "base/text.h"

namespace infra {

using platform::DriveStatus;

namespace {

constexpr std::size_t shareRoom = 260;

struct Level {
    LogLevel level;
    std::string_view setting;
    std::int32_t defaultValue;
    std::string_view prefix;
};

constexpr std::array<Level, 5> levels{{
    {LogLevel::crashDetection, "LogLevelCrashDetection", 0, "Crash Detect: "},
    {LogLevel::logicPath, "LogLevelLogicPath", 0, "Logic: "},
    {LogLevel::errorReport, "LogLevelErrorReport", 1, "Error: "},
    {LogLevel::interest, "LogLevelInterest", 1, "Interest: "},
    {LogLevel::uiOutput, "LogLevelUIOutput", 0, "UI: "},
}};

std::size_t indexOf(LogLevel level) {
    return static_cast<std::size_t>(level);
}

/// The prefix of a line of this level, or empty text when the line is not to be written.
std::string_view prefixOf(LogLevel level, const std::array<bool, 6>& levelIsOn) {
    if (level == LogLevel::unknown) {
        return "Unknown: ";
    }
    for (const Level& known : levels) {
        if (known.level == level && levelIsOn.at(indexOf(level))) {
            return known.prefix;
        }
    }
    return {};
}

}  // namespace

tysSupport::tysSupport(tysRegistry& registry, platform::FileSystem& files, platform::Clock& clock,
                       platform::Drives& drives)
    : registry_(registry), files_(files), clock_(clock), drives_(drives) {}

void tysSupport::WriteLog(std::string_view message, LogLevel level) {
    try {
        if (!levelsLoaded_) {
            LoadLogLevels();
        }
        const std::string_view prefix = prefixOf(level, levelIsOn_);
        if (prefix.empty()) {
            return;
        }
        if (logFilePath_.empty() && !readLogFilePath()) {
            return;
        }
        // The message goes out as it is, line breaks in the name of a file included: readers of the log look
        // for the messages as they are told, and know a line by the time at its beginning.
        std::string line = clock_.now().longText();
        line.append(": ").append(prefix).append(message).append("\r\n");
        files_.append(logFilePath_, line);
    } catch (const std::exception&) {
        // The log never fails its caller: the line is lost.
        return;
    }
}

void tysSupport::LoadLogLevels() {
    // First of all, so that an error report from a failing read does not come back here.
    levelsLoaded_ = true;
    for (const Level& level : levels) {
        levelIsOn_.at(indexOf(level.level)) =
            registry_.GetSettingLong(platform::RootKey::currentUser, indexerKey, level.setting,
                                     level.defaultValue) == 1;
    }
}

void tysSupport::setLogFilePath(std::string_view path) {
    logFilePath_ = path;
}

// Without a setting the path is the folder for temporary files itself, which cannot be appended to: a service
// whose log was never configured writes none. A read that fails reports its error through WriteLog; that line
// has no file to go to yet and is dropped here, or the two would call each other without end.
bool tysSupport::readLogFilePath() {
    if (readingLogFilePath_) {
        return false;
    }
    readingLogFilePath_ = true;
    logFilePath_ = registry_.GetSettingString(platform::RootKey::currentUser, indexerKey, "LogFilePath",
                                              registry_.getTempDirectory());
    readingLogFilePath_ = false;
    return true;
}

std::string tysSupport::getNetworkConnection(std::string_view drive) {
    try {
        if (drive.empty()) {
            return {};
        }
        const std::string localName = base::toUpper(base::left(drive, 1)) + ":";
        std::string share(shareRoom, ' ');
        auto size = static_cast<std::uint32_t>(share.size());
        DriveStatus status = drives_.connection(localName, share.data(), size);
        if (status == DriveStatus::moreData) {
            size = static_cast<std::uint32_t>(base::narrow32(std::int64_t{size} * 2));
            share.assign(size, ' ');
            status = drives_.connection(localName, share.data(), size);
        }
        return status == DriveStatus::success ? share.substr(0, share.find('\0')) : std::string();
    } catch (const std::exception&) {
        return {};
    }
}

std::string tysSupport::getMappedDrivePath(std::string_view networkPath) {
    try {
        for (char letter = 'C'; letter <= 'Z'; ++letter) {
            const std::string drive(1, letter);
            const std::string share = getNetworkConnection(drive);
            const std::size_t shareLength = base::length(share);
            if (share.empty() || shareLength >= base::length(networkPath)) {
                continue;
            }
            // A plain prefix, not one of whole folder names: \\srv\data is one of \\srv\database too.
            const std::string_view beginning = base::left(networkPath, shareLength);
            if (base::toUpper(beginning) == base::toUpper(share)) {
                std::string path = drive + ":";
                path += networkPath.substr(beginning.size());
                return base::replaceAll(path, "/", "\\");
            }
        }
    } catch (const std::exception&) {
        return {};
    }
    return {};
}

}  // namespace infra
