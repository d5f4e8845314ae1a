// Meta tags, annotation sections, important text and annotation points.
#include "indexer/Records.h"
#include "base/runtime_error.h"
#include "indexer/AnnotationPoints.h"
#include "unit/indexer/indexer_fixture.h"

namespace {

using Rows = std::vector<std::vector<std::string>>;

class Records : public indexer_tests::IndexerTest {
  protected:
    Records() { indexer.LoadCaches(database); }

    void share(int document, int user) {
        library.exec("INSERT INTO document_share(id_document, id_user, id_prv) VALUES(" +
                     std::to_string(document) + ", " + std::to_string(user) + ", 1)");
    }
    void knowWords(const std::string& text) {
        indexer.indexSentence(text, 1, -1, indexer::metaTagComponent, "keywords", false, database);
    }
    std::string typeOf(const std::string& description, int component) {
        return value("SELECT type FROM search_weight WHERE description='" + description +
                     "' AND comp_type=" + std::to_string(component));
    }
    std::int16_t points(const std::string& dataType, double density) {
        return indexer::ComputeAnnotationPoints(1, dataType, density, database);
    }
    void rules(const std::string& dataType, bool asWeight, int cap) {
        library.exec(
            "INSERT INTO prv_rules(data_type, decay_halflife, creation_prv, annotation_density_as_weight, "
            "annotation_points_cap) VALUES('" +
            dataType + "', 30, 10, " + (asWeight ? "1" : "0") + ", " + std::to_string(cap) + ")");
    }
    void annotationRule(const std::string& dataType, int type, int each, int cap) {
        library.exec(
            "INSERT INTO prv_rules_annotation(id_prv_rules, id_annotation_type, points, cap) SELECT id, " +
            std::to_string(type) + ", " + std::to_string(each) + ", " + std::to_string(cap) +
            " FROM prv_rules WHERE data_type='" + dataType + "'");
    }
    void section(int type) {
        library.exec("INSERT INTO annotation_section(id_document_share, type, sequence) SELECT id, " +
                     std::to_string(type) + ", 1 FROM document_share WHERE id_document = 1");
    }
};

TEST_F(Records, StatementsKeepTheTextThatOtherProgramsKnow) {
    share(1, 7);
    knowWords("red green");
    statements();
    indexer::AddMetaTag(1, 4, "O'Kind", "Red, green", database);
    indexer::AddAnnotationSection(1, 3, "comment", 2, database);
    indexer::AddImportantText(1, 2, "heading", database);
    const auto clause = [](const std::string& component, const std::string& description) {
        return std::string(" and ") + "      ( search_weight.description='" + description + "' OR " +
               "        (type=0 and NOT EXISTS (select type from search_weight where comp_type=" + component +
               " and description='" + description + "'" + "       )))";
    };
    const std::string entry =
        std::string("Insert into metatag_entry(id_meta_tags, id_root_word,pos) ") + " Select ";
    EXPECT_EQ(
        statements(),
        (std::vector<std::string>{
            std::string("INSERT INTO meta_tags (id_document_share, type) ") +
                "SELECT document_share.id, search_weight.type FROM document_share, search_weight " +
                "WHERE document_share.id_document=" + "1" + " and " + "      search_weight.comp_type=" + "4" +
                clause("4", "O''Kind"),
            "SELECT @@IDENTITY AS id_meta_tag FROM meta_tags",
            entry + "1" + ",root_word.id," + "1" + " from root_word where root_word.word='" + "red" + "'",
            entry + "1" + ",root_word.id," + "2" + " from root_word where root_word.word='" + "green" + "'",
            std::string("INSERT INTO annotation_section (id_document_share, type,sequence) ") +
                "SELECT document_share.id, search_weight.type, " + "2" +
                " FROM document_share, search_weight " + "WHERE document_share.id_document=" + "1" + " and " +
                "      search_weight.comp_type=" + "3" + clause("3", "comment"),
            std::string("INSERT INTO important_text (id_document, type) ") + "SELECT " + "1" +
                ", search_weight.type FROM search_weight " + "WHERE search_weight.comp_type=" + "2" +
                clause("2", "heading")}));
}

TEST_F(Records, AKnownDescriptionTakesItsOwnTypeInItsComponent) {
    indexer::AddImportantText(1, 2, "heading", database);
    EXPECT_EQ(library.rows("SELECT id_document, type FROM important_text"),
              (Rows{{"1", typeOf("heading", 2)}}));
}

TEST_F(Records, AnUnknownDescriptionTakesTypeZeroOfItsComponent) {
    indexer::AddImportantText(1, 2, "unheard of", database);
    EXPECT_EQ(library.rows("SELECT type FROM important_text"), (Rows{{"0"}}));
}

TEST_F(Records, WithoutADefaultRowAnUnknownDescriptionInsertsNothing) {
    library.exec("DELETE FROM search_weight WHERE type = 0");
    EXPECT_NO_THROW(indexer::AddImportantText(1, 2, "unheard of", database));
    EXPECT_EQ(number("SELECT count(*) FROM important_text"), 0);
}

TEST_F(Records, ADescriptionIsCutToFiftyCharacters) {
    const std::string fifty(50, 'd');
    library.exec("INSERT INTO search_weight(type, description, comp_type) VALUES(900, '" + fifty + "', 2)");
    indexer::AddImportantText(1, 2, fifty + " and more", database);
    EXPECT_EQ(value("SELECT type FROM important_text"), "900");
}

TEST_F(Records, EveryShareGetsATagAndTheLastOneItsWords) {
    share(1, 7);
    share(1, 8);
    knowWords("red green");
    indexer::AddMetaTag(1, 4, "keywords", "Red, green", database);
    EXPECT_EQ(number("SELECT count(*) FROM meta_tags"), 2);
    EXPECT_EQ(
        library.rows(
            "SELECT id_meta_tags, word, pos FROM metatag_entry JOIN root_word ON root_word.id = id_root_word "
            "ORDER BY pos"),
        (Rows{{"2", "red", "1"}, {"2", "green", "2"}}));
}

TEST_F(Records, WithoutAShareTheWordsGoToTheKeyThatWasGivenLast) {
    knowWords("red");
    library.exec("INSERT INTO meta_tags(id_document_share, type) VALUES(1, 1)");
    indexer::AddMetaTag(1, 4, "keywords", "red.", database);
    const std::string last = value("SELECT max(id) FROM root_word");
    EXPECT_EQ(library.rows("SELECT id_meta_tags FROM metatag_entry"), (Rows{{last}}));
}

TEST_F(Records, ASingleCharacterBehindTheLastCommaOfATagIsDropped) {
    share(1, 7);
    library.exec("INSERT INTO root_word(word) VALUES('x')");
    library.exec("INSERT INTO root_word(word) VALUES('y')");
    indexer::AddMetaTag(1, 4, "keywords", "x,y", database);
    EXPECT_EQ(
        library.rows("SELECT word, pos FROM metatag_entry JOIN root_word ON root_word.id = id_root_word"),
        (Rows{{"x", "1"}}));
}

TEST_F(Records, AWordWithoutARootWordTakesItsPlaceAndNoRow) {
    share(1, 7);
    knowWords("green");
    indexer::AddMetaTag(1, 4, "keywords", "the green", database);
    EXPECT_EQ(library.rows("SELECT pos FROM metatag_entry"), (Rows{{"2"}}));
}

TEST_F(Records, AFailingStatementRises) {
    library.exec("DROP TABLE important_text");
    EXPECT_THROW(indexer::AddImportantText(1, 2, "heading", database), base::RuntimeError);
}

TEST_F(Records, ATagIsKnownByItsLowerCaseWordsJoinedWithBlanks) {
    share(1, 7);
    knowWords("red green");
    EXPECT_TRUE(indexer::IsNewMetaTag(1, "red green", database, 7));
    indexer::AddMetaTag(1, 4, "keywords", "Red, green", database);
    EXPECT_FALSE(indexer::IsNewMetaTag(1, " red green ", database, 7));
    EXPECT_TRUE(indexer::IsNewMetaTag(1, "Red, green", database, 7));
    EXPECT_TRUE(indexer::IsNewMetaTag(1, "red green", database, 8));
    EXPECT_TRUE(indexer::IsNewMetaTag(2, "red green", database, 7));
}

TEST_F(Records, EachTagOfTheShareIsCompared) {
    share(1, 7);
    knowWords("red green blue");
    for (const char* tag : {"red", "green blue", "blue"}) {
        indexer::AddMetaTag(1, 4, "keywords", std::string(tag) + ".", database);
    }
    EXPECT_FALSE(indexer::IsNewMetaTag(1, "red", database, 7));
    EXPECT_FALSE(indexer::IsNewMetaTag(1, "green blue", database, 7));
    EXPECT_FALSE(indexer::IsNewMetaTag(1, "blue", database, 7));
    EXPECT_TRUE(indexer::IsNewMetaTag(1, "red green", database, 7));
}

TEST_F(Records, ABlankTextIsNeverNew) {
    EXPECT_FALSE(indexer::IsNewMetaTag(1, "  ", database, 7));
    share(1, 7);
    knowWords("red");
    indexer::AddMetaTag(1, 4, "keywords", "red.", database);
    EXPECT_FALSE(indexer::IsNewMetaTag(1, "", database, 7));
}

TEST_F(Records, AnErrorWhileLookingForATagIsLoggedAndTheTagCountsAsKnown) {
    library.exec("DROP TABLE metatag_entry");
    EXPECT_FALSE(indexer::IsNewMetaTag(1, "red", database, 7));
    EXPECT_TRUE(log().back().starts_with("Error: Error:mtir: ")) << log().back();
}

TEST_F(Records, WithoutAnnotationsOnlyTheDensityCounts) {
    share(1, 7);
    rules("wgt", true, 100);
    rules("pls", false, 100);
    EXPECT_EQ(points("wgt", 0.5), 1);
    EXPECT_EQ(points("pls", 0.129), 12);
    EXPECT_EQ(value("SELECT anno_points FROM document_share"), "12");
}

TEST_F(Records, BothKindsOfPointsAreCapped) {
    share(1, 7);
    rules("wgt", true, 0);
    rules("pls", false, 9);
    EXPECT_EQ(points("wgt", 0.5), 0);
    EXPECT_EQ(points("pls", 0.5), 9);
}

TEST_F(Records, ATypeAddsAtMostItsCap) {
    share(1, 7);
    rules("pls", false, 100);
    annotationRule("pls", 501, 5, 12);
    for (int i = 0; i < 3; ++i) {
        section(501);
    }
    EXPECT_EQ(points("pls", 0), 12);
}

TEST_F(Records, DensityIsTruncatedBeforeItIsAdded) {
    share(1, 7);
    rules("pls", false, 100);
    annotationRule("pls", 501, 7, 50);
    section(501);
    EXPECT_EQ(points("pls", 0.125), 19);
}

TEST_F(Records, DensityAsWeightIsTruncatedBeforeOneIsAdded) {
    share(1, 7);
    rules("wgt", true, 100);
    annotationRule("wgt", 501, 7, 50);
    section(501);
    EXPECT_EQ(points("wgt", 0.5), 4);
}

TEST_F(Records, OwnRulesThatMatchOneTypeShutOutTheDefaultRules) {
    share(1, 7);
    library.exec("DELETE FROM prv_rules_annotation");
    library.exec("UPDATE prv_rules SET annotation_points_cap = 1000, annotation_density_as_weight = 0");
    rules("pls", false, 100);
    annotationRule("pls", 501, 5, 50);
    annotationRule("zzzzDef", 501, 40, 500);
    annotationRule("zzzzDef", 502, 40, 500);
    section(501);
    section(502);
    EXPECT_EQ(points("pls", 0), 5);
}

TEST_F(Records, TheDefaultRulesScoreAllTypesWhenTheOwnOnesMatchNone) {
    share(1, 7);
    library.exec("DELETE FROM prv_rules_annotation");
    rules("pls", false, 100);
    annotationRule("pls", 599, 5, 50);
    annotationRule("zzzzDef", 501, 20, 500);
    annotationRule("zzzzDef", 502, 30, 500);
    section(501);
    section(502);
    EXPECT_EQ(points("pls", 0), 50);
}

TEST_F(Records, ADataTypeWithoutRulesTakesTheDefaultRow) {
    share(1, 7);
    library.exec(
        "UPDATE prv_rules SET annotation_points_cap = 3, annotation_density_as_weight = 0 WHERE "
        "data_type='zzzzDef'");
    EXPECT_EQ(points("new", 0.5), 3);
}

TEST_F(Records, PointsBeyondSixteenBitsAreAnError) {
    share(1, 7);
    rules("pls", false, 100);
    EXPECT_THROW(points("pls", 400.0), base::RuntimeError);
}

TEST_F(Records, NoRulesAtAllAreAnError) {
    library.exec("DELETE FROM prv_rules");
    EXPECT_THROW(points("txt", 0.5), base::RuntimeError);
}

TEST_F(Records, EveryShareGetsThePoints) {
    share(1, 7);
    share(1, 8);
    rules("pls", false, 100);
    points("pls", 0.05);
    EXPECT_EQ(library.rows("SELECT anno_points FROM document_share"), (Rows{{"5"}, {"5"}}));
}

TEST_F(Records, PointsKeepTheTextThatOtherProgramsKnow) {
    share(1, 7);
    statements();
    points("txt", 0.01);
    const std::string d = "txt";
    const std::string id = "1";
    std::string score;
    for (const std::string& piece : std::vector<std::string>{
             "SELECT annotation_section.type, COUNT(annotation_section.type) * "
             "MAX(prv_rules_annotation.points) AS score, "
             "MAX(prv_rules_annotation.cap) AS cap ",
             "FROM annotation_section, prv_rules, prv_rules_annotation, document_share ",
             "WHERE ",
             "prv_rules_annotation.id_annotation_type = annotation_section.type AND ",
             "annotation_section.id_document_share = document_share.id AND ",
             "document_share.id_document= ",
             id,
             " AND ",
             "prv_rules.id = prv_rules_annotation.id_prv_rules AND ",
             "(  data_type = '",
             d,
             "' OR ",
             "   data_type = 'zzzzDef' AND ",
             "   NOT EXISTS ",
             "  ( ",
             "    SELECT annotation_section.type, prv_rules_annotation.points, prv_rules_annotation.cap, "
             "prv_rules.annotation_density_as_weight ",
             "    FROM annotation_section, prv_rules, prv_rules_annotation, document_share ",
             "    WHERE (prv_rules.id = prv_rules_annotation.id_prv_rules AND data_type = '",
             d,
             "' AND ",
             "    prv_rules_annotation.id_annotation_type = annotation_section.type AND ",
             "    annotation_section.id_document_share = document_share.id AND ",
             "    document_share.id_document= ",
             id,
             ") ",
             ")  )",
             "GROUP BY annotation_section.type"}) {
        score += piece;
    }
    EXPECT_EQ(
        statements(),
        (std::vector<std::string>{
            score,
            std::string("SELECT * FROM prv_rules WHERE data_type = '") + d + "' UNION (" +
                "SELECT * FROM prv_rules WHERE data_type = 'zzzzDef' AND NOT EXISTS (SELECT * FROM prv_rules "
                "WHERE data_type = '" +
                d + "'))",
            "UPDATE document_share SET anno_points = " + value("SELECT anno_points FROM document_share") +
                " WHERE id_document = 1"}));
}

}  // namespace
