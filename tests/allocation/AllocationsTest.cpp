#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "Allocations.h"
#include "Sweep.h"

// What the sweeps rest on: that every form of new is counted and can be refused.

namespace
{

using allocation::Refusal;
using allocation::Refused;

// Calls of the operators themselves, which no compiler may leave out.
using Form = void* (*)();
using Forms = std::array<Form, 4>;

Forms throwingForms()
{
    return {[] { return ::operator new(24); }, [] { return ::operator new[](24); },
            [] { return ::operator new(24, std::align_val_t(64)); },
            [] { return ::operator new[](24, std::align_val_t(64)); }};
}

Forms nothrowForms()
{
    return {[] { return ::operator new(24, std::nothrow); },
            [] { return ::operator new[](24, std::nothrow); },
            [] { return ::operator new(24, std::align_val_t(64), std::nothrow); },
            [] { return ::operator new[](24, std::align_val_t(64), std::nothrow); }};
}

void freeBlock(void* block)
{
    ::operator delete(block);
}

using Block = std::unique_ptr<void, void (*)(void*)>;

bool throwsBadAlloc(Form form)
{
    try {
        freeBlock(form());
    } catch (const std::bad_alloc&) {
        return true;
    }
    return false;
}

} // namespace

TEST(Allocations, EveryThrowingFormIsRefusedAndThrows)
{
    for (std::size_t i = 0; i < throwingForms().size(); ++i) {
        const Refusal refusal(0, Refused::One);

        EXPECT_TRUE(throwsBadAlloc(throwingForms()[i])) << i;
    }
}

TEST(Allocations, EveryNothrowFormIsRefusedAndAnswersNull)
{
    for (std::size_t i = 0; i < nothrowForms().size(); ++i) {
        const Refusal refusal(0, Refused::One);

        EXPECT_EQ(nullptr, nothrowForms()[i]()) << i;
    }
}

TEST(Allocations, EveryBlockIsCountedUntilItIsFreed)
{
    const std::int64_t before = allocation::liveBlocks();

    std::vector<void*> blocks;
    blocks.reserve(8);
    for (const Form form : throwingForms())
        blocks.push_back(form());

    // Four, and that of the vector.
    EXPECT_EQ(before + 5, allocation::liveBlocks());
    for (void* block : blocks)
        freeBlock(block);
    EXPECT_EQ(before + 1, allocation::liveBlocks());
}

TEST(Allocations, TheStandardLibrariesOwnAreCounted)
{
    const std::int64_t before = allocation::liveBlocks();

    const std::runtime_error error("text that the library of the standard classes keeps");

    EXPECT_LT(before, allocation::liveBlocks());
}

TEST(Allocations, OneRefusalHitsTheNumberedOneOnly)
{
    const Form form = throwingForms().front();
    const Refusal refusal(1, Refused::One);

    const bool first = throwsBadAlloc(form);
    const bool hasHappenedEarly = refusal.hasHappened();
    const bool second = throwsBadAlloc(form);
    const bool third = throwsBadAlloc(form);

    EXPECT_FALSE(first);
    EXPECT_TRUE(second);
    EXPECT_FALSE(third);
    EXPECT_FALSE(hasHappenedEarly);
    EXPECT_TRUE(refusal.hasHappened());
}

TEST(Allocations, ARefusalOfAllLastsUntilItEnds)
{
    const Form form = throwingForms().front();
    Refusal refusal(1, Refused::AllFromThere);

    const bool first = throwsBadAlloc(form);
    const bool second = throwsBadAlloc(form);
    const bool third = throwsBadAlloc(form);
    refusal.end();

    EXPECT_FALSE(first);
    EXPECT_TRUE(second);
    EXPECT_TRUE(third);
    EXPECT_FALSE(throwsBadAlloc(form));
}

TEST(Allocations, ASweepRefusesEachAllocationInTurn)
{
    int calls = 0;

    // Two allocations, refused each in both ways, the try after each, and a run of its own for each
    // way that meets no refusal: 4 + 4 + 2.
    const std::uint64_t allocations = allocation::sweep(
        3, [] { return std::make_unique<int>(0); },
        [&calls](int&) {
            ++calls;
            const Form form = throwingForms().front();
            const Block one(form(), freeBlock);
            const Block two(form(), freeBlock);
            return 3;
        },
        [](int&, int value) { return value; });

    EXPECT_EQ(2u, allocations);
    EXPECT_EQ(10, calls);
}
