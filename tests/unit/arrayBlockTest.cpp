#include <stdexcept>

#include <gtest/gtest.h>

#include "VXLandmarkExtract.h"

// What a request for other dimensions does to the block.

namespace
{

using VXS::array;

// 32768 * 65536 is 2^31, which 32 bits hold as a negative number.
constexpr int half = 32768;
constexpr int whole = 65536;

} // namespace

TEST(Array, ResizeOfTheLastDimensionAloneGivesANewCount)
{
    array<float> block(2, 3, 4);

    block.resize(2, 3, 5);

    EXPECT_EQ(30, block.count());
    EXPECT_EQ(5, block.dim2);
}

TEST(Array, ResizeOfTheMiddleDimensionAloneGivesANewCount)
{
    array<float> block(2, 3, 4);

    block.resize(2, 5, 4);

    EXPECT_EQ(40, block.count());
    EXPECT_EQ(5, block.dim1);
}

TEST(Array, ResizeThatFailedIsTriedAgain)
{
    array<float> block;
    EXPECT_THROW(block.resize(half, whole, 1), std::runtime_error);

    EXPECT_THROW(block.resize(half, whole, 1), std::runtime_error);

    EXPECT_EQ(nullptr, block.data);
}

TEST(Array, ResizeOfAnEmptyArrayToNothingGivesItNoBlock)
{
    array<float> block;

    block.resize(0, 0, 0);

    EXPECT_EQ(nullptr, block.data);
}

TEST(Array, CopyOfBytesHasABlockOfItsOwnWithTheSameContents)
{
    array<unsigned char> bytes(2);
    bytes.data[0] = 3;
    bytes.data[1] = 250;

    const array<unsigned char> copy(bytes);

    EXPECT_NE(bytes.data, copy.data);
    EXPECT_EQ(3, copy.data[0]);
    EXPECT_EQ(250, copy.data[1]);
}

TEST(Array, CopyOfBytesWithoutMemoryThrows)
{
    array<unsigned char> impossible;
    impossible.dim0 = half;
    impossible.dim1 = whole;
    impossible.dim2 = 1;

    EXPECT_THROW(const array<unsigned char> copy(impossible), std::runtime_error);
}

TEST(Array, AssignmentOfBytesTakesDimensionsAndContents)
{
    array<unsigned char> source(1, 2, 1);
    source.data[0] = 7;
    source.data[1] = 8;
    array<unsigned char> target;

    target = source;

    EXPECT_EQ(2, target.dim1);
    EXPECT_EQ(8, target.data[1]);
}

TEST(Array, AssignmentOfBytesToThemselvesKeepsThem)
{
    array<unsigned char> bytes(1);
    bytes.data[0] = 9;
    const array<unsigned char>& same = bytes;

    bytes = same;

    EXPECT_EQ(9, bytes.data[0]);
}

TEST(Array, ResizeOfAnAliasOfBytesThrows)
{
    unsigned char block[2] = {1, 2};
    array<unsigned char> alias;
    alias.data = block;
    alias.dim0 = 2;
    alias.dim1 = 1;
    alias.dim2 = 1;
    alias.alias = true;

    EXPECT_THROW(alias.resize(1, 1, 1), std::runtime_error);
}

TEST(Array, ResizeOfBytesToThePresentDimensionsKeepsTheBlock)
{
    array<unsigned char> bytes(2, 1, 1);
    const unsigned char* const before = bytes.data;

    bytes.resize(2, 1, 1);

    EXPECT_EQ(before, bytes.data);
}
