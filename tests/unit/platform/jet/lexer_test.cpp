#include "platform/jet/lexer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/runtime_error.h"

namespace {

using platform::jet::LexedStatement;
using platform::jet::Literal;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

using Values = std::vector<std::string>;

class Lexer : public testing::Test {
  protected:
    /// The shape, with "?" where a literal stood.
    std::string shapeOf(std::string_view text) {
        statement.read(text);
        std::string shape = statement.shape();
        for (char& c : shape) {
            c = c == platform::jet::literalMark ? '?' : c;
        }
        return shape;
    }

    /// The literals: texts between quotes, numbers without.
    Values literalsOf(std::string_view text) {
        statement.read(text);
        Values values;
        for (const Literal& literal : statement.literals()) {
            const std::string quote = literal.kind == Literal::Kind::text ? "'" : "";
            values.push_back(quote + std::string(literal.value) + quote);
        }
        return values;
    }

    std::string errorOf(std::string_view text) {
        try {
            statement.read(text);
        } catch (const base::RuntimeError& error) {
            EXPECT_EQ(error.number(), static_cast<int>(base::ErrorNumber::databaseError));
            return error.description();
        }
        return {};
    }

    LexedStatement statement;
};

TEST_F(Lexer, GivesStatementsThatDifferInValuesOneShape) {
    const std::string shape = shapeOf("INSERT INTO root_word ( word, n ) VALUES( 'river', 5)");
    EXPECT_EQ(shape, "INSERT INTO root_word ( word, n ) VALUES( ?, ?)");
    EXPECT_EQ(shapeOf("INSERT INTO root_word ( word, n ) VALUES( 'O''Brien''s boat', -1.5e+10)"), shape);
    EXPECT_EQ(shapeOf("INSERT INTO root_word ( word, n ) VALUES( '', 0)"), shape);
}

TEST_F(Lexer, TakesTextsAndNumbersOutInTheirOrder) {
    EXPECT_THAT(literalsOf("SELECT a FROM t WHERE a = 'x' AND b=12 AND c IN (3, \"y\")"),
                ElementsAre("'x'", "12", "3", "'y'"));
}

TEST_F(Lexer, ForgetsTheStatementBefore) {
    literalsOf("SELECT a FROM t WHERE a = 'x''y'");
    EXPECT_THAT(literalsOf("SELECT a FROM t"), IsEmpty());
    EXPECT_EQ(statement.shape(), "SELECT a FROM t");
}

TEST_F(Lexer, TellsWhereEachLiteralStands) {
    const std::string text = "SELECT a FROM t WHERE a = 'it''s' AND b = 7";
    statement.read(text);
    ASSERT_EQ(statement.literals().size(), 2U);
    for (const Literal& literal : statement.literals()) {
        EXPECT_EQ(statement.shape().at(literal.shapePosition), platform::jet::literalMark);
    }
    const Literal& first = statement.literals()[0];
    EXPECT_EQ(text.substr(first.position, first.length), "'it''s'");
    const Literal& second = statement.literals()[1];
    EXPECT_EQ(text.substr(second.position, second.length), "7");
}

TEST_F(Lexer, HalvesDoubledQuotes) {
    EXPECT_THAT(literalsOf("SELECT 'O''Brien', '''', 'a''''b', ''"),
                ElementsAre("'O'Brien'", "'''", "'a''b'", "''"));
    EXPECT_THAT(literalsOf(R"(SELECT "say ""no""", 'a "quoted" word', "it's")"),
                ElementsAre(R"('say "no"')", R"('a "quoted" word')", "'it's'"));
}

TEST_F(Lexer, KeepsEveryByteOfAText) {
    using namespace std::string_literals;
    const std::string text = "SELECT 'a\0b\x01;(-- TOP 3 \r\n\xC3\xA9' FROM t"s;
    EXPECT_THAT(literalsOf(text), ElementsAre("'a\0b\x01;(-- TOP 3 \r\n\xC3\xA9'"s));
    EXPECT_EQ(shapeOf(text), "SELECT ? FROM t");
}

TEST_F(Lexer, LeavesTheNumberOfTopInTheShape) {
    EXPECT_EQ(shapeOf("SELECT TOP 1 a FROM t WHERE id = 1"), "SELECT TOP 1 a FROM t WHERE id = ?");
    EXPECT_EQ(shapeOf("select top 20 5 from t"), "select top 20 ? from t");
}

TEST_F(Lexer, LeavesTheNumbersOfOrderByAndGroupByInTheShape) {
    EXPECT_EQ(shapeOf("SELECT a, 4 FROM t GROUP BY 1 ORDER BY 2 ASC, 1"),
              "SELECT a, ? FROM t GROUP BY 1 ORDER BY 2 ASC, 1");
    EXPECT_EQ(shapeOf("SELECT a FROM (SELECT a FROM t ORDER BY 1) WHERE b = 1"),
              "SELECT a FROM (SELECT a FROM t ORDER BY 1) WHERE b = ?");
}

TEST_F(Lexer, ReadsEveryFormOfANumber) {
    EXPECT_THAT(literalsOf("SELECT 0, 12, 1.5, .5, 2., 1e3, 1.5E-7, 2e+4"),
                ElementsAre("0", "12", "1.5", ".5", "2.", "1e3", "1.5E-7", "2e+4"));
}

TEST_F(Lexer, TakesTheSignOfANegativeNumberWithIt) {
    EXPECT_THAT(literalsOf("INSERT INTO t VALUES(-1, 1, -.5, -2e3)"), ElementsAre("-1", "1", "-.5", "-2e3"));
    EXPECT_THAT(literalsOf("SELECT a FROM t WHERE a=-5 AND b >-6"), ElementsAre("-5", "-6"));
}

TEST_F(Lexer, AMinusBehindAValueIsAnOperator) {
    EXPECT_EQ(shapeOf("SELECT a -1, (b)-2, 3-4, [c]-5 FROM t"), "SELECT a -?, (b)-?, ?-?, [c]-? FROM t");
    EXPECT_THAT(literalsOf("SELECT a -1, (b)-2, 3-4, [c]-5 FROM t"), ElementsAre("1", "2", "3", "4", "5"));
}

TEST_F(Lexer, DigitsInNamesAreNoNumbers) {
    EXPECT_THAT(literalsOf("SELECT a1, [b 2], t3.c4 FROM t3"), IsEmpty());
}

TEST_F(Lexer, TakesNamesInAnyAlphabet) {
    EXPECT_EQ(shapeOf("SELECT gr\xC3\xB6\xC3\x9F"
                      "e FROM t WHERE a = 1"),
              "SELECT gr\xC3\xB6\xC3\x9F"
              "e FROM t WHERE a = ?");
}

TEST_F(Lexer, RaisesForATextThatIsNotClosed) {
    EXPECT_THAT(
        errorOf("SELECT 'O'Brien' FROM t"),
        HasSubstr("a text literal has no closing quote at character 16 of the statement: SELECT 'O'B"));
    EXPECT_THAT(errorOf("SELECT 'it''"), HasSubstr("no closing quote at character 8"));
}

TEST_F(Lexer, CountsCharactersInErrorsNotBytes) {
    EXPECT_THAT(errorOf("SELECT '\xC3\xA9\xC3\xA9' , 'x"), HasSubstr("at character 15"));
}

TEST_F(Lexer, ShowsTheBeginningOfALongStatementInErrors) {
    const std::string description = errorOf("SELECT '" + std::string(1000, 'x'));
    EXPECT_THAT(description, EndsWith("xxx..."));
    EXPECT_LT(description.size(), 400U);
}

TEST_F(Lexer, RaisesForANulOutsideTexts) {
    using namespace std::string_literals;
    EXPECT_THAT(errorOf("SELECT a\0 FROM t"s), HasSubstr("unexpected character at character 9"));
    EXPECT_THAT(errorOf("SELECT \x01 FROM t"s), HasSubstr("unexpected character at character 8"));
    EXPECT_THAT(errorOf("SELECT [a\x01] FROM t"s), HasSubstr("unexpected character in a bracketed name"));
}

TEST_F(Lexer, RaisesForParenthesesAndBracketsWithoutPartner) {
    EXPECT_THAT(errorOf("SELECT (1 FROM t"), HasSubstr("a parenthesis is not closed"));
    EXPECT_THAT(errorOf("SELECT 1) FROM t"),
                HasSubstr("a parenthesis is closed that was not opened at character 9"));
    EXPECT_THAT(errorOf("SELECT [a FROM t"), HasSubstr("a bracketed name is not closed at character 8"));
}

TEST_F(Lexer, TakesOneStatementWithAnEnd) {
    EXPECT_EQ(shapeOf("SELECT a FROM t; \r\n;"), "SELECT a FROM t");
    EXPECT_THAT(errorOf("SELECT 1; DELETE * FROM t"), HasSubstr("more than one statement at character 9"));
}

TEST_F(Lexer, RaisesForAnEmptyStatement) {
    EXPECT_THAT(errorOf(""), HasSubstr("the statement is empty"));
    EXPECT_THAT(errorOf(" \r\n"), HasSubstr("the statement is empty"));
}

TEST_F(Lexer, LeavesStatementsOfOtherKindsWhole) {
    const std::string text = "CREATE TABLE t (a LONG DEFAULT 5, b TEXT DEFAULT 'x'); -- '";
    EXPECT_EQ(shapeOf(text), text);
    EXPECT_THAT(statement.literals(), IsEmpty());
    EXPECT_FALSE(statement.isTranslatable());
}

TEST_F(Lexer, KnowsTheStatementsOfTheDialectInAnyCase) {
    for (const char* text : {"Select 1", "  insert into t values (1)", "UPDATE t SET a=1", "delete * from t",
                             "(SELECT 1) UNION (SELECT 2)"}) {
        statement.read(text);
        EXPECT_TRUE(statement.isTranslatable()) << text;
    }
}

TEST_F(Lexer, NamesThePlaceOfAnErrorInTheStatementNotInTheShape) {
    statement.read("SELECT 'abc' FORM t");
    try {
        statement.raiseAt("syntax error", statement.shape().find("FORM"));
        FAIL() << "nothing was raised";
    } catch (const base::RuntimeError& error) {
        EXPECT_THAT(error.description(), HasSubstr("syntax error at character 14 of the statement"));
    }
}

/// What a lexer gives that has read `before`, and one that has read nothing.
struct Readings {
    bool isSameShape = false;
    std::string shape;
    std::string freshShape;
    Values values;
    Values freshValues;
};

Readings readAfter(std::string_view before, std::string_view text) {
    const auto valuesOf = [](const LexedStatement& statement) {
        Values values;
        for (const Literal& literal : statement.literals()) {
            values.push_back(std::string(literal.value) + "@" + std::to_string(literal.position) + "+" +
                             std::to_string(literal.length) + "@" + std::to_string(literal.shapePosition));
        }
        return values;
    };
    LexedStatement warm;
    LexedStatement fresh;
    warm.read(before);
    Readings readings;
    readings.isSameShape = warm.read(text);
    fresh.read(text);
    readings.shape = warm.shape();
    readings.freshShape = fresh.shape();
    readings.values = valuesOf(warm);
    readings.freshValues = valuesOf(fresh);
    return readings;
}

TEST(LexerAfterAnotherStatement, ReadsWhatAFreshOneReads) {
    const std::vector<std::string> texts = {
        "INSERT INTO t (a, b) VALUES(1,'x')",
        "INSERT INTO t (a, b) VALUES(-22.5e3,'it''s \"x\"')",
        "INSERT INTO t (a, b) VALUES(.5,\"it's\")",
        "INSERT INTO t (a, b) VALUES(7,'')",
        "INSERT INTO t (a, b) VALUES('7','x')",
        "INSERT INTO t (a, b) VALUES(7,8)",
        "INSERT INTO t (a, b) VALUES(7,'x');",
        "INSERT INTO t (a, b) VALUES(7,'x') ",
        "INSERT INTO t (a, b) VALUES(7,'x'), (8,'y')",
        "INSERT INTO t (a, b) VALUES(7e,'x')",
        "SELECT a -5 FROM t",
        "SELECT a -.5 FROM t",
        "SELECT a - 5 FROM t",
        "SELECT a - -5 FROM t",
        "SELECT TOP 5 a FROM t WHERE a=5",
        "SELECT TOP 6 a FROM t WHERE a=5",
        "SELECT a FROM t",
        "SELECT a FROM t1",
        "CREATE TABLE t (a LONG DEFAULT 5)",
    };
    for (const std::string& before : texts) {
        for (const std::string& text : texts) {
            const Readings readings = readAfter(before, text);
            EXPECT_EQ(readings.shape, readings.freshShape) << text << " after " << before;
            EXPECT_EQ(readings.values, readings.freshValues) << text << " after " << before;
        }
    }
}

TEST(LexerAfterAnotherStatement, TellsWhetherTheShapeIsTheSame) {
    const char* const before = "INSERT INTO t (a, b) VALUES(1,'x')";
    EXPECT_TRUE(readAfter(before, "INSERT INTO t (a, b) VALUES(-2,'it''s')").isSameShape);
    EXPECT_FALSE(readAfter(before, "INSERT INTO t (a, b) VALUES(2,3)").isSameShape);
    EXPECT_FALSE(readAfter(before, "INSERT INTO t (a, c) VALUES(1,'x')").isSameShape);
    EXPECT_FALSE(readAfter(before, "INSERT INTO t (a, b) VALUES(1,'x')+1").isSameShape);
}

TEST_F(Lexer, RaisesAfterAStatementOfTheSameBeginning) {
    statement.read("SELECT a FROM t WHERE b='x'");
    EXPECT_THAT(errorOf("SELECT a FROM t WHERE b='y"), HasSubstr("a text literal has no closing quote"));
    EXPECT_FALSE(statement.read("SELECT a FROM t WHERE b='z'"));
    EXPECT_TRUE(statement.read("SELECT a FROM t WHERE b=''"));
}

}  // namespace
