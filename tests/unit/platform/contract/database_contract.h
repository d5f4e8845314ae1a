// What every database engine must do with the library's own tables. A test program instantiates the suite
// with a function that makes a fresh library:
//   INSTANTIATE_TEST_SUITE_P(Sqlite, DatabaseContract, ::testing::Values(&sqliteLibrary));
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/runtime_error.h"
#include "base/text.h"
#include "platform/database.h"
#include "unit/platform/contract/contract_library.h"

namespace contract {

using platform::CursorType;
using platform::LockType;

class DatabaseContract : public ::testing::TestWithParam<LibraryMaker> {
  protected:
    static constexpr std::string_view insertWord = "INSERT INTO root_word ( word ) VALUES( 'river')";

    void SetUp() override {
        made_ = GetParam()();
        if (made_.library == nullptr) {
            GTEST_SKIP() << made_.reason;
        }
        connection_ = connect();
    }

    std::unique_ptr<platform::Connection> connect() {
        return made_.library->engine().open(made_.library->settings());
    }

    void run(std::string_view statement) { connection_->execute(statement); }

    void words(int count) {
        for (int i = 1; i <= count; ++i) {
            run("INSERT INTO root_word ( word ) VALUES( 'w" + std::to_string(i) + "')");
        }
    }

    std::unique_ptr<platform::Recordset> open(std::string_view statement,
                                              CursorType cursor = CursorType::fixed,
                                              LockType lock = LockType::optimistic) {
        auto recordset = made_.library->engine().createRecordset();
        recordset->open(statement, *connection_, cursor, lock);
        return recordset;
    }

    static std::vector<std::string> rest(platform::Recordset& rows, std::string_view field) {
        std::vector<std::string> texts;
        for (; !rows.eof(); rows.moveNext()) {
            texts.push_back(rows.field(field).toText());
        }
        return texts;
    }

    std::size_t wordCount() { return rest(*open("SELECT word FROM root_word"), "word").size(); }

    /// The number and description of the error that an action raises; 0 when it raises none.
    template <class Action>
    static base::RuntimeError errorOf(Action&& action) {
        try {
            action();
        } catch (const base::RuntimeError& error) {
            return error;
        }
        return {0, ""};
    }

