#include "text/markdown.h"

#include <gtest/gtest.h>

namespace {

using Texts = std::vector<std::string>;

struct Read {
    Texts headings;
    Texts sentences;
};

Read read(std::string_view markdown, std::size_t mostHeadings = 2000) {
    shared::SentenceCollector collector(30000);
    Read result;
    result.headings = text::addMarkdown(collector, markdown, mostHeadings);
    result.sentences = collector.take();
    return result;
}

TEST(Markdown, GivesBothKindsOfHeadingsInOrder) {
    const Read result =
        read("# River *survey* #\nText.\n\nMethods\n-------\nMore\n\nEnd of\nall\n===\n## \n");
    EXPECT_EQ(result.headings, (Texts{"River survey", "Methods", "End of all"}));
    EXPECT_EQ(result.sentences, (Texts{"River survey", "Text.", "Methods", "More", "End of all"}));
}

TEST(Markdown, KeepsHashesThatMakeNoHeading) {
    const Read result = read("#hashtag\n\n####### seven\n\n# C#\n");
    EXPECT_EQ(result.headings, (Texts{"C#"}));
    EXPECT_EQ(result.sentences, (Texts{"#hashtag", "####### seven", "C#"}));
}

TEST(Markdown, KeepsHeadingsBeyondTheLimitAsSentences) {
    const Read result = read("# a\n# b\n# c\n", 2);
    EXPECT_EQ(result.headings, (Texts{"a", "b"}));
    EXPECT_EQ(result.sentences, (Texts{"a", "b", "c"}));
}

TEST(Markdown, MakesASentenceOfEveryListItem) {
    EXPECT_EQ(read("Bring:\n\n- a rope\n* [x] boots\n  that fit\n1. map\n---\n> quoted\n> text\n").sentences,
              (Texts{"Bring:", "a rope", "boots that fit", "map", "quoted text"}));
}

TEST(Markdown, KeepsCodeLineByLineAndUntouched) {
    const Read result = read("```sh\n# no heading\ngrep *.txt\n\n~~~\n```\nafter\n");
    EXPECT_TRUE(result.headings.empty());
    EXPECT_EQ(result.sentences, (Texts{"# no heading", "grep *.txt", "~~~", "after"}));
}

TEST(Markdown, KeepsTheTextOfACodeBlockThatIsNotClosed) {
    EXPECT_EQ(read("```\none\ntwo\n").sentences, (Texts{"one", "two"}));
}

TEST(Markdown, KeepsFrontMatterAsText) {
    const Read result = read("---\ntitle: Tides\ntags: sea\n---\n# Tides\n");
    EXPECT_EQ(result.headings, (Texts{"Tides"}));
    EXPECT_EQ(result.sentences, (Texts{"title: Tides", "tags: sea", "Tides"}));
    EXPECT_EQ(read("---\n\nno front matter\n").sentences, (Texts{"no front matter"}));
}

TEST(Markdown, MakesASentenceOfEveryTableRow) {
    EXPECT_EQ(read("| Gauge | Feet |\n|---|---:|\n| North | 9 |\n").sentences,
              (Texts{"Gauge Feet", "North 9"}));
}

TEST(Markdown, DropsRuledLinesAndLinkDefinitions) {
    EXPECT_EQ(read("One\n\n* * *\n\nTwo\n\n[a]: http://a.example \"A\"\n[^1]: A note.\n").sentences,
              (Texts{"One", "Two", "[^1]: A note."}));
}

TEST(InlineMarks, GoAndLeaveTheirText) {
    EXPECT_EQ(text::withoutInlineMarks("**bold**, _slanted_, ~~gone~~ and `co*de`"),
              "bold, slanted, gone and co*de");
    EXPECT_EQ(text::withoutInlineMarks("2 * 3 is snake_case_name ~5 \\*"), "2 * 3 is snake_case_name ~5 *");
    EXPECT_EQ(text::withoutInlineMarks("a<b & c &amp; d &lt;e&gt;"), "a<b & c & d <e>");
}

TEST(InlineMarks, OfLinksLeaveTheTextAndDropTheTarget) {
    EXPECT_EQ(text::withoutInlineMarks("[the map](http://m.example/a_(b) \"M\") and [it][ref]"),
              "the map and it");
    EXPECT_EQ(text::withoutInlineMarks("[![a picture](p.png)](big.png)!"), "a picture!");
    EXPECT_EQ(text::withoutInlineMarks("[a] list[0] (b)"), "[a] list[0] (b)");
    EXPECT_EQ(text::withoutInlineMarks("<http://m.example> <br/>x<!-- note -->"), "http://m.example  x ");
}

TEST(InlineMarks, ThatAreNotClosedStay) {
    EXPECT_EQ(text::withoutInlineMarks("[open](never"), "[open](never");
    EXPECT_EQ(text::withoutInlineMarks("``open` <never"), "``open` <never");
    EXPECT_EQ(text::withoutInlineMarks("end\\"), "end\\");
}

}  // namespace
