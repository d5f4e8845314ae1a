#include <filesystem>

#include "infra/retryFailing.h"
#include "unit/app/window_fixture.h"

namespace {

using platform::SettingsStatus;
using testing::ElementsAre;
using testing::IsEmpty;

class TemporaryFiles : public Window {
  protected:
    /// Registers a file; it exists when it has content.
    std::string add(const std::string& name, const std::string& content) {
        const std::string path = content.empty() ? folder / name : folder.write(name, content);
        settings.put(infra::temporaryFilesKey, name, path);
        return path;
    }
    void remove(std::string_view name) {
        services.registry.DeleteValue(platform::RootKey::currentUser, infra::temporaryFilesKey, name);
    }
    bool registerIsEmpty() {
        std::string name;
        platform::ValueType type{};
        return !services.registry.EnumValues(platform::RootKey::currentUser, infra::temporaryFilesKey, 0,
                                             name, type);
    }
};

// No window takes part in it.
INSTANTIATE_TEST_SUITE_P(Toolkits, TemporaryFiles, testing::Values(headlessToolkit), toolkitName);

TEST_P(TemporaryFiles, WithoutARegisterNothingIsLogged) {
    create();
    window->ClearOldTempFiles();
    EXPECT_THAT(log(), IsEmpty());
}

TEST_P(TemporaryFiles, WithAnEmptyRegisterNothingIsLogged) {
    add("1", "x");
    remove("1");
    create();
    window->ClearOldTempFiles();
    EXPECT_THAT(log(), IsEmpty());
}

TEST_P(TemporaryFiles, AllAreDeletedAndTheMissingOneIsNamed) {
    const std::string first = add("1", "x");
    const std::string missing = add("2", "");
    const std::string third = add("3", "x");
    create();
    window->ClearOldTempFiles();
    EXPECT_THAT(log(), ElementsAre("Interest: Main.ClearOldTempFiles - Deleting: " + first,
                                   "Interest: Main.ClearOldTempFiles - Deleting: " + missing,
                                   "Interest: Main.ClearOldTempFiles - File not found: " + missing,
                                   "Interest: Main.ClearOldTempFiles - Deleting: " + third));
    EXPECT_FALSE(std::filesystem::exists(first));
    EXPECT_FALSE(std::filesystem::exists(third));
    EXPECT_TRUE(registerIsEmpty());
}

TEST_P(TemporaryFiles, AReadOnlyFileIsDeletedAllTheSame) {
    const std::string path = add("1", "x");
    std::filesystem::permissions(path, std::filesystem::perms::owner_read);
    create();
    window->ClearOldTempFiles();
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(log().size(), 1U);
}

TEST_P(TemporaryFiles, AFolderStaysAndCountsAsNotFound) {
    std::filesystem::create_directory(folder / "sub");
    add("sub", "");
    create();
    window->ClearOldTempFiles();
    EXPECT_TRUE(std::filesystem::exists(folder / "sub"));
    EXPECT_EQ(log().back(), "Interest: Main.ClearOldTempFiles - File not found: " + (folder / "sub"));
    EXPECT_TRUE(registerIsEmpty());
}

TEST_P(TemporaryFiles, AFileSystemThatCannotBeReadiedEndsTheCleanUpAndStartUpGoesOn) {
    const std::string path = add("1", "x");
    files.prepareFails = true;
    start();
    EXPECT_TRUE(std::filesystem::exists(path));
    EXPECT_THAT(log(), testing::Contains("Error: Main.ClearOldTempFiles - no file system object"));
    EXPECT_EQ(status().front(), "Running.");
}

TEST_P(TemporaryFiles, AValueThatIsNoTextIsMetAgainUntilItIsGone) {
    settings.put(infra::temporaryFilesKey, "number", 1);
    const std::string path = add("1", "x");
    clock.onPause = [this, path] {
        EXPECT_TRUE(std::filesystem::exists(path));
        if (clock.pauses == 20) {
            remove("number");
        }
    };
    create();
    window->ClearOldTempFiles();
    EXPECT_EQ(clock.pauses, 20);
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_P(TemporaryFiles, AnEmptyTextIsMetAgainUntilItIsGone) {
    settings.put(infra::temporaryFilesKey, "empty", "");
    clock.onPause = [this] {
        if (clock.pauses == 20) {
            remove("empty");
        }
    };
    create();
    window->ClearOldTempFiles();
    EXPECT_EQ(clock.pauses, 20);
    EXPECT_THAT(log(), IsEmpty());
}

TEST_P(TemporaryFiles, AValueThatCannotBeDeletedIsMetAgainAfterAPause) {
    const std::string path = add("1", "x");
    settings.deleteFailsWith = SettingsStatus::accessDenied;
    clock.onPause = [this] {
        EXPECT_EQ(clock.paused, clock.pauses * infra::retryPause);
        if (clock.pauses == 3) {
            settings.deleteFailsWith.reset();
        }
    };
    create();
    window->ClearOldTempFiles();
    EXPECT_EQ(clock.pauses, 3);
    EXPECT_EQ(log().size(), 7U);  // the file was there in the first pass alone
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_TRUE(registerIsEmpty());
}

TEST_P(TemporaryFiles, AreClearedDuringStartUpBeforeTheLibraryIsOpened) {
    const std::string path = add("1", "x");
    settings.put(infra::serviceKey, "DataBasePath", folder / "nowhere.db");
    EXPECT_THROW(start(), fakes::ProcessEnded);
    EXPECT_FALSE(std::filesystem::exists(path));
}

}  // namespace
