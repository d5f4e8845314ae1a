#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>

#include "platform/sqlite/file_status.h"
#include "unit/platform/sqlite/library_fixture.h"

namespace {

using platform::sqlite::fileStatus;

/// A file's stamp, once nobody has written to it for as long as that takes. None where the file system counts
/// whole seconds.
std::optional<std::int64_t> stampAfterRest(const std::string& path) {
    constexpr int manyLooks = 10'000'000;
    std::optional<std::int64_t> stamp;
    for (int look = 0; look < manyLooks && !stamp; ++look) {
        stamp = fileStatus(path).changed;
    }
    return stamp;
}

class LibraryFileTest : public LibraryTest {
  protected:
    std::string openError(const std::string& file) {
        return errorOf([&] { engine_.open({file, {}, {}, {}}); });
    }
};

TEST_F(LibraryFileTest, RefusesAMissingFileAndMakesNone) {
    EXPECT_NE(openError(folder_ / "none.db").find("does not exist"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "none.db"));
    EXPECT_NE(openError("").find("DataBasePath is empty"), std::string::npos);
    EXPECT_FALSE(openError(folder_.path()).empty());
    EXPECT_FALSE(openError(":memory:").empty());
}

TEST_F(LibraryFileTest, RefusesWhatIsNoLibrary) {
    EXPECT_NE(openError(folder_.write("empty.db", "")).find("is empty"), std::string::npos);
    EXPECT_NE(openError(folder_.write("text.db", "plain text")).find("no SQLite file"), std::string::npos);
    EXPECT_NE(openError(folder_.write("long.db", std::string(9000, 'x'))).find("no SQLite file"),
              std::string::npos);
    platform::createLibrary(folder_ / "other.db", "CREATE TABLE t (a)");
    EXPECT_NE(openError(folder_ / "other.db").find("file_index_queue"), std::string::npos);
}

TEST_F(LibraryFileTest, RefusesATruncatedLibrary) {
    std::filesystem::resize_file(path(), std::filesystem::file_size(path()) / 2);
    EXPECT_NE(openError(path()).find("truncated"), std::string::npos);
}

TEST_F(LibraryFileTest, RaisesWhenTheFileIsDeletedUnderAConnection) {
    run("INSERT INTO root_word ( word ) VALUES( 'river')");
    std::filesystem::remove(path());
    EXPECT_NE(errorOf([this] { run("DELETE * FROM root_word WHERE id = 1"); }).find("does not exist"),
              std::string::npos);
    EXPECT_FALSE(errorOf([this] { connection().beginTrans(); }).empty());
    EXPECT_FALSE(errorOf([this] { openFixed("SELECT id FROM root_word"); }).empty());
    connection_.reset();
    EXPECT_NE(openError(path()).find("does not exist"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(LibraryFileTest, RaisesWhenTheFileIsTruncatedUnderAConnection) {
    run("INSERT INTO root_word ( word ) VALUES( 'river')");
    std::filesystem::resize_file(path(), 0);
    EXPECT_NE(errorOf([this] { connection().beginTrans(); }).find("emptied"), std::string::npos);
    connection_.reset();
    EXPECT_NE(openError(path()).find("is empty"), std::string::npos);
}

TEST_F(LibraryFileTest, RaisesWhenTheFileIsReplacedByATextFile) {
    connection();
    folder_.write("text", "no library");
    std::filesystem::rename(folder_ / "text", path());
    EXPECT_NE(errorOf([this] { run("DELETE * FROM root_word WHERE id = 1"); }).find("replaced"),
              std::string::npos);
    connection_.reset();
    EXPECT_NE(openError(path()).find("no SQLite file"), std::string::npos);
    EXPECT_EQ(folder_.read("library.db"), "no library");
}

/// Overwrites a library that is in use, closes it, and tells whether the text is still what was written.
class OverwrittenLibrary : public LibraryFileTest, public testing::WithParamInterface<std::size_t> {
  protected:
    /// Uses the library when nobody has written to its file for so long that its header is not read again.
    void rest() {
        ASSERT_TRUE(stampAfterRest(path()));
        run("DELETE * FROM root_word WHERE id = 0");
        run("DELETE * FROM root_word WHERE id = 0");
    }

    void overwriteAndLookAgain() {
        const std::string text(GetParam(), 'x');
        std::fstream file(path(), std::ios::in | std::ios::out | std::ios::binary);
        file << text;
        file.close();
        EXPECT_NE(
            errorOf([this] { run("INSERT INTO root_word ( word ) VALUES( 'boat')"); }).find("no SQLite file"),
            std::string::npos);
        const auto size = std::filesystem::file_size(path());
        connection_.reset();
        EXPECT_NE(openError(path()).find("no SQLite file"), std::string::npos);
        EXPECT_EQ(std::filesystem::file_size(path()), size);
        EXPECT_EQ(folder_.read("library.db").substr(0, text.size()), text);
    }
};

TEST_P(OverwrittenLibrary, IsNoticedRefusedAndLeftAsItIs) {
    run("INSERT INTO root_word ( word ) VALUES( 'river')");
    overwriteAndLookAgain();
}

TEST_P(OverwrittenLibrary, IsNoticedAfterALongRest) {
    run("INSERT INTO root_word ( word ) VALUES( 'river')");
    rest();
    overwriteAndLookAgain();
}

INSTANTIATE_TEST_SUITE_P(SmallerAndLargerThanTheLibrary, OverwrittenLibrary, testing::Values(200, 3000000));

TEST_F(LibraryFileTest, RaisesWhenTheFileLosesItsEndWhileThereIsALog) {
    run("INSERT INTO root_word ( word ) VALUES( 'river')");
    ASSERT_GT(std::filesystem::file_size(path() + "-wal"), 0U);
    std::filesystem::resize_file(path(), std::filesystem::file_size(path()) / 2);
    EXPECT_NE(errorOf([this] { run("INSERT INTO root_word ( word ) VALUES( 'boat')"); }).find("truncated"),
              std::string::npos);
    const auto size = std::filesystem::file_size(path());
    connection_.reset();
    EXPECT_FALSE(openError(path()).empty());
    EXPECT_EQ(std::filesystem::file_size(path()), size);
}

TEST_F(LibraryFileTest, TellsItsStampOnlyWhenAFurtherChangeWillGetAnother) {
    const std::optional<std::int64_t> stamp = stampAfterRest(path());
    ASSERT_TRUE(stamp);
    EXPECT_EQ(fileStatus(path()).changed, stamp);
    for (int i = 0; i < 20; ++i) {
        folder_.write("library.db", std::to_string(i));
        ASSERT_NE(fileStatus(path()).changed, stamp);
    }
}

TEST_F(LibraryFileTest, TheOldLibrarysLogIsNotLaidOverTheOneInItsPlace) {
    run("INSERT INTO root_word ( word ) VALUES( 'river')");
    ASSERT_GT(std::filesystem::file_size(path() + "-wal"), 0U);
    platform::createLibrary(folder_ / "new.db");
    std::filesystem::rename(path(), folder_ / "old.db");
    std::filesystem::rename(folder_ / "new.db", path());
    EXPECT_FALSE(errorOf([this] { run("INSERT INTO root_word ( word ) VALUES( 'boat')"); }).empty());
    connection_.reset();
    EXPECT_TRUE(texts("SELECT word FROM root_word", "word").empty());
    EXPECT_EQ(
        value("SELECT description FROM search_weight WHERE description = 'normal'", "description").toText(),
        "normal");
    connection_.reset();
    auto old = engine_.open({folder_ / "old.db", {}, {}, {}});
    auto rows = old->query("SELECT word FROM root_word");
    EXPECT_EQ(rows->field("word").toText(), "river");
}

TEST_F(LibraryFileTest, OpensTheLibraryThatHasTakenTheOldOnesPlace) {
    {
        platform::SqliteEngine other;
        other.open({path(), {}, {}, {}})->execute("INSERT INTO root_word ( word ) VALUES( 'old')");
    }
    static_cast<void>(connect());  // keeps a warm handle on the old file
    platform::createLibrary(folder_ / "new.db");
    std::filesystem::rename(folder_ / "new.db", path());
    EXPECT_TRUE(texts("SELECT word FROM root_word", "word").empty());
}

TEST_F(LibraryFileTest, SeesTablesThatOtherProgramsMadeMeanwhile) {
    static_cast<void>(connect());
    platform::SqliteEngine other;
    other.open({path(), {}, {}, {}})->execute("CREATE TABLE note (made DATETIME, done BOOLEAN)");
    run("INSERT INTO note (made, done) VALUES ('5/3/2002', true)");
    EXPECT_EQ(value("SELECT made FROM note", "made").toText(), "2002-03-05 00:00:00");
}

TEST_F(LibraryFileTest, IsNeverMadeOverAnExistingFile) {
    const std::string existing = folder_.write("notes.txt", "mine");
    EXPECT_FALSE(errorOf([&] { platform::createLibrary(existing); }).empty());
    EXPECT_EQ(folder_.read("notes.txt"), "mine");
    EXPECT_FALSE(errorOf([this] { platform::createLibrary(folder_ / "bad.db", "CREATE NONSENSE"); }).empty());
    EXPECT_FALSE(std::filesystem::exists(folder_ / "bad.db"));
}

TEST_F(LibraryFileTest, IsWrittenAheadAndMarkedAsOurs) {
    EXPECT_EQ(value("PRAGMA journal_mode", "journal_mode").toText(), "wal");
    EXPECT_EQ(value("PRAGMA synchronous", "synchronous").toInt32(), 1);
    EXPECT_EQ(value("PRAGMA user_version", "user_version").toInt32(), 2);
}

TEST_F(LibraryFileTest, BeginsWithTheReservedKindsOfText) {
    EXPECT_EQ(texts("SELECT comp_type FROM search_weight WHERE type = 0 AND description = 'zzzDef' "
                    "ORDER BY comp_type",
                    "comp_type"),
              (std::vector<std::string>{"2", "3", "4"}));
    const auto types = texts("SELECT type FROM search_weight WHERE type <> 0", "type");
    EXPECT_EQ(std::set<std::string>(types.begin(), types.end()).size(), types.size());
    for (const char* name : {"user", "anti", "external_comment", "document_path", "comment", "comment_anchor",
                             "general_comment", "normal"}) {
        EXPECT_EQ(
            texts(std::string("SELECT type FROM search_weight WHERE description = '") + name + "'", "type")
                .size(),
            1U)
            << name;
    }
}

TEST_F(LibraryFileTest, BeginsWithNoiseWordsAndDefaultRules) {
    const auto words = texts("SELECT term FROM word_noise", "term");
    EXPECT_GE(words.size(), 120U);
    EXPECT_EQ(std::set<std::string>(words.begin(), words.end()).size(), words.size());
    EXPECT_EQ(texts("SELECT data_type FROM prv_rules", "data_type"), std::vector<std::string>{"zzzzDef"});
    EXPECT_EQ(texts("SELECT id_annotation_type FROM prv_rules_annotation, search_weight WHERE "
                    "search_weight.type = id_annotation_type AND comp_type = 3",
                    "id_annotation_type")
                  .size(),
              4U);
}

TEST_F(LibraryFileTest, FillsColumnsThatAStatementLeavesOut) {
    run("INSERT INTO document_object (title) VALUES ('t')");
    run("INSERT INTO document_share (id_document) VALUES (1)");
    run("INSERT INTO prv (last_prv) VALUES (5)");
    run("INSERT INTO file_index_queue (doc_path) VALUES ('p')");
    for (const char* flag : {"location_invalid", "flag_user_set_title", "flag_indexing_failed"}) {
        EXPECT_EQ(value("SELECT * FROM document_object", flag), base::Variant(false)) << flag;
    }
    EXPECT_EQ(value("SELECT flag_dirty FROM file_index_queue", "flag_dirty"), base::Variant(false));
    EXPECT_EQ(value("SELECT id_annotation FROM document_share", "id_annotation").toInt32(), -1);
    EXPECT_TRUE(value("SELECT last_modified FROM prv", "last_modified").isDate());
    EXPECT_TRUE(value("SELECT hard_prv FROM prv", "hard_prv").isNull());
}

}  // namespace
