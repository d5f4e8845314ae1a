#include "sdk/file_fetch.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <filesystem>
#include <string>
#include <vector>

#include "fakes/temporary_folder.h"

namespace {

using Names = std::vector<std::string>;

/// Tells the names of the files in a folder that somebody has opened for reading and closed again.
class ReadFiles {
  public:
    explicit ReadFiles(const std::string& folder) {
        inotify_add_watch(events_, folder.c_str(), IN_CLOSE_NOWRITE);
    }
    ReadFiles(const ReadFiles&) = delete;
    ReadFiles& operator=(const ReadFiles&) = delete;
    ~ReadFiles() { close(events_); }

    /// Those since the last time.
    [[nodiscard]] Names take() const {
        Names names;
        // One event at a time: the room would do for several short ones.
        constexpr std::size_t room = sizeof(inotify_event) + 16;
        alignas(inotify_event) std::array<char, sizeof(inotify_event) + NAME_MAX + 1> bytes{};
        while (read(events_, bytes.data(), room) > 0) {
            const auto* event = reinterpret_cast<const inotify_event*>(bytes.data());
            names.emplace_back(event->len > 0 ? event->name : ".");
        }
        return names;
    }

  private:
    int events_ = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
};

/// The descriptor that the system gives next.
int nextDescriptor() {
    const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(next);
    return next;
}

class FetchFile : public testing::Test {
  protected:
    fakes::TemporaryFolder folder;
    ReadFiles readFiles{folder.path()};
};

TEST_F(FetchFile, OpensARegularFileAndClosesItAgain) {
    const std::string document = folder.write("document", "The river rises early.");
    const std::string empty = folder.write("empty", "");
    const int before = nextDescriptor();
    sdk::fetchFile(document);
    EXPECT_EQ(readFiles.take(), Names{"document"});
    sdk::fetchFile(empty);
    EXPECT_EQ(readFiles.take(), Names{"empty"});
    EXPECT_EQ(nextDescriptor(), before);
}

TEST_F(FetchFile, LeavesAloneWhatIsNoFile) {
    std::filesystem::create_directory(folder / "inner");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink(folder / "nowhere", folder / "link");
    folder.write("document", "text");
    for (const std::string& path :
         {folder / "inner", folder / "pipe", folder / "link", folder / "missing", folder / "document/inner",
          std::string("/dev/tty"), std::string(R"(X:\docs\a.doc)"), std::string(),
          std::string(100'000, 'x')}) {
        sdk::fetchFile(path);
        EXPECT_EQ(readFiles.take(), Names{}) << path.substr(0, 100);
    }
}

TEST_F(FetchFile, TellsNoErrorForAFileThatCannotBeOpened) {
    const std::string secret = folder.write("secret", "text");
    ASSERT_EQ(chmod(secret.c_str(), 0), 0);
    const int before = nextDescriptor();
    sdk::fetchFile(secret);  // opened after all for a user who may do everything
    EXPECT_EQ(nextDescriptor(), before);
}

}  // namespace
