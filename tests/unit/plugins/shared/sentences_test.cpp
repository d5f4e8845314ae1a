#include "shared/sentences.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "base/text.h"

namespace {

using Texts = std::vector<std::string>;

Texts sentencesOf(std::string_view text, std::size_t most = 30000) {
    shared::SentenceCollector collector(most);
    shared::addPlainText(collector, text);
    return collector.take();
}

std::string withoutBlanks(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    return text;
}

std::string joined(const Texts& texts) {
    std::string all;
    for (const std::string& text : texts) {
        all += text;
    }
    return withoutBlanks(all);
}

TEST(Sentences, EndAtFullStopsAndMarks) {
    EXPECT_EQ(sentencesOf("It rained. Did it? Yes! So it did."),
              (Texts{"It rained.", "Did it?", "Yes!", "So it did."}));
}

TEST(Sentences, DoNotEndAtAbbreviationsNumbersAndAddresses) {
    EXPECT_EQ(sentencesOf("Mr. Hale paid 3.50 for it."), (Texts{"Mr. Hale paid 3.50 for it."}));
    EXPECT_EQ(sentencesOf("See http://river.example/map?Level=2 or ask Ann."),
              (Texts{"See http://river.example/map?Level=2 or ask Ann."}));
}

TEST(Sentences, JoinWrappedLinesWithOneBlank) {
    EXPECT_EQ(sentencesOf("The river\r\n  rose\rby night.\nThen\tit fell."),
              (Texts{"The river rose by night.", "Then it fell."}));
}

TEST(Sentences, EndAtEmptyLines) {
    EXPECT_EQ(sentencesOf("A title\n\nAnd text\n \t \nmore"), (Texts{"A title", "And text", "more"}));
    EXPECT_EQ(sentencesOf("one\r\n\r\ntwo"), (Texts{"one", "two"}));
}

TEST(Sentences, EndAtListItemsAndRuledLines) {
    EXPECT_EQ(sentencesOf("Bring\n- a rope\n- boots\n  that fit\n1. First\n2) Second"),
              (Texts{"Bring", "- a rope", "- boots that fit", "1. First", "2) Second"}));
    EXPECT_EQ(sentencesOf("Title\n=====\nText"), (Texts{"Title =====", "Text"}));
}

TEST(Sentences, AreNeverEmptyAndAlwaysTrimmed) {
    EXPECT_TRUE(sentencesOf("").empty());
    EXPECT_TRUE(sentencesOf(" \n\t\n\xC2\xA0\n\n").empty());
    EXPECT_EQ(sentencesOf("\xC2\xA0 a \xE2\x80\x89"), (Texts{"a"}));
    EXPECT_EQ(sentencesOf(std::string("a\0b", 3)), (Texts{"a b"}));
}

TEST(Sentences, KeepTextOfScriptsWithoutBlanks) {
    EXPECT_EQ(sentencesOf("今日は雨です。川が高い。"), (Texts{"今日は雨です。", "川が高い。"}));
}

/// Texts of marks, blanks and words of many kinds, the same in every run.
std::string madeText(unsigned seed) {
    static constexpr std::array<std::string_view, 36> pieces{
        "aqua",    "Aqua",  "12",   "3.5",  "Mr.",  "Dr.",  "Ann.",     "end.)", "(a!)",
        "\"so?\"", "'No.'", ".",    "!",    "?",    "...",  "?!",       ")",     "(",
        ",",       ";",     "--",   "2.",   "(3)",  "[1].", "{x!}",     "a.b",   "x?y=aqua",
        "-",       ":",     "Jan.", "U.S.", "a.m.", "vol.", "\x01\x7F", "aqua.", "aqua!"};
    std::string text;
    for (int i = 0; i < 60; ++i) {
        seed = seed * 1664525 + 1013904223;
        text.append(pieces[(seed >> 16U) % pieces.size()]).append((seed >> 8U) % 8 == 0 ? "" : " ");
    }
    return text;
}

TEST(Sentences, EndInAsciiWhereTheyEndInOtherText) {
    for (unsigned seed = 0; seed < 500; ++seed) {
        const std::string text = madeText(seed);
        // A small letter within words stands for another one.
        const auto foreign = [](const std::string& ascii) { return base::replaceAll(ascii, "q", "é"); };
        Texts expected;
        for (const std::string& sentence : sentencesOf(text)) {
            expected.push_back(foreign(sentence));
        }
        EXPECT_EQ(sentencesOf(foreign(text)), expected) << text;
    }
}

TEST(Sentences, OfALongLineOfMarksLoseNone) {
    const std::string marks(500000, '.');
    EXPECT_EQ(joined(sentencesOf(marks)), marks);
}

TEST(Sentences, EndBehindClosingMarks) {
    EXPECT_EQ(sentencesOf("(It rose.) (\"It fell!\") [Why?] So."),
              (Texts{"(It rose.)", "(\"It fell!\")", "[Why?]", "So."}));
    EXPECT_EQ(sentencesOf("a heading"), (Texts{"a heading"}));
    EXPECT_EQ(sentencesOf("a heading with an end."), (Texts{"a heading with an end."}));
    EXPECT_EQ(sentencesOf("call f.g(x) and h.i"), (Texts{"call f.g(x) and h.i"}));
}

TEST(Sentences, FoldWhiteSpaceOfEveryKindAndLength) {
    const std::string word = "0123456789abcdefghijklmnopqrstuvwxyz";
    for (std::size_t length = 1; length <= word.size(); ++length) {
        const std::string first = word.substr(0, length);
        for (const std::string_view blank :
             {" ", "  ", "\t", " \t ", "\v", "\xC2\xA0", " \xE3\x80\x80", "\xE2\x80\xA8"}) {
            const std::string text = first + std::string(blank) + word + std::string(blank);
            EXPECT_EQ(shared::foldWhiteSpace(text), first + " " + word) << length;
        }
        EXPECT_EQ(shared::foldWhiteSpace(first + "é" + word), first + "é" + word);
        EXPECT_EQ(shared::foldWhiteSpace(first + "\x01\x1F\x7F" + word), first + "\x01\x1F\x7F" + word);
        EXPECT_EQ(shared::foldWhiteSpace(first + "\xFF  \x80" + word), first + "\xFF \x80" + word);
    }
}

TEST(TakeLine, EndsAtEveryKindOfLineEnd) {
    for (std::size_t length = 0; length < 40; ++length) {
        const std::string line(length, 'x');
        for (const std::string_view end : {"\n", "\r", "\r\n"}) {
            const std::string text = line + std::string(end) + "\nnext";
            std::string_view rest = text;
            EXPECT_EQ(shared::takeLine(rest), line);
            EXPECT_EQ(rest, end == "\r" ? "next" : "\nnext");
        }
        std::string_view rest = line;
        EXPECT_EQ(shared::takeLine(rest), line);
        EXPECT_TRUE(rest.empty());
    }
}

TEST(Sentences, AreCutAtABlankWhenTheyAreTooLong) {
    std::string text;
    while (text.size() < 3000000) {
        text += "word" + std::to_string(text.size()) + " ";
    }
    const Texts sentences = sentencesOf(text);
    EXPECT_EQ(joined(sentences), withoutBlanks(text));
    for (const std::string& sentence : sentences) {
        EXPECT_LE(sentence.size(), shared::SentenceCollector::longestSentence);
        EXPECT_TRUE(sentence.starts_with("word"));
    }
}

TEST(Sentences, AreCutBetweenCharactersWhenThereIsNoBlank) {
    std::string text = "x";
    for (int i = 0; i < 400000; ++i) {
        text += "é";
    }
    const Texts sentences = sentencesOf(text);
    EXPECT_EQ(joined(sentences), text);
    for (std::size_t i = 1; i < sentences.size(); ++i) {
        EXPECT_EQ(sentences[i].substr(0, 2), "é");
    }
}

TEST(Sentences, OfAHugeLineAreTheSameAsThoseOfShortOnes) {
    std::string line;
    Texts expected;
    for (int i = 0; i < 20000; ++i) {
        expected.push_back("Gauge " + std::to_string(i) + " stood at nine feet that day.");
        line += expected.back() + " ";
    }
    EXPECT_EQ(sentencesOf(line), expected);
}

TEST(Sentences, AreJoinedWithTheirNeighboursWhenThereAreTooMany) {
    for (const int count : {9, 10, 11, 20, 21, 333, 1000}) {
        std::string text;
        for (int i = 0; i < count; ++i) {
            text += "s" + std::to_string(i) + "\n\n";
        }
        const Texts sentences = sentencesOf(text, 10);
        EXPECT_LE(sentences.size(), 10U);
        EXPECT_EQ(joined(sentences), joined(sentencesOf(text)));
    }
    EXPECT_EQ(sentencesOf("a\n\nb\n\nc", 2), (Texts{"a b", "c"}));
}

TEST(Sentences, StartAnewAfterTheyWereTaken) {
    shared::SentenceCollector collector(2);
    shared::addPlainText(collector, "a\n\nb\n\nc");
    EXPECT_EQ(collector.take().size(), 2U);
    shared::addPlainText(collector, "d\n\ne");
    EXPECT_EQ(collector.take(), (Texts{"d", "e"}));
}

}  // namespace
