#include "infra/tysDataBase.h"

#include <array>
#include <exception>
#include <optional>

#include "base/text.h"
#include "platform/process.h"
#include "platform/ui.h"

namespace infra {
namespace {

std::string fromCodes(const auto& codes) {
    std::string text;
    for (const int code : codes) {
        text += static_cast<char>(code);
    }
    return text;
}

/// The date parts of what is a date or reads as one.
std::optional<base::CivilTime> datePartsOf(const base::Variant& sysDate) {
    if (!sysDate.isDate()) {
        return std::nullopt;
    }
    return sysDate.toDate().civil();
}

std::string twoDigits(int number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

}  // namespace

tysDataBase::tysDataBase(Services& services) : services_(services) {}

void tysDataBase::initialise() {
    using platform::RootKey;
    platform::ConnectionSettings settings;
    settings.dataSource =
        services_.registry.GetSettingString(RootKey::currentUser, serviceKey, "DataBasePath");
    settings.systemDatabase =
        services_.registry.GetSettingString(RootKey::currentUser, serviceKey, "DataBaseSecurityFile");
    settings.user = userName();
    settings.password = password();
    try {
        connection_ = base::ObjectRef<platform::Connection>(services_.system.database.open(settings));
    } catch (const std::exception& error) {
        // The doubled dash between the two paths belongs to the line as administrators know it from the log.
        services_.support.WriteLog("db:init: " + std::string(error.what()) + "-" + settings.dataSource + "-" +
                                       "-" + settings.systemDatabase + "-",
                                   LogLevel::errorReport);
        services_.system.toolkit.messageBox("Unable to connect to database: \r\n" + settings.dataSource +
                                            "\r\n\r\nPlease contact your Tessaly system administrator.");
        services_.system.process.endProcess(platform::ExitStatus::failed);
    }
}

base::ObjectRef<platform::Connection> tysDataBase::getConnection() const {
    return connection_;
}

void tysDataBase::finalise() {
    connection_->close();
    connection_ = {};
}

std::unique_ptr<platform::Recordset> tysDataBase::openRecordset(std::string_view statement,
                                                                platform::CursorType cursor,
                                                                platform::LockType lock) const {
    auto recordset = services_.system.database.createRecordset();
    recordset->open(statement, *connection_, cursor, lock);
    return recordset;
}

std::string tysDataBase::sanitise(std::string_view s) const {
    return base::replaceAll(s, "'", "''");  // what is not cut need not be measured
}

std::string tysDataBase::sanitiseToLength(std::string_view s, std::size_t length) const {
    // The cut comes first, so that a doubled quote is never torn apart at the end.
    return base::replaceAll(base::left(s, length), "'", "''");
}

std::string tysDataBase::ausDateTime(const base::Variant& sysDate) const {
    const auto date = datePartsOf(sysDate);
    if (!date) {
        return {};
    }
    return std::to_string(date->day) + "/" + std::to_string(date->month) + "/" + std::to_string(date->year) +
           " " + std::to_string(date->hour) + ":" + twoDigits(date->minute);
}

std::string tysDataBase::explicitDateTime(const base::Variant& sysDate) const {
    if (!sysDate.isDate()) {
        return {};
    }
    std::string text = sysDate.toDate().longText();
    return text.insert(text.find(' '), ",");
}

std::string tysDataBase::usDateTime(const base::Variant& sysDate) const {
    const auto date = datePartsOf(sysDate);
    if (!date) {
        return {};
    }
    return std::to_string(date->month) + "/" + std::to_string(date->day) + "/" + std::to_string(date->year) +
           " " + std::to_string(date->hour) + ":" + std::to_string(date->minute) + ":" +
           std::to_string(date->second);
}

// Both are put together when they are asked for, so that neither stands in the program file as text.
std::string tysDataBase::userName() {
    return fromCodes(std::array{116, 121, 117, 115, 101, 114});
}

std::string tysDataBase::password() {
    return fromCodes(std::array{84, 51, 115, 115, 97, 108, 121, 35, 57, 50});
}

}  // namespace infra
