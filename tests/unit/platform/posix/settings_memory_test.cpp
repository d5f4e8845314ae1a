// What a settings file remembers must never be told once somebody has changed it.
#include "platform/posix/settings_memory.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "fakes/temporary_folder.h"
#include "platform/posix/settings_file.h"

namespace {

using platform::KeyHandle;
using platform::RootKey;
using platform::SettingsStatus;
using platform::ValueType;
using platform::posix::SettingsFile;
using platform::posix::SettingsMemory;
using platform::posix::SettingsState;
using platform::posix::SettingsValue;

constexpr const char* key = R"(software\maker\service)";

bool save(SettingsFile& file, const std::string& name, const std::string& text) {
    KeyHandle handle = KeyHandle::none;
    if (file.createKey(RootKey::currentUser, key, handle) != SettingsStatus::success) {
        return false;
    }
    const SettingsStatus status =
        file.setValue(handle, name, ValueType::text, reinterpret_cast<const std::uint8_t*>(text.data()),
                      static_cast<std::uint32_t>(text.size()));
    file.closeKey(handle);
    return status == SettingsStatus::success;
}

/// The text under a name as the service asks for it, or "(status)".
std::string ask(SettingsFile& file, const std::string& name) {
    KeyHandle handle = KeyHandle::none;
    SettingsStatus status = file.openKey(RootKey::currentUser, key, handle);
    std::string text;
    if (status == SettingsStatus::success) {
        ValueType type{};
        std::uint32_t size = 0;
        status = file.queryValue(handle, name, type, nullptr, size);
        if (status == SettingsStatus::success) {
            text.resize(size);
            status = file.queryValue(handle, name, type, reinterpret_cast<std::uint8_t*>(text.data()), size);
        }
        file.closeKey(handle);
    }
    return status == SettingsStatus::success ? text : "(" + std::to_string(static_cast<int>(status)) + ")";
}

/// Another process that does something with the file each time it is told to. It is to be made before this
/// process opens the file: what is open must not be carried into a child.
class OtherProcess {
  public:
    using Turn = std::function<bool(int)>;  // with the number of the turn

    explicit OtherProcess(const Turn& turn) {
        EXPECT_EQ(pipe(orders_.data()), 0);
        EXPECT_EQ(pipe(answers_.data()), 0);
        child_ = fork();
        if (child_ == 0) {
            static_cast<void>(close(orders_[1]));
            char order = 0;
            for (int number = 1; read(orders_[0], &order, 1) == 1; ++number) {
                const char answer = turn(number) ? 'y' : 'n';
                if (write(answers_[1], &answer, 1) != 1) {
                    break;
                }
            }
            _exit(0);
        }
    }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;
    ~OtherProcess() {
        for (const int descriptor : {orders_[0], orders_[1], answers_[0], answers_[1]}) {
            static_cast<void>(close(descriptor));
        }
        int status = 0;
        EXPECT_EQ(waitpid(child_, &status, 0), child_);
    }

    [[nodiscard]] bool takeTurn() {
        const char order = 'o';
        char answer = 'n';
        return write(orders_[1], &order, 1) == 1 && read(answers_[0], &answer, 1) == 1 && answer == 'y';
    }

