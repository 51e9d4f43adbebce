#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <tuple>

#include "state/ByteChunk.h"

namespace
{
// Values follow each other little-endian without padding, and each read returns where the next one
// starts. A read past the end or from a negative position fails with -1 and leaves its target; so
// does every read from the -1 a failed one returns.
TEST(ByteChunk, ValuesFollowEachOtherAndAFailedReadLeavesItsTarget)
{
    ByteChunk chunk;
    EXPECT_EQ(chunk.Put(std::int32_t{0x10200}), 4);
    EXPECT_EQ(chunk.Put(std::uint8_t{0xAB}), 5);
    EXPECT_EQ(chunk.Put(1.0), 13);
    const std::uint8_t expected[] = {0x00, 0x02, 0x01, 0x00, 0xAB, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F};
    ASSERT_EQ(chunk.Size(), 13);
    EXPECT_EQ(std::memcmp(chunk.Data(), expected, 13), 0);
    std::int32_t word = 0;
    std::uint8_t byte = 0;
    double number = 0.0;
    EXPECT_EQ(chunk.Get(number, chunk.Get(byte, chunk.Get(word, 0))), 13);
    EXPECT_EQ(std::tuple(word, byte, number), std::tuple(0x10200, 0xAB, 1.0));
    EXPECT_EQ(chunk.Resize(5), 5);
    EXPECT_EQ(chunk.Get(word, 2), -1) << "4 bytes from 2 pass the end of 5";
    EXPECT_EQ(chunk.Get(word, -1), -1);
    EXPECT_EQ(word, 0x10200);
    EXPECT_EQ(chunk.Get(byte, chunk.Get(number, 0)), -1);
    EXPECT_EQ(number, 1.0);
    EXPECT_EQ(chunk.Get(word, 1), 5) << "the last whole word ends exactly at the end";
}

// A string is its length word and its bytes without terminator. A length of 0 or one that passes
// the end leaves the target and moves by the stored length (back, if negative); no room for the
// word, or a length that overflows the position, fails with -1.
TEST(StringField, IsALengthWordAndTheBytesWithoutTerminator)
{
    ByteChunk chunk;
    EXPECT_EQ(PutStr(chunk, "Echo"), 8);
    EXPECT_EQ(PutStr(chunk, ""), 12);
    chunk.Put(std::int32_t{-2});
    chunk.Put(std::int32_t{0x7FFFFFFF});
    ByteChunk longer;
    longer.Put(std::int32_t{10});
    longer.PutBytes("abc", 3);
    // {chunk, read from, next position, text read}
    const std::tuple<const ByteChunk*, int, int, const char*> rows[] = {
        {&chunk, 0, 8, "Echo"},   {&chunk, 8, 12, "kept"},  {&chunk, 12, 14, "kept"},
        {&chunk, 16, -1, "kept"}, {&chunk, 18, -1, "kept"}, {&chunk, -1, -1, "kept"},
        {&longer, 0, 14, "kept"}};
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(chunk.Data()) + 4, 4), "Echo");
    for (const auto& [from, at, next, read] : rows)
    {
        std::string target = "kept";
        EXPECT_EQ(GetStr(*from, target, at), next) << "from " << at;
        EXPECT_EQ(target, read) << "from " << at;
    }
}
} // namespace
