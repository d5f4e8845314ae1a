// The window while a long document is in work, on every toolkit.
#include <algorithm>

#include "fakes/toolkits.h"
#include "unit/indexer/indexer_fixture.h"

namespace indexer_tests {
namespace {

class LongDocument : public IndexerTest, public testing::WithParamInterface<ToolkitUnderTest> {
  protected:
    static constexpr int sentences = 20'000;

    std::unique_ptr<WindowDriver> driver = GetParam().makeDriver();
    infra::Services services{platform::System{library.settings, library.engine, library.automation,
                                              driver->toolkit(), library.files, library.process,
                                              library.drives, library.clock}};
    indexer::Indexer indexerOfTheWindow{services};
};

INSTANTIATE_TEST_SUITE_P(Toolkits, LongDocument, testing::Values(headlessToolkit, screenToolkit),
                         toolkitName);

TEST_P(LongDocument, TheOperatorNeverWaitsLongerThanFiftySentences) {
    platform::Form& form = driver->toolkit().createForm("Main", "", 3000, 1000);
    platform::Button& button = form.addButton({"cmd", {120, 120, 1095, 375}, 0}, "S&top");
    form.show();
    int clicks = 0;
    int clicked = 0;  // the sentence at which the operator did it
    int longestWait = 0;
    int sentence = 0;
    button.onClick([&] {
        ++clicks;
        longestWait = std::max(longestWait, sentence - clicked);
        clicked = 0;
    });
    fakes::ScriptedPlugin& plugin = givePlugin("txt", "Test.Plugin", ScriptedDocument{});
    plugin.methods["GetNumberOfSentences"] = [](auto) -> base::Variant { return std::int16_t{sentences}; };
    plugin.methods["GetSentenceText"] = [&](auto) -> base::Variant {
        ++sentence;
        if (clicked == 0) {
            clicked = sentence;
            driver->click("cmd");
        }
        return "Water flows on.";
    };

    EXPECT_TRUE(indexerOfTheWindow.DoIndex(queue("/docs/river.txt")));

    EXPECT_EQ(sentence, sentences);
    EXPECT_LE(longestWait, 50);
    EXPECT_EQ(clicks, sentences / 50);
    EXPECT_EQ(
        number("SELECT hit_count FROM word_index JOIN root_word ON root_word.id = id_root_word WHERE word = "
               "'flows'"),
        sentences);
}

}  // namespace
}  // namespace indexer_tests
