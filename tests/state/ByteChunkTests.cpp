#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "state/ByteChunk.h"

namespace
{
TEST(ByteChunk, ValuesFollowEachOtherLittleEndianWithoutPadding)
{
    ByteChunk chunk;
    EXPECT_EQ(chunk.Put(std::int32_t{0x10200}), 4);
    EXPECT_EQ(chunk.Put(std::uint8_t{0xAB}), 5);
    EXPECT_EQ(chunk.Put(1.0), 13);
    const std::uint8_t expected[] = {0x00, 0x02, 0x01, 0x00, 0xAB, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F};
    ASSERT_EQ(chunk.Size(), 13);
    for (int i = 0; i < 13; ++i)
        EXPECT_EQ(chunk.Data()[i], expected[i]) << "byte " << i;

    std::int32_t word = 0;
    std::uint8_t byte = 0;
    double number = 0.0;
    int pos = chunk.Get(word, 0);
    EXPECT_EQ(pos, 4);
    pos = chunk.Get(byte, pos);
    EXPECT_EQ(pos, 5);
    pos = chunk.Get(number, pos);
    EXPECT_EQ(pos, 13);
    EXPECT_EQ(word, 0x10200);
    EXPECT_EQ(byte, 0xAB);
    EXPECT_EQ(number, 1.0);
}

TEST(ByteChunk, ReadPastTheEndOrFromANegativePositionFailsAndLeavesTheTarget)
{
    ByteChunk chunk;
    chunk.Put(std::int32_t{7});
    chunk.Put(std::uint8_t{1});

    std::int32_t word = 99;
    EXPECT_EQ(chunk.Get(word, 2), -1) << "4 bytes from 2 pass the end of 5";
    EXPECT_EQ(word, 99);
    EXPECT_EQ(chunk.Get(word, 1), 5) << "the last whole word ends exactly at the end";
    word = 99;
    EXPECT_EQ(chunk.Get(word, -1), -1);
    EXPECT_EQ(word, 99);

    double number = 3.5;
    EXPECT_EQ(chunk.Get(number, 0), -1);
    EXPECT_EQ(number, 3.5);

    // A failed read leaves -1, and every read from there fails too.
    std::uint8_t byte = 5;
    EXPECT_EQ(chunk.Get(byte, chunk.Get(number, 0)), -1);
    EXPECT_EQ(byte, 5);
}

TEST(ByteChunk, ResizeGrowsWithZerosAndCuts)
{
    ByteChunk chunk;
    chunk.Put(std::int32_t{-1});
    EXPECT_EQ(chunk.Resize(6), 6);
    EXPECT_EQ(chunk.Data()[3], 0xFF);
    EXPECT_EQ(chunk.Data()[4], 0);
    EXPECT_EQ(chunk.Data()[5], 0);
    EXPECT_EQ(chunk.Resize(2), 2);
    std::int32_t word = 0;
    EXPECT_EQ(chunk.Get(word, 0), -1);
}

TEST(ByteChunk, BytesRoundTrip)
{
    ByteChunk chunk;
    const char text[] = "abcdef";
    EXPECT_EQ(chunk.PutBytes(text, 6), 6);
    char back[4] = {'x', 'x', 'x', 'x'};
    EXPECT_EQ(chunk.GetBytes(back, 4, 2), 6);
    EXPECT_EQ(std::string(back, 4), "cdef");
    EXPECT_EQ(chunk.GetBytes(back, 4, 3), -1);
    EXPECT_EQ(std::string(back, 4), "cdef");
}

TEST(StringField, IsALengthWordAndTheBytesWithoutTerminator)
{
    ByteChunk chunk;
    EXPECT_EQ(PutStr(chunk, "Echo"), 8);
    EXPECT_EQ(PutStr(chunk, ""), 12);
    std::int32_t length = 0;
    chunk.Get(length, 0);
    EXPECT_EQ(length, 4);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(chunk.Data()) + 4, 4), "Echo");
    chunk.Get(length, 8);
    EXPECT_EQ(length, 0);

    std::string first;
    std::string second = "kept";
    int pos = GetStr(chunk, first, 0);
    EXPECT_EQ(pos, 8);
    EXPECT_EQ(first, "Echo");
    pos = GetStr(chunk, second, pos);
    EXPECT_EQ(pos, 12);
    EXPECT_EQ(second, "kept") << "length 0 leaves the target alone";
}

TEST(StringField, BadLengthsLeaveTheTargetAndMoveByTheStoredLength)
{
    // A length that passes the end: target kept, position moved by the length all the same.
    ByteChunk longer;
    longer.Put(std::int32_t{10});
    longer.PutBytes("abc", 3);
    std::string target = "old";
    EXPECT_EQ(GetStr(longer, target, 0), 14);
    EXPECT_EQ(target, "old");

    // A negative length: target kept, position moved back.
    ByteChunk negative;
    negative.Put(std::int32_t{7});
    negative.Put(std::int32_t{-2});
    EXPECT_EQ(GetStr(negative, target, 4), 6);
    EXPECT_EQ(target, "old");

    // No room for the length word: -1.
    EXPECT_EQ(GetStr(negative, target, 6), -1);
    EXPECT_EQ(GetStr(negative, target, -1), -1);
    EXPECT_EQ(target, "old");

    // A length that overflows the position: -1, not a wrapped position.
    ByteChunk huge;
    huge.Put(std::int32_t{0x7FFFFFFF});
    EXPECT_EQ(GetStr(huge, target, 0), -1);
    EXPECT_EQ(target, "old");
}
} // namespace
