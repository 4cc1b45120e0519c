#include "running/Interrupt.h"

#include <chrono>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "vxl_sync/Sync.h"

namespace
{

using vxlsync::Interrupt;

// Longer than the time between two questions.
void waitForTheNextQuestion()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
}

TEST(Interrupt, NeverEndsAJobOfAHostThatDoesNotCare)
{
    const Interrupt interrupt;

    EXPECT_NO_THROW(interrupt.check());
    EXPECT_FALSE(interrupt.isRaised());
}

TEST(Interrupt, ThrowsOnceTheHostSaysSo)
{
    bool cancelled = false;
    const Interrupt interrupt([&] { return cancelled; });

    EXPECT_NO_THROW(interrupt.check());
    cancelled = true;
    waitForTheNextQuestion();

    EXPECT_THROW(interrupt.check(), vxlsync::Cancelled);
    EXPECT_TRUE(interrupt.isRaised());
}

TEST(Interrupt, StaysRaisedThoughTheHostTakesItBack)
{
    bool cancelled = true;
    const Interrupt interrupt([&] { return cancelled; });
    EXPECT_TRUE(interrupt.isRaised());

    cancelled = false;
    waitForTheNextQuestion();

    EXPECT_THROW(interrupt.check(), vxlsync::Cancelled);
}

TEST(Interrupt, AsksTheHostNowAndThenOnly)
{
    int questions = 0;
    const Interrupt interrupt([&] {
        ++questions;
        return false;
    });

    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(100);
    while (std::chrono::steady_clock::now() < end)
        interrupt.check();

    // One at once, and one each 40 ms.
    EXPECT_GE(questions, 2);
    EXPECT_LE(questions, 4);
}

TEST(Interrupt, PassesOnWhatTheHostThrows)
{
    const Interrupt interrupt([]() -> bool { throw std::domain_error("the host's own"); });

    EXPECT_TRUE(interrupt.isRaised());
    EXPECT_THROW(interrupt.check(), std::domain_error);
    EXPECT_THROW(interrupt.check(), std::domain_error);
}

TEST(Interrupt, DoesNotWaitForAThreadThatIsAsking)
{
    std::atomic<bool> asking{false};
    std::atomic<bool> answer{false};
    const Interrupt interrupt([&] {
        asking = true;
        while (!answer)
            std::this_thread::yield();
        return false;
    });
    std::thread other([&] { interrupt.check(); });
    while (!asking)
        std::this_thread::yield();
    waitForTheNextQuestion();

    EXPECT_FALSE(interrupt.isRaised());

    answer = true;
    other.join();
}

} // namespace
