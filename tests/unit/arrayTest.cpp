#include <memory>
#include <numeric>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "VXLandmarkExtract.h"

namespace
{

using VXS::array;

// Counts how many were made, so that a test sees an allocation.
struct Probe {
    static int made;
    Probe() { ++made; }
    int value = -1;
};

int Probe::made = 0;

void fillRising(array<float>& target)
{
    std::iota(target.data, target.data + target.count(), 1.0f);
}

// An array whose dimensions ask for more than there can be.
void makeImpossible(array<float>& target)
{
    target.dim0 = -1;
    target.dim1 = 1;
    target.dim2 = 1;
}

template <typename Action>
std::string messageOf(Action action)
{
    try {
        action();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "no std::runtime_error";
}

} // namespace

TEST(Array, DefaultConstructionIsEmpty)
{
    const array<float> empty;

    EXPECT_EQ(nullptr, empty.data);
    EXPECT_EQ(0, empty.dim0);
    EXPECT_EQ(0, empty.dim1);
    EXPECT_EQ(0, empty.dim2);
    EXPECT_FALSE(empty.alias);
}

TEST(Array, SizedConstructionStoresTheDimensionsAndAllocates)
{
    const array<float> sized(2, 3, 4);

    EXPECT_NE(nullptr, sized.data);
    EXPECT_EQ(2, sized.dim0);
    EXPECT_EQ(3, sized.dim1);
    EXPECT_EQ(4, sized.dim2);
    EXPECT_FALSE(sized.alias);
}

TEST(Array, SizedConstructionAllocatesTheProductOfTheDimensions)
{
    Probe::made = 0;

    const array<Probe> sized(2, 3, 4);

    EXPECT_EQ(24, Probe::made);
}

TEST(Array, SizedConstructionOfNoElementsHasNoBlock)
{
    const array<float> sized(4, 0, 1);

    EXPECT_EQ(nullptr, sized.data);
    EXPECT_EQ(4, sized.dim0);
    EXPECT_EQ(0, sized.dim1);
    EXPECT_EQ(1, sized.dim2);
}

TEST(Array, CopyHasABlockOfItsOwnWithTheSameContents)
{
    array<float> original(2, 1, 2);
    fillRising(original);

    const array<float> copy(original);
    original.data[3] = 99.0f;

    EXPECT_NE(original.data, copy.data);
    EXPECT_EQ(2, copy.dim0);
    EXPECT_EQ(1, copy.dim1);
    EXPECT_EQ(2, copy.dim2);
    EXPECT_EQ(1.0f, copy.data[0]);
    EXPECT_EQ(4.0f, copy.data[3]);
}

TEST(Array, CopyOfAnArrayWithoutSizeHasABlockOfNoElements)
{
    const array<float> empty;

    const array<float> copy(empty);

    EXPECT_NE(nullptr, copy.data);
    EXPECT_EQ(0, copy.dim0);
    EXPECT_EQ(0, copy.dim1);
    EXPECT_EQ(0, copy.dim2);
}

TEST(Array, CopyOfAnAliasIsNoAliasAndOwnsItsBlock)
{
    float block[3] = {1.0f, 2.0f, 3.0f};
    array<float> alias;
    alias.data = block;
    alias.dim0 = 3;
    alias.dim1 = 1;
    alias.dim2 = 1;
    alias.alias = true;

    const array<float> copy(alias);

    EXPECT_FALSE(copy.alias);
    EXPECT_NE(static_cast<const float*>(block), copy.data);
    EXPECT_EQ(3.0f, copy.data[2]);
}

TEST(Array, CopyWithoutMemoryThrowsTheErrorOfTheConstructor)
{
    array<float> impossible;
    makeImpossible(impossible);

    const std::string message = messageOf([&] { const array<float> copy(impossible); });

    EXPECT_EQ("array::array(): Error allocating memory", message);
}

// The block lies on the stack: releasing it would end the test.
TEST(Array, DestroyedAliasReleasesNothing)
{
    float block[2] = {5.0f, 6.0f};

    {
        array<float> alias;
        alias.data = block;
        alias.dim0 = 2;
        alias.dim1 = 1;
        alias.dim2 = 1;
        alias.alias = true;
    }

    EXPECT_EQ(6.0f, block[1]);
}

TEST(Array, ResizeToThePresentDimensionsKeepsBlockAndContents)
{
    array<float> kept(4, 1, 1);
    fillRising(kept);
    const float* block = kept.data;

    kept.resize(4, 1, 1);

    EXPECT_EQ(block, kept.data);
    EXPECT_EQ(1.0f, kept.data[0]);
    EXPECT_EQ(4.0f, kept.data[3]);
}

TEST(Array, ResizeToThePresentDimensionsDoesNotAllocate)
{
    array<Probe> kept(4, 1, 1);
    Probe::made = 0;

    kept.resize(4, 1, 1);

    EXPECT_EQ(0, Probe::made);
}

TEST(Array, ResizeToTheSameCountInOtherDimensionsAllocatesAndLosesTheContents)
{
    array<Probe> changed(4, 1, 1);
    changed.data[0].value = 17;
    Probe::made = 0;

    changed.resize(2, 2, 1);

    EXPECT_EQ(4, Probe::made);
    EXPECT_EQ(-1, changed.data[0].value);
    EXPECT_EQ(2, changed.dim0);
    EXPECT_EQ(2, changed.dim1);
    EXPECT_EQ(1, changed.dim2);
}

TEST(Array, ResizeGivesAnEmptyArrayItsBlock)
{
    array<float> empty;

    empty.resize(3, 2, 1);
    fillRising(empty);

    EXPECT_EQ(6.0f, empty.data[5]);
}

TEST(Array, ResizeToNoElementsGivesABlockOfNoElements)
{
    array<float> emptied(3, 1, 1);

    emptied.resize(0, 1, 1);

    EXPECT_NE(nullptr, emptied.data);
    EXPECT_EQ(0, emptied.dim0);
    EXPECT_EQ(1, emptied.dim1);
}

TEST(Array, ResizeOfAnAliasToItsOwnDimensionsKeepsItsBlock)
{
    float block[2] = {5.0f, 6.0f};
    array<float> alias;
    alias.data = block;
    alias.dim0 = 2;
    alias.dim1 = 1;
    alias.dim2 = 1;
    alias.alias = true;

    alias.resize(2, 1, 1);

    EXPECT_EQ(block, alias.data);
    EXPECT_TRUE(alias.alias);
}

TEST(Array, ResizeOfAnAliasToOtherDimensionsThrowsAndChangesNothing)
{
    float block[2] = {5.0f, 6.0f};
    array<float> alias;
    alias.data = block;
    alias.dim0 = 2;
    alias.dim1 = 1;
    alias.dim2 = 1;
    alias.alias = true;

    const std::string message = messageOf([&] { alias.resize(1, 2, 1); });

    EXPECT_EQ("array::resize(): Cannot resize alias array", message);
    EXPECT_EQ(block, alias.data);
    EXPECT_EQ(2, alias.dim0);
    EXPECT_EQ(1, alias.dim1);
}

TEST(Array, ResizeToANegativeCountThrowsTheErrorOfResize)
{
    array<float> impossible(4, 1, 1);

    const std::string message = messageOf([&] { impossible.resize(-1, 1, 1); });

    EXPECT_EQ("array::resize(): Error allocating memory", message);
}

TEST(Array, ResizeOfBytesToANegativeCountThrowsTheErrorOfResize)
{
    array<unsigned char> impossible;

    const std::string message = messageOf([&] { impossible.resize(-1, 1, 1); });

    EXPECT_EQ("array::resize(): Error allocating memory", message);
}

TEST(Array, FailedResizeHoldsTheNewDimensions)
{
    array<float> impossible(4, 1, 1);

    messageOf([&] { impossible.resize(-5, 6, 7); });

    EXPECT_EQ(-5, impossible.dim0);
    EXPECT_EQ(6, impossible.dim1);
    EXPECT_EQ(7, impossible.dim2);
}

// 46341 * 46341 = 2147488281 is 2^31 + 4633, which 32 bits hold as a negative number.
TEST(Array, CountThatOverflowsToBelowZeroThrows)
{
    array<float> impossible;

    const std::string message = messageOf([&] { impossible.resize(46341, 46341, 1); });

    EXPECT_EQ("array::resize(): Error allocating memory", message);
}

// 65536 * 65536 = 2^32, of which 32 bits keep 0.
TEST(Array, CountThatOverflowsToZeroGivesABlockOfNoElements)
{
    Probe::made = 0;
    array<Probe> wrapped;

    wrapped.resize(65536, 65536, 1);

    EXPECT_NE(nullptr, wrapped.data);
    EXPECT_EQ(0, Probe::made);
}

TEST(Array, TwoNegativeDimensionsMakeAPositiveCount)
{
    Probe::made = 0;
    array<Probe> odd;

    odd.resize(-2, -3, 1);

    EXPECT_EQ(6, Probe::made);
}

TEST(Array, AssignmentTakesDimensionsAndContents)
{
    array<float> source(2, 2, 1);
    fillRising(source);
    array<float> target(7, 1, 1);

    target = source;
    source.data[0] = 99.0f;

    EXPECT_EQ(2, target.dim0);
    EXPECT_EQ(2, target.dim1);
    EXPECT_EQ(1, target.dim2);
    EXPECT_EQ(1.0f, target.data[0]);
    EXPECT_EQ(4.0f, target.data[3]);
}

TEST(Array, AssignmentOfEqualDimensionsKeepsTheBlock)
{
    array<float> source(3, 1, 1);
    fillRising(source);
    array<float> target(3, 1, 1);
    const float* block = target.data;

    target = source;

    EXPECT_EQ(block, target.data);
    EXPECT_EQ(3.0f, target.data[2]);
}

TEST(Array, AssignmentToItselfKeepsTheContents)
{
    array<float> same(3, 1, 1);
    fillRising(same);
    const array<float>& itself = same;

    same = itself;

    EXPECT_EQ(1.0f, same.data[0]);
    EXPECT_EQ(3.0f, same.data[2]);
}

TEST(Array, AssignmentOfAnEmptyArrayEmpties)
{
    const array<float> empty;
    array<float> target(3, 1, 1);

    target = empty;

    EXPECT_EQ(0, target.dim0);
    EXPECT_EQ(0, target.dim1);
    EXPECT_EQ(0, target.dim2);
}

TEST(Array, AssignmentToAnAliasOfEqualDimensionsWritesIntoItsBlock)
{
    float block[2] = {5.0f, 6.0f};
    array<float> alias;
    alias.data = block;
    alias.dim0 = 2;
    alias.dim1 = 1;
    alias.dim2 = 1;
    alias.alias = true;
    array<float> source(2, 1, 1);
    fillRising(source);

    alias = source;

    EXPECT_EQ(1.0f, block[0]);
    EXPECT_EQ(2.0f, block[1]);
    EXPECT_TRUE(alias.alias);
}

TEST(Array, AssignmentToAnAliasOfOtherDimensionsThrowsTheErrorOfResize)
{
    float block[2] = {5.0f, 6.0f};
    array<float> alias;
    alias.data = block;
    alias.dim0 = 2;
    alias.dim1 = 1;
    alias.dim2 = 1;
    alias.alias = true;
    const array<float> source(3, 1, 1);

    const std::string message = messageOf([&] { alias = source; });

    EXPECT_EQ("array::resize(): Cannot resize alias array", message);
}
