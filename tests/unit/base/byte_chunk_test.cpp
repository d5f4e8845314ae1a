#include "base/byte_chunk.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using base::ByteChunk;

/// Eight bytes of which one is the byte in question.
std::string with(int byte, std::size_t place, char others) {
    std::string bytes(ByteChunk::size, others);
    bytes[place] = static_cast<char>(byte);
    return bytes;
}

TEST(ByteChunk, TellsOfEveryByteInEveryPlace) {
    for (std::size_t place = 0; place < ByteChunk::size; ++place) {
        for (int byte = 0; byte < 256; ++byte) {
            const ByteChunk chunk(with(byte, place, 'a').c_str());
            EXPECT_EQ(chunk.has('\n'), byte == '\n') << byte;
            EXPECT_EQ(chunk.has('\0'), byte == 0) << byte;
            EXPECT_EQ(chunk.hasLessThan(' '), byte < ' ') << byte;
            EXPECT_EQ(chunk.hasBeyondAscii(), byte > 127) << byte;
        }
    }
}

TEST(ByteChunk, IsNotMisledByTheNeighboursOfAByte) {
    for (const char others : {'\0', '\x01', '\t', '\v', '\x1F', '!', '\x7F', '\x80', '\xFF'}) {
        const ByteChunk chunk(with(others, 0, others).c_str());
        EXPECT_FALSE(chunk.has('\n'));
        EXPECT_EQ(chunk.hasLessThan(' '), others >= 0 && others < ' ');
    }
}

TEST(ByteChunk, SharesAByteOnlyInTheSamePlace) {
    const ByteChunk chunk("a bc  de");
    EXPECT_TRUE(chunk.sharesWith(ByteChunk("bbbbb bb"), ' '));
    EXPECT_FALSE(chunk.sharesWith(ByteChunk(" b b  e "), 'b'));
    EXPECT_FALSE(chunk.sharesWith(ByteChunk(" bbb  b "), 'x'));
}

TEST(FindByte, FindsTheFirstWhereverItStands) {
    for (std::size_t size = 0; size < 40; ++size) {
        for (std::size_t place = 0; place <= size; ++place) {
            std::string text(size, 'x');
            text.append("\n");
            text[place] = '\n';
            const auto found = base::findByte(
                text, [](ByteChunk chunk) { return chunk.has('\n'); }, [](char c) { return c == '\n'; });
            EXPECT_EQ(found, place);
        }
    }
}

TEST(FindByte, GivesTheSizeWhenThereIsNone) {
    const auto never = [](auto) { return false; };
    EXPECT_EQ(base::findByte("", never, never), 0U);
    EXPECT_EQ(base::findByte("twelve bytes", never, never), 12U);
}

}  // namespace
