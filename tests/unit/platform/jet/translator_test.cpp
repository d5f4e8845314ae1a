#include "platform/jet/translator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/runtime_error.h"
#include "unit/platform/jet/fake_column_catalog.h"

namespace {

using namespace platform::jet;
using ::testing::HasSubstr;

std::string numbered(std::size_t number) {
    return "?" + std::to_string(number);
}

class TranslatorTest : public testing::Test {
  protected:
    std::string translated(std::string_view text) {
        statement.read(text);
        result = translate(statement, dialect, catalog);
        return result.text;
    }

    std::string errorOf(std::string_view text) {
        try {
            translated(text);
        } catch (const base::RuntimeError& error) {
            return error.description();
        }
        return {};
    }

    fakes::FakeColumnCatalog catalog;
    Dialect dialect{"1", "0", numbered, false};
    LexedStatement statement;
    Translation result;
};

TEST_F(TranslatorTest, DropsTheStarOfADelete) {
    EXPECT_EQ(translated("DELETE * FROM prv WHERE id = 4"), "DELETE FROM prv WHERE id = ?1");
    EXPECT_EQ(translated("delete *  from prv"), "delete from prv");
}

TEST_F(TranslatorTest, KeepsTheStarOfAQuery) {
    EXPECT_EQ(translated("SELECT * FROM prv WHERE last_prv * 2 > 5"),
              "SELECT * FROM prv WHERE last_prv * ?1 > ?2");
}

TEST_F(TranslatorTest, SaysTrueAndFalseInTheDialectsWords) {
    EXPECT_EQ(translated("UPDATE document_object SET location_invalid = TRUE WHERE location_invalid=false"),
              "UPDATE document_object SET location_invalid = 1 WHERE location_invalid = 0");
    EXPECT_EQ(translated("SELECT [true] FROM prv WHERE title = 'TRUE'"),
              "SELECT [true] FROM prv WHERE title = ?1");
}

TEST_F(TranslatorTest, SaysTopAsALimitBehindTheQuery) {
    EXPECT_EQ(translated("SELECT TOP 1 id FROM prv WHERE id = 5 ORDER BY id"),
              "SELECT id FROM prv WHERE id = ?1 ORDER BY id LIMIT 1");
    EXPECT_EQ(translated("SELECT DISTINCT TOP 3 id FROM prv"), "SELECT DISTINCT id FROM prv LIMIT 3");
}

TEST_F(TranslatorTest, LimitsASubQueryWithinItsParenthesis) {
    EXPECT_EQ(translated("SELECT id FROM prv WHERE id IN (SELECT TOP 2 id_prv FROM prv_history) AND id > 1"),
              "SELECT id FROM prv WHERE id IN ( SELECT id_prv FROM prv_history LIMIT 2 ) AND id > ?1");
}

TEST_F(TranslatorTest, AColumnMayBeCalledTop) {
    EXPECT_EQ(translated("SELECT id, top FROM prv"), "SELECT id , top FROM prv");
}

TEST_F(TranslatorTest, RaisesForATopWithoutANumber) {
    EXPECT_THAT(errorOf("SELECT 'a', id FROM prv WHERE id IN (SELECT TOP id FROM prv)"),
                HasSubstr("TOP needs a number at character 45"));
}

TEST_F(TranslatorTest, RaisesForATopInAMemberOfAUnion) {
    EXPECT_THAT(errorOf("SELECT TOP 1 id FROM prv UNION SELECT id FROM note"),
                HasSubstr("a member of a UNION cannot be limited"));
    EXPECT_THAT(errorOf("SELECT id FROM prv UNION (SELECT TOP 1 id FROM note)"),
                HasSubstr("a member of a UNION cannot be limited"));
}

TEST_F(TranslatorTest, ReadsTheLastKeyAsOneRow) {
    EXPECT_EQ(translated("SELECT @@IDENTITY AS id_prv FROM prv"), "SELECT ?1 AS id_prv FROM prv LIMIT 1");
    EXPECT_TRUE(result.readsIdentity);
    ASSERT_EQ(result.parameters.size(), 1U);
    EXPECT_TRUE(result.parameters[0].isIdentity);
    translated("SELECT id AS id_prv FROM prv");
    EXPECT_FALSE(result.readsIdentity);
}

TEST_F(TranslatorTest, RaisesForOtherSystemNames) {
    EXPECT_THAT(errorOf("SELECT @@VERSION FROM prv"), HasSubstr("unknown name @@VERSION at character 8"));
}

TEST_F(TranslatorTest, ComparesWithNullByIs) {
    EXPECT_EQ(translated("SELECT id FROM note WHERE time_stamp <> '' AND time_stamp <> Null OR id = NULL"),
              "SELECT id FROM note WHERE time_stamp <> ?1 AND time_stamp IS NOT NULL OR id IS NULL");
}

TEST_F(TranslatorTest, StoresNullWithAnEqualsSign) {
    EXPECT_EQ(translated("UPDATE note SET id = Null, time_stamp = 'a' WHERE id = Null"),
              "UPDATE note SET id = Null , time_stamp = ?1 WHERE id IS NULL");
    EXPECT_EQ(translated("UPDATE note SET id = (SELECT id FROM prv WHERE last_prv = Null)"),
              "UPDATE note SET id = ( SELECT id FROM prv WHERE last_prv IS NULL )");
}

TEST_F(TranslatorTest, TakesMembersOfAUnionOutOfTheirParentheses) {
    EXPECT_EQ(translated("SELECT * FROM prv WHERE id = 1 UNION (SELECT * FROM prv WHERE NOT EXISTS (SELECT * "
                         "FROM prv WHERE id = 2))"),
              "SELECT * FROM prv WHERE id = ?1 UNION SELECT * FROM prv WHERE NOT EXISTS ( SELECT * FROM prv "
              "WHERE id = ?2 )");
    EXPECT_EQ(translated("(SELECT id FROM prv) UNION ALL (SELECT id FROM note)"),
              "SELECT id FROM prv UNION ALL SELECT id FROM note");
}

TEST_F(TranslatorTest, KeepsTheParenthesesForADialectThatTakesThem) {
    dialect.takesUnionParentheses = true;
    EXPECT_EQ(translated("SELECT id FROM prv UNION (SELECT id FROM note)"),
              "SELECT id FROM prv UNION ( SELECT id FROM note )");
}

TEST_F(TranslatorTest, NumbersTheLiteralsAndTellsTheirColumns) {
    EXPECT_EQ(translated("UPDATE prv SET last_prv = 44, last_modified = '11 Jan 2026' WHERE id = 3"),
              "UPDATE prv SET last_prv = ?1 , last_modified = ?2 WHERE id = ?3");
    ASSERT_EQ(result.parameters.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(result.parameters[i].literal, i);
        EXPECT_FALSE(result.parameters[i].isIdentity);
    }
    EXPECT_EQ(result.parameters[0].column.name, "prv.last_prv");
    EXPECT_EQ(result.parameters[1].column.type, ColumnType::date);
}

TEST_F(TranslatorTest, KeepsQualifiedNamesTogether) {
    EXPECT_EQ(translated("SELECT prv.id, [prv].[last_prv] FROM prv WHERE prv . id=1"),
              "SELECT prv.id , [prv].[last_prv] FROM prv WHERE prv.id = ?1");
}

TEST_F(TranslatorTest, KnowsWhichInsertGivesAKey) {
    translated("INSERT INTO prv (last_prv ) VALUES (100 ) ");
    EXPECT_TRUE(result.givesAutoNumber);
    translated("INSERT INTO prv_history (id_prv ) VALUES (1 ) ");
    EXPECT_FALSE(result.givesAutoNumber);
    translated("INSERT INTO elsewhere (id ) VALUES (1 ) ");
    EXPECT_FALSE(result.givesAutoNumber);
    translated("UPDATE prv SET last_prv = 1");
    EXPECT_FALSE(result.givesAutoNumber);
}

TEST_F(TranslatorTest, FindsThePlaceOfAWordAgain) {
    translated("DELETE  *  FROM prv WHERE  id = 'abc' AND FORM");
    const std::size_t place = result.shapePosition(result.text.find("FORM"));
    EXPECT_EQ(statement.shape().substr(place), "FORM");
    EXPECT_EQ(result.shapePosition(0), 0U);
}

}  // namespace
