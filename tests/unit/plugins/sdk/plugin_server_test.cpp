#include "sdk/plugin_server.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "fakes/temporary_folder.h"
#include "unit/plugins/sdk/sample_extractor.h"

namespace {

using nlohmann::json;

class PluginServerTest : public testing::Test {
  protected:
    json ask(const std::string& method, const json& params) {
        const json request = {{"jsonrpc", "2.0"}, {"id", ++id_}, {"method", method}, {"params", params}};
        const std::string line = server_.answer(request.dump());
        EXPECT_EQ(line.find('\n'), line.size() - 1) << line;
        json reply = json::parse(line);
        EXPECT_EQ(reply["id"], id_);
        return reply;
    }
    json call(const json& object, const std::string& method, const json& arguments = json::array()) {
        return ask("call", {{"object", object}, {"method", method}, {"arguments", arguments}});
    }
    static json step(const std::string& method, const json& arguments = json::array(),
                     const std::optional<int>& expected = std::nullopt) {
        json presented = {{"method", method}, {"arguments", arguments}};
        if (expected) {
            presented["expect"] = *expected;
        }
        return presented;
    }
    /// A sequence that asks for the number of sentences and goes on with the first of them.
    json countWithItems(const json& object, int most) {
        return ask("sequence", {{"object", object},
                                {"calls", {step("GetNumberOfSentences")}},
                                {"items",
                                 {{"methods", {"GetSentenceText"}},
                                  {"more", "MoreSentences"},
                                  {"next", "GetNextSentence"},
                                  {"count", most}}}})["result"];
    }
    /// Makes the sentences of documents one after the other, and raises an error in the place of "".
    void makeOneByOne(const std::vector<std::string>& sentences) {
        document_.nextSentences = [sentences, next = std::size_t{0}]() mutable -> std::vector<std::string> {
            if (next == sentences.size()) {
                return {};
            }
            if (sentences[next].empty()) {
                throw sdk::ExtractionError(7, "torn");
            }
            return {sentences[next++]};
        };
    }
    json open() {
        json object = ask("create", json::object())["result"];
        EXPECT_EQ(call(object, "SetDocumentID", {"document"})["result"]["result"], true);
        return object;
    }

