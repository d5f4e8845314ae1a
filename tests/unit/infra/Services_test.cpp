#include "infra/Services.h"

#include <gtest/gtest.h>

#include "unit/infra/parts.h"

namespace {

TEST(Services, LetTheSettingsReportTheirErrorsToTheLog) {
    Parts parts;
    infra::Services services(parts.system());
    services.support.setLogFilePath(parts.folder / "service.log");
    services.support.LoadLogLevels();
    parts.settings.conversionFails = true;
    services.registry.SaveSettingLong(platform::RootKey::currentUser, infra::indexerKey, "number", 1);
    EXPECT_EQ(parts.folder.read("service.log"),
              "16 Nov 2026 01:47:03: Error: tysRegistry.SaveSettingLong - text cannot be converted\r\n");
}

TEST(Services, ReadSettingsAndDrivesFromTheSystemThatTheyWereGiven) {
    Parts parts;
    parts.settings.put(infra::serviceKey, "DataBasePath", "library.db");
    parts.drives.shares["X:"] = R"(\\server\share)";
    infra::Services services(parts.system());
    EXPECT_EQ(
        services.registry.GetSettingString(platform::RootKey::currentUser, infra::serviceKey, "DataBasePath"),
        "library.db");
    EXPECT_EQ(services.support.getNetworkConnection("X"), R"(\\server\share)");
}

}  // namespace
