// The rows of a transaction are written several at a time. Nobody may notice but by the speed.
#include "unit/platform/sqlite/library_fixture.h"

namespace {

class RowBatchTest : public LibraryTest {
  protected:
    void addHit(int word) {
        run("INSERT INTO word_index ( id_document_object, hit_count, comp_type, type, id_root_word, "
            "first_matching_sentence ) VALUES( 7, 1 , 2, 0, " +
            std::to_string(word) + ", -1 )");
    }
    void addSentence(const std::string& text, int number) {
        run("INSERT INTO ascii_sentences(id_document_object, sentence_length, content, num_sentence) "
            "VALUES(7," +
            std::to_string(text.size()) + ",'" + text + "'," + std::to_string(number) + ")");
    }

    /// The words of the hits in the order in which they were written.
    std::vector<std::string> words() {
        return texts("SELECT id_root_word FROM word_index ORDER BY rowid", "id_root_word");
    }
    /// The same as another connection finds them.
    std::size_t hitsSeen() {
        const auto other = connect();
        return static_cast<std::size_t>(
            other->query("SELECT count(*) AS hits FROM word_index")->field("hits").toInt32());
    }

    static std::vector<std::string> numbers(int last) {
        std::vector<std::string> found;
        for (int i = 1; i <= last; ++i) {
            found.push_back(std::to_string(i));
        }
        return found;
    }
};

TEST_F(RowBatchTest, EveryRowOfATransactionIsWrittenInOrderHoweverManyThereAre) {
    for (const int count : {1, 15, 16, 17, 32, 100}) {
        run("DELETE * FROM word_index");
        connection().beginTrans();
        for (int word = 1; word <= count; ++word) {
            addHit(word);
        }
        connection().commitTrans();
        EXPECT_EQ(words(), numbers(count)) << count;
        EXPECT_EQ(hitsSeen(), count);
    }
}

TEST_F(RowBatchTest, RowsOfTwoTablesMayAlternate) {
    connection().beginTrans();
    for (int i = 1; i <= 20; ++i) {
        addHit(i);
        addSentence("sentence " + std::to_string(i), i);
    }
    connection().commitTrans();
    EXPECT_EQ(words(), numbers(20));
    EXPECT_EQ(texts("SELECT num_sentence FROM ascii_sentences ORDER BY rowid", "num_sentence"), numbers(20));
    EXPECT_EQ(value("SELECT content FROM ascii_sentences WHERE num_sentence = 20", "content").toText(),
              "sentence 20");
}

TEST_F(RowBatchTest, ValuesKeepTheirKind) {
    connection().beginTrans();
    run("INSERT INTO ascii_sentences(id_document_object, sentence_length, content, num_sentence) "
        "VALUES(7,2.5,'it''s',-1)");
    run("INSERT INTO ascii_sentences(id_document_object, sentence_length, content, num_sentence) "
        "VALUES(8,1,' ',0)");
    connection().commitTrans();
    EXPECT_EQ(
        texts("SELECT typeof(sentence_length) AS kind FROM ascii_sentences ORDER BY num_sentence", "kind"),
        (std::vector<std::string>{"real", "integer"}));
    EXPECT_EQ(texts("SELECT content FROM ascii_sentences ORDER BY num_sentence", "content"),
              (std::vector<std::string>{"it's", " "}));
}

TEST_F(RowBatchTest, EveryOtherStatementFindsTheRows) {
    connection().beginTrans();
    addHit(1);
    EXPECT_EQ(words(), numbers(1));
    addHit(2);
    run("UPDATE word_index SET hit_count = 5 WHERE id_root_word = 2");
    EXPECT_EQ(value("SELECT hit_count FROM word_index WHERE id_root_word = 2", "hit_count").toInt32(), 5);
    addHit(3);
    const auto rows = open("SELECT id_root_word FROM word_index", platform::CursorType::forwardOnly);
    addHit(4);
    int walked = 0;
    for (; !rows->eof(); rows->moveNext()) {
        ++walked;
    }
    EXPECT_GE(walked, 3);
    connection().commitTrans();
    EXPECT_EQ(words(), numbers(4));
}

TEST_F(RowBatchTest, ARolledBackTransactionLeavesNoRows) {
    connection().beginTrans();
    addHit(1);
    connection().rollbackTrans();
    connection().beginTrans();
    addHit(2);
    connection().close();
    connection_.reset();
    EXPECT_EQ(hitsSeen(), 0);
    connection().beginTrans();
    addHit(1);
    connection().commitTrans();
    EXPECT_EQ(words(), numbers(1));
}

TEST_F(RowBatchTest, OutsideATransactionEachRowIsWrittenAtOnce) {
    addHit(1);
    EXPECT_EQ(hitsSeen(), 1);
}

TEST_F(RowBatchTest, ARowThatATriggerRefusesIsRefusedToItsOwnStatement) {
    run("CREATE TRIGGER refusal BEFORE INSERT ON word_index WHEN NEW.id_root_word = 3 BEGIN SELECT "
        "RAISE(ABORT, 'not this one'); END");
    connection().beginTrans();
    for (const int word : {1, 2, 3, 4}) {
        const std::string error = errorOf([&] { addHit(word); });
        EXPECT_EQ(error.find("not this one") != std::string::npos, word == 3) << word << error;
    }
    connection().commitTrans();
    EXPECT_EQ(words(), (std::vector<std::string>{"1", "2", "4"}));
}

TEST_F(RowBatchTest, ARowThatAConstraintRefusesIsRefusedToItsOwnStatement) {
    run("DROP TABLE ascii_sentences");
    for (const std::string constraint : {"NOT NULL", "CHECK (num_sentence < 3)", "UNIQUE"}) {
        run("CREATE TABLE ascii_sentences (id_document_object LONG, sentence_length LONG, content TEXT, "
            "num_sentence LONG " +
            constraint + ")");
        connection().beginTrans();
        addSentence("one", 1);
        const std::string third = constraint == "NOT NULL" ? "NULL" : constraint == "UNIQUE" ? "1" : "3";
        EXPECT_FALSE(errorOf([&] {
                         run("INSERT INTO ascii_sentences(id_document_object, sentence_length, content, "
                             "num_sentence) VALUES(7,5,'three'," +
                             third + ")");
                     }).empty())
            << constraint;
        addSentence("two", 2);
        connection().commitTrans();
        EXPECT_EQ(texts("SELECT num_sentence FROM ascii_sentences ORDER BY num_sentence", "num_sentence"),
                  (std::vector<std::string>{"1", "2"}))
            << constraint;
        run("DROP TABLE ascii_sentences");
    }
}

TEST_F(RowBatchTest, WhatAnotherProgramAddsToTheTableIsHeededFromTheNextTransactionOn) {
    for (const std::string addition :
         {"CREATE TRIGGER refusal BEFORE INSERT ON word_index WHEN NEW.id_root_word = 1 BEGIN SELECT "
          "RAISE(FAIL, 'not again'); END",
          "CREATE UNIQUE INDEX refusal ON word_index (id_root_word)"}) {
        run("DELETE * FROM word_index");
        connection().beginTrans();
        addHit(1);
        connection().commitTrans();
        connect()->execute(addition);
        connection().beginTrans();
        addHit(2);
        EXPECT_FALSE(errorOf([&] { addHit(1); }).empty()) << addition;
        addHit(3);
        connection().commitTrans();
        EXPECT_EQ(words(), numbers(3)) << addition;
        run(addition.starts_with("CREATE TRIGGER") ? "DROP TRIGGER refusal" : "DROP INDEX refusal");
    }
}

TEST_F(RowBatchTest, WhatTheConnectionItselfAddsToTheTableIsHeededAtOnce) {
    connection().beginTrans();
    addHit(1);
    run("CREATE TRIGGER word_index_inserted BEFORE INSERT ON word_index BEGIN SELECT RAISE(ABORT, 'no "
        "more'); "
        "END");
    EXPECT_NE(errorOf([&] { addHit(2); }).find("no more"), std::string::npos);
    run("DROP TRIGGER word_index_inserted");
    addHit(2);
    connection().commitTrans();
    EXPECT_EQ(words(), numbers(2));
}

TEST_F(RowBatchTest, ATriggerIsNoKnownOneByItsNameAlone) {
    run("DROP TRIGGER word_index_deleted");
    run("CREATE TRIGGER word_index_deleted BEFORE INSERT ON word_index BEGIN SELECT RAISE(ABORT, 'no more'); "
        "END");
    connection().beginTrans();
    EXPECT_NE(errorOf([&] { addHit(1); }).find("no more"), std::string::npos);
    connection().commitTrans();
}

TEST_F(RowBatchTest, ATableThatChecksTypesRefusesARowToItsOwnStatement) {
    run("DROP TABLE ascii_sentences");
    run("CREATE TABLE ascii_sentences (id_document_object INT, sentence_length INT, content TEXT, "
        "num_sentence "
        "INT) STRICT");
    connection().beginTrans();
    for (int i = 1; i <= 20; ++i) {
        EXPECT_EQ(errorOf([&] {
                      run("INSERT INTO ascii_sentences(id_document_object, sentence_length, content, "
                          "num_sentence) VALUES(7,1,'a'," +
                          (i == 16 ? std::string("'x'") : std::to_string(i)) + ")");
                  }).empty(),
                  i != 16);
    }
    connection().commitTrans();
    EXPECT_EQ(texts("SELECT num_sentence FROM ascii_sentences", "num_sentence").size(), 19);
}

TEST_F(RowBatchTest, ValuesThatAreNoLiteralsKeepTheirPlaceInTheOrder) {
    connection().beginTrans();
    addHit(1);
    run("INSERT INTO word_index ( id_document_object, hit_count, comp_type, type, id_root_word, "
        "first_matching_sentence ) VALUES( 7, 1 , 2, 0, 1+1, NULL )");
    addHit(3);
    connection().commitTrans();
    EXPECT_EQ(words(), numbers(3));
}

TEST_F(RowBatchTest, ARowThatCannotBeReadIsRefusedAndTheOthersStay) {
    connection().beginTrans();
    addHit(1);
    EXPECT_FALSE(
        errorOf([&] {
            run("INSERT INTO word_index ( id_document_object, hit_count, comp_type, type, id_root_word, "
                "first_matching_sentence ) VALUES( 7, 1 , 2, 0, 2 )");
        }).empty());
    addHit(2);
    connection().commitTrans();
    EXPECT_EQ(words(), numbers(2));
}

TEST_F(RowBatchTest, WhereTheLibraryIsFullTheErrorComesAndTheTransactionIsGone) {
    run("PRAGMA max_page_count = 1");  // as many as there are
    connection().beginTrans();
    std::string error;
    for (int i = 1; error.empty() && i <= 100000; ++i) {
        error = errorOf([&] { addHit(i); });
    }
    EXPECT_NE(error.find("full"), std::string::npos) << error;
    connection().beginTrans();  // SQLite has rolled the first one back by itself
    connection().commitTrans();
    EXPECT_EQ(words(), std::vector<std::string>{});
}

}  // namespace
