#include "integration/plugins/plugin_fixture.h"

namespace {

using plugin_test::PluginTest;

class SdkPlugin : public PluginTest {
  protected:
    std::unique_ptr<platform::AutomationObject> start() { return create("Sample.Plugin", SAMPLE_PLUGIN); }
};

TEST_F(SdkPlugin, AnswersTheServiceWhateverItPrints) {
    auto object = start();
    EXPECT_EQ(call(*object, "SetDocumentID", "document"), base::Variant(true));
    EXPECT_EQ(call(*object, "GetDocumentProperty", "title"),
              base::Variant(std::string("nul \0 and \xF0\x9F\xA6\x8A", 14)));
    EXPECT_EQ(call(*object, "GetDocumentProperty", "data_size"), base::Variant(12));
    EXPECT_EQ(call(*object, "GetDocumentProperty", "last_time_modified"),
              base::Variant(*base::DateTime::fromCivil({2001, 2, 3, 4, 5, 6})));
    EXPECT_TRUE(call(*object, "GetDocumentProperty", "source_url").isEmpty());
    EXPECT_EQ(call(*object, "GetLastErrorNumber"), base::Variant(0));
}

TEST_F(SdkPlugin, SendsVeryLongSentences) {
    auto object = start();
    call(*object, "SetDocumentID", "document");
    EXPECT_EQ(call(*object, "GetNumberOfSentences"), base::Variant(3));
    for (int i = 1; i <= 3; ++i) {
        EXPECT_EQ(item(*object, "GetSentenceText", i).size(), 5UL * 1024 * 1024);
    }
}

TEST_F(SdkPlugin, AnswersPairsOfTextAndType) {
    auto object = start();
    call(*object, "SetDocumentID", "document");
    EXPECT_EQ(call(*object, "GetNumberofMetaTags"), base::Variant(2));
    EXPECT_EQ(item(*object, "GetMetaTagText", 1) + item(*object, "GetMetaTagType", 1), "Annauthor");
    EXPECT_EQ(item(*object, "GetMetaTagText", 2) + item(*object, "GetMetaTagType", 2), "redcolour");
}

TEST_F(SdkPlugin, TellsWhyADocumentCannotBeOpened) {
    auto object = start();
    EXPECT_EQ(call(*object, "SetDocumentID", "missing"), base::Variant(false));
    EXPECT_EQ(call(*object, "GetLastErrorNumber"), base::Variant(53));
    EXPECT_EQ(call(*object, "GetLastErrorString"), base::Variant("missing: no such file"));
}

TEST_F(SdkPlugin, RaisesAnErrorForAnIndexWithoutAnItem) {
    auto object = start();
    call(*object, "SetDocumentID", "document");
    EXPECT_EQ(errorOf([&] { item(*object, "GetMetaTagText", 3); }).description(),
              "Sample.Plugin: GetMetaTagText: index 3 is outside 1..2");
}

}  // namespace
