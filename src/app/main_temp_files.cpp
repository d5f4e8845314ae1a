// Main: deletes what earlier runs left behind. The register holds one value per file; its data is the path.
#include <exception>
#include <optional>

#include "app/Main.h"
#include "infra/retryFailing.h"
#include "platform/clock.h"
#include "platform/file_system.h"

namespace app {

using infra::LogLevel;
using platform::RootKey;
using platform::ValueType;

namespace {

bool isText(ValueType type) {
    return type == ValueType::text || type == ValueType::expandableText;
}

}  // namespace

void Main::ClearOldTempFiles() {
    try {
        services_.system.files.prepare();
        std::string name;
        std::optional<std::string> handled;
        ValueType type = ValueType::none;
        // Always the first value: each pass removes the one it has handled. A value without a path, or one
        // that cannot be removed, stays the first one, and the clean-up with it, until somebody mends the
        // register.
        while (services_.registry.EnumValues(RootKey::currentUser, infra::temporaryFilesKey, 0, name, type)) {
            if (handled == name) {
                services_.system.clock.pause(infra::retryPause);
            }
            handled = name;
            const std::string path = isText(type) ? services_.registry.GetSettingString(
                                                        RootKey::currentUser, infra::temporaryFilesKey, name)
                                                  : std::string();
            if (path.empty()) {
                continue;
            }
            WriteLog("Main.ClearOldTempFiles - Deleting: " + path, LogLevel::interest);
            services_.registry.DeleteValue(RootKey::currentUser, infra::temporaryFilesKey, name);
            deleteTemporaryFile(path);
        }
    } catch (const std::exception& error) {
        WriteLog("Main.ClearOldTempFiles - " + std::string(error.what()), LogLevel::errorReport);
    }
}

void Main::deleteTemporaryFile(const std::string& path) {
    try {
        services_.system.files.deleteFile(path);
    } catch (const std::exception&) {
        WriteLog("Main.ClearOldTempFiles - File not found: " + path, LogLevel::interest);
    }
}

}  // namespace app
