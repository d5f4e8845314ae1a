#include <filesystem>
#include <future>
#include <thread>

#include "unit/platform/sqlite/library_fixture.h"

namespace {

class ConnectionTest : public LibraryTest {
  protected:
    static constexpr std::string_view insertWord = "INSERT INTO root_word ( word ) VALUES( 'river')";

    std::size_t wordCount() { return texts("SELECT id FROM root_word", "id").size(); }
};

TEST_F(ConnectionTest, KeepsWhatIsCommittedAndDropsWhatIsRolledBack) {
    connection().beginTrans();
    run(insertWord);
    connection().rollbackTrans();
    EXPECT_EQ(wordCount(), 0U);
    connection().beginTrans();
    run(insertWord);
    connection().commitTrans();
    EXPECT_EQ(wordCount(), 1U);
}

TEST_F(ConnectionTest, RaisesForATransactionInsideATransactionAndForAnEndWithoutOne) {
    EXPECT_FALSE(errorOf([this] { connection().commitTrans(); }).empty());
    EXPECT_FALSE(errorOf([this] { connection().rollbackTrans(); }).empty());
    connection().beginTrans();
    EXPECT_FALSE(errorOf([this] { connection().beginTrans(); }).empty());
    connection().commitTrans();
}

TEST_F(ConnectionTest, RollsAnOpenTransactionBackWhenItCloses) {
    connection().beginTrans();
    run(insertWord);
    connection().close();
    EXPECT_EQ(errorNumberOf([this] { connection().close(); }), 3704);
    EXPECT_EQ(errorNumberOf([this] { run(insertWord); }), 3704);
    connection_.reset();
    EXPECT_EQ(wordCount(), 0U);
    connection().beginTrans();
    run(insertWord);
    connection_.reset();
    EXPECT_EQ(wordCount(), 0U);
}

TEST_F(ConnectionTest, MayOutliveItsEngine) {
    auto engine = std::make_unique<platform::SqliteEngine>();
    const auto held = engine->open({path(), {}, {}, {}});
    engine.reset();
    held->execute("INSERT INTO root_word (word) VALUES ('river')");
    EXPECT_EQ(wordCount(), 1U);
}

TEST_F(ConnectionTest, RaisesWhenAnotherConnectionKeepsTheLibraryLocked) {
    const auto other = connect();
    other->beginTrans();
    const std::string error = errorOf([this] { run(insertWord); });
    EXPECT_NE(error.find("locked"), std::string::npos) << error;
    EXPECT_NE(error.find("INSERT INTO root_word"), std::string::npos);
    EXPECT_FALSE(errorOf([this] { connection().beginTrans(); }).empty());
    other->rollbackTrans();
    run(insertWord);
    EXPECT_EQ(wordCount(), 1U);
}

TEST_F(ConnectionTest, WaitsForALockThatIsReleased) {
    platform::SqliteEngine patient{{std::chrono::seconds(30), 2048}};
    const auto waiting = patient.open({path(), {}, {}, {}});
    connection().beginTrans();
    run(insertWord);

    std::promise<void> begun;
    patient.setTrace([&begun](std::string_view) { begun.set_value(); });
    std::thread holder([this, &begun] {
        begun.get_future().wait();
        connection_->commitTrans();
    });
    waiting->beginTrans();
    patient.setTrace({});
    holder.join();
    waiting->execute(insertWord);
    waiting->commitTrans();
    EXPECT_EQ(wordCount(), 2U);
}

TEST_F(ConnectionTest, ShortensALongStatementInItsErrors) {
    const std::string error =
        errorOf([this] { run("DELETE * FROM nowhere WHERE word = '" + std::string(5000, 'x') + "'"); });
    EXPECT_NE(error.find("no such table: nowhere"), std::string::npos);
    EXPECT_LT(error.size(), 400U);
}

TEST_F(ConnectionTest, OpensALibraryWhoseNameTakesMoreThanAscii) {
    const std::string other = folder_.path() +
                              "/b\xC3\xBC"
                              "cher \xE6\x96\x87.db";
    std::filesystem::rename(path(), std::filesystem::path(std::u8string(other.begin(), other.end())));
    engine_.open({other, {}, {}, {}})->execute(insertWord);
    EXPECT_THROW(connect(), base::RuntimeError);
}

TEST_F(ConnectionTest, NeverTellsThePassword) {
    const std::string error = errorOf([this] {
        engine_.open({folder_ / "missing.db", "system.mdw", "reader", "secretword"});
    });
    EXPECT_EQ(error.find("secretword"), std::string::npos);
    EXPECT_NE(error.find("missing.db"), std::string::npos);
}

/// While a job's connection is closed, its handle serves the other one's changes.
class BetweenJobs : public ConnectionTest {
  protected:
    BetweenJobs() {
        run("INSERT INTO file_index_queue (doc_path, index_type, flag_dirty) VALUES ('a', 'f', 0)");
        run("INSERT INTO file_index_queue (doc_path, index_type, flag_dirty) VALUES ('b', 'f', 0)");
        connect()->execute("DELETE * FROM word_noise");
    }

