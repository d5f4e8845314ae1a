#include "platform/windows/utf16.h"

#include <gtest/gtest.h>

namespace {

using platform::windows::toUtf16;
using platform::windows::toUtf8;

TEST(Utf16, HoldsEveryPlane) {
    EXPECT_EQ(toUtf16("a\xC3\xA9\xE6\x96\x87\xF0\x9F\x8C\x8A"), L"a\x00E9\x6587\xD83C\xDF0A");
    EXPECT_EQ(toUtf8(L"a\x00E9\x6587\xD83C\xDF0A"), "a\xC3\xA9\xE6\x96\x87\xF0\x9F\x8C\x8A");
}

TEST(Utf16, MakesHalvesOfBytesThatAreNoText) {
    EXPECT_EQ(toUtf16("x\xFF\xE9y"), (std::wstring{L'x', 0xDCFF, 0xDCE9, L'y'}));
    EXPECT_EQ(toUtf16("\xED"), (std::wstring{0xDCED}));
    EXPECT_EQ(toUtf16("\xED\xA0"), (std::wstring{0xDCED, 0xDCA0}));
}

TEST(Utf16, BringsHalfAPairBackUnchanged) {
    // The second last would be a byte alone, and the last an e with an accent, if halves stood for bytes.
    for (const std::wstring& text : {std::wstring{0xD800}, std::wstring{0xDBFF}, std::wstring{0xDC00},
                                     std::wstring{0xDFFF}, std::wstring{L'a', 0xD83C, L'b'},
                                     std::wstring{0xDF0A, 0xD83C}, std::wstring{0xD83C, 0xD83C, 0xDF0A},
                                     std::wstring{L'a', 0xDCE9, L'b'}, std::wstring{0xDCC3, 0xDCA9}}) {
        EXPECT_EQ(toUtf16(toUtf8(text)), text);
    }
}

TEST(Utf16, KeepsEveryUnitApart) {
    for (char32_t unit = 1; unit <= 0xFFFF; ++unit) {
        const std::wstring text{L'<', static_cast<wchar_t>(unit), L'>'};
        ASSERT_EQ(toUtf16(toUtf8(text)), text) << static_cast<unsigned>(unit);
    }
}

TEST(Utf16, KeepsWhatStandsAroundHalfAPair) {
    EXPECT_EQ(toUtf8(std::wstring{L'a', 0xD83C, L'!'}), "a\xED\xA0\xBC!");
    EXPECT_EQ(toUtf8(std::wstring{0x6587, 0xDCA9, 0x6587}), "\xE6\x96\x87\xED\xB2\xA9\xE6\x96\x87");
}

TEST(Utf16, JoinsTwoHalvesThatMeet) {
    EXPECT_EQ(toUtf16(toUtf8(std::wstring{0xD83C}) + toUtf8(std::wstring{0xDF0A})), L"\xD83C\xDF0A");
}

}  // namespace
