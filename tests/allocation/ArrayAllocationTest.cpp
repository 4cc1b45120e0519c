#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Allocations.h"
#include "Sweep.h"
#include "VXLandmarkExtract.h"

// Arrays that get no memory.

namespace
{

using allocation::Refusal;
using allocation::Refused;
using VXS::array;

using Elements = std::vector<float>;

std::unique_ptr<array<float>> makeArray(std::int32_t count)
{
    auto made = std::make_unique<array<float>>(count);
    for (std::int32_t i = 0; i < count; ++i)
        made->data[i] = static_cast<float>(i);
    return made;
}

Elements elementsOf(const array<float>& from)
{
    return Elements(from.data, from.data + from.count());
}

// A block that is shown to somebody cannot be optimised away.
const float* volatile seen = nullptr;

// What the first allocation within `act` being refused is told as.
template <typename Act>
std::string errorOf(const Act& act)
{
    Refusal refusal(0, Refused::One);
    try {
        act();
    } catch (const std::bad_alloc&) {
        return "bad_alloc";
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "nothing";
}

} // namespace

TEST(ArrayAllocation, ANewArrayPassesTheAllocatorsErrorOn)
{
    EXPECT_EQ("bad_alloc", errorOf([] {
                  const array<float> refused(4);
                  seen = refused.data;
              }));
}

TEST(ArrayAllocation, ACopyHasItsOwnError)
{
    const auto source = makeArray(4);

    EXPECT_EQ("array::array(): Error allocating memory", errorOf([&] {
                  const array<float> refused(*source);
                  seen = refused.data;
              }));
}

TEST(ArrayAllocation, ResizeHasItsOwnError)
{
    const auto subject = makeArray(4);

    EXPECT_EQ("array::resize(): Error allocating memory",
              errorOf([&] { subject->resize(5, 1, 1); }));
}

TEST(ArrayAllocation, AnAssignmentToOtherDimensionsHasTheErrorOfResize)
{
    const auto subject = makeArray(4);
    const auto source = makeArray(5);

    EXPECT_EQ("array::resize(): Error allocating memory", errorOf([&] { *subject = *source; }));
}

TEST(ArrayAllocation, BytesHaveTheErrorsOfSamples)
{
    array<unsigned char> subject(4);

    EXPECT_EQ("array::resize(): Error allocating memory",
              errorOf([&] { subject.resize(5, 1, 1); }));
}

TEST(ArrayAllocation, ResizeToTheSameDimensionsNeedsNoMemory)
{
    const auto subject = makeArray(4);

    EXPECT_EQ("nothing", errorOf([&] { subject->resize(4, 1, 1); }));
}

TEST(ArrayAllocation, ResizeCanBeTriedAgain)
{
    const std::uint64_t allocations = allocation::sweep(
        5, [] { return makeArray(4); },
        [](array<float>& subject) {
            subject.resize(5, 1, 1);
            return 0;
        },
        // Each element can be written.
        [](array<float>& subject, int) {
            for (std::int32_t i = 0; i < subject.count(); ++i)
                subject.data[i] = 1.0f;
            return subject.count();
        });

    // The block, and where that is refused the text of the error.
    EXPECT_EQ(1u, allocations);
}

TEST(ArrayAllocation, CopyingCanBeTriedAgain)
{
    const std::uint64_t allocations = allocation::sweep(
        Elements{0.0f, 1.0f, 2.0f}, [] { return makeArray(3); },
        [](array<float>& subject) { return std::make_unique<array<float>>(subject); },
        [](array<float>&, const std::unique_ptr<array<float>>& copy) { return elementsOf(*copy); });

    EXPECT_EQ(2u, allocations);
}

TEST(ArrayAllocation, AssigningCanBeTriedAgain)
{
    const auto source = makeArray(3);

    const std::uint64_t allocations = allocation::sweep(
        Elements{0.0f, 1.0f, 2.0f}, [] { return makeArray(7); },
        [&source](array<float>& subject) {
            subject = *source;
            return 0;
        },
        [](array<float>& subject, int) { return elementsOf(subject); });

    EXPECT_EQ(1u, allocations);
}
