#include <gmock/gmock.h>

#include "integration/plugins/plugin_fixture.h"

namespace {

using plugin_test::PluginTest;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// The sentences that come with their number.
class FirstSentences : public PluginTest {
  protected:
    /// An object whose sentences are what the engine asks for next.
    std::unique_ptr<platform::AutomationObject> openToSentences(const std::string& progId,
                                                                const std::string& document) {
        auto object = open(progId, document);
        call(*object, "GetDocumentProperty", "source_url");
        call(*object, "GetLastErrorNumber");
        for (const char* name : {"data_size", "title", "last_time_modified"}) {
            call(*object, "GetDocumentProperty", name);
        }
        return object;
    }
    static void readSentences(platform::AutomationObject& object, int count) {
        ASSERT_EQ(call(object, "GetNumberOfSentences"), base::Variant(count));
        for (int i = 1; i <= count; ++i) {
            ASSERT_EQ(item(object, "GetSentenceText", i), "GetSentenceText" + std::to_string(i));
        }
    }
    static void readWhileThereAreMore(platform::AutomationObject& object, int count) {
        ASSERT_EQ(call(object, "GetNumberOfSentences"), base::Variant(-1));
        for (int i = 1; i <= count; ++i) {
            ASSERT_TRUE(call(object, "MoreSentences").toBool());
            ASSERT_EQ(call(object, "GetNextSentence"), base::Variant("GetNextSentence" + std::to_string(i)));
        }
        ASSERT_FALSE(call(object, "MoreSentences").toBool());
    }
    /// The description of the fault that the question for the number of sentences ends in.
    std::string faultOf(const std::string& progId, const std::string& document) {
        auto object = openToSentences(progId, document);
        return errorOf([&] { call(*object, "GetNumberOfSentences"); }).description();
    }
};

TEST_F(FirstSentences, ComeWithTheirNumber) {
    auto object = openToSentences("a.plugin", "3 early");
    readSentences(*object, 3);
    EXPECT_EQ(call(*object, "GetNumberofImportantText"), base::Variant(3));
    EXPECT_THAT(asked("a.plugin", "range [\"GetSentenceText"), IsEmpty());
    EXPECT_THAT(asked("a.plugin", "items").size(), 1U);
    EXPECT_THAT(asked("a.plugin", "call"), ElementsAre(HasSubstr("SetDocumentID")));
}

TEST_F(FirstSentences, AreFollowedByTheOthersAtOnce) {
    auto object = openToSentences("a.plugin", "600 early");
    EXPECT_EQ(call(*object, "GetNumberOfSentences"), base::Variant(600));
    call(*object, "Echo", "text");  // answered after everything that was asked before it
    EXPECT_THAT(asked("a.plugin", "range"), ElementsAre(R"(range ["GetSentenceText"] 65 320)"));
    for (int i = 1; i <= 600; ++i) {
        ASSERT_EQ(item(*object, "GetSentenceText", i), "GetSentenceText" + std::to_string(i));
    }
    EXPECT_THAT(asked("a.plugin", "range"),
                ElementsAre(R"(range ["GetSentenceText"] 65 320)", R"(range ["GetSentenceText"] 321 576)",
                            R"(range ["GetSentenceText"] 577 600)"));
}

TEST_F(FirstSentences, ComeWithTheNewsThatTheirNumberIsUnknown) {
    for (const int count : {0, 3, 64, 65, 600}) {
        auto object = openToSentences("a.plugin", std::to_string(count) + " unknown early");
        readWhileThereAreMore(*object, count);
        EXPECT_EQ(call(*object, "GetNumberofImportantText"), base::Variant(count));
    }
    EXPECT_EQ(asked("a.plugin", "while").size(), 5U) << "64 and 65 take one, 600 three";
    EXPECT_EQ(asked("a.plugin", "items").size(), 5U);
    EXPECT_THAT(asked("a.plugin", "call \"GetNextSentence"), IsEmpty());
}

TEST_F(FirstSentences, AreReadAsEverWhereAPluginKnowsOfNone) {
    readSentences(*openToSentences("a.plugin", "3"), 3);
    readWhileThereAreMore(*openToSentences("a.plugin", "3 unknown"), 3);
    readSentences(*openToSentences("minimal.plugin", "3"), 3);
    readWhileThereAreMore(*openToSentences("minimal.plugin", "3 unknown"), 3);
}

TEST_F(FirstSentences, AreFollowedByTheRestWhereTheyAreFewerThanAskedFor) {
    readSentences(*openToSentences("fewer.items", "25 early"), 25);
    EXPECT_THAT(asked("fewer.items", "range"),
                ElementsAre(R"(range ["GetSentenceText"] 11 25)", R"(range ["GetSentenceText"] 21 25)"));
}

TEST_F(FirstSentences, RaiseAnErrorWhenTheSentenceThatFailedIsAskedFor) {
    auto object = openToSentences("a.plugin", "9 early error 3");
    EXPECT_EQ(call(*object, "GetNumberOfSentences"), base::Variant(9));
    EXPECT_EQ(item(*object, "GetSentenceText", 1), "GetSentenceText1");
    EXPECT_EQ(item(*object, "GetSentenceText", 2), "GetSentenceText2");
    const auto error = errorOf([&] { item(*object, "GetSentenceText", 3); });
    EXPECT_EQ(error.number(), 77);
    EXPECT_EQ(error.description(), "a.plugin: GetSentenceText: item 3 is broken");
    EXPECT_EQ(item(*object, "GetSentenceText", 4), "GetSentenceText4");
}

TEST_F(FirstSentences, RaiseAnErrorWhenTheFirstIsTheOneThatFailed) {
    auto counted = openToSentences("a.plugin", "9 early error 1");
    EXPECT_EQ(call(*counted, "GetNumberOfSentences"), base::Variant(9));
    EXPECT_EQ(errorOf([&] { item(*counted, "GetSentenceText", 1); }).number(), 77);
    auto unknown = openToSentences("a.plugin", "9 early unknown error 1");
    EXPECT_EQ(call(*unknown, "GetNumberOfSentences"), base::Variant(-1));
    EXPECT_TRUE(call(*unknown, "MoreSentences").toBool());
    const auto error = errorOf([&] { call(*unknown, "GetNextSentence"); });
    EXPECT_EQ(error.description(), "a.plugin: GetNextSentence: item 1 is broken");
}

TEST_F(FirstSentences, AreForgottenWhenTheEngineAsksForOthers) {
    auto object = openToSentences("a.plugin", "9 early");
    call(*object, "GetNumberOfSentences");
    EXPECT_EQ(item(*object, "GetSentenceText", 7), "GetSentenceText7");
    EXPECT_EQ(item(*object, "GetSentenceText", 1), "GetSentenceText1");
    call(*object, "SetDocumentID", "5 error 1");
    EXPECT_EQ(errorOf([&] { item(*object, "GetSentenceText", 1); }).number(), 77);
}

TEST_F(FirstSentences, AreAFaultWhereTheyAreNoneOrTooMany) {
    const std::string tooMany = "GetNumberOfSentences: the plug-in answered more ";
    EXPECT_THAT(faultOf("lies.toomany", "9 early"), HasSubstr(tooMany + "items than it was asked for"));
    EXPECT_THAT(faultOf("lies.toomany", "9 unknown early"),
                HasSubstr(tooMany + "items than it was asked for"));
    EXPECT_THAT(faultOf("lies.toomany", "0 early"), HasSubstr(tooMany + "calls than it was asked for"));
    for (const char* liar : {"lies.endless", "lies.mute"}) {
        EXPECT_THAT(faultOf(liar, "9 unknown early"),
                    HasSubstr("the plug-in answered neither a sentence nor the end of them"));
    }
}

TEST_F(FirstSentences, MayTakeTheirNumberWithThemWhenTheProcessDies) {
    EXPECT_EQ(faultOf("dies.GetSentenceText", "9 early"),
              "dies.GetSentenceText: GetNumberOfSentences: the plug-in process ended (signal 9)");
    EXPECT_EQ(faultOf("dies.GetNextSentence", "9 unknown early"),
              "dies.GetNextSentence: GetNumberOfSentences: the plug-in process ended (signal 9)");
}

TEST_F(FirstSentences, AreKeptWhenTheProcessDiesOverALaterOne) {
    auto object = openToSentences("dies.while", "100 unknown early");
    EXPECT_EQ(call(*object, "GetNumberOfSentences"), base::Variant(-1));
    for (int i = 1; i <= 64; ++i) {
        EXPECT_TRUE(call(*object, "MoreSentences").toBool());
        EXPECT_EQ(call(*object, "GetNextSentence"), base::Variant("GetNextSentence" + std::to_string(i)));
    }
    EXPECT_THAT(errorOf([&] { call(*object, "MoreSentences"); }).description(),
                HasSubstr("MoreSentences: the plug-in process ended (signal 9)"));
}

TEST_F(FirstSentences, AreKeptWhenTheProcessDiesOverThePhaseBehindThem) {
    for (const char* document : {"3 early", "3 unknown early"}) {
        auto object = openToSentences("dies.GetNumberofImportantText", document);
        if (std::string_view(document).find("unknown") == std::string_view::npos) {
            readSentences(*object, 3);
        } else {
            readWhileThereAreMore(*object, 3);
        }
        EXPECT_THAT(errorOf([&] { call(*object, "GetNumberofImportantText"); }).description(),
                    HasSubstr("GetNumberofImportantText: the plug-in process ended (signal 9)"));
    }
}

}  // namespace
