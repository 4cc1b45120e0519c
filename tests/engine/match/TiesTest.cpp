#include "match/Ties.h"

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using vxlsync::Link;
using vxlsync::Links;

// A link that is a tie.
Link clearLink(std::size_t first = 0, std::size_t second = 1)
{
    Link link;
    link.first = first;
    link.second = second;
    link.line.end = 20.0;
    link.line.coherence = 0.5;
    link.line.agreement = 1.0;
    link.line.significance = 100.0;
    return link;
}

TEST(Ties, AreClearLinks)
{
    EXPECT_TRUE(vxlsync::isTie({clearLink()}));
}

TEST(Ties, NeedALink)
{
    EXPECT_FALSE(vxlsync::isTie({}));
}

TEST(Ties, AgreeNearlyAllTheTime)
{
    Link link = clearLink();
    link.line.agreement = 0.84;

    EXPECT_FALSE(vxlsync::isTie({link}));
}

TEST(Ties, MayAgreeLessWhereLittleIsHeard)
{
    Link link = clearLink();
    link.line.coherence = 0.08;
    link.line.agreement = 0.76;

    EXPECT_TRUE(vxlsync::isTie({link}));
}

TEST(Ties, NeedMoreEvidenceTheShorterTheyAre)
{
    Link link = clearLink();
    link.line.significance = 28.0;

    EXPECT_TRUE(vxlsync::isTie({link}));
    // Half way between 4 s and 12 s, half way between 40 and 18.
    link.line.end = 8.0;
    EXPECT_FALSE(vxlsync::isTie({link}));
    link.line.significance = 30.0;
    EXPECT_TRUE(vxlsync::isTie({link}));
}

TEST(Ties, HaveNoRivalThatComesNear)
{
    Link rival = clearLink();
    rival.line.coherence = 0.34;
    EXPECT_TRUE(vxlsync::isTie({clearLink(), rival}));

    rival.line.coherence = 0.36;
    EXPECT_FALSE(vxlsync::isTie({clearLink(), rival}));
}

TEST(Ties, GatherNothingThatADecisionDidNotBelieve)
{
    for (const auto verdict : {vxlsync::Verdict::ambiguous, vxlsync::Verdict::contradicted,
                               vxlsync::Verdict::forbidden}) {
        vxlsync::Gathering gathering({20.0, 20.0, 20.0});
        vxlsync::LinkBook book;
        book[{0, 1}] = {clearLink(0, 1)};
        book[{0, 1}][0].verdict = verdict;
        book[{1, 2}] = {clearLink(1, 2)};
        book[{1, 2}][0].verdict = vxlsync::Verdict::confirmed;

        vxlsync::gather(book, gathering);

        EXPECT_THAT(gathering.names(), ElementsAre(0, 1));
    }
}

TEST(Ties, GatherTheClearestFirst)
{
    vxlsync::LinkBook book;
    book[{0, 1}] = {clearLink(0, 1)};
    book[{0, 2}] = {clearLink(0, 2)};
    book[{1, 2}] = {clearLink(1, 2)};
    book[{2, 3}] = {};
    book[{0, 1}][0].line.offset = 1.0;
    book[{0, 2}][0].line.offset = 5.0;
    book[{0, 2}][0].line.significance = 50.0;
    book[{1, 2}][0].line.offset = 2.0;
    vxlsync::Gathering gathering(std::vector<double>(4, 20.0));

    vxlsync::gather(book, gathering);

    EXPECT_THAT(gathering.names(), ElementsAre(0, 3));
    // By way of 1, not by the line that is less clear.
    EXPECT_DOUBLE_EQ(gathering.lineOf(0, 2).offset, 3.0);
}

} // namespace
