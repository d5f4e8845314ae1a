// The log is written in large pieces. It must be whole in the file whenever a commit has ended: other
// programs read it then, and it is all that is left after a crash.
#include <filesystem>

#include "unit/platform/sqlite/library_fixture.h"

namespace {

class LogVfsTest : public LibraryTest {
  protected:
    void add(int first, int last, std::size_t length) {
        for (int i = first; i <= last; ++i) {
            run("INSERT INTO ascii_sentences(id_document_object, sentence_length, content, num_sentence) "
                "VALUES(1," +
                std::to_string(length) + ",'" + std::string(length, 'x') + "'," + std::to_string(i) + ")");
        }
    }

    /// What a crash at this moment would leave, opened by somebody else: the sum of a column, or what is
    /// wrong with the library.
    std::string leftByCrash(const std::string& column) {
        const std::string copy = folder_ / "copy.db";
        for (const char* suffix : {"", "-wal", "-shm"}) {
            std::filesystem::remove(copy + suffix);
        }
        for (const char* suffix : {"", "-wal"}) {
            std::filesystem::copy_file(path() + suffix, copy + suffix);
        }
        platform::SqliteEngine other;
        const auto looking = other.open({copy, {}, {}, {}});
        const std::string check = looking->query("PRAGMA integrity_check")->field("integrity_check").toText();
        const auto sum =
            looking->query("SELECT sum(" + column + ") AS total FROM ascii_sentences")->field("total");
        return check == "ok" ? (sum.isNull() ? "0" : sum.toText()) : check;
    }

    std::string seenByOthers(const std::string& column) {
        platform::SqliteEngine other;
        const auto sum = other.open({path(), {}, {}, {}})
                             ->query("SELECT sum(" + column + ") AS total FROM ascii_sentences")
                             ->field("total");
        return sum.isNull() ? "0" : sum.toText();
    }
};

TEST_F(LogVfsTest, EveryCommitIsInTheFileWhenItEnds) {
    int last = 0;
    for (const int count : {1, 3, 40, 1, 400, 2, 1000, 1}) {
        connection().beginTrans();
        add(last + 1, last + count, 300);
        connection().commitTrans();
        last += count;
        const std::string expected = std::to_string(last * 300);
        EXPECT_EQ(leftByCrash("sentence_length"), expected);
        EXPECT_EQ(seenByOthers("sentence_length"), expected);
    }
}

TEST_F(LogVfsTest, EveryStatementOutsideATransactionIsInTheFileWhenItEnds) {
    for (int i = 1; i <= 20; ++i) {
        add(i, i, 10);
        EXPECT_EQ(leftByCrash("sentence_length"), std::to_string(i * 10));
    }
}

TEST_F(LogVfsTest, ATransactionLargerThanTheCacheIsWhole) {
    for (const int round : {1, 2}) {
        run("DELETE * FROM ascii_sentences");
        connection().beginTrans();
        add(1, 6000, 700);
        run("UPDATE ascii_sentences SET sentence_length = 1 WHERE num_sentence < 500");
        add(6001, 12000, 700);
        run("UPDATE ascii_sentences SET sentence_length = 2 WHERE num_sentence < 700");
        add(12001, 14000, 700);
        connection().commitTrans();
        const std::string expected = std::to_string(699 * 2 + (14000 - 699) * 700);
        EXPECT_EQ(leftByCrash("sentence_length"), expected) << round;
        EXPECT_EQ(seenByOthers("sentence_length"), expected) << round;
    }
}

TEST_F(LogVfsTest, ARolledBackTransactionLeavesTheLogWhole) {
    connection().beginTrans();
    add(1, 10, 100);
    connection().commitTrans();
    connection().beginTrans();
    add(11, 6000, 700);
    EXPECT_EQ(leftByCrash("sentence_length"), "1000");
    connection().rollbackTrans();
    EXPECT_EQ(leftByCrash("sentence_length"), "1000");
    connection().beginTrans();
    add(11, 20, 100);
    connection().commitTrans();
    EXPECT_EQ(leftByCrash("sentence_length"), "2000");
    EXPECT_EQ(seenByOthers("sentence_length"), "2000");
}

TEST_F(LogVfsTest, WhatWasRolledBackIsNeverWrittenOverWhatOthersCommit) {
    connection().beginTrans();
    add(1, 6000, 700);
    connection().commitTrans();
    connection().query("PRAGMA wal_checkpoint(TRUNCATE)");
    for (const bool closes : {false, true}) {
        connection().beginTrans();
        run("UPDATE ascii_sentences SET sentence_length = 1");
        connection().rollbackTrans();
        platform::SqliteEngine other;
        other.open({path(), {}, {}, {}})->execute("UPDATE ascii_sentences SET sentence_length = 7");
        if (closes) {
            connection_.reset();
        }
        EXPECT_EQ(value("SELECT sum(sentence_length) AS total FROM ascii_sentences", "total").toText(),
                  "42000");
        EXPECT_EQ(leftByCrash("sentence_length"), "42000");
        EXPECT_EQ(seenByOthers("sentence_length"), "42000");
    }
}

TEST_F(LogVfsTest, TwoConnectionsWriteToOneLogInTurn) {
    const auto other = connect();
    for (int i = 1; i <= 30; ++i) {
        add(i, i, 100);
        other->execute("UPDATE ascii_sentences SET sentence_length = 7 WHERE num_sentence = " +
                       std::to_string(i));
        if (i % 10 == 0) {
            connect()->query("PRAGMA wal_checkpoint(RESTART)");
        }
        EXPECT_EQ(leftByCrash("sentence_length"), std::to_string(i * 7));
    }
}

}  // namespace