    MadeLibrary made_;
    std::unique_ptr<platform::Connection> connection_;
};

TEST_P(DatabaseContract, KeepsWhatIsCommittedAndDropsWhatIsRolledBack) {
    connection_->beginTrans();
    run(insertWord);
    connection_->rollbackTrans();
    EXPECT_EQ(wordCount(), 0U);
    connection_->beginTrans();
    run(insertWord);
    connection_->commitTrans();
    EXPECT_EQ(wordCount(), 1U);
}

TEST_P(DatabaseContract, RaisesForATransactionInsideATransactionAndForAnEndWithoutOne) {
    EXPECT_NE(errorOf([this] { connection_->commitTrans(); }).number(), 0);
    EXPECT_NE(errorOf([this] { connection_->rollbackTrans(); }).number(), 0);
    connection_->beginTrans();
    EXPECT_NE(errorOf([this] { connection_->beginTrans(); }).number(), 0);
    connection_->commitTrans();
    EXPECT_NE(errorOf([this] { connection_->commitTrans(); }).number(), 0);
}

TEST_P(DatabaseContract, RollsAnOpenTransactionBackWhenItCloses) {
    connection_->beginTrans();
    run(insertWord);
    connection_->close();
    EXPECT_EQ(errorOf([this] { connection_->close(); }).number(), 3704);
    EXPECT_EQ(errorOf([this] { run(insertWord); }).number(), 3704);
    connection_ = connect();
    EXPECT_EQ(wordCount(), 0U);
}

TEST_P(DatabaseContract, RollsAnOpenTransactionBackWhenItsConnectionIsDropped) {
    connection_->beginTrans();
    run(insertWord);
    connection_.reset();
    connection_ = connect();
    EXPECT_EQ(wordCount(), 0U);
}

TEST_P(DatabaseContract, TellsTheKeyThatItGaveLast) {
    words(2);
    EXPECT_EQ(connection_->query("SELECT @@IDENTITY AS id_root_word FROM root_word")
                  ->field("id_root_word")
                  .toInt32(),
              2);
}

TEST_P(DatabaseContract, GivesTheRowsOfAQuery) {
    words(3);
    EXPECT_EQ(rest(*connection_->query("SELECT word FROM root_word ORDER BY id"), "word"),
              (std::vector<std::string>{"w1", "w2", "w3"}));
    EXPECT_EQ(
        rest(*open("SELECT word FROM root_word ORDER BY id", CursorType::forwardOnly, LockType::readOnly),
             "word"),
        (std::vector<std::string>{"w1", "w2", "w3"}));
}

TEST_P(DatabaseContract, KeepsTheRowsOfAFixedCursorAsTheyWere) {
    words(2);
    const auto rows = open("SELECT word FROM root_word ORDER BY id");
    run("DELETE * FROM root_word WHERE id > 0");
    EXPECT_EQ(rest(*rows, "word"), (std::vector<std::string>{"w1", "w2"}));
}

TEST_P(DatabaseContract, RaisesBehindTheLastRow) {
    const auto rows = open("SELECT word FROM root_word");
    EXPECT_TRUE(rows->eof());
    EXPECT_EQ(errorOf([&rows] { static_cast<void>(rows->field("word")); }).number(), 3021);
    EXPECT_EQ(errorOf([&rows] { rows->moveNext(); }).number(), 3021);
}

TEST_P(DatabaseContract, FindsFieldsWithoutRegardToCaseAndRefusesUnknownOnes) {
    words(1);
    const auto rows = open("SELECT word FROM root_word");
    EXPECT_EQ(rows->field("WORD").toText(), "w1");
    EXPECT_EQ(errorOf([&rows] { static_cast<void>(rows->field("id")); }).number(), 3265);
}

TEST_P(DatabaseContract, OpensARecordsetAgainOnceItIsClosed) {
    words(1);
    const auto rows = open("SELECT word FROM root_word");
    const auto openAgain = [&] {
        rows->open("SELECT id AS word FROM root_word", *connection_, CursorType::fixed, LockType::optimistic);
    };
    EXPECT_EQ(rows->field("word").toText(), "w1");
    EXPECT_EQ(errorOf(openAgain).number(), 3705);
    rows->close();
    EXPECT_EQ(errorOf([&rows] { rows->close(); }).number(), 3704);
    EXPECT_EQ(errorOf([&rows] { static_cast<void>(rows->eof()); }).number(), 3704);
    openAgain();
    EXPECT_EQ(rows->field("word").toInt32(), 1);
}

TEST_P(DatabaseContract, OpensARecordsetOfAClosedConnectionOnAnother) {
    words(1);
    const auto rows = open("SELECT word FROM root_word");
    EXPECT_EQ(rows->field("word").toText(), "w1");
    connection_->close();
    EXPECT_EQ(errorOf([&rows] { static_cast<void>(rows->field("word")); }).number(), 3704);
    connection_ = connect();
    rows->open("SELECT id AS word FROM root_word", *connection_, CursorType::fixed, LockType::optimistic);
    EXPECT_EQ(rows->field("word").toInt32(), 1);
}

TEST_P(DatabaseContract, LeavesARecordsetClosedWhenItsQueryFails) {
    const auto rows = made_.library->engine().createRecordset();
    EXPECT_NE(errorOf([&] {
                  rows->open("SELECT nothing FROM nowhere", *connection_, CursorType::fixed,
                             LockType::optimistic);
              }).number(),
              0);
    EXPECT_EQ(errorOf([&rows] { rows->close(); }).number(), 3704);
}

TEST_P(DatabaseContract, ReadsValuesBackByTheColumnsType) {
    run("INSERT INTO document_object (title, data_size, snapshot, time_stamp, id_parent, "
        "flag_user_set_title) "
        "VALUES ('12', 2.5, true, '05 Mar 2002 09:07:04', -1, false)");
    const auto rows = open(
        "SELECT title, data_size, snapshot, time_stamp, id_parent, source_url, flag_user_set_title "
        "FROM document_object");
    EXPECT_EQ(rows->field("title"), base::Variant("12"));
    EXPECT_EQ(rows->field("data_size"), base::Variant(2.5));
    EXPECT_EQ(rows->field("snapshot"), base::Variant(true));
    EXPECT_EQ(rows->field("time_stamp"), base::Variant(*base::DateTime::parse("2002-03-05 09:07:04")));
    EXPECT_EQ(rows->field("id_parent"), base::Variant(std::int32_t{-1}));
    EXPECT_TRUE(rows->field("source_url").isNull());
    EXPECT_EQ(rows->field("flag_user_set_title"), base::Variant(false));
}

TEST_P(DatabaseContract, KeepsTextsUnchanged) {
    for (const std::string text :
         {"O'Brien's notes", "two\r\nlines\tand a tab", "na\xC3\xAFve \xE6\x96\x87 \xF0\x9F\x98\x80",
          "@@IDENTITY", "<> Null", " "}) {
        run("DELETE * FROM ascii_sentences WHERE id_document_object = 1");
        run("INSERT INTO ascii_sentences(id_document_object, sentence_length, content, num_sentence) "
            "VALUES(1," +
            std::to_string(base::length(text)) + ",'" + base::replaceAll(text, "'", "''") + "',-1)");
        EXPECT_EQ(open("SELECT content FROM ascii_sentences")->field("content").toText(), text);
    }
}

TEST_P(DatabaseContract, ComparesTextsWithoutRegardToCase) {
    run(insertWord);
    EXPECT_FALSE(open("SELECT id FROM root_word WHERE word = 'RIVER'")->eof());
}

TEST_P(DatabaseContract, TellsWhatIsWrongWithAStatement) {
    const base::RuntimeError error = errorOf([this] { run("DELETE * FROM nowhere WHERE id = 1"); });
    EXPECT_NE(error.number(), 0);
    EXPECT_NE(error.description().find("nowhere"), std::string::npos) << error.description();
}

TEST_P(DatabaseContract, NeverMakesALibraryAndNeverTellsThePassword) {
    platform::ConnectionSettings settings = made_.library->settings();
    settings.dataSource += ".missing";
    settings.password = "secretword";
    const base::RuntimeError error = errorOf([&] { made_.library->engine().open(settings); });
    EXPECT_NE(error.number(), 0);
    EXPECT_FALSE(error.description().empty());
    EXPECT_EQ(error.description().find("secretword"), std::string::npos);
    EXPECT_NE(errorOf([&] { made_.library->engine().open(settings); }).number(), 0);
}

}  // namespace contract
