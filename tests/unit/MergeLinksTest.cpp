#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <utility>

#include <gtest/gtest.h>

#include "VXClusterInternal.h"
#include "VXMergeStatsSetProcessor.h"

// Links that no accepted pair gives, as parameters without limits could let them in.

namespace VXS
{
namespace
{

using Links = VXMergeStatsSetProcessor::Links;
using Pair = std::pair<std::int64_t, std::int64_t>;

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

} // namespace

TEST(MergeLinks, LinkOfferedWithoutVotesIsNotSelectedWhereNoneHasAnOffset)
{
    Links links;
    links.offer({1, 2}, 0.0f, 5.0f);
    Pair selected;

    EXPECT_FALSE(links.select(selected));
}

TEST(MergeLinks, LinkWithoutVotesThatHasAnOffsetIsSelected)
{
    Links links;
    links.set({1, 2}, 0.0f, 5.0f);
    Pair selected;

    EXPECT_TRUE(links.select(selected));
    EXPECT_EQ(Pair(1, 2), selected);
}

// Of the two links without votes (1, 3) is the last in order. It has no offset, which counts as 0.
TEST(MergeLinks, LinkOfferedWithoutVotesPutsItsFilesInOnePlace)
{
    Links links;
    links.set({1, 2}, 0.0f, 5.0f);
    links.offer({1, 3}, 0.0f, 7.0f);
    VXClusterInternal cluster;
    cluster.init({1, 2, 3});
    Pair selected;

    EXPECT_TRUE(links.select(selected));
    EXPECT_EQ(Pair(1, 3), selected);
    links.apply(selected, cluster);

    EXPECT_EQ((std::set<std::map<std::int64_t, float>>{{{1, 0.0f}, {3, 0.0f}}, {{2, 0.0f}}}),
              cluster.getCluster());
}

TEST(MergeLinks, LinkBelowNoVotesIsNeverSelected)
{
    Links links;
    links.set({1, 2}, -1.0f, 5.0f);
    Pair selected;

    EXPECT_FALSE(links.select(selected));
}

TEST(MergeLinks, LinkThatIsNotANumberIsNeverSelected)
{
    Links links;
    links.set({1, 2}, notANumber, 5.0f);
    Pair selected;

    EXPECT_FALSE(links.select(selected));
}

TEST(MergeLinks, LinkBelowNoVotesMayBeReplaced)
{
    Links links;
    links.set({1, 2}, -1.0f, 5.0f);
    links.set({1, 2}, 3.0f, 7.0f);
    Pair selected;

    EXPECT_TRUE(links.select(selected));
    EXPECT_EQ(Pair(1, 2), selected);
}

TEST(MergeLinks, LinkThatWasReplacedIsSelectedByItsNewVotesAlone)
{
    Links links;
    links.set({1, 2}, 9.0f, 5.0f);
    links.set({1, 3}, 5.0f, 5.0f);
    links.set({1, 2}, 3.0f, 5.0f);
    Pair selected;

    EXPECT_TRUE(links.select(selected));
    EXPECT_EQ(Pair(1, 3), selected);
}

TEST(MergeLinks, AppliedLinkIsSelectedNoMore)
{
    Links links;
    links.set({1, 2}, 3.0f, 5.0f);
    VXClusterInternal cluster;
    cluster.init({1, 2});
    Pair selected;

    links.apply({1, 2}, cluster);

    EXPECT_FALSE(links.select(selected));
    EXPECT_TRUE(links.links.empty());
    EXPECT_EQ(0u, links.offsets);
    EXPECT_EQ(0u, links.partnersOf.count(2));
}

// File 3 stands 10 behind file 2, and that 5 behind file 1: 15.
TEST(MergeLinks, LinksOfTheAbsorbedFileGoToTheOther)
{
    Links links;
    links.set({1, 2}, 9.0f, 5.0f);
    links.set({2, 3}, 4.0f, 10.0f);
    VXClusterInternal cluster;
    cluster.init({1, 2, 3});

    links.apply({1, 2}, cluster);

    ASSERT_EQ(1u, links.links.size());
    EXPECT_EQ(4.0f, links.links.at({1, 3}).peak);
    EXPECT_EQ(15.0f, links.links.at({1, 3}).offset);
    EXPECT_TRUE(links.links.at({1, 3}).hasOffset);
    EXPECT_EQ(1u, links.offsets);
}

} // namespace VXS
