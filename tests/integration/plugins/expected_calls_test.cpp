#include <gmock/gmock.h>

#include "base/text.h"
#include "integration/plugins/plugin_fixture.h"

namespace {

using plugin_test::PluginTest;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ExpectedCalls : public PluginTest {
  protected:
    static base::Variant property(platform::AutomationObject& object, const std::string& name) {
        return call(object, "GetDocumentProperty", name);
    }

    /// Asks for the properties as the engine does and checks each.
    static void readProperties(platform::AutomationObject& object) {
        EXPECT_EQ(property(object, "source_url"), base::Variant("source_url"));
        EXPECT_EQ(call(object, "GetLastErrorNumber"), base::Variant(std::int32_t{0}));
        EXPECT_EQ(property(object, "data_size"), base::Variant("data_size"));
        EXPECT_EQ(property(object, "title"), base::Variant("title"));
        EXPECT_EQ(property(object, "last_time_modified"), base::Variant("last_time_modified"));
    }

    /// Asks for everything as the engine does.
    static void readDocument(platform::AutomationObject& object, int count) {
        readProperties(object);
        EXPECT_EQ(call(object, "GetNumberOfSentences"), base::Variant(count));
        for (int i = 1; i <= count; ++i) {
            EXPECT_EQ(item(object, "GetSentenceText", i), "GetSentenceText" + std::to_string(i));
        }
        readItems(object, "GetNumberofImportantText", {"GetImportantTextText", "GetImportantTextType"},
                  count);
        readItems(object, "GetNumberofAnnotations", {"GetAnnotationType", "GetAnnotationAnchor"}, count);
        readItems(object, "GetNumberofMetaTags", {"GetMetaTagText", "GetMetaTagType"}, count);
        EXPECT_EQ(call(object, "GetNumberofSubDocuments"), base::Variant(count));
    }
    static void readItems(platform::AutomationObject& object, const std::string& countMethod,
                          const std::vector<std::string>& methods, int count) {
        EXPECT_EQ(call(object, countMethod), base::Variant(count));
        EXPECT_EQ(call(object, "GetLastErrorNumber"), base::Variant(std::int32_t{0}));
        for (int i = 1; i <= count; ++i) {
            for (const std::string& method : methods) {
                EXPECT_EQ(item(object, method, i), method + std::to_string(i));
            }
        }
    }

    /// The contract's calls in the order in which the process got them, however they came.
    std::vector<std::string> calls(const std::string& progId) const {
        std::vector<std::string> found;
        for (const std::string& line : asked(progId, "")) {
            if (line.starts_with("call ") || line.starts_with("step ") || line.starts_with("range ")) {
                found.push_back(base::replaceAll(line.substr(line.find(' ') + 1), "\"", ""));
            }
        }
        return found;
    }
};

TEST_F(ExpectedCalls, ComeInTheOrderOfTheEngine) {
    readDocument(*open("a.plugin", "2"), 2);
    EXPECT_THAT(calls("a.plugin"),
                ElementsAre("SetDocumentID [2]", "GetDocumentProperty [source_url]", "GetLastErrorNumber",
                            "GetDocumentProperty [data_size]", "GetDocumentProperty [title]",
                            "GetDocumentProperty [last_time_modified]", "GetNumberOfSentences",
                            "[GetSentenceText] 1 2", "GetNumberofImportantText", "GetLastErrorNumber",
                            "[GetImportantTextText,GetImportantTextType] 1 2", "GetNumberofAnnotations",
                            "GetLastErrorNumber", "[GetAnnotationType,GetAnnotationAnchor] 1 2",
                            "GetNumberofMetaTags", "GetLastErrorNumber",
                            "[GetMetaTagText,GetMetaTagType] 1 2", "GetNumberofSubDocuments"));
}

TEST_F(ExpectedCalls, AreMadeOnceForADocumentThatHasNothing) {
    readDocument(*open("a.plugin", "0"), 0);
    EXPECT_THAT(calls("a.plugin"),
                ElementsAre("SetDocumentID [0]", "GetDocumentProperty [source_url]", "GetLastErrorNumber",
                            "GetDocumentProperty [data_size]", "GetDocumentProperty [title]",
                            "GetDocumentProperty [last_time_modified]", "GetNumberOfSentences",
                            "GetNumberofImportantText", "GetLastErrorNumber", "GetNumberofAnnotations",
                            "GetLastErrorNumber", "GetNumberofMetaTags", "GetLastErrorNumber",
                            "GetNumberofSubDocuments"));
    EXPECT_EQ(asked("a.plugin", "sequence").size(), 5U);
    EXPECT_EQ(asked("a.plugin", "call").size(), 1U) << "more than the opening";
}

TEST_F(ExpectedCalls, FollowMetaTags) {
    readDocument(*open("a.plugin", "2"), 2);
    EXPECT_EQ(asked("a.plugin", "step GetNumberofSubDocuments").size(), 1U);
    EXPECT_THAT(asked("a.plugin", "call \"GetNumberofSubDocuments"), IsEmpty());
}

TEST_F(ExpectedCalls, DoNotFollowAnErrorNumberThatTheEngineAsksTheTextOf) {
    auto object = open("a.plugin", "0 tagerror 7");
    readProperties(*object);
    EXPECT_EQ(call(*object, "GetNumberOfSentences"), base::Variant(0));
    readItems(*object, "GetNumberofImportantText", {}, 0);
    readItems(*object, "GetNumberofAnnotations", {}, 0);
    EXPECT_EQ(call(*object, "GetNumberofMetaTags"), base::Variant(0));
    EXPECT_EQ(call(*object, "GetLastErrorNumber"), base::Variant(7));
    call(*object, "Echo", "text");  // answered after everything that was asked before it
    EXPECT_THAT(asked("a.plugin", "step GetNumberofSubDocuments"), IsEmpty());
    EXPECT_EQ(call(*object, "GetNumberofSubDocuments"), base::Variant(0));
}

TEST_F(ExpectedCalls, LeaveTheEngineItsDocumentWhenTheProcessDiesOverTheNextCall) {
    auto object = open("dies.GetNumberofSubDocuments", "0");
    readProperties(*object);
    EXPECT_EQ(call(*object, "GetNumberOfSentences"), base::Variant(0));
    for (const char* count : {"GetNumberofImportantText", "GetNumberofAnnotations", "GetNumberofMetaTags"}) {
        readItems(*object, count, {}, 0);
    }
    EXPECT_THAT(errorOf([&] { call(*object, "GetNumberofSubDocuments"); }).description(),
                HasSubstr("GetNumberofSubDocuments: the plug-in process ended (signal 9)"));
}

TEST_F(ExpectedCalls, FollowSentencesOfAnUnknownNumber) {
    auto object = open("a.plugin", "3 unknown");
    readProperties(*object);
    EXPECT_EQ(call(*object, "GetNumberOfSentences"), base::Variant(-1));
    for (int i = 1; i <= 3; ++i) {
        EXPECT_TRUE(call(*object, "MoreSentences").toBool());
        EXPECT_EQ(call(*object, "GetNextSentence"), base::Variant("GetNextSentence" + std::to_string(i)));
    }
    EXPECT_FALSE(call(*object, "MoreSentences").toBool());
    EXPECT_EQ(call(*object, "GetNumberofImportantText"), base::Variant(3));
    EXPECT_THAT(asked("a.plugin", "call"), ElementsAre(R"(call "SetDocumentID" ["3 unknown"])"));
}

TEST_F(ExpectedCalls, AreMadePlainlyWhereAPluginKnowsNoSequences) {
    readDocument(*open("minimal.plugin", "2"), 2);
    readDocument(*open("minimal.plugin", "1"), 1);
    EXPECT_EQ(asked("minimal.plugin", "sequence").size(), 1U) << "it was asked again";
    EXPECT_EQ(asked("minimal.plugin", "call \"GetDocumentProperty\" [\"title\"]").size(), 2U);
    EXPECT_EQ(asked("minimal.plugin", "call \"GetNumberofMetaTags\"").size(), 2U);
}

TEST_F(ExpectedCalls, AreForgottenWhenAnotherCallIsMade) {
    auto object = open("a.plugin", "2");
    EXPECT_EQ(property(*object, "source_url"), base::Variant("source_url"));
    EXPECT_EQ(call(*object, "Echo", "text"), base::Variant("text"));
    EXPECT_EQ(call(*object, "GetLastErrorNumber"), base::Variant(std::int32_t{0}));
    EXPECT_EQ(property(*object, "title"), base::Variant("title"));
    EXPECT_THAT(asked("a.plugin", "call"), ElementsAre(HasSubstr("SetDocumentID"), HasSubstr("Echo"),
                                                       HasSubstr("GetLastErrorNumber"), HasSubstr("title")));
}

TEST_F(ExpectedCalls, AreForgottenWithTheDocumentBefore) {
    auto object = open("a.plugin", "2");
    call(*object, "SetDocumentID", "5 lasterror 9");
    EXPECT_EQ(property(*object, "source_url"), base::Variant("source_url"));
    EXPECT_EQ(call(*object, "GetLastErrorNumber"), base::Variant(9));
}

TEST_F(ExpectedCalls, RaiseAnErrorWhenTheCallThatFailedIsMade) {
    auto object = open("a.plugin", "2 broken data_size");
    EXPECT_EQ(property(*object, "source_url"), base::Variant("source_url"));
    EXPECT_EQ(call(*object, "GetLastErrorNumber"), base::Variant(std::int32_t{0}));
    const auto error = errorOf([&] { property(*object, "data_size"); });
    EXPECT_EQ(error.number(), 78);
    EXPECT_EQ(error.description(), "a.plugin: GetDocumentProperty: property is broken");
    EXPECT_EQ(asked("a.plugin", "step").size(), 3U) << "the process was asked beyond the error";
    EXPECT_EQ(property(*object, "title"), base::Variant("title"));
    EXPECT_EQ(call(*object, "GetNumberOfSentences"), base::Variant(2));
}

TEST_F(ExpectedCalls, EndAtAnErrorNumberThatMakesTheEngineGiveUp) {
    auto object = open("a.plugin", "2 lasterror 7");
    EXPECT_EQ(property(*object, "source_url"), base::Variant("source_url"));
    EXPECT_EQ(call(*object, "GetLastErrorNumber"), base::Variant(7));
    call(*object, "Echo", "text");  // answered after everything that was asked before it
    EXPECT_THAT(asked("a.plugin", "step"),
                ElementsAre(R"(step GetDocumentProperty ["source_url"])", "step GetLastErrorNumber"));
}

TEST_F(ExpectedCalls, DoNotFollowADocumentThatIsNotOpened) {
    auto object = create("a.plugin");
    EXPECT_EQ(call(*object, "SetDocumentID", "2 closed"), base::Variant(false));
    EXPECT_EQ(call(*object, "GetLastErrorNumber"), base::Variant(std::int32_t{0}));
    EXPECT_THAT(asked("a.plugin", "sequence"), IsEmpty());
}

TEST_F(ExpectedCalls, DoNotFollowADocumentThatIsOpenedByItsKey) {
    auto object = create("a.plugin");
    EXPECT_EQ(call(*object, "SetDocumentID", std::int32_t{70000}), base::Variant(true));
    EXPECT_EQ(property(*object, "source_url"), base::Variant("source_url"));
    EXPECT_EQ(property(*object, "document_path"), base::Variant("document_path"));
    EXPECT_THAT(asked("a.plugin", "sequence"), IsEmpty());
}

TEST_F(ExpectedCalls, AreMadePlainlyWhereAnAnswerEndsEarly) {
    readDocument(*open("fewer.plugin", "2"), 2);
    EXPECT_EQ(asked("fewer.plugin", "step").size(), 4U) << "one of each answer";
}

TEST_F(ExpectedCalls, KeepWhatCameBeforeADeath) {
    auto object = open("dies.GetNumberOfSentences", "2");
    readProperties(*object);
    const auto error = errorOf([&] { call(*object, "GetNumberOfSentences"); });
    EXPECT_EQ(error.description(),
              "dies.GetNumberOfSentences: GetNumberOfSentences: the plug-in process ended (signal 9)");
}

TEST_F(ExpectedCalls, AreAFaultWhereTheAnswerHasNoResultOrTooMany) {
    auto withholding = open("withholds.plugin", "2");
    EXPECT_THAT(errorOf([&] { property(*withholding, "source_url"); }).description(),
                HasSubstr("answered a sequence without a result"));
    auto overdoing = open("overdoes.plugin", "2");
    EXPECT_THAT(errorOf([&] { property(*overdoing, "source_url"); }).description(),
                HasSubstr("answered more calls than it was asked for"));
}

}  // namespace
