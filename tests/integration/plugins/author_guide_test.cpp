#include <algorithm>
#include <fstream>
#include <iterator>

#include "integration/plugins/plugin_fixture.h"

namespace {

using plugin_test::PluginTest;

/// The plug-in in the guide for authors, taken out of the guide: what authors copy is what runs here.
class AuthorGuide : public PluginTest {
  protected:
    void SetUp() override {
        std::ifstream file(AUTHOR_GUIDE);
        const std::string guide{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        const std::string fence = "```python\n";
        const std::size_t start = guide.find(fence);
        ASSERT_NE(start, std::string::npos) << "the guide has no plug-in in Python";
        const std::size_t code = start + fence.size();
        program_ = guide.substr(code, guide.find("```", code) - code);
        const std::string path = folder_.write("Example.LineExtractor", program_);
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        document_ = folder_.write("note.txt", "A heading\n\nFirst line \xF0\x9F\xA6\x8A.\nSecond line.\n");
    }

    std::string program_;
    std::string document_;
};

TEST_F(AuthorGuide, ShowsAPluginOfLessThanSixtyLines) {
    EXPECT_LT(std::count(program_.begin(), program_.end(), '\n'), 60);
}

TEST_F(AuthorGuide, ShowsAPluginThatReadsADocument) {
    auto object = factory_.create("Example.LineExtractor");
    ASSERT_EQ(call(*object, "SetDocumentID", document_), base::Variant(true));
    EXPECT_TRUE(call(*object, "GetDocumentProperty", "source_url").isEmpty());
    EXPECT_EQ(call(*object, "GetLastErrorNumber"), base::Variant(0));
    EXPECT_EQ(call(*object, "GetDocumentProperty", "data_size"), base::Variant(41));
    EXPECT_EQ(call(*object, "GetDocumentProperty", "title"), base::Variant("A heading"));
    EXPECT_TRUE(call(*object, "GetDocumentProperty", "last_time_modified").isDate());
    ASSERT_EQ(call(*object, "GetNumberOfSentences"), base::Variant(3));
    EXPECT_EQ(item(*object, "GetSentenceText", 1), "A heading");
    EXPECT_EQ(item(*object, "GetSentenceText", 2), "First line \xF0\x9F\xA6\x8A.");
    EXPECT_EQ(item(*object, "GetSentenceText", 3), "Second line.");
    ASSERT_EQ(call(*object, "GetNumberofImportantText"), base::Variant(1));
    EXPECT_EQ(item(*object, "GetImportantTextText", 1), "A heading");
    EXPECT_EQ(item(*object, "GetImportantTextType", 1), "heading");
    EXPECT_EQ(call(*object, "GetNumberofAnnotations"), base::Variant(0));
    EXPECT_EQ(call(*object, "GetNumberofMetaTags"), base::Variant(0));
    EXPECT_EQ(call(*object, "GetNumberofSubDocuments"), base::Variant(0));
}

TEST_F(AuthorGuide, ShowsAPluginThatReportsItsErrors) {
    auto object = factory_.create("Example.LineExtractor");
    EXPECT_EQ(call(*object, "SetDocumentID", folder_ / "missing.txt"), base::Variant(false));
    EXPECT_EQ(call(*object, "GetLastErrorNumber"), base::Variant(2));
    EXPECT_THAT(call(*object, "GetLastErrorString").toText(), testing::HasSubstr("missing.txt"));
    EXPECT_THAT(errorOf([&] { item(*object, "GetSentenceText", 1); }).description(),
                testing::StartsWith("Example.LineExtractor: GetSentenceText: "));
}

TEST_F(AuthorGuide, ShowsAPluginThatTakesNoKeyForAPath) {
    auto object = factory_.create("Example.LineExtractor");
    EXPECT_THAT(errorOf([&] { call(*object, "SetDocumentID", 7); }).description(),
                testing::HasSubstr("a document cannot be opened by its key"));
}

TEST_F(AuthorGuide, ShowsAPluginThatServesManyDocuments) {
    auto first = factory_.create("Example.LineExtractor");
    auto second = factory_.create("Example.LineExtractor");
    call(*second, "SetDocumentID", folder_.write("other.txt", "Other"));
    call(*first, "SetDocumentID", document_);
    EXPECT_EQ(item(*second, "GetSentenceText", 1), "Other");
}

}  // namespace
