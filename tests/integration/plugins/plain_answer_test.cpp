#include "platform/posix/plugins/plain_answer.h"

#include <gtest/gtest.h>

#include <array>
#include <nlohmann/json.hpp>
#include <string>

namespace {

using nlohmann::json;
using platform::posix::PluginAnswer;
using platform::posix::readAnswer;
using platform::posix::readPlainAnswer;
using Values = std::vector<base::Variant>;

std::string withResults(const std::string& results) {
    return R"({"jsonrpc":"2.0","id":5,"result":{"results":)" + results + "}}";
}

TEST(PlainAnswer, HoldsTextsNumbersTruthsAndEmptyValues) {
    const auto answer = readPlainAnswer(withResults(R"(["One.","",0,7,123456789,true,false,null])"));
    ASSERT_TRUE(answer.has_value());
    EXPECT_EQ(answer->request, 5);
    EXPECT_EQ(*answer->results, (Values{"One.", "", 0, 7, 123456789, true, false, base::Variant()}));
    EXPECT_FALSE(answer->error || answer->itemError || answer->more || answer->result || answer->hasBadValue);
    EXPECT_EQ(*readPlainAnswer(withResults("[]"))->results, Values());
}

TEST(PlainAnswer, HasItsPartsInAnyOrderWithBlanksBetween) {
    const auto answer = readPlainAnswer(
        " { \"result\" :\t{ \"more\" : true , \"results\" : [ \"a\" , 1 ] } , \"id\" : 12 , \"jsonrpc\" : "
        "\"2.0\" } \r");
    ASSERT_TRUE(answer.has_value());
    EXPECT_EQ(answer->request, 12);
    EXPECT_EQ(answer->more, true);
    EXPECT_EQ(*answer->results, (Values{"a", 1}));
    EXPECT_EQ(readPlainAnswer(R"({"id":1,"result":{"result":"x"}})")->result, base::Variant("x"));
    EXPECT_EQ(readPlainAnswer(R"({"id":1,"result":{"results":[],"more":false}})")->more, false);
}

TEST(PlainAnswer, ReadsTextsAsTheLibraryDoes) {
    const std::array<std::string, 12> pieces{"a",     "wholesome words", R"(\")",     R"(\\)",
                                             R"(\/)", R"(\b\f\n\r\t)",   "é",         "日本",
                                             "😀",     R"(\u00e9)",       R"(\u0000)", R"(\uFFFD)"};
    for (std::size_t length = 0; length < 20; ++length) {
        for (const std::string& first : pieces) {
            for (const std::string& second : pieces) {
                const std::string text = "\"" + first + std::string(length, 'x') + second + "\"";
                const auto answer = readPlainAnswer(withResults("[" + text + "]"));
                ASSERT_TRUE(answer.has_value()) << text;
                EXPECT_EQ(answer->results->front(), base::Variant(json::parse(text).get<std::string>()));
            }
        }
    }
}

TEST(PlainAnswer, LeavesWhatIsUnusualToTheLibrary) {
    for (const char* result : {R"({"date":"2001-02-03 04:05:06"})", "-1.5", "-1e3", "1.5", "1e3",
                               "2147483648", "[]", R"("\ud83d\ude00")"}) {
        const std::string line = withResults("[" + std::string(result) + "]");
        EXPECT_FALSE(readPlainAnswer(line).has_value()) << line;
        EXPECT_TRUE(readAnswer(line).has_value()) << line;
    }
    for (const char* line :
         {R"({"id":1,"result":7})", R"({"id":1,"result":null})", R"({"id":1,"result":{}})",
          R"({"id":1,"error":{"code":1,"message":"m"}})",
          R"({"id":1,"result":{"results":["a"],"error":{"code":1}}})",
          R"({"id":1,"result":{"results":["a"],"results":["b"]}})",
          R"({"id":1,"id":2,"result":{"result":1}})",
          R"({"id":1,"result":{"result":1},"result":{"result":2}})", R"({"id":-1,"result":{"result":1}})",
          R"({"id":1,"result":{"result":1},"by":"the way"})"}) {
        EXPECT_FALSE(readPlainAnswer(line).has_value()) << line;
        EXPECT_TRUE(readAnswer(line).has_value()) << line;
    }
    EXPECT_EQ(readAnswer(R"({"id":1,"result":{"result":1},"result":{"result":2}})")->result,
              base::Variant(2));
}

TEST(PlainAnswer, IsNoneWhereThereIsNoAnswer) {
    std::string line = withResults(R"(["One \" \u00e9 é.",12,true])");
    ASSERT_TRUE(readPlainAnswer(line).has_value());
    for (std::size_t length = 0; length < line.size(); ++length) {
        EXPECT_FALSE(readPlainAnswer(line.substr(0, length)).has_value()) << length;
        EXPECT_FALSE(readAnswer(line.substr(0, length)).has_value()) << length;
    }
    for (const char* results : {"[\"\xC3\"]",    "[\"\xED\xA0\x80\"]",
                                "[\"a\x01\"]",   "[\"\t\"]",
                                R"(["\x"])",     R"(["\u12G4"])",
                                R"(["\u+123"])", "[01]",
                                "[-]",           "[- 1]",
                                "[-\t1]",        "[--1]",
                                "[-01]",         "[1,]",
                                "[,1]",          "[1 2]",
                                "[tru]",         "[True]",
                                "[1]]",          "{\"a\":}"}) {
        EXPECT_FALSE(readAnswer(withResults(results)).has_value()) << results;
    }
    EXPECT_FALSE(readAnswer(withResults("[1]") + "}").has_value());
    EXPECT_FALSE(readAnswer(withResults("[1]") + "x").has_value());
    EXPECT_FALSE(readAnswer(R"({"result":{"results":[1]}})").has_value());
}

}  // namespace
