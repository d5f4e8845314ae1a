#include "base/text.h"
#include "unit/platform/sqlite/library_fixture.h"

namespace {

class ValuesTest : public LibraryTest {
  protected:
    std::string roundTrip(const std::string& text) {
        run("DELETE * FROM ascii_sentences WHERE id_document_object = 1");
        run("INSERT INTO ascii_sentences(id_document_object, sentence_length, content, num_sentence) "
            "VALUES(1," +
            std::to_string(base::length(text)) + ",'" + base::replaceAll(text, "'", "''") + "',-1)");
        return value("SELECT content FROM ascii_sentences", "content").toText();
    }
};

TEST_F(ValuesTest, GoInAndComeOutUnchanged) {
    using std::string_literals::operator""s;
    for (const std::string& text :
         {"O'Brien's notes"s, ""s, "'"s, "''"s, "cut at a quote'"s, "'at the start"s,
          "two\r\nlines\tand a tab"s, "a\0b\0"s, "\xF0\x9F\x98\x80 na\xC3\xAFve"s, "stray \xFF byte"s,
          "-- no comment /* \"x\" [y] ; ?"s, "TRUE"s, "@@IDENTITY"s, "<> Null"s, "\x01"s, "5"s, "-1.50"s,
          "1e5"s}) {
        EXPECT_EQ(roundTrip(text), text);
    }
}

TEST_F(ValuesTest, MayBeAMegabyteLong) {
    std::string text;
    while (text.size() < (1U << 20U)) {
        text += "It's a long 'sentence'. ";
    }
    EXPECT_TRUE(roundTrip(text) == text);
}

TEST_F(ValuesTest, LookingLikeADateStayTextInATextColumn) {
    for (const std::string text : {"2002-03-05", "5/3/2002", "16 Nov 2026 01:47:03", "2002-03-05 09:07:04"}) {
        EXPECT_EQ(roundTrip(text), text);
        run("INSERT INTO document_object (title, time_stamp) VALUES ('" + text + "', '" + text + "')");
        run("UPDATE document_object SET title = '" + text + "', first_saved = '" + text + "'");
        EXPECT_EQ(texts("SELECT title FROM document_object WHERE title = '" + text + "'", "title").back(),
                  text);
    }
}

TEST_F(ValuesTest, LookingLikeADateAreDatesInADateColumn) {
    for (const std::string text : {"2002-03-05", "5/3/2002", "05 Mar 2002 00:00:00"}) {
        run("DELETE * FROM prv WHERE id > 0");
        run("INSERT INTO prv (last_prv, last_doc_usage ) VALUES (5, '" + text + "' ) ");
        EXPECT_EQ(value("SELECT last_doc_usage FROM prv", "last_doc_usage"),
                  base::Variant(*base::DateTime::parse("2002-03-05")));
        EXPECT_EQ(value("SELECT MAX(last_doc_usage) AS stored FROM prv", "stored"),
                  base::Variant("2002-03-05 00:00:00"));
        EXPECT_EQ(texts("SELECT id FROM prv WHERE last_doc_usage = '" + text + "'", "id").size(), 1U);
    }
}

TEST_F(ValuesTest, OfDatesCompareAndSortAsDates) {
    for (const char* text : {"16 Nov 2026 01:47:03", "2/12/2001 10:00", "2026-01-02 00:00:00"}) {
        run(std::string("INSERT INTO search_term_history (id_search_term, time_stamp) VALUES (4, '") + text +
            "')");
    }
    EXPECT_EQ(texts("SELECT id FROM search_term_history WHERE id_search_term = 4 AND time_stamp < "
                    "'1 Feb 2026 00:00:00' ORDER BY time_stamp ASC",
                    "id"),
              (std::vector<std::string>{"2", "3"}));
    EXPECT_EQ(
        texts("SELECT id FROM search_term_history WHERE '1 Feb 2026' < search_term_history.time_stamp", "id"),
        std::vector<std::string>{"1"});
    EXPECT_EQ(
        texts("SELECT id FROM search_term_history WHERE time_stamp IN ('2/1/2026', '2/12/2001 10:00:00')",
              "id"),
        (std::vector<std::string>{"2", "3"}));
    EXPECT_EQ(texts("SELECT id FROM search_term_history WHERE (time_stamp) BETWEEN '1/1/2026' AND '3/1/2026'",
                    "id"),
              std::vector<std::string>{"3"});
}

TEST_F(ValuesTest, ThatAreNoDatesAreRefusedByADateColumn) {
    const std::string error =
        errorOf([this] { run("UPDATE prv SET last_prv = 1, last_modified = 'soon' WHERE id = 1"); });
    EXPECT_NE(error.find("Type mismatch"), std::string::npos);
    EXPECT_NE(error.find("prv.last_modified"), std::string::npos);
    EXPECT_NE(error.find("'soon'"), std::string::npos);
    EXPECT_EQ(errorNumberOf([this] { run("INSERT INTO prv (last_modified) VALUES ('')"); }), 13);
}

TEST_F(ValuesTest, ReadBackByTheColumnsType) {
    run("INSERT INTO document_object (title, data_size, snapshot, time_stamp, id_parent) VALUES ('12', 2.5, "
        "true, "
        "'5/3/2002 9:07', -1)");
    const auto rows = openFixed(
        "SELECT title, data_size, snapshot, time_stamp, id_parent, source_url, id AS key "
        "FROM document_object");
    EXPECT_EQ(rows->field("title"), base::Variant("12"));
    EXPECT_EQ(rows->field("data_size"), base::Variant(2.5));
    EXPECT_EQ(rows->field("snapshot"), base::Variant(true));
    EXPECT_EQ(rows->field("time_stamp"), base::Variant(*base::DateTime::parse("2002-03-05 09:07:00")));
    EXPECT_EQ(rows->field("id_parent"), base::Variant(std::int32_t{-1}));
    EXPECT_TRUE(rows->field("source_url").isNull());
    EXPECT_EQ(rows->field("key"), base::Variant(std::int32_t{1}));
}

TEST_F(ValuesTest, BeyondTheWidthOfANumberReadBackAsDoubles) {
    run("INSERT INTO document_object (data_size) VALUES (3000000000)");
    EXPECT_EQ(value("SELECT data_size FROM document_object", "data_size"), base::Variant(3e9));
    EXPECT_EQ(value("SELECT COUNT(id) AS n FROM document_object", "n"), base::Variant(std::int32_t{1}));
}

TEST_F(ValuesTest, OfABooleanColumnMayBeWrittenAsNumbers) {
    run("INSERT INTO file_index_queue (doc_path, flag_dirty) VALUES ('p', -1)");
    EXPECT_EQ(value("SELECT flag_dirty FROM file_index_queue WHERE flag_dirty = TRUE", "flag_dirty"),
              base::Variant(true));
}

TEST_F(ValuesTest, CompareWithoutRegardToCase) {
    run("INSERT INTO document_object (saved_location) VALUES ('C:\\Docs\\Report.DOC')");
    EXPECT_EQ(
        texts("SELECT id FROM document_object WHERE saved_location = 'c:\\docs\\report.doc'", "id").size(),
        1U);
    EXPECT_EQ(
        texts("SELECT id FROM document_object WHERE saved_location IN ('C:\\DOCS\\REPORT.doc')", "id").size(),
        1U);
}

TEST_F(ValuesTest, SortWithoutRegardToCaseSoThatTheDefaultRulesComeLast) {
    run("INSERT INTO prv_rules (data_type, decay_halflife, creation_prv) VALUES ('EML', 7, 70)");
    run("INSERT INTO prv_rules (data_type, decay_halflife, creation_prv) VALUES ('zip', 8, 80)");
    run("INSERT INTO prv_rules (data_type, decay_halflife, creation_prv) VALUES ('zzzzz', 9, 90)");
    const auto halfLife = [this](const std::string& type) {
        return value("SELECT decay_halflife FROM prv_rules WHERE data_type = '" + type +
                         "' OR data_type = 'zzzzDef' ORDER BY data_type ASC",
                     "decay_halflife")
            .toInt32();
    };
    EXPECT_EQ(halfLife("eml"), 7);
    EXPECT_EQ(halfLife("ZIP"), 8);
    EXPECT_EQ(halfLife("zzzzz"), 90);  // sorts behind the default row, which is taken then
    EXPECT_EQ(halfLife("txt"), 90);
}

}  // namespace
