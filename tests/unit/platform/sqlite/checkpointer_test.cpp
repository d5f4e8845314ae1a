// A long log is moved into the library on another thread, while the connection works on. Whatever the moment,
// every commit is in the library and its log, once.
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>

#include "unit/platform/sqlite/library_fixture.h"

namespace {

using std::chrono::milliseconds;

class CheckpointerTest : public LibraryTest {
  protected:
    CheckpointerTest() { open(); }
    ~CheckpointerTest() override { connection_.reset(); }

    void open(std::int64_t checkpointBytes = 256 * 1024) {
        small_.emplace(platform::SqliteOptions{milliseconds(50), 2048, checkpointBytes});
        connection_ = small_->open({path(), {}, {}, {}});
    }

    /// One document's worth of rows, in a transaction. Returns the rows that were added so far.
    int add(int rows = 20) {
        connection().beginTrans();
        for (int i = 0; i < rows; ++i) {
            run("INSERT INTO ascii_sentences(id_document_object, sentence_length, content, num_sentence) "
                "VALUES(1, 1, '" +
                std::string(500, 'x') + "', " + std::to_string(++added_) + ")");
        }
        connection().commitTrans();
        return added_;
    }

    [[nodiscard]] std::string logPath() const { return path() + "-wal"; }

    /// Bytes 12 to 15 of the log: how often it has begun anew.
    [[nodiscard]] std::string generation() const {
        std::ifstream log(logPath(), std::ios::binary);
        std::array<char, 16> header{};
        log.read(header.data(), header.size());
        return {header.begin() + 12, header.end()};
    }

    /// Adds until the log has begun anew; false when it does not.
    bool addUntilTheLogBeginsAnew() {
        const std::string before = generation();
        for (int i = 0; i < 20000; ++i) {
            add();
            if (generation() != before) {
                return true;
            }
        }
        return false;
    }

    /// What a crash at this moment would leave, opened by somebody else.
    std::string leftByCrash() {
        const std::string copy = folder_ / "copy.db";
        for (const char* suffix : {"", "-wal", "-shm"}) {
            std::filesystem::remove(copy + suffix);
        }
        // The file first: pages that get into it afterwards are in the log as well.
        for (const char* suffix : {"", "-wal"}) {
            std::filesystem::copy_file(path() + suffix, copy + suffix);
        }
        return contents(copy);
    }

    static std::string contents(const std::string& library) {
        platform::SqliteEngine other;
        const auto looking = other.open({library, {}, {}, {}});
        const std::string check = looking->query("PRAGMA integrity_check")->field("integrity_check").toText();
        const auto rows =
            looking->query("SELECT count(*) AS n, count(DISTINCT num_sentence) AS d FROM ascii_sentences");
        return check + " " + rows->field("n").toText() + " " + rows->field("d").toText();
    }

    static std::string whole(int rows) { return "ok " + std::to_string(rows) + " " + std::to_string(rows); }