    std::vector<std::string> flags() {
        return texts("SELECT flag_dirty FROM file_index_queue ORDER BY id", "flag_dirty");
    }

    static constexpr std::string_view mark =
        "UPDATE file_index_queue SET flag_dirty = 1 WHERE doc_path = 'a'";
};

TEST_F(BetweenJobs, AChangeIsSeenByEverybodyAtOnce) {
    run(mark);
    EXPECT_EQ(flags(), (std::vector<std::string>{"True", "False"}));
    EXPECT_EQ(platform::SqliteEngine()
                  .open({path(), {}, {}, {}})
                  ->query("SELECT sum(flag_dirty) AS n FROM file_index_queue")
                  ->field("n")
                  .toText(),
              "1");
    const auto job = connect();
    EXPECT_EQ(job->query("SELECT sum(flag_dirty) AS n FROM file_index_queue")->field("n").toText(), "1");
    job->execute("DELETE * FROM file_index_queue WHERE flag_dirty = 1");
    EXPECT_EQ(flags(), std::vector<std::string>{"False"});
}

TEST_F(BetweenJobs, AChangeInATransactionIsRolledBackWithIt) {
    connection().beginTrans();
    run(mark);
    EXPECT_EQ(flags(), (std::vector<std::string>{"True", "False"}));
    connection().rollbackTrans();
    EXPECT_EQ(flags(), (std::vector<std::string>{"False", "False"}));
}

TEST_F(BetweenJobs, AChangeLeavesARecordsetWhereItStands) {
    const auto queue =
        open("SELECT doc_path FROM file_index_queue ORDER BY id", platform::CursorType::forwardOnly);
    run(mark);
    EXPECT_EQ(queue->field("doc_path").toText(), "a");
    queue->moveNext();
    run(mark);
    EXPECT_EQ(queue->field("doc_path").toText(), "b");
    queue->moveNext();
    EXPECT_TRUE(queue->eof());
}

TEST_F(BetweenJobs, AChangeThatIsRefusedRaisesItsErrorAndTheNextOneIsMade) {
    EXPECT_NE(errorOf([this] { run("UPDATE root_word SET nothing = 1"); }).find("nothing"),
              std::string::npos);
    run("CREATE TRIGGER refusing BEFORE UPDATE ON file_index_queue BEGIN SELECT RAISE(ABORT, 'not now'); "
        "END");
    EXPECT_NE(errorOf([this] { run(mark); }).find("not now"), std::string::npos);
    run("DROP TRIGGER refusing");
    run(mark);
    EXPECT_EQ(flags(), (std::vector<std::string>{"True", "False"}));
}

TEST_F(BetweenJobs, AChangeOfTheTablesIsMet) {
    run("ALTER TABLE file_index_queue ADD COLUMN note TEXT");
    run("UPDATE file_index_queue SET note = 'later', flag_dirty = 1");
    EXPECT_EQ(flags(), (std::vector<std::string>{"True", "True"}));
}

TEST_F(BetweenJobs, ALockedLibraryIsToldAsEver) {
    platform::SqliteEngine other;
    const auto writer = other.open({path(), {}, {}, {}});
    writer->beginTrans();
    EXPECT_NE(errorOf([this] { run(mark); }).find("locked"), std::string::npos);
    writer->commitTrans();
    run(mark);
    EXPECT_EQ(flags(), (std::vector<std::string>{"True", "False"}));
}

}  // namespace
