#include "sdk/json_text.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

std::string written(const base::Variant& value) {
    std::string text = "before ";
    sdk::appendJson(text, value);
    EXPECT_EQ(text.substr(0, 7), "before ");
    return text.substr(7);
}

/// As the JSON library writes it.
std::string expectedFor(const std::string& text) {
    return json(text).dump(-1, ' ', false, json::error_handler_t::replace);
}

TEST(JsonText, IsWrittenAsTheLibraryWritesIt) {
    for (int first = 0; first < 256; ++first) {
        for (const std::string_view after :
             {"", "\x80", "\xBF\xBF", "\xA0\x80\x80", "\x90\x80", "\"", "\\", "x"}) {
            for (const std::size_t length : {0UL, 1UL, 7UL, 8UL, 9UL, 30UL}) {
                const std::string text = std::string(length, 'a') + static_cast<char>(first) +
                                         std::string(after) + std::string(length, 'b');
                EXPECT_EQ(written(text), expectedFor(text)) << first;
            }
        }
    }
}

TEST(JsonText, KeepsCharactersAndReplacesStrayBytes) {
    EXPECT_EQ(written(""), "\"\"");
    EXPECT_EQ(written("naïve 日本 😀"), "\"naïve 日本 😀\"");
    EXPECT_EQ(written("say \"so\"\\\n\t\r\b\f"), R"("say \"so\"\\\n\t\r\b\f")");
    EXPECT_EQ(written("\x1B"), R"("\u001b")");
    EXPECT_EQ(written("\"a\" \xFF \"b\" \xC3"), "\"\\\"a\\\" \xEF\xBF\xBD \\\"b\\\" \xEF\xBF\xBD\"");
}

TEST(JsonText, HoldsEveryKindOfValue) {
    EXPECT_EQ(written(base::Variant()), "null");
    EXPECT_EQ(written(base::Null()), "null");
    EXPECT_EQ(written(true), "true");
    EXPECT_EQ(written(-7), "-7");
    EXPECT_EQ(written(2.5), "2.5");
    EXPECT_EQ(written(*base::DateTime::fromCivil({2001, 2, 3, 4, 5, 6})),
              R"({"date":"2001-02-03 04:05:06"})");
}

}  // namespace