  private:
    std::array<int, 2> orders_{};
    std::array<int, 2> answers_{};
    pid_t child_ = 0;
};

TEST(SettingsMemory, IsNotToldOnceAnotherProcessHasWritten) {
    const fakes::TemporaryFolder folder;
    const std::string path = folder / "settings.db";
    OtherProcess other([&](int turn) {
        static SettingsFile file(path);
        return save(file, "name", "text " + std::to_string(turn));
    });
    SettingsFile file(path);
    ASSERT_TRUE(save(file, "name", "own"));
    for (int turn = 1; turn <= 20; ++turn) {
        EXPECT_EQ(ask(file, "own"), turn == 1 ? "(2)" : "beside " + std::to_string(turn - 1));
        ASSERT_TRUE(other.takeTurn());
        EXPECT_EQ(ask(file, "name"), "text " + std::to_string(turn));
        ASSERT_TRUE(save(file, "own", "beside " + std::to_string(turn)));
        EXPECT_EQ(ask(file, "name"), "text " + std::to_string(turn));
    }
}

TEST(SettingsMemory, IsNotToldOnceAProcessHasWrittenThatOpenedAndClosedTheFile) {
    const fakes::TemporaryFolder folder;
    const std::string path = folder / "settings.db";
    OtherProcess other([&](int turn) {
        SettingsFile file(path);
        return save(file, "name", "text " + std::to_string(turn));
    });
    SettingsFile file(path);
    EXPECT_EQ(ask(file, "name"), "(2)");
    ASSERT_TRUE(other.takeTurn());
    EXPECT_EQ(ask(file, "name"), "text 1");
    ASSERT_TRUE(other.takeTurn());
    EXPECT_EQ(ask(file, "name"), "text 2");
}

TEST(SettingsMemory, IsNotToldOnceAnotherProcessHasTakenTheLogIntoTheFile) {
    const fakes::TemporaryFolder folder;
    const std::string path = folder / "settings.db";
    // The log is taken in and started anew about every five hundred: each writes the eight pages of a text.
    constexpr int manyCommits = 700;
    const auto rest = [](int i) { return std::string(8000, i % 2 == 0 ? '.' : ':'); };
    OtherProcess other([&](int turn) {
        SettingsFile file(path);
        bool stored = true;
        for (int i = 0; i < manyCommits; ++i) {
            stored = stored && save(file, "name", std::to_string(turn) + "." + std::to_string(i) + rest(i));
        }
        return stored;
    });
    SettingsFile file(path);
    ASSERT_TRUE(save(file, "name", "own"));
    ASSERT_TRUE(save(file, "beside", "stays"));
    for (int turn = 1; turn <= 3; ++turn) {
        EXPECT_EQ(ask(file, "beside"), "stays");
        const auto before = std::filesystem::last_write_time(path);
        ASSERT_TRUE(other.takeTurn());
        EXPECT_GT(std::filesystem::last_write_time(path), before) << "the log was not taken in";
        EXPECT_EQ(ask(file, "name"), std::to_string(turn) + ".699" + rest(699));
        EXPECT_EQ(ask(file, "beside"), "stays");
    }
}

TEST(SettingsMemory, IsNotToldOnceAnotherProcessHasDeletedAValueOrAKey) {
    const fakes::TemporaryFolder folder;
    const std::string path = folder / "settings.db";
    OtherProcess other([&](int turn) {
        SettingsFile file(path);
        KeyHandle handle = KeyHandle::none;
        return turn == 1 ? file.openKey(RootKey::currentUser, key, handle) == SettingsStatus::success &&
                               file.deleteValue(handle, "name") == SettingsStatus::success
                         : file.deleteKey(key) == SettingsStatus::success;
    });
    SettingsFile file(path);
    ASSERT_TRUE(save(file, "name", "text"));
    ASSERT_TRUE(save(file, "other", "text"));
    EXPECT_EQ(ask(file, "name"), "text");
    KeyHandle handle = KeyHandle::none;
    ASSERT_EQ(file.openKey(RootKey::currentUser, key, handle), SettingsStatus::success);
    ASSERT_TRUE(other.takeTurn());
    EXPECT_EQ(ask(file, "name"), "(2)");
    EXPECT_EQ(ask(file, "other"), "text");
    ASSERT_TRUE(other.takeTurn());
    KeyHandle gone = KeyHandle::none;
    EXPECT_EQ(file.openKey(RootKey::currentUser, key, gone), SettingsStatus::notFound);
    ValueType type{};
    std::uint32_t size = 0;
    EXPECT_EQ(file.queryValue(handle, "other", type, nullptr, size), SettingsStatus::notFound);
    EXPECT_EQ(file.setValue(handle, "other", ValueType::text, nullptr, 0), SettingsStatus::notFound);
}

TEST(SettingsMemory, IsNotToldOnceAnotherConnectionOfThisProcessHasWritten) {
    const fakes::TemporaryFolder folder;
    SettingsFile one(folder / "settings.db");
    SettingsFile other(folder / "settings.db");
    for (int turn = 1; turn <= 10; ++turn) {
        ASSERT_TRUE(save(one, "name", "one " + std::to_string(turn)));
        EXPECT_EQ(ask(other, "name"), "one " + std::to_string(turn));
        ASSERT_TRUE(save(other, "NAME", "other " + std::to_string(turn)));
        EXPECT_EQ(ask(one, "name"), "other " + std::to_string(turn));
    }
}

TEST(SettingsMemory, IsNotToldWhenAWriteOfItsOwnFollowsTheWriteOfAnother) {
    const fakes::TemporaryFolder folder;
    SettingsFile one(folder / "settings.db");
    SettingsFile other(folder / "settings.db");
    ASSERT_TRUE(save(one, "name", "before"));
    EXPECT_EQ(ask(one, "name"), "before");
    ASSERT_TRUE(save(other, "name", "after"));
    ASSERT_TRUE(save(one, "beat", "1"));
    EXPECT_EQ(ask(one, "name"), "after");
    EXPECT_EQ(ask(one, "beat"), "1");
}

TEST(SettingsMemory, KnowsWhatItsOwnWritesChanged) {
    const fakes::TemporaryFolder folder;
    SettingsFile file(folder / "settings.db");
    EXPECT_EQ(ask(file, "name"), "(2)");
    ASSERT_TRUE(save(file, "name", "first"));
    EXPECT_EQ(ask(file, "beside"), "(2)");
    EXPECT_EQ(ask(file, "name"), "first");
    ASSERT_TRUE(save(file, "NAME", ""));
    EXPECT_EQ(ask(file, "name"), "");
    ASSERT_TRUE(save(file, "beside", "new"));
    EXPECT_EQ(ask(file, "beside"), "new");
    KeyHandle handle = KeyHandle::none;
    ASSERT_EQ(file.openKey(RootKey::currentUser, key, handle), SettingsStatus::success);
    EXPECT_EQ(file.deleteValue(handle, "name"), SettingsStatus::success);
    EXPECT_EQ(ask(file, "name"), "(2)");
    EXPECT_EQ(file.deleteKey(key), SettingsStatus::success);
    EXPECT_EQ(ask(file, "beside"), "(2)");
}

TEST(SettingsMemory, IsNotToldOnceTheFileWasReplacedOrDeleted) {
    const fakes::TemporaryFolder folder;
    const std::string path = folder / "settings.db";
    SettingsFile file(path);
    ASSERT_TRUE(save(file, "name", "old"));
    EXPECT_EQ(ask(file, "name"), "old");
    {
        SettingsFile other(folder / "new.db");
        ASSERT_TRUE(save(other, "name", "new"));
    }
    std::filesystem::rename(folder / "new.db", path);
    EXPECT_EQ(ask(file, "name"), "new");
    std::filesystem::remove(path);
    EXPECT_EQ(ask(file, "name"), "(2)");
    SettingsFile other(path);
    ASSERT_TRUE(save(other, "name", "made anew"));
    EXPECT_EQ(ask(file, "name"), "made anew");
}

TEST(SettingsMemory, IsNotKeptInAPlaceThatCannotBeWritten) {
    const fakes::TemporaryFolder folder;
    const std::string path = folder / "settings.db";
    {
        SettingsFile writer(path);
        ASSERT_TRUE(save(writer, "name", "text"));
    }
    constexpr uid_t nobody = 65534;
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    ASSERT_EQ(chmod(folder.path().c_str(), 0555), 0);
    const auto asNobody = [&](SettingsFile& file) {
        const bool given = geteuid() == 0 && seteuid(nobody) == 0;
        std::string text = ask(file, "name");
        EXPECT_TRUE(!given || seteuid(0) == 0);
        return text;
    };
    SettingsFile reader(path);
    EXPECT_EQ(asNobody(reader), "text");
    EXPECT_EQ(asNobody(reader), "text");
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    {
        SettingsFile writer(folder / "other.db");
        ASSERT_TRUE(save(writer, "name", "a text of another length"));
    }
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    std::filesystem::copy_file(folder / "other.db", path, std::filesystem::copy_options::overwrite_existing);
    std::filesystem::permissions(path, std::filesystem::perms{0444});
    ASSERT_EQ(chmod(folder.path().c_str(), 0555), 0);
    EXPECT_EQ(asNobody(reader), "a text of another length");
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
}

SettingsState stateAfter(std::uint32_t commits) {
    SettingsState state;
    state.header = {3007000, 0, commits, 1, commits, 6, commits, commits, 5, 6, commits, commits};
    return state;
}

TEST(SettingsMemory, ForgetsEverythingAtAnotherStateAndWithoutOne) {
    SettingsMemory memory;
    memory.rememberKey("key", true);
    EXPECT_EQ(memory.key("key"), std::nullopt);
    memory.meet(stateAfter(1));
    memory.rememberKey("key", true);
    memory.rememberValue("key", "name", std::nullopt);
    memory.meet(stateAfter(1));
    EXPECT_EQ(memory.key("key"), true);
    ASSERT_NE(memory.value("key", "name"), nullptr);
    EXPECT_FALSE(memory.value("key", "name")->has_value());
    memory.meet(stateAfter(2));
    EXPECT_EQ(memory.key("key"), std::nullopt);
    EXPECT_EQ(memory.value("key", "name"), nullptr);
    memory.rememberKey("key", false);
    EXPECT_EQ(memory.key("key"), false);
    memory.meet(std::nullopt);
    EXPECT_EQ(memory.key("key"), std::nullopt);
}

TEST(SettingsMemory, ForgetsWhenTheFileItselfWasWritten) {
    SettingsMemory memory;
    memory.meet(stateAfter(1));
    memory.rememberKey("key", true);
    SettingsState written = stateAfter(1);
    written.modified = 1;
    memory.meet(written);
    EXPECT_EQ(memory.key("key"), std::nullopt);
}

TEST(SettingsMemory, FollowsOneCommitOfTheSameLogOnly) {
    EXPECT_TRUE(stateAfter(2).isNextAfter(stateAfter(1)));
    EXPECT_FALSE(stateAfter(1).isNextAfter(stateAfter(1)));
    EXPECT_FALSE(stateAfter(3).isNextAfter(stateAfter(1)));
    SettingsState restarted = stateAfter(2);
    restarted.header.at(8) = 7;
    EXPECT_FALSE(restarted.isNextAfter(stateAfter(1)));
    EXPECT_FALSE(SettingsState().isWritten());
    EXPECT_TRUE(stateAfter(1).isWritten());
}

TEST(SettingsMemory, KeepsTheFirstSpellingOfANameThatIsStoredAgain) {
    SettingsMemory memory;
    memory.meet(stateAfter(1));
    memory.rememberValue("key", "name", SettingsValue{"Name", ValueType::text, "old"});
    memory.rememberValue("key", "other", SettingsValue{"other", ValueType::text, "stays"});
    memory.follow(stateAfter(2), "key", "name", {"NAME", ValueType::number, "new"});
    memory.meet(stateAfter(2));
    ASSERT_NE(memory.value("key", "name"), nullptr);
    const SettingsValue now = memory.value("key", "name")->value();
    EXPECT_EQ(now.name, "Name");
    EXPECT_EQ(now.type, ValueType::number);
    EXPECT_EQ(now.data, "new");
    EXPECT_NE(memory.value("key", "other"), nullptr);
}

TEST(SettingsMemory, KeepsNoLargeValueAndNoMoreThanItsShare) {
    SettingsMemory memory;
    memory.meet(stateAfter(1));
    memory.rememberValue("key", "large", SettingsValue{"large", ValueType::binary, std::string(10000, 'x')});
    EXPECT_EQ(memory.value("key", "large"), nullptr);
    constexpr int many = 2000;
    int kept = 0;
    for (int i = 0; i < many; ++i) {
        const std::string name = std::to_string(i);
        memory.rememberValue("key", name, SettingsValue{name, ValueType::text, std::string(1000, 'x')});
        EXPECT_NE(memory.value("key", name), nullptr);
    }
    for (int i = 0; i < many; ++i) {
        kept += memory.value("key", std::to_string(i)) != nullptr ? 1 : 0;
    }
    EXPECT_LT(kept, 300);
}

}  // namespace
