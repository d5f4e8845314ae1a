#include "platform/windows/utf16.h"

#include <gtest/gtest.h>

namespace {

using platform::windows::toUtf16;
using platform::windows::toUtf8;

TEST(Utf16, HoldsEveryPlane) {
    EXPECT_EQ(toUtf16("a\xC3\xA9\xE6\x96\x87\xF0\x9F\x8C\x8A"), L"a\x00E9\x6587\xD83C\xDF0A");
    EXPECT_EQ(toUtf8(L"a\x00E9\x6587\xD83C\xDF0A"), "a\xC3\xA9\xE6\x96\x87\xF0\x9F\x8C\x8A");
}

TEST(Utf16, BringsBytesThatAreNoTextBackUnchanged) {
    const std::string bytes = "x\xFF\xE9y";
    EXPECT_EQ(toUtf8(toUtf16(bytes)), bytes);
}

TEST(Utf16, KeepsTheRestBehindHalfAPair) {
    EXPECT_EQ(toUtf8(std::wstring{0xD83C, L'!'}).back(), '!');
    EXPECT_EQ(toUtf8(std::wstring{0xD83C}).size(), 3U);
}

}  // namespace
