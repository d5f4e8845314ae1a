#include "mail/html_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "shared/charset.h"
#include "shared/sentences.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::vector<std::string> sentencesOf(const std::string& html) {
    shared::SentenceCollector collector(100);
    shared::addPlainText(collector, mail::htmlToPlainText(html));
    return collector.take();
}

TEST(HtmlText, EndsSentencesAtBlocksAndNotAtInlineElements) {
    EXPECT_THAT(
        sentencesOf("<h1>Title</h1><p>Some\n<i>slanted</i> te<b>x</b>t<div>Block<ul><li>one<li>two</ul>"),
        ElementsAre("Title", "Some slanted text", "Block", "one", "two"));
}

TEST(HtmlText, TakesOneLineBreakAsABlankAndTwoAsAParagraph) {
    EXPECT_THAT(sentencesOf("one<br>two<br><br>three"), ElementsAre("one two", "three"));
}

TEST(HtmlText, LeavesOutHeadScriptsAndStyles) {
    EXPECT_THAT(
        sentencesOf("<html><head><title>T</title><style>p{}</style></head><body>a<script>b()</script>c"),
        ElementsAre("ac"));
}

TEST(HtmlText, DecodesEntitiesAndKeepsNonAsciiText) {
    EXPECT_THAT(sentencesOf("caf&eacute; &#9731; &amp; &nbsp;Ärger"), ElementsAre("café ☃ & Ärger"));
    EXPECT_THAT(sentencesOf("<meta charset=iso-8859-1>Ärger"), ElementsAre("Ärger"));
}

TEST(HtmlText, PartsTableCellsAndGivesAlternativeTexts) {
    EXPECT_THAT(sentencesOf("<table><tr><td>a<td>b<tr><td>c</table><img alt='a map' src=x>"),
                ElementsAre("a b", "c", "a map"));
}

TEST(HtmlText, SurvivesBrokenPages) {
    EXPECT_THAT(sentencesOf("<p>one</div></b>two<table><p>three <"), testing::Not(testing::IsEmpty()));
    EXPECT_TRUE(sentencesOf("").empty());
    EXPECT_TRUE(shared::isUtf8(mail::htmlToPlainText("<p>a\xFF\xFE<b\x80>c")));
}

TEST(HtmlText, KeepsTheTextOfEndlessNesting) {
    std::string html;
    for (int i = 0; i < 50000; ++i) {
        html += "<b>";
    }
    EXPECT_THAT(mail::htmlToPlainText(html + "bottom"), HasSubstr("bottom"));
}

TEST(HtmlCharset, IsTheOneThePageNames) {
    EXPECT_EQ(mail::htmlCharset("<META charset='KOI8-R'>"), "koi8-r");
    EXPECT_EQ(mail::htmlCharset("<meta http-equiv=c content=\"text/html; charset=utf-8\">"), "utf-8");
    EXPECT_EQ(mail::htmlCharset("<p>none</p>"), "");
    EXPECT_EQ(mail::htmlCharset("charset="), "");
}

}  // namespace
