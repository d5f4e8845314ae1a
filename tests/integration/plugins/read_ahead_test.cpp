#include <gmock/gmock.h>

#include "integration/plugins/plugin_fixture.h"

namespace {

using plugin_test::PluginTest;
using testing::ElementsAre;
using testing::IsEmpty;

class ReadAhead : public PluginTest {
  protected:
    /// Reads all sentences as the engine does and checks each.
    static void readSentences(platform::AutomationObject& object, int count) {
        ASSERT_EQ(call(object, "GetNumberOfSentences"), base::Variant(count));
        for (int i = 1; i <= count; ++i) {
            ASSERT_EQ(item(object, "GetSentenceText", i), "GetSentenceText" + std::to_string(i));
        }
    }
    static int readWhileThereAreMore(platform::AutomationObject& object) {
        int read = 0;
        while (call(object, "MoreSentences").toBool()) {
            ++read;
            EXPECT_EQ(call(object, "GetNextSentence"),
                      base::Variant("GetNextSentence" + std::to_string(read)));
        }
        return read;
    }
};

TEST_F(ReadAhead, FetchesSentencesInRangesThatEndAtTheCount) {
    readSentences(*open("a.plugin", "600"), 600);
    EXPECT_THAT(asked("a.plugin", "range"),
                ElementsAre(R"(range ["GetSentenceText"] 1 256)", R"(range ["GetSentenceText"] 257 512)",
                            R"(range ["GetSentenceText"] 513 600)"));
    EXPECT_THAT(asked("a.plugin", "call \"GetSentenceText"), IsEmpty());
}

TEST_F(ReadAhead, AsksForTheNextRangeWhenTheOneBeforeHasArrived) {
    auto object = open("a.plugin", "600");
    call(*object, "GetNumberOfSentences");
    item(*object, "GetSentenceText", 1);
    call(*object, "Echo", "text");  // answered after everything that was asked before it
    EXPECT_EQ(asked("a.plugin", "range").size(), 2U);
}

TEST_F(ReadAhead, MakesNoItemCallForACountOfZero) {
    auto object = open("a.plugin", "0");
    readSentences(*object, 0);
    EXPECT_EQ(call(*object, "GetNumberofMetaTags"), base::Variant(0));
    object.reset();
    EXPECT_THAT(asked("a.plugin", "range"), IsEmpty());
}

TEST_F(ReadAhead, FetchesTextAndTypeTogether) {
    auto object = open("a.plugin", "300");
    for (const std::string kind : {"ImportantText", "MetaTag"}) {
        call(*object, "GetNumberof" + kind + (kind == "MetaTag" ? "s" : ""));
        for (int i = 1; i <= 300; ++i) {
            ASSERT_EQ(item(*object, "Get" + kind + "Text", i), "Get" + kind + "Text" + std::to_string(i));
            ASSERT_EQ(item(*object, "Get" + kind + "Type", i), "Get" + kind + "Type" + std::to_string(i));
        }
    }
    EXPECT_THAT(asked("a.plugin", "range"),
                ElementsAre(R"(range ["GetImportantTextText","GetImportantTextType"] 1 256)",
                            R"(range ["GetImportantTextText","GetImportantTextType"] 257 300)",
                            R"(range ["GetMetaTagText","GetMetaTagType"] 1 256)",
                            R"(range ["GetMetaTagText","GetMetaTagType"] 257 300)"));
}

TEST_F(ReadAhead, LeavesTheTextOfAnAnnotationToTheEngine) {
    auto object = open("a.plugin", "3");
    call(*object, "GetNumberofAnnotations");
    for (int i = 1; i <= 3; ++i) {
        EXPECT_EQ(item(*object, "GetAnnotationType", i), "GetAnnotationType" + std::to_string(i));
        EXPECT_EQ(item(*object, "GetAnnotationAnchor", i), "GetAnnotationAnchor" + std::to_string(i));
        if (i == 2) {
            EXPECT_EQ(item(*object, "GetAnnotationText", i), "GetAnnotationText2");
        }
    }
    EXPECT_THAT(asked("a.plugin", "range"),
                ElementsAre(R"(range ["GetAnnotationType","GetAnnotationAnchor"] 1 3)"));
    EXPECT_THAT(asked("a.plugin", "call \"GetAnnotation"), ElementsAre(R"(call "GetAnnotationText" [2])"));
}

TEST_F(ReadAhead, NeverFetchesSubDocuments) {
    auto object = open("a.plugin", "2");
    call(*object, "GetNumberofSubDocuments");
    EXPECT_EQ(item(*object, "GetSubDocumentTempPath", 1), "GetSubDocumentTempPath1");
    EXPECT_THAT(asked("a.plugin", "range"), IsEmpty());
}

TEST_F(ReadAhead, MakesACallOutOfOrderAsItIs) {
    auto object = open("a.plugin", "9");
    call(*object, "GetNumberOfSentences");
    EXPECT_EQ(item(*object, "GetSentenceText", 7), "GetSentenceText7");
    EXPECT_EQ(item(*object, "GetSentenceText", 1), "GetSentenceText1");
    EXPECT_EQ(item(*object, "GetSentenceText", 9), "GetSentenceText9");
    EXPECT_EQ(item(*object, "GetSentenceText", 2), "GetSentenceText2");
    EXPECT_EQ(item(*object, "GetSentenceText", 1), "GetSentenceText1");
    EXPECT_THAT(asked("a.plugin", "call \"GetSentenceText"),
                ElementsAre(R"(call "GetSentenceText" [7])", R"(call "GetSentenceText" [9])"));
}

TEST_F(ReadAhead, RaisesAnErrorWhenItsItemIsAskedFor) {
    auto object = open("a.plugin", "9 error 5");
    call(*object, "GetNumberOfSentences");
    for (int i = 1; i <= 4; ++i) {
        EXPECT_EQ(item(*object, "GetSentenceText", i), "GetSentenceText" + std::to_string(i));
    }
    const auto error = errorOf([&] { item(*object, "GetSentenceText", 5); });
    EXPECT_EQ(error.number(), 77);
    EXPECT_EQ(error.description(), "a.plugin: GetSentenceText: item 5 is broken");
    EXPECT_EQ(item(*object, "GetSentenceText", 6), "GetSentenceText6");
    EXPECT_EQ(asked("a.plugin", "range").size(), 1U);
}

TEST_F(ReadAhead, GoesOnWhereAShorterAnswerEnded) {
    readSentences(*open("fewer.plugin", "25"), 25);
    EXPECT_THAT(asked("fewer.plugin", "range"),
                ElementsAre(R"(range ["GetSentenceText"] 1 25)", R"(range ["GetSentenceText"] 11 25)",
                            R"(range ["GetSentenceText"] 21 25)"));
}

TEST_F(ReadAhead, DoesWithPlainCallsWhereAPluginKnowsNoRanges) {
    auto object = open("minimal.plugin", "5");
    readSentences(*object, 5);
    call(*object, "GetNumberofMetaTags");
    EXPECT_EQ(item(*object, "GetMetaTagText", 1), "GetMetaTagText1");
    object.reset();
    readSentences(*open("minimal.plugin", "2"), 2);
    EXPECT_EQ(asked("minimal.plugin", "range").size(), 1U) << "it was asked again";
    EXPECT_EQ(asked("minimal.plugin", "call \"GetSentenceText").size(), 7U);
}

TEST_F(ReadAhead, ForgetsTheDocumentBefore) {
    auto object = open("a.plugin", "300");
    call(*object, "GetNumberOfSentences");
    item(*object, "GetSentenceText", 1);
    call(*object, "SetDocumentID", "300 error 2");
    EXPECT_EQ(errorOf([&] { item(*object, "GetSentenceText", 2); }).number(), 77);
}

TEST_F(ReadAhead, TakesSentencesOfAnUnknownNumberByTheHundred) {
    auto object = open("a.plugin", "600 unknown");
    EXPECT_EQ(call(*object, "GetNumberOfSentences"), base::Variant(-1));
    EXPECT_EQ(readWhileThereAreMore(*object), 600);
    EXPECT_FALSE(call(*object, "MoreSentences").toBool());
    EXPECT_EQ(asked("a.plugin", "while").size(), 3U);
    EXPECT_THAT(asked("a.plugin", "call \"GetNextSentence"), IsEmpty());
    EXPECT_THAT(asked("a.plugin", "call \"GetSentenceText"), IsEmpty());
}

TEST_F(ReadAhead, DoesWithPlainCallsWhereAPluginKnowsNoWhile) {
    auto object = open("minimal.plugin", "5 unknown");
    call(*object, "GetNumberOfSentences");
    EXPECT_EQ(readWhileThereAreMore(*object), 5);
    EXPECT_EQ(asked("minimal.plugin", "while").size(), 1U);
}

TEST_F(ReadAhead, ReadsSentencesPlainlyWhenTheirNumberIsKnown) {
    auto object = open("a.plugin", "2");
    call(*object, "GetNumberOfSentences");
    EXPECT_TRUE(call(*object, "MoreSentences").toBool());
    EXPECT_THAT(asked("a.plugin", "while"), IsEmpty());
}

TEST_F(ReadAhead, RaisesTheErrorOfTheNextSentenceWhenItIsAskedFor) {
    auto object = open("a.plugin", "9 unknown error 3");
    call(*object, "GetNumberOfSentences");
    for (int i = 1; i <= 2; ++i) {
        EXPECT_TRUE(call(*object, "MoreSentences").toBool());
        EXPECT_EQ(call(*object, "GetNextSentence"), base::Variant("GetNextSentence" + std::to_string(i)));
    }
    EXPECT_TRUE(call(*object, "MoreSentences").toBool());
    const auto error = errorOf([&] { call(*object, "GetNextSentence"); });
    EXPECT_EQ(error.number(), 77);
    EXPECT_EQ(error.description(), "a.plugin: GetNextSentence: item 3 is broken");
}

TEST_F(ReadAhead, KeepsTheItemsThatCameBeforeADeath) {
    auto object = open("dies.GetMetaTagText", "300");
    call(*object, "GetNumberOfSentences");
    item(*object, "GetSentenceText", 1);
    call(*object, "GetNumberofMetaTags");
    EXPECT_NE(errorOf([&] { item(*object, "GetMetaTagText", 1); }).number(), 0);
    EXPECT_NE(errorOf([&] { item(*object, "GetSentenceText", 2); }).number(), 0);
}

}  // namespace
