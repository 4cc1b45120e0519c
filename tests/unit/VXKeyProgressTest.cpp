#include "VXKeyProgress.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "VXClusterSync.h"

namespace VXS
{
namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Fractions : public VXProgress
{
public:
    void setStage(int) override {}
    void setFraction(float fraction) override { all.push_back(fraction); }

    std::vector<float> all;
};

// What is reported of so many keys and votes when the votes are cast in parts of one size.
std::vector<float> reportedOf(std::size_t keys, std::uint64_t votes, std::uint64_t part)
{
    Fractions fractions;
    VXKeyProgress progress(&fractions, keys, votes);
    for (std::uint64_t done = 0; done < votes; done += part)
        progress.addVotes(std::min(part, votes - done));
    progress.finish();
    return fractions.all;
}

TEST(VXKeyProgress, ReportsEachWholePercentOnceAndInOrder)
{
    const std::vector<float> reported = reportedOf(1000, 100000, 10);

    ASSERT_EQ(reported.size(), 100u);
    for (std::size_t i = 0; i < reported.size(); ++i)
        EXPECT_EQ(reported[i], static_cast<float>(i + 1) / 100.0f);
}

TEST(VXKeyProgress, ReportsWhatTheKeysOfASmallJobReach)
{
    EXPECT_THAT(reportedOf(4, 4, 1), ElementsAre(0.25f, 0.5f, 0.75f, 1.0f));
    EXPECT_THAT(reportedOf(3, 3, 1), ElementsAre(0.33f, 0.66f, 1.0f));
}

TEST(VXKeyProgress, ReportsTheSamePercentsHoweverTheVotesCome)
{
    EXPECT_EQ(reportedOf(5000, 70000, 70000), reportedOf(5000, 70000, 7));
}

TEST(VXKeyProgress, FinishReportsKeysThatDoNotVote)
{
    Fractions fractions;
    VXKeyProgress progress(&fractions, 2, 0);
    EXPECT_THAT(fractions.all, IsEmpty());

    progress.finish();
    EXPECT_THAT(fractions.all, ElementsAre(0.5f, 1.0f));

    progress.finish();
    EXPECT_THAT(fractions.all, ElementsAre(0.5f, 1.0f));
}

TEST(VXKeyProgress, ReportsNothingOfAJobWithoutKeys)
{
    EXPECT_THAT(reportedOf(0, 0, 1), IsEmpty());
}

TEST(VXKeyProgress, TakesVotesWithNobodyToReportTo)
{
    VXKeyProgress progress(nullptr, 10, 100);

    progress.addVotes(50);
    progress.addVotes(50);
    EXPECT_NO_THROW(progress.finish());
}

} // namespace
} // namespace VXS
