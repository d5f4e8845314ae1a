#include "unit/platform/sqlite/library_fixture.h"

namespace {

class Dialect : public LibraryTest {};

TEST_F(Dialect, KnowsTheStarFormOfDelete) {
    run("INSERT INTO file_index_queue (doc_path, flag_dirty) VALUES ('a', TRUE)");
    run("INSERT INTO file_index_queue (doc_path, flag_dirty) VALUES ('b', false)");
    run("DELETE * FROM file_index_queue WHERE flag_dirty = true");
    EXPECT_EQ(texts("SELECT doc_path FROM file_index_queue", "doc_path"), std::vector<std::string>{"b"});
}

TEST_F(Dialect, LimitsAQueryByTop) {
    run("INSERT INTO file_index_queue (doc_path) VALUES ('a')");
    run("INSERT INTO file_index_queue (doc_path) VALUES ('b')");
    EXPECT_EQ(texts("SELECT TOP 1 doc_path FROM file_index_queue ORDER BY doc_path", "doc_path"),
              std::vector<std::string>{"a"});
}

TEST_F(Dialect, ComparesWithNullAsIsNull) {
    run("INSERT INTO file_index_queue (doc_path) VALUES (Null)");
    run("INSERT INTO file_index_queue (doc_path) VALUES ('')");
    run("INSERT INTO file_index_queue (doc_path) VALUES ('b')");
    EXPECT_EQ(
        texts("SELECT doc_path FROM file_index_queue WHERE doc_path <> '' AND doc_path <> Null", "doc_path"),
        std::vector<std::string>{"b"});
    EXPECT_EQ(texts("SELECT doc_path FROM file_index_queue WHERE doc_path = null", "doc_path"),
              std::vector<std::string>{"NULL"});
}

TEST_F(Dialect, StoresNullInAnUpdate) {
    run("INSERT INTO file_index_queue (doc_path) VALUES ('b')");
    run("UPDATE file_index_queue SET doc_path = Null, data_type = NULL WHERE doc_path = 'b'");
    EXPECT_EQ(texts("SELECT doc_path FROM file_index_queue", "doc_path"), std::vector<std::string>{"NULL"});
}

TEST_F(Dialect, TellsWhereAStatementIsWrong) {
    EXPECT_NE(errorOf([this] { run("SELECT 'abc' FORM word_index"); }).find("at character 19"),
              std::string::npos);
    EXPECT_NE(errorOf([this] { run("SELECT 'O'Brien' FROM prv"); }).find("no closing quote at character 16"),
              std::string::npos);
    EXPECT_NE(errorOf([this] { run("SELECT (1 FROM prv"); }).find("not closed"), std::string::npos);
    EXPECT_NE(errorOf([this] { run("SELECT 1); DELETE * FROM prv"); }).find("character 9"),
              std::string::npos);
    EXPECT_NE(errorOf([this] { run("SELECT 1; DELETE * FROM prv"); }).find("more than one statement"),
              std::string::npos);
    EXPECT_NE(errorOf([this] { run(""); }).find("empty"), std::string::npos);
}

TEST_F(Dialect, CompilesAShapeOnce) {
    run("INSERT INTO root_word (word) VALUES( 'river')");
    const std::size_t prepared = engine_.preparedStatements();
    run("INSERT INTO root_word (word) VALUES( 'lake''s')");
    run("INSERT INTO root_word (word) VALUES( '')");
    EXPECT_EQ(engine_.preparedStatements(), prepared);
    EXPECT_EQ(texts("SELECT word FROM root_word", "word"), (std::vector<std::string>{"river", "lake's", ""}));
}

TEST_F(Dialect, KeepsShapesWarmBetweenConnections) {
    const std::string statement = "SELECT word FROM root_word WHERE word = 'x'";
    connect()->execute(statement);
    const std::size_t prepared = engine_.preparedStatements();
    connect()->execute("SELECT word FROM root_word WHERE word = 'other'");
    EXPECT_EQ(engine_.preparedStatements(), prepared);
}

TEST_F(Dialect, GivesTheLastAutoNumberOfTheConnection) {
    run("INSERT INTO prv_rules (data_type, decay_halflife, creation_prv) VALUES ('eml', 5, 7)");
    run("INSERT INTO root_word ( word ) VALUES( 'river')");
    run("INSERT INTO root_word ( word ) VALUES( 'lake')");
    run("INSERT INTO word_index ( id_document_object, hit_count, comp_type) VALUES( 900, 1 , 2)");
    EXPECT_EQ(value("SELECT @@IDENTITY AS id_root_word FROM root_word", "id_root_word").toInt32(), 2);
    EXPECT_EQ(texts("SELECT @@IDENTITY AS id_root_word FROM root_word", "id_root_word").size(), 1U);
}

TEST_F(Dialect, KeepsTheAutoNumberWhenAnInsertAddsNoRow) {
    run("INSERT INTO root_word ( word ) VALUES( 'river')");
    run("INSERT INTO meta_tags (id_document_share, type) SELECT document_share.id, 5 FROM document_share");
    run("INSERT INTO annotation (id, points) VALUES (77, 3)");
    run("UPDATE root_word SET word = 'sea'");
    EXPECT_EQ(value("SELECT @@IDENTITY AS id FROM root_word", "id").toInt32(), 1);
}

TEST_F(Dialect, HasNoAutoNumberOnANewConnection) {
    run("INSERT INTO root_word ( word ) VALUES( 'river')");
    connection_.reset();
    EXPECT_EQ(value("SELECT @@IDENTITY AS id FROM root_word", "id").toInt32(), 0);
    EXPECT_TRUE(openFixed("SELECT @@IDENTITY AS id FROM prv")->eof());
}

TEST_F(Dialect, NeverGivesAnAutoNumberTwice) {
    run("INSERT INTO root_word ( word ) VALUES( 'river')");
    run("DELETE * FROM root_word WHERE word = 'river'");
    run("INSERT INTO root_word ( word ) VALUES( 'lake')");
    EXPECT_EQ(value("SELECT id FROM root_word", "id").toInt32(), 2);
}

TEST_F(Dialect, TracesEveryStatementAsItWasBuilt) {
    std::vector<std::string> traced;
    engine_.setTrace([&traced](std::string_view statement) { traced.emplace_back(statement); });
    connection().beginTrans();
    run("DELETE * FROM root_word WHERE word = 'O''Brien'");
    connection().commitTrans();
    openFixed("SELECT id FROM root_word");
    connection().beginTrans();
    connection().rollbackTrans();
    EXPECT_EQ(traced, (std::vector<std::string>{"BEGIN TRANSACTION",
                                                "DELETE * FROM root_word WHERE word = 'O''Brien'",
                                                "COMMIT TRANSACTION", "SELECT id FROM root_word",
                                                "BEGIN TRANSACTION", "ROLLBACK TRANSACTION"}));
}

}  // namespace
