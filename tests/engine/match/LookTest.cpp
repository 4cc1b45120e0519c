#include "match/Look.h"

#include <gtest/gtest.h>

#include "Measuring.h"
#include "Signals.h"

namespace
{

using measuring::preparedOf;
using signals::mixed;
using signals::noise;
using signals::part;
using signals::rate;
using vxlsync::Link;
using vxlsync::Links;
using vxlsync::PairInHand;
using vxlsync::Prepared;
using vxlsync::Proposal;

class Look : public testing::Test
{
protected:
    // The second starts 8 s later.
    Look()
        : event(noise(1, 30 * rate)),
          first(preparedOf(mixed(part(event, 0, 20 * rate), noise(2, 20 * rate), 0.5f))),
          second(preparedOf(mixed(part(event, 8 * rate, 20 * rate), noise(3, 20 * rate), 0.5f)))
    {
    }

    static Proposal proposalAt(double offset, double height)
    {
        Proposal proposal;
        proposal.request.offset = offset;
        proposal.height = height;
        return proposal;
    }

    Links looked(const Proposal& proposal, Links known = {})
    {
        return vxlsync::lookAt(proposal, pair, std::move(known), never, work);
    }

    const std::vector<float> event;
    const Prepared first;
    const Prepared second;
    const PairInHand pair{{3, 5}, first, second};
    const vxlsync::Interrupt never;
    vxlsync::AlignWorkspace work;
};

TEST_F(Look, FindsALinkAtTheRightPlace)
{
    const Links links = looked(proposalAt(8.03, 12.0));

    ASSERT_EQ(links.size(), 1u);
    EXPECT_EQ(links[0].first, 3u);
    EXPECT_EQ(links[0].second, 5u);
    EXPECT_NEAR(links[0].line.offset, 8.0, 1e-4);
    EXPECT_EQ(links[0].height, 12.0);
    EXPECT_EQ(links[0].method, vxlsync::Method::correlation);
}

TEST_F(Look, FindsNothingElsewhere)
{
    EXPECT_TRUE(looked(proposalAt(5.0, 12.0)).empty());
}

TEST_F(Look, DoesNotLookTwiceAtOnePlace)
{
    const Links known = looked(proposalAt(8.0, 12.0));

    const Links higher = looked(proposalAt(8.01, 15.0), known);
    const Links lower = looked(proposalAt(8.01, 10.0), known);

    ASSERT_EQ(higher.size(), 1u);
    EXPECT_EQ(higher[0].height, 15.0);
    ASSERT_EQ(lower.size(), 1u);
    EXPECT_EQ(lower[0].height, 12.0);
}

TEST_F(Look, KeepsTheBetterOfTwoLinesThatAreOne)
{
    // Both proposals are 30 ms off, so that neither is near to the line that is known.
    Links known = looked(proposalAt(8.0, 12.0));
    const double coherence = known[0].line.coherence;
    known[0].line.coherence = 0.1;

    const Links better = looked(proposalAt(8.03, 9.0), known);
    known[0].line.coherence = 0.99;
    const Links worse = looked(proposalAt(8.03, 9.0), known);

    ASSERT_EQ(better.size(), 1u);
    EXPECT_NEAR(better[0].line.coherence, coherence, 0.05);
    EXPECT_EQ(better[0].height, 12.0);
    ASSERT_EQ(worse.size(), 1u);
    EXPECT_EQ(worse[0].line.coherence, 0.99);
}

TEST_F(Look, KeepsWhatAJumpHasJoined)
{
    Links known = looked(proposalAt(8.0, 12.0));
    known[0].line.coherence = 0.1;
    known[0].jumps.push_back({10.0, 0.4});

    const Links links = looked(proposalAt(8.03, 15.0), known);

    ASSERT_EQ(links.size(), 1u);
    EXPECT_EQ(links[0].line.coherence, 0.1);
    EXPECT_EQ(links[0].height, 15.0);
}

TEST_F(Look, AtTheEndLeavesWhatAJumpHasJoinedAlone)
{
    Links links = looked(proposalAt(8.0, 12.0));
    // As many windows as a first look may have, so that another link would be measured.
    links[0].line.windows.resize(12);
    links[0].line.offset = 8.005;
    links[0].jumps.push_back({10.0, 0.4});

    const Links close = vxlsync::lookClosely(pair, links, never, work);

    ASSERT_EQ(close.size(), 1u);
    EXPECT_EQ(close[0].line.offset, 8.005);
}

TEST_F(Look, AtTheEndDropsWhatIsNoEvidence)
{
    Links links = looked(proposalAt(8.0, 12.0));
    links.push_back(links[0]);
    links[1].line.offset = 2.0;
    links[1].line.coherence = 0.01;
    links[1].line.sharpness = 1.0;

    const Links close = vxlsync::lookClosely(pair, links, never, work);

    ASSERT_EQ(close.size(), 1u);
    EXPECT_NEAR(close[0].line.offset, 8.0, 5e-6);
}

TEST_F(Look, AtTheEndMeasuresTheBestThreeOnly)
{
    Links links = looked(proposalAt(8.0, 12.0));
    // The same line as four links; the worst keeps what it has, and all are evidence.
    links[0].line.windows.resize(12);
    links.resize(4, links[0]);
    links[3].line.coherence = 0.001;
    links[3].line.offset = 8.005;

    const Links close = vxlsync::lookClosely(pair, links, never, work);

    ASSERT_EQ(close.size(), 4u);
    EXPECT_EQ(close[3].line.offset, 8.005);
    EXPECT_NEAR(close[2].line.offset, 8.0, 5e-6);
}

TEST_F(Look, AtTheEndLeavesALineOfAllItsWindowsAlone)
{
    // 11.99 s have 10 windows of 2 s, fewer than a first look may have.
    const Links links = looked(proposalAt(8.01, 12.0));
    ASSERT_EQ(links[0].line.windows.size(), 10u);

    const Links close = vxlsync::lookClosely(pair, links, never, work);

    EXPECT_EQ(close[0].line.offset, links[0].line.offset);
}

TEST_F(Look, TakesADoubtfulPlaceThatFewWindowsConfirm)
{
    Proposal proposal = proposalAt(8.03, 12.0);
    proposal.isDoubtful = true;

    const Links links = looked(proposal);

    ASSERT_EQ(links.size(), 1u);
    EXPECT_NEAR(links[0].line.offset, 8.0, 1e-4);
}

TEST_F(Look, DropsADoubtfulPlaceThatFewWindowsDoNotConfirm)
{
    Proposal proposal = proposalAt(5.0, 12.0);
    proposal.isDoubtful = true;

    EXPECT_TRUE(looked(proposal).empty());
}

} // namespace