    sdk::Document document_;
    sdk::PluginServer server_{[this] { return std::make_unique<sdk_test::SampleExtractor>(document_); }};
    int id_ = 0;
};

TEST_F(PluginServerTest, CallsAnObjectByMethodName) {
    document_.sentences = {"One.", "Two."};
    const json object = open();
    EXPECT_EQ(call(object, "GetNumberOfSentences")["result"], json({{"result", 2}}));
    EXPECT_EQ(call(object, "GetSentenceText", {2})["result"], json({{"result", "Two."}}));
}

TEST_F(PluginServerTest, KeepsObjectsApart) {
    document_.sentences = {"One."};
    const json first = open();
    document_.sentences = {"Other."};
    const json second = open();
    EXPECT_EQ(call(first, "GetNextSentence")["result"]["result"], "One.");
    EXPECT_EQ(call(second, "GetNextSentence")["result"]["result"], "Other.");
}

TEST_F(PluginServerTest, SendsADateAsAnObject) {
    document_.properties["last_time_modified"] = *base::DateTime::fromCivil({2001, 2, 3, 4, 5, 6});
    const json object = open();
    EXPECT_EQ(call(object, "GetDocumentProperty", {"last_time_modified"})["result"]["result"],
              json({{"date", "2001-02-03 04:05:06"}}));
}

TEST_F(PluginServerTest, SendsTextWithNulAndReplacesWhatIsNoUtf8) {
    document_.sentences = {std::string("a\0b\nc", 5), "bad \xFF byte"};
    const json object = open();
    EXPECT_EQ(call(object, "GetSentenceText", {1})["result"]["result"], std::string("a\0b\nc", 5));
    EXPECT_EQ(call(object, "GetSentenceText", {2})["result"]["result"], "bad \xEF\xBF\xBD byte");
}

TEST_F(PluginServerTest, AnswersARangeOfTwoMethodsInTheOrderOfTheCalls) {
    document_.metaTags = {{"red", "colour"}, {"Ann", "author"}};
    const json object = open();
    const json reply = ask(
        "range",
        {{"object", object}, {"methods", {"GetMetaTagText", "GetMetaTagType"}}, {"first", 1}, {"last", 2}});
    EXPECT_EQ(reply["result"], json({{"results", {"red", "colour", "Ann", "author"}}}));
}

TEST_F(PluginServerTest, EndsARangeAtAnErrorAndKeepsTheItemsBeforeIt) {
    document_.sentences = {"One.", "Two."};
    const json object = open();
    const json reply =
        ask("range", {{"object", object}, {"methods", {"GetSentenceText"}}, {"first", 2}, {"last", 9}});
    EXPECT_EQ(reply["result"]["results"], json({"Two."}));
    EXPECT_EQ(reply["result"]["error"]["code"], 9);
    EXPECT_EQ(reply["result"]["error"]["message"], "index 3 is outside 1..2");
}

TEST_F(PluginServerTest, EndsARangeEarlyWhenItsAnswerGrowsLarge) {
    document_.sentences.assign(8, std::string(400 * 1024, 'x'));
    const json object = open();
    const json reply =
        ask("range", {{"object", object}, {"methods", {"GetSentenceText"}}, {"first", 1}, {"last", 8}});
    EXPECT_EQ(reply["result"]["results"].size(), 3U);
    EXPECT_FALSE(reply["result"].contains("error"));
}

TEST_F(PluginServerTest, AnswersASequenceInTheOrderOfItsCalls) {
    document_.sentences = {"One.", "Two."};
    document_.properties["title"] = "A title";
    const json reply = ask(
        "sequence", {{"object", open()},
                     {"calls",
                      {step("GetDocumentProperty", {"title"}), step("GetLastErrorNumber", json::array(), 0),
                       step("GetSentenceText", {2}), step("GetNumberOfSentences")}}});
    EXPECT_EQ(reply["result"], json({{"results", {"A title", 0, "Two.", 2}}}));
}

TEST_F(PluginServerTest, EndsASequenceAtAResultThatIsNotTheExpectedOne) {
    document_.sentences = {"One.", "Two."};
    const json reply =
        ask("sequence", {{"object", open()},
                         {"calls",
                          {step("GetNumberofMetaTags", json::array(), 0),
                           step("GetNumberOfSentences", json::array(), 0), step("GetSentenceText", {2})}}});
    EXPECT_EQ(reply["result"], json({{"results", {0, 2}}}));
}

TEST_F(PluginServerTest, EndsASequenceAtAnErrorAndKeepsTheResultsBeforeIt) {
    document_.sentences = {"One."};
    const json object = open();
    const json reply = ask(
        "sequence", {{"object", object},
                     {"calls", {step("GetNextSentence"), step("GetNextSentence"), step("MoreSentences")}}});
    EXPECT_EQ(reply["result"]["results"], json({"One."}));
    EXPECT_EQ(reply["result"]["error"]["code"], 9);
    EXPECT_EQ(ask("sequence", {{"object", object}})["error"]["code"], -32602);
}

TEST_F(PluginServerTest, GoesOnWithTheFirstOfTheItemsThatASequenceCounts) {
    document_.sentences = {"One.", "Two.", "Three."};
    const json object = open();
    EXPECT_EQ(countWithItems(object, 2), json({{"results", {3, "One.", "Two."}}}));
    EXPECT_EQ(countWithItems(object, 9), json({{"results", {3, "One.", "Two.", "Three."}}}));
    EXPECT_EQ(countWithItems(object, 0), json({{"results", {3}}}));
}

TEST_F(PluginServerTest, HasNoItemsToGoOnWithWhereThereAreNone) {
    EXPECT_EQ(countWithItems(open(), 2), json({{"results", {0}}}));
}

TEST_F(PluginServerTest, GoesOnWithItemsOfAnUnknownNumber) {
    makeOneByOne({"One.", "Two.", "Three."});
    const json object = open();
    EXPECT_EQ(countWithItems(object, 2), json({{"results", {-1, "One.", "Two."}}, {"more", true}}));
    EXPECT_EQ(countWithItems(object, 3), json({{"results", {-1, "One.", "Two.", "Three."}}, {"more", true}}))
        << "asked again, it begins anew";
    EXPECT_EQ(countWithItems(object, 4),
              json({{"results", {-1, "One.", "Two.", "Three."}}, {"more", false}}));
    makeOneByOne({});
    EXPECT_EQ(countWithItems(open(), 2), json({{"results", {-1}}, {"more", false}}));
}

TEST_F(PluginServerTest, SaysTheErrorOfAnItemBehindTheOnesBeforeIt) {
    makeOneByOne({"One.", ""});
    const json torn = countWithItems(open(), 9);
    EXPECT_EQ(torn["results"], json({-1, "One."}));
    EXPECT_EQ(torn["error"], json({{"code", 7}, {"message", "torn"}, {"method", "MoreSentences"}}));
    document_ = {};
    document_.sentences = {"One."};
    const json reply = ask("sequence", {{"object", open()},
                                        {"calls", {step("GetNumberOfSentences")}},
                                        {"items", {{"methods", {"GetMetaTagText"}}, {"count", 5}}}});
    EXPECT_EQ(reply["result"]["results"], json({1}));
    EXPECT_EQ(reply["result"]["error"]["message"], "index 1 is outside 1..0");
}

TEST_F(PluginServerTest, EndsASequenceEarlyWhenItsItemsGrowLarge) {
    document_.sentences.assign(8, std::string(400 * 1024, 'x'));
    EXPECT_EQ(countWithItems(open(), 8)["results"].size(), 4U);
    makeOneByOne(document_.sentences);
    const json reply = countWithItems(open(), 8);
    EXPECT_EQ(reply["results"].size(), 4U);
    EXPECT_EQ(reply["more"], true);
}

TEST_F(PluginServerTest, DoesNotGoOnBehindACallThatEndsTheSequence) {
    document_.sentences = {"One."};
    const json object = open();
    const json items = {{"methods", {"GetSentenceText"}}, {"count", 5}};
    const json unexpected = ask(
        "sequence",
        {{"object", object}, {"calls", {step("GetNumberOfSentences", json::array(), 0)}}, {"items", items}});
    EXPECT_EQ(unexpected["result"], json({{"results", {1}}}));
    const json failed =
        ask("sequence", {{"object", object}, {"calls", {step("GetSentenceText", {2})}}, {"items", items}});
    EXPECT_EQ(failed["result"]["results"], json::array());
    EXPECT_EQ(failed["result"]["error"]["code"], 9);
}

TEST_F(PluginServerTest, PassesOverMembersThatItDoesNotKnow) {
    document_.sentences = {"One."};
    const json reply =
        ask("sequence",
            {{"object", open()}, {"calls", {step("GetNumberOfSentences")}}, {"colour", {{"methods", 7}}}});
    EXPECT_EQ(reply["result"], json({{"results", {1}}}));
}

TEST_F(PluginServerTest, TakesSentencesWhileThereAreMore) {
    document_.sentences = {"One.", "Two.", "Three."};
    const json object = open();
    json params = {{"object", object}, {"more", "MoreSentences"}, {"next", "GetNextSentence"}, {"count", 2}};
    EXPECT_EQ(ask("while", params)["result"], json({{"results", {"One.", "Two."}}, {"more", true}}));
    EXPECT_EQ(ask("while", params)["result"], json({{"results", {"Three."}}, {"more", false}}));
}

TEST_F(PluginServerTest, SaysWhichOfTheTwoMethodsFailed) {
    document_.sentences = {"One."};
    const json object = open();
    // A method with another number of arguments fails before the sentence is taken.
    const json reply = ask(
        "while", {{"object", object}, {"more", "SetDocumentID"}, {"next", "GetNextSentence"}, {"count", 2}});
    EXPECT_EQ(reply["result"]["error"]["method"], "SetDocumentID");
}

TEST_F(PluginServerTest, RaisesErrorsForWhatItCannotCall) {
    const json object = open();
    EXPECT_EQ(call(object, "GetNumberofSentences")["error"]["code"], 438);
    EXPECT_EQ(call(object, "GetSentenceText")["error"]["code"], 450);
    EXPECT_EQ(call(object, "GetSentenceText", {"seven"})["error"]["code"], 13);
    EXPECT_EQ(call(object, "GetSentenceText", json::parse("[[]]"))["error"]["code"], -32602);
    EXPECT_EQ(call(99, "MoreSentences")["error"]["message"], "there is no object 99");
    EXPECT_EQ(ask("dance", json::object())["error"]["code"], -32601);
    EXPECT_EQ(ask("call", json::object())["error"]["code"], -32602);
}

TEST_F(PluginServerTest, RaisesAnErrorForADocumentThatIsNamedByItsKey) {
    const json object = ask("create", json::object())["result"];
    for (const json& key : {json(1), json(70000)}) {
        const json reply = call(object, "SetDocumentID", json::array({key}));
        ASSERT_TRUE(reply.contains("error")) << reply;
        EXPECT_EQ(reply["error"]["code"], 440);
        EXPECT_EQ(reply["error"]["message"], "a document cannot be opened by its key (" + key.dump() +
                                                 "): this plug-in opens files by their path");
    }
    EXPECT_EQ(call(object, "SetDocumentID", {"1"})["result"]["result"], true);
}

TEST_F(PluginServerTest, OpensADocumentByItsKeyWhereThePluginCan) {
    struct KeyExtractor : sdk_test::SampleExtractor {
        using SampleExtractor::SampleExtractor;
        bool openByKey(std::int32_t key) override { return key == 70000; }
    };
    server_ = sdk::PluginServer([this] { return std::make_unique<KeyExtractor>(document_); });
    const json object = ask("create", json::object())["result"];
    EXPECT_EQ(call(object, "SetDocumentID", {70000})["result"]["result"], true);
    EXPECT_EQ(call(object, "SetDocumentID", {1})["result"]["result"], false);
}

TEST_F(PluginServerTest, AnswersNothingToAFetchWhateverThePathLeadsTo) {
    const fakes::TemporaryFolder folder;
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    for (const std::string& path : {folder.write("document", "text"), folder.path(), folder / "pipe",
                                    folder / "missing", std::string("docs/\xEF\xBF\xBD"), std::string()}) {
        const json reply = ask("fetch", {{"path", path}});
        EXPECT_TRUE(reply.contains("result") && reply["result"].is_null()) << reply;
    }
}

TEST_F(PluginServerTest, RefusesAFetchWithoutAPath) {
    EXPECT_EQ(ask("fetch", json::object())["error"]["code"], -32602);
    EXPECT_EQ(ask("fetch", {{"path", 7}})["error"]["code"], -32602);
}

TEST_F(PluginServerTest, AnswersWhatIsNoRequest) {
    EXPECT_EQ(json::parse(server_.answer("{oops"))["error"]["code"], -32700);
    EXPECT_EQ(json::parse(server_.answer("[]"))["error"]["code"], -32600);
    EXPECT_EQ(json::parse(server_.answer(R"({"id":1})"))["error"]["code"], -32600);
}

TEST_F(PluginServerTest, ForgetsAReleasedObject) {
    const json object = open();
    EXPECT_TRUE(ask("release", {{"object", object}})["result"].is_null());
    EXPECT_EQ(call(object, "MoreSentences")["error"]["code"], -32602);
    EXPECT_EQ(ask("release", {{"object", object}})["error"]["code"], -32602);
}

}  // namespace
