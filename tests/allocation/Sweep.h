#ifndef ALLOCATION_SWEEP_H
#define ALLOCATION_SWEEP_H

#include <algorithm>
#include <cstdint>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "Allocations.h"

namespace allocation
{

// Runs `act`, with no exception let through but std::bad_alloc and an array's own errors; another
// fails the test. Answers what act returned, or nothing.
template <typename Act>
auto attempt(const Act& act, Refusal& refusal) -> std::optional<decltype(act())>
{
    // No text is built while allocations are refused.
    std::string unexpected;
    try {
        return act();
    } catch (const std::bad_alloc&) {
        return {};
    } catch (const std::runtime_error& error) {
        refusal.end();
        const std::string text = error.what();
        if (text == "array::resize(): Error allocating memory" ||
            text == "array::array(): Error allocating memory") {
            return {};
        }
        unexpected = text;
    } catch (const std::exception& error) {
        refusal.end();
        unexpected = error.what();
    }
    ADD_FAILURE() << "unexpected exception: " << unexpected;
    return {};
}

// Each allocation that an operation makes, refused in turn, alone and with all that follow it.
//
// `make` answers a std::unique_ptr to a new subject, `act` is the operation and answers what it
// made, and `view` tells what came of it, in a form that can be compared. For every allocation of
// `act`: memory running out shows as std::bad_alloc or an array's own error, or not at all; the
// same subject then gives `expected`; and nothing is left once all are gone. An operation that ends
// as if nothing had happened must have given `expected`, or what `accepts` takes for an answer.
// Answers the number of allocations.
template <typename Value, typename Make, typename Act, typename View, typename Accepts>
std::uint64_t sweep(const Value& expected, const Make& make, const Act& act, const View& view,
                    const Accepts& accepts)
{
    std::uint64_t allocations = 0;
    for (const Refused kind : {Refused::One, Refused::AllFromThere}) {
        for (std::uint64_t number = 0;; ++number) {
            SCOPED_TRACE("allocation " + std::to_string(number) +
                         (kind == Refused::One ? " refused" : " and all that follow refused"));
            const std::int64_t before = liveBlocks();
            bool isRefused = false;
            {
                auto subject = make();
                Refusal refusal(number, kind);
                auto made = attempt([&] { return act(*subject); }, refusal);
                refusal.end();
                isRefused = refusal.hasHappened();
                if (made) {
                    const Value value = view(*subject, *made);
                    const bool isAccepted = isRefused && accepts(value);
                    if (!isAccepted) {
                        EXPECT_EQ(expected, value);
                    }
                    made.reset();
                } else {
                    EXPECT_TRUE(isRefused);
                }
                if (isRefused) {
                    auto again = act(*subject);
                    EXPECT_EQ(expected, view(*subject, again)) << "at the second try";
                }
            }
            // What a failure says is kept, and is no leak.
            if (testing::Test::HasFailure()) return allocations;
            EXPECT_EQ(before, liveBlocks());
            if (!isRefused) break;
            allocations = std::max(allocations, number + 1);
        }
    }
    return allocations;
}

template <typename Value, typename Make, typename Act, typename View>
std::uint64_t sweep(const Value& expected, const Make& make, const Act& act, const View& view)
{
    return sweep(expected, make, act, view, [](const Value&) { return false; });
}

} // namespace allocation

#endif
