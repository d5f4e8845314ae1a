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

}  // namespace
