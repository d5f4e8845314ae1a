// What a machine with Jet is told to make. Without Jet this is all that can be said of it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/text.h"
#include "platform/sqlite/library_schema.h"
#include "windows/ado/ado_library.h"

namespace {

using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::Not;

std::size_t countOf(std::string_view text, std::string_view part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string_view::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

std::size_t countOfStatements(std::string_view part) {
    const auto statements = ado_tests::jetSchema();
    return static_cast<std::size_t>(
        std::count_if(statements.begin(), statements.end(),
                      [&](const auto& text) { return base::trim(text).starts_with(part); }));
}

TEST(JetSchema, MakesEveryTableAndIndex) {
    EXPECT_EQ(countOfStatements("CREATE TABLE"), countOf(platform::librarySchema(), "\nCREATE TABLE"));
    EXPECT_EQ(countOfStatements("CREATE INDEX"), countOf(platform::librarySchema(), "\nCREATE INDEX"));
}

TEST(JetSchema, HasNoWordsOfSqlite) {
    for (const char* word : {"AUTOINCREMENT", "COLLATE", "PRAGMA", "datetime(", "CHECK", " OR ROLLBACK",
                             "NUMBER", "BOOLEAN", "--", "BEGIN", "COMMIT", "TRIGGER", "sqlite_", " / "}) {
        EXPECT_THAT(ado_tests::jetSchema(), Each(Not(HasSubstr(word)))) << word;
    }
}

TEST(JetSchema, InsertsOneRowAtATime) {
    EXPECT_THAT(ado_tests::jetSchema(),
                Contains("INSERT INTO search_weight (type, description, comp_type) VALUES (1, 'normal', 2)"));
    EXPECT_THAT(ado_tests::jetSchema(), Contains("INSERT INTO word_noise (term) VALUES ('yours')"));
}

}  // namespace