    std::optional<platform::SqliteEngine> small_;
    int added_ = 0;
};

TEST_F(CheckpointerTest, TheLogBeginsAnewTimeAndAgain) {
    for (int times = 0; times < 5; ++times) {
        ASSERT_TRUE(addUntilTheLogBeginsAnew());
    }
    EXPECT_EQ(contents(path()), whole(added_));
}

TEST_F(CheckpointerTest, ALogThatGrowsWhileItIsMovedBeginsAnewAsWell) {
    connection_.reset();
    open(6LL * 1024 * 1024);
    for (int times = 0; times < 3; ++times) {
        const std::string before = generation();
        for (int i = 0; i < 20000 && generation() == before; ++i) {
            add(2000);
        }
        ASSERT_NE(generation(), before);
        ASSERT_EQ(leftByCrash(), whole(added_));
    }
}

TEST_F(CheckpointerTest, TwoLibrariesOfOneEngineAreMovedEachByItself) {
    const std::string other = folder_ / "other.db";
    platform::createLibrary(other);
    const auto second = small_->open({other, {}, {}, {}});
    for (int i = 0; i < 100; ++i) {
        add();
        second->execute(
            "INSERT INTO ascii_sentences(id_document_object, sentence_length, content, num_sentence) "
            "VALUES(1, 1, '" +
            std::string(20000, 'y') + "', " + std::to_string(i) + ")");
    }
    EXPECT_EQ(contents(path()), whole(added_));
    EXPECT_EQ(contents(other), whole(100));
}

TEST_F(CheckpointerTest, AFurtherConnectionIsOpenedWhileTheLogIsMoved) {
    for (int i = 0; i < 60; ++i) {
        add();
        const auto first = small_->open({path(), {}, {}, {}});
        const auto second = small_->open({path(), {}, {}, {}});
        EXPECT_EQ(second->query("SELECT count(*) AS n FROM ascii_sentences")->field("n").toInt32(), added_);
    }
}

TEST_F(CheckpointerTest, ACrashAtAnyMomentLeavesEveryCommit) {
    add();
    const std::string before = generation();
    for (int moment = 1; moment <= 120; ++moment) {
        const int rows = add();
        ASSERT_EQ(leftByCrash(), whole(rows)) << "moment " << moment;
    }
    EXPECT_NE(generation(), before);
}

TEST_F(CheckpointerTest, AClosedLibraryIsWholeWithoutItsLog) {
    // A thread is at work at some of these moments.
    for (int documents = 15; documents < 45; ++documents) {
        for (int i = 0; i < documents; ++i) {
            add();
        }
        connection_.reset();
        small_.reset();
        ASSERT_FALSE(std::filesystem::exists(logPath())) << documents;
        open();
    }
    EXPECT_EQ(contents(path()), whole(added_));
}

TEST_F(CheckpointerTest, SomebodyWhoReadsAnOldStateKeepsIt) {
    add();
    const auto other = connect();
    const auto reading = engine_.createRecordset();
    reading->open("SELECT num_sentence FROM ascii_sentences", *other, platform::CursorType::forwardOnly,
                  platform::LockType::readOnly);
    reading->moveNext();
    reading->moveNext();
    const int seen = added_;
    const std::string before = generation();
    for (int i = 0; i < 60; ++i) {
        add();
    }
    EXPECT_EQ(generation(), before);
    int rows = 2;
    for (; !reading->eof(); reading->moveNext()) {
        ++rows;
    }
    EXPECT_EQ(rows, seen);
    EXPECT_TRUE(addUntilTheLogBeginsAnew());
    EXPECT_EQ(contents(path()), whole(added_));
}

TEST_F(CheckpointerTest, OtherProgramsWriteMeanwhile) {
    const auto other = connect();
    for (int i = 0; i < 200; ++i) {
        add();
        other->execute("UPDATE ascii_sentences SET sentence_length = 2 WHERE num_sentence = " +
                       std::to_string(added_));
    }
    EXPECT_EQ(value("SELECT count(*) AS n FROM ascii_sentences WHERE sentence_length = 2", "n").toText(),
              "200");
    EXPECT_EQ(leftByCrash(), whole(added_));
}

TEST_F(CheckpointerTest, TwoConnectionsOfOneEngineTakeTurns) {
    const auto second = small_->open({path(), {}, {}, {}});
    for (int times = 0; times < 3; ++times) {
        const std::string before = generation();
        for (int i = 0; i < 20000 && generation() == before; ++i) {
            add();
            second->execute("UPDATE ascii_sentences SET sentence_length = 3 WHERE num_sentence = " +
                            std::to_string(added_));
        }
        ASSERT_NE(generation(), before);
    }
    EXPECT_EQ(value("SELECT count(*) AS n FROM ascii_sentences WHERE sentence_length = 3", "n").toText(),
              std::to_string(added_ / 20));
    EXPECT_EQ(contents(path()), whole(added_));
}

}  // namespace
