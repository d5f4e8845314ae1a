#include "platform/jet/column_finder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/jet/lexer.h"
#include "unit/platform/jet/fake_column_catalog.h"

namespace {

using namespace platform::jet;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ColumnFinderTest : public testing::Test {
  protected:
    /// The column that each literal of a statement meets; "" where it meets none.
    std::vector<std::string> columnsOf(std::string_view text) {
        statement.read(text);
        const std::vector<Token> tokens = tokensOf(statement.shape());
        const ColumnFinder finder(tokens, catalog);
        insertTable = finder.insertTable();
        std::vector<std::string> names;
        types.clear();
        for (std::size_t i = 0; i < tokens.size(); ++i) {
            if (tokens[i].isLiteral()) {
                const MetColumn column = finder.column(i);
                names.push_back(column.name);
                types.push_back(column.type);
            }
        }
        return names;
    }

    fakes::FakeColumnCatalog catalog;
    LexedStatement statement;
    std::string insertTable;
    std::vector<ColumnType> types;
};

TEST_F(ColumnFinderTest, AnInsertedValueGoesToTheColumnAtItsPlace) {
    EXPECT_THAT(columnsOf("INSERT INTO document_object (title,first_saved, data_size, time_stamp ) VALUES "
                          "('16 Nov 2026','16 Nov 2026 01:47:03', 1000, '5 Mar 2002' ) "),
                ElementsAre("document_object.title", "document_object.first_saved",
                            "document_object.data_size", "document_object.time_stamp"));
    EXPECT_THAT(types, ElementsAre(ColumnType::text, ColumnType::date, ColumnType::number, ColumnType::date));
    EXPECT_EQ(insertTable, "document_object");
}

TEST_F(ColumnFinderTest, AWordOrAnExpressionAmongTheValuesKeepsThePlaces) {
    EXPECT_THAT(columnsOf("INSERT INTO document_object (location_invalid, data_size, time_stamp) VALUES "
                          "(TRUE, (1 + 2), '5 Mar 2002')"),
                ElementsAre("", "", "document_object.time_stamp"));
}

TEST_F(ColumnFinderTest, AnInsertWithoutColumnNamesFillsTheTableInItsOrder) {
    EXPECT_THAT(columnsOf("INSERT INTO prv_history VALUES (1, '16 Nov 2026', 100)"),
                ElementsAre("prv_history.id_prv", "prv_history.time_stamp", "prv_history.prv_value"));
}

TEST_F(ColumnFinderTest, AnInsertedQueryFillsTheColumnsAtItsPlaces) {
    EXPECT_THAT(
        columnsOf("INSERT INTO prv_history (id_prv, time_stamp) SELECT prv.id, '16 Nov 2026' FROM prv "
                  "WHERE prv.last_modified < '1 Jan 2026'"),
        ElementsAre("prv_history.time_stamp", "prv.last_modified"));
}

TEST_F(ColumnFinderTest, MoreValuesThanColumnsMeetNone) {
    EXPECT_THAT(columnsOf("INSERT INTO prv_history (id_prv) VALUES (1, '16 Nov 2026')"),
                ElementsAre("prv_history.id_prv", ""));
}

TEST_F(ColumnFinderTest, AnUpdateStoresIntoTheColumnBeforeTheEqualsSign) {
    EXPECT_THAT(columnsOf("UPDATE document_object SET title = '1 Jan 2026', time_stamp='1 Jan 2026' WHERE id "
                          "= 4"),
                ElementsAre("document_object.title", "document_object.time_stamp", "document_object.id"));
    EXPECT_THAT(insertTable, IsEmpty());
}

TEST_F(ColumnFinderTest, AComparisonMeetsItsColumnOnEitherSide) {
    EXPECT_THAT(columnsOf("SELECT id FROM prv WHERE last_modified < '1 Jan 2026' AND '1 Jan 2025' <= "
                          "last_modified AND last_prv <> 5"),
                ElementsAre("prv.last_modified", "prv.last_modified", "prv.last_prv"));
}

TEST_F(ColumnFinderTest, ParenthesesAroundTheColumnDoNotHideIt) {
    EXPECT_THAT(columnsOf("SELECT id FROM prv WHERE (((prv.last_modified)='1 Jan 2026') AND ((prv.id)=12))"),
                ElementsAre("prv.last_modified", "prv.id"));
    EXPECT_THAT(columnsOf("SELECT id FROM prv WHERE '1 Jan 2026' = ((prv.last_modified))"),
                ElementsAre("prv.last_modified"));
}

TEST_F(ColumnFinderTest, AFunctionOfAColumnIsNotTheColumn) {
    EXPECT_THAT(columnsOf("SELECT id FROM prv WHERE UPPER(last_modified) = '1 Jan 2026'"), ElementsAre(""));
    EXPECT_THAT(columnsOf("SELECT id FROM prv WHERE '1 Jan 2026' = UPPER(last_modified)"), ElementsAre(""));
}

TEST_F(ColumnFinderTest, EveryValueOfAListMeetsTheColumnBeforeIt) {
    EXPECT_THAT(columnsOf("SELECT id FROM prv WHERE last_modified IN ( '1 Jan 2026', '2 Jan 2026') AND "
                          "prv.id NOT IN (3,4)"),
                ElementsAre("prv.last_modified", "prv.last_modified", "prv.id", "prv.id"));
}

TEST_F(ColumnFinderTest, BothEndsOfARangeMeetItsColumn) {
    EXPECT_THAT(columnsOf("SELECT id FROM prv WHERE last_modified BETWEEN '1 Jan 2026' AND '2 Jan 2026'"),
                ElementsAre("prv.last_modified", "prv.last_modified"));
}

TEST_F(ColumnFinderTest, AQualifiedNameMeansItsTable) {
    EXPECT_THAT(
        columnsOf("SELECT prv.id FROM note, prv_history, prv WHERE note.time_stamp = '1 Jan 2026' AND "
                  "prv_history.time_stamp = '1 Jan 2026'"),
        ElementsAre("note.time_stamp", "prv_history.time_stamp"));
    EXPECT_THAT(types, ElementsAre(ColumnType::text, ColumnType::date));
}

TEST_F(ColumnFinderTest, AnAliasMeansItsTable) {
    EXPECT_THAT(columnsOf("SELECT h.id_prv FROM note AS n, prv_history h WHERE h.time_stamp = '1 Jan 2026' "
                          "AND n.time_stamp = '1 Jan 2026'"),
                ElementsAre("prv_history.time_stamp", "note.time_stamp"));
}

TEST_F(ColumnFinderTest, AJoinedTableIsASourceToo) {
    EXPECT_THAT(columnsOf("SELECT a.id FROM prv_history a INNER JOIN prv ON a.id_prv = prv.id WHERE "
                          "last_modified = '1 Jan 2026'"),
                ElementsAre("prv.last_modified"));
    EXPECT_THAT(columnsOf("SELECT id_prv FROM (prv_history INNER JOIN prv ON prv_history.id_prv = prv.id) "
                          "WHERE last_modified = '1 Jan 2026'"),
                ElementsAre("prv.last_modified"));
}

TEST_F(ColumnFinderTest, ASubQueryReadsItsOwnTablesFirst) {
    EXPECT_THAT(
        columnsOf("SELECT id FROM note WHERE id IN (SELECT id_prv FROM prv_history WHERE time_stamp = "
                  "'1 Jan 2026') AND time_stamp = '1 Jan 2026'"),
        ElementsAre("prv_history.time_stamp", "note.time_stamp"));
}

TEST_F(ColumnFinderTest, ASubQuerySeesTheTablesAroundIt) {
    EXPECT_THAT(columnsOf("SELECT id FROM prv WHERE NOT EXISTS (SELECT id FROM note WHERE last_modified > "
                          "'1 Jan 2026')"),
                ElementsAre("prv.last_modified"));
}

TEST_F(ColumnFinderTest, MembersOfAUnionReadTablesOfTheirOwn) {
    EXPECT_THAT(columnsOf("SELECT id FROM note WHERE time_stamp = '1 Jan 2026' UNION (SELECT id_prv FROM "
                          "prv_history WHERE time_stamp = '1 Jan 2026')"),
                ElementsAre("note.time_stamp", "prv_history.time_stamp"));
    EXPECT_THAT(columnsOf("SELECT id FROM note WHERE time_stamp = '1 Jan 2026' UNION SELECT id_prv FROM "
                          "prv_history WHERE time_stamp = '1 Jan 2026'"),
                ElementsAre("note.time_stamp", "prv_history.time_stamp"));
}

TEST_F(ColumnFinderTest, TheTableOfADeleteIsASource) {
    EXPECT_THAT(columnsOf("DELETE * FROM prv_history WHERE time_stamp < '1 Jan 2026'"),
                ElementsAre("prv_history.time_stamp"));
}

TEST_F(ColumnFinderTest, NamesAreReadInAnyCaseAndInBrackets) {
    EXPECT_THAT(columnsOf("select ID from [PRV] where [Last_Modified] = '1 Jan 2026' or PRV.ID = 1"),
                ElementsAre("PRV.last_modified", "PRV.id"));
}

TEST_F(ColumnFinderTest, ALiteralWithoutAColumnMeetsNone) {
    EXPECT_THAT(columnsOf("SELECT '1 Jan 2026', 5 FROM prv WHERE '1 Jan 2026' = 'x' AND 1 = 1"),
                ElementsAre("", "", "", "", "", ""));
}

TEST_F(ColumnFinderTest, UnknownTablesAndColumnsMeetNone) {
    EXPECT_THAT(columnsOf("SELECT id FROM elsewhere WHERE time_stamp = '1 Jan 2026'"), ElementsAre(""));
    EXPECT_THAT(columnsOf("SELECT id FROM prv WHERE colour = '1 Jan 2026'"), ElementsAre(""));
    EXPECT_THAT(columnsOf("INSERT INTO elsewhere VALUES ('1 Jan 2026')"), ElementsAre(""));
    EXPECT_THAT(types, ElementsAre(ColumnType::unknown));
}

}  // namespace
