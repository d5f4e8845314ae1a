#include "shared/charset.h"

#include <gtest/gtest.h>

namespace {

std::string bytesOf(const char* bytes, std::size_t size) {
    return {bytes, size};
}

TEST(ToUtf8, ReadsEveryByteOrderMarkAndDropsIt) {
    EXPECT_EQ(shared::toUtf8("\xEF\xBB\xBFn\xC3\xA9"), "né");
    EXPECT_EQ(shared::toUtf8(bytesOf("\xFF\xFEn\0\xE9\0", 6)), "né");
    EXPECT_EQ(shared::toUtf8(bytesOf("\xFE\xFF\0n\0\xE9", 6)), "né");
    EXPECT_EQ(shared::toUtf8(bytesOf("\xFF\xFE\0\0n\0\0\0\xE9\0\0\0", 12)), "né");
    EXPECT_EQ(shared::toUtf8(bytesOf("\0\0\xFE\xFF\0\0\0n\0\0\0\xE9", 12)), "né");
}

TEST(ToUtf8, ReadsUtf16WithoutAMark) {
    EXPECT_EQ(shared::toUtf8(bytesOf("r\0i\0v\0e\0r\0", 10)), "river");
    EXPECT_EQ(shared::toUtf8(bytesOf("\0r\0i\0v\0e\0r", 10)), "river");
}

TEST(ToUtf8, LeavesUtf8AsItIs) {
    EXPECT_EQ(shared::toUtf8("naïve Ärger \xF0\x9F\x98\x80"), "naïve Ärger \xF0\x9F\x98\x80");
    EXPECT_EQ(shared::toUtf8(""), "");
}

TEST(ToUtf8, DetectsWesternEuropeanText) {
    EXPECT_EQ(shared::toUtf8("Le caf\xE9 de la rive est ferm\xE9 en ao\xFBt, mais ouvert d\xE8s septembre."),
              "Le café de la rive est fermé en août, mais ouvert dès septembre.");
    EXPECT_EQ(shared::toUtf8("caf\xE9"), "café");
}

TEST(ToUtf8, DetectsCyrillicText) {
    EXPECT_EQ(shared::toUtf8("\xCF\xF0\xE8\xE2\xE5\xF2, \xEA\xE0\xEA \xE4\xE5\xEB\xE0? \xDD\xF2\xEE "
                             "\xEF\xF0\xEE\xF1\xF2\xEE\xE9 \xF2\xE5\xEA\xF1\xF2 \xEE \xF0\xE5\xEA\xE5."),
              "Привет, как дела? Это простой текст о реке.");
}

TEST(ToUtf8, ReplacesWhatIsDamagedInUtf8WithAMark) {
    EXPECT_EQ(shared::toUtf8("\xEF\xBB\xBF"
                             "a\xFFz"),
              "a\xEF\xBF\xBDz");
}

TEST(ToUtf8, ObeysTheNamedEncoding) {
    EXPECT_EQ(shared::toUtf8("\xA4", "ISO-8859-15"), "€");
    EXPECT_EQ(shared::toUtf8("\x93\xFA\x96\x7B", "Shift_JIS"), "日本");
}

TEST(ToUtf8, FallsBackWhenTheNamedEncodingIsUnknownOrDoesNotFit) {
    EXPECT_EQ(shared::toUtf8("caf\xE9", "x-unheard-of"), "café");
    EXPECT_EQ(shared::toUtf8("caf\xE9", "utf-8"), "café");
    EXPECT_EQ(shared::toUtf8("caf\xC3\xA9", "us-ascii"), "café");
    EXPECT_EQ(shared::toUtf8("caf\xC3\xA9", ""), "café");
}

TEST(ToUtf8, AlwaysGivesValidUtf8) {
    std::string bytes;
    for (int i = 255; i > 0; --i) {
        bytes += static_cast<char>(i);
    }
    for (const char* charset : {"", "utf-8", "utf-16", "iso-2022-jp", "gb18030", "utf-7", "koi8-r"}) {
        EXPECT_TRUE(shared::isUtf8(shared::toUtf8(bytes, charset))) << charset;
    }
}

TEST(IsUtf8, RefusesSurrogatesAndTornCharacters) {
    EXPECT_FALSE(shared::isUtf8("\xED\xA0\x80"));
    EXPECT_FALSE(shared::isUtf8("caf\xC3"));
    EXPECT_TRUE(shared::isUtf8("café"));
}

TEST(IsUtf8, FindsDamageWhereverItStands) {
    for (std::size_t size = 0; size < 40; ++size) {
        std::string text(size, 'a');
        EXPECT_TRUE(shared::isUtf8(text)) << size;
        EXPECT_TRUE(shared::isUtf8(text + "é" + text + "日本" + text)) << size;
        EXPECT_FALSE(shared::isUtf8(text + "\xE9" + text)) << size;
        EXPECT_FALSE(shared::isUtf8(text + "é\xA9" + text)) << size;
        EXPECT_FALSE(shared::isUtf8(text + "日\xE6\x9C")) << size;
    }
}

TEST(LooksBinary, KnowsCommonFormatsByTheirFirstBytes) {
    EXPECT_TRUE(shared::looksBinary("%PDF-1.7 and then much text"));
    EXPECT_TRUE(shared::looksBinary("PK\x03\x04 and then much text"));
    EXPECT_TRUE(
        shared::looksBinary("\x7F"
                            "ELF and then much text"));
}

TEST(LooksBinary, IsTrueForNulBytesOutsideWideText) {
    EXPECT_TRUE(shared::looksBinary(bytesOf("a line of text\0and more", 23)));
    EXPECT_FALSE(shared::looksBinary(bytesOf("\xFF\xFEn\0\xE9\0", 6)));
    EXPECT_FALSE(shared::looksBinary(bytesOf("r\0i\0v\0e\0r\0", 10)));
}

TEST(LooksBinary, IsTrueForOneNulByteWhereverItStands) {
    for (const std::size_t place : {1UL, 20UL, 300UL, shared::binarySample - 1, shared::binarySample + 1}) {
        std::string bytes(shared::binarySample + 100, 'a');
        EXPECT_FALSE(shared::looksBinary(bytes));
        bytes[place] = '\0';
        EXPECT_TRUE(shared::looksBinary(bytes)) << place;
    }
}

TEST(LooksBinary, IsTrueForNulBytesOnBothSidesOfThePairs) {
    std::string bytes;
    for (int i = 0; i < 100; ++i) {
        bytes.append("r\0", 2);
    }
    EXPECT_FALSE(shared::looksBinary(bytes));
    EXPECT_TRUE(shared::looksBinary(bytes + std::string(2, '\0')));
}

TEST(LooksBinary, CountsTheControlCharactersThatTextsDoNotUse) {
    for (int code = 1; code < 256; ++code) {
        const char character = static_cast<char>(code);
        const bool used = (code >= 0x08 && code <= 0x0D) || code == 0x1B;
        const bool counts = (code < 0x20 && !used) || code == 0x7F;
        // Eight may be there, and one more for every fifty bytes.
        EXPECT_FALSE(shared::looksBinary(std::string(990, 'a') + std::string(28, character))) << code;
        EXPECT_EQ(shared::looksBinary(std::string(990, 'a') + std::string(29, character)), counts) << code;
    }
    EXPECT_TRUE(shared::looksBinary(std::string(300, '\x01')));
}

TEST(LooksBinary, IsTrueForManyControlCharacters) {
    EXPECT_TRUE(shared::looksBinary(std::string(100, '\x01') + std::string(100, 'a')));
    EXPECT_FALSE(shared::looksBinary("one stray\x01 control character"));
    EXPECT_FALSE(shared::looksBinary("tabs\tand\r\nlines\f"));
    EXPECT_FALSE(shared::looksBinary(""));
}

}  // namespace
