#include "mail/uuencode.h"

#include <gtest/gtest.h>

namespace {

TEST(EncodedFile, IsFoundBetweenTheTextsAroundIt) {
    const auto file = mail::findEncodedFile("a\r\nbegin 644 my cat.txt\r\n#0V%T\r\n`\r\nend\r\nb\r\n");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->before, "a\r\n");
    EXPECT_EQ(file->name, "my cat.txt");
    EXPECT_EQ(file->bytes, "Cat");
    EXPECT_EQ(file->after, "b\r\n");
}

TEST(EncodedFile, IsNoneWithoutItsEndOrWithoutAMode) {
    EXPECT_FALSE(mail::findEncodedFile("begin 644 cat.txt\n#0V%T\n"));
    EXPECT_FALSE(mail::findEncodedFile("begin with me\nand\nend\n"));
    EXPECT_FALSE(mail::findEncodedFile("begin 644\nend\n"));
    EXPECT_FALSE(mail::findEncodedFile(""));
}

}  // namespace
