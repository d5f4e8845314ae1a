#include <array>
#include <filesystem>
#include <span>
#include <system_error>

#include "unit/platform/sqlite/library_fixture.h"

namespace {

using platform::CursorType;

constexpr std::string_view queueRead = "SELECT id FROM file_index_queue WHERE flag_dirty = false";

class RecordsetTest : public LibraryTest {
  protected:
    void queue(platform::Connection& by, const std::string& path) {
        by.execute("INSERT INTO file_index_queue (doc_path) VALUES ('" + path + "')");
    }
    void words(int count) {
        for (int i = 1; i <= count; ++i) {
            run("INSERT INTO root_word ( word ) VALUES( 'w" + std::to_string(i) + "')");
        }
    }
    static std::vector<std::string> rest(platform::Recordset& rows, const std::string& name) {
        std::vector<std::string> found;
        for (; !rows.eof(); rows.moveNext()) {
            found.push_back(rows.field(name).toText());
        }
        return found;
    }
};

TEST_F(RecordsetTest, LetsTheClaimSucceedWhileTheQueueIsOpenAndOthersInsert) {
    queue(connection(), "a");
    queue(connection(), "b");
    const auto other = connect();

    const auto rows = open(queueRead, CursorType::forwardOnly);
    queue(*other, "c");
    run("UPDATE file_index_queue SET flag_dirty = true WHERE id = 1");

    EXPECT_EQ(rows->field("id").toInt32(), 1);
    EXPECT_EQ(texts(queueRead, "id"), (std::vector<std::string>{"2", "3"}));
}

TEST_F(RecordsetTest, HoldsNoSnapshotWhileItStandsOnItsFirstRow) {
    queue(connection(), "a");
    queue(connection(), "b");
    const auto other = connect();

    const auto rows = open(queueRead, CursorType::forwardOnly);
    queue(*other, "c");
    const auto checkpoint = other->query("PRAGMA wal_checkpoint(TRUNCATE)");

    EXPECT_EQ(checkpoint->field("busy").toInt32(), 0);
    EXPECT_EQ(checkpoint->field("log").toInt32(), 0);
    EXPECT_EQ(rest(*rows, "id"), (std::vector<std::string>{"1", "2", "3"}));
}

TEST_F(RecordsetTest, GoesOnAfterAFirstRowThatIsGone) {
    queue(connection(), "a");
    queue(connection(), "b");
    const auto rows = open(queueRead, CursorType::forwardOnly);
    run("DELETE * FROM file_index_queue WHERE id = 1");
    rows->moveNext();
    EXPECT_EQ(rest(*rows, "id"), std::vector<std::string>{"2"});
}

TEST_F(RecordsetTest, DoesNotStandInTheWayOfAWriteWhileItIsReadOn) {
    words(3);
    const auto other = connect();
    const auto rows = open("SELECT id, word FROM root_word", CursorType::forwardOnly);
    rows->moveNext();
    other->execute("INSERT INTO root_word ( word ) VALUES( 'later')");

    connection().beginTrans();
    run("DELETE * FROM root_word WHERE id = 3");
    connection().commitTrans();

    EXPECT_EQ(rest(*rows, "word"), (std::vector<std::string>{"w2", "w3"}));
}

TEST_F(RecordsetTest, ReadsSeveralQueriesOfOneShapeSideBySide) {
    words(3);
    const auto first = open("SELECT word FROM root_word WHERE id > 0", CursorType::forwardOnly);
    const auto second = open("SELECT word FROM root_word WHERE id > 1", CursorType::forwardOnly);
    first->moveNext();
    second->moveNext();
    EXPECT_EQ(rest(*first, "word"), (std::vector<std::string>{"w2", "w3"}));
    EXPECT_EQ(rest(*second, "word"), std::vector<std::string>{"w3"});
}

TEST_F(RecordsetTest, KeepsTheRowsOfAFixedCursorAsTheyWere) {
    words(2);
    const auto rows = openFixed("SELECT word FROM root_word");
    run("DELETE * FROM root_word WHERE id > 0");
    EXPECT_EQ(rest(*rows, "word"), (std::vector<std::string>{"w1", "w2"}));
}

TEST_F(RecordsetTest, RaisesBehindItsLastRow) {
    const auto rows = openFixed("SELECT word FROM root_word");
    EXPECT_TRUE(rows->eof());
    EXPECT_EQ(errorNumberOf([&rows] { static_cast<void>(rows->field("word")); }), 3021);
    EXPECT_EQ(errorNumberOf([&rows] { rows->moveNext(); }), 3021);
}

TEST_F(RecordsetTest, FindsFieldsWithoutRegardToCaseAndRefusesUnknownOnes) {
    words(1);
    const auto rows = openFixed("SELECT word FROM root_word");
    EXPECT_EQ(rows->field("WORD").toText(), "w1");
    EXPECT_EQ(errorNumberOf([&rows] { static_cast<void>(rows->field("id")); }), 3265);
    EXPECT_EQ(errorOf([&rows] { static_cast<void>(rows->field("id")); }),
              "Item cannot be found in the collection corresponding to the requested name or ordinal: id");
}

TEST_F(RecordsetTest, MayBeOpenedAgainOnceItIsClosed) {
    words(1);
    const auto rows = openFixed("SELECT word FROM root_word");
    EXPECT_EQ(errorNumberOf([&] {
                  rows->open("SELECT id FROM root_word", connection(), CursorType::fixed,
                             platform::LockType::readOnly);
              }),
              3705);
    rows->close();
    EXPECT_EQ(errorNumberOf([&rows] { rows->close(); }), 3704);
    EXPECT_EQ(errorNumberOf([&rows] { static_cast<void>(rows->eof()); }), 3704);
    rows->open("SELECT id FROM root_word", connection(), CursorType::forwardOnly,
               platform::LockType::readOnly);
    EXPECT_EQ(rows->field("id").toInt32(), 1);
}

TEST_F(RecordsetTest, StaysClosedWhenItsQueryFails) {
    auto rows = engine_.createRecordset();
    EXPECT_FALSE(errorOf([&] {
                     rows->open("SELECT nothing FROM nowhere", connection(), CursorType::fixed,
                                platform::LockType::readOnly);
                 }).empty());
    EXPECT_EQ(errorNumberOf([&rows] { rows->close(); }), 3704);
}

TEST_F(RecordsetTest, IsClosedWithItsConnection) {
    words(2);
    const auto rows = open("SELECT id FROM root_word", CursorType::forwardOnly);
    rows->moveNext();
    connection().close();
    EXPECT_EQ(errorNumberOf([&rows] { static_cast<void>(rows->field("id")); }), 3704);
}

TEST_F(RecordsetTest, RefusesAStatementWithoutRows) {
    EXPECT_FALSE(errorOf([this] { openFixed("DELETE * FROM root_word WHERE id = 1"); }).empty());
}

TEST_F(RecordsetTest, ASecondRunThatFailsLeavesNoHalfRow) {
    run("INSERT INTO root_word ( word ) VALUES( 'river')");
    run("INSERT INTO root_word ( word ) VALUES( 'boat')");
    const auto rows = open("SELECT word FROM root_word", platform::CursorType::forwardOnly);
    std::error_code kept;
    if (!std::filesystem::remove(path(), kept)) {
        GTEST_SKIP() << "this system keeps open files: " << kept.message();
    }
    EXPECT_FALSE(errorOf([&] { rows->moveNext(); }).empty());
    EXPECT_NE(errorOf([&] { rows->field("word"); }).find("No current record"), std::string::npos);
}

TEST_F(RecordsetTest, VisitsTheRowItStandsOnAndAllThatFollow) {
    for (const platform::CursorType cursor :
         {platform::CursorType::forwardOnly, platform::CursorType::fixed}) {
        const auto rows = engine_.createRecordset();
        rows->open("SELECT type, description, comp_type FROM search_weight WHERE comp_type = 3 ORDER BY type",
                   connection(), cursor, platform::LockType::readOnly);
        rows->moveNext();
        std::vector<std::string> visited;
        const std::array<std::string_view, 2> names = {"DESCRIPTION", "type"};
        rows->forEachRow(names, [&](std::span<const base::Variant> fields) {
            visited.push_back(fields[0].toText() + " " + fields[1].toText());
        });
        EXPECT_EQ(visited, (std::vector<std::string>{"comment 20", "comment_anchor 21", "general_comment 22",
                                                     "external_comment 23"}));
        EXPECT_TRUE(rows->eof());
        rows->forEachRow(names, [](std::span<const base::Variant>) { FAIL(); });
    }
}

TEST_F(RecordsetTest, VisitingRowsRefusesANameThatIsNotThere) {
    const auto rows = connection().query("SELECT type FROM search_weight");
    const std::array<std::string_view, 1> names = {"description"};
    EXPECT_THROW(rows->forEachRow(names, [](std::span<const base::Variant>) {}), base::RuntimeError);
}

}  // namespace
