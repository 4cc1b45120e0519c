#include "match/SearchParted.h"

#include <cmath>

#include <gmock/gmock.h>

#include "Searching.h"

namespace
{

using searching::lineOf;
using searching::recorderOf;
using signals::noise;
using signals::rate;
using testing::ElementsAre;
using testing::IsEmpty;
using vxlsync::Link;
using vxlsync::Links;
using vxlsync::Parted;
using vxlsync::Prepared;
using vxlsync::Verdict;

// So clear that the search builds on it.
Link tieOf(std::size_t first, std::size_t second, double offset, Verdict verdict)
{
    Link link;
    link.first = first;
    link.second = second;
    link.line = lineOf(offset);
    link.line.end = 15.0;
    link.line.coherence = 0.3;
    link.line.agreement = 1.0;
    link.line.significance = 100.0;
    link.verdict = verdict;
    return link;
}

Links searchedAgain(const std::vector<Prepared>& recordings, const Parted& parted)
{
    vxlsync::Run run(1, measuring::plenty, {});
    return vxlsync::searchParted(recordings, std::vector<std::string>(recordings.size()), {},
                                 parted, 0.0, 1.0, run);
}

std::vector<std::pair<std::size_t, std::size_t>> pairsOf(const Links& links)
{
    std::vector<std::pair<std::size_t, std::size_t>> pairs;
    for (const Link& link : links)
        pairs.emplace_back(link.first, link.second);
    return pairs;
}

// Of the pair's last link; no number if it has none.
double offsetOf(const Links& links, std::size_t first, std::size_t second)
{
    double offset = std::nan("");
    for (const Link& link : links) {
        if (link.first == first && link.second == second) offset = link.line.offset;
    }
    return offset;
}

// 0 and 1 start 10 s apart, and 2 starts 5 s later. A wrong tie held 2 to 0 where it shares nothing
// with 1, so that nobody asked the two.
std::vector<Prepared> threeOfOneEvent()
{
    const std::vector<float> event = noise(1, 40 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(recorderOf(event, 0, 15, 2));
    recordings.push_back(recorderOf(event, 10, 20, 3));
    recordings.push_back(recorderOf(event, 15, 20, 4));
    return recordings;
}

TEST(SearchParted, FindsWhereWhatWasTiedWronglyBelongs)
{
    const Parted parted{
        {{0, 1}, {2}},
        {tieOf(0, 1, 10.0, Verdict::accepted), tieOf(0, 2, -18.0, Verdict::contradicted)}};

    const Links links = searchedAgain(threeOfOneEvent(), parted);

    ASSERT_THAT(pairsOf(links),
                ElementsAre(std::pair(0u, 1u), std::pair(0u, 2u), std::pair(1u, 2u)));
    EXPECT_NEAR(links[2].line.offset, 5.0, 1e-4);
}

TEST(SearchParted, LaysNothingByALinkBetweenTwoGroups)
{
    const Parted parted{{{0}, {1}, {2}}, {tieOf(1, 2, -3.0, Verdict::accepted)}};

    const Links links = searchedAgain(threeOfOneEvent(), parted);

    EXPECT_NEAR(offsetOf(links, 1, 2), 5.0, 1e-4);
}

TEST(SearchParted, LaysGroupsByTheirClearestLinks)
{
    // 3 hears the end of 2 only. Where the less clear link has 2, at 12 s, 3 would seem to share
    // more with 1.
    const std::vector<float> event = noise(1, 50 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(recorderOf(event, 0, 15, 2));
    recordings.push_back(recorderOf(event, 10, 20, 3));
    recordings.push_back(recorderOf(event, 25, 15, 4));
    recordings.push_back(recorderOf(event, 32, 15, 5));
    Link lessClear = tieOf(0, 2, 12.0, Verdict::accepted);
    lessClear.line.significance = 50.0;
    const Parted parted{{{0, 1, 2}, {3}},
                        {tieOf(0, 1, 10.0, Verdict::accepted), lessClear,
                         tieOf(0, 3, -18.0, Verdict::contradicted),
                         tieOf(1, 2, 15.0, Verdict::accepted)}};

    const Links links = searchedAgain(recordings, parted);

    EXPECT_NEAR(offsetOf(links, 2, 3), 7.0, 1e-4);
}

TEST(SearchParted, AsksNothingOfGroupsThatWereNeverOne)
{
    const Parted parted{{{0, 1}, {2}}, {tieOf(0, 1, 10.0, Verdict::accepted)}};

    EXPECT_THAT(pairsOf(searchedAgain(threeOfOneEvent(), parted)), ElementsAre(std::pair(0u, 1u)));
    EXPECT_THAT(searchedAgain(threeOfOneEvent(), {{{0}, {1}, {2}}, {}}), IsEmpty());
}

TEST(SearchParted, AsksNothingOfOneDevice)
{
    const std::vector<Prepared> recordings = threeOfOneEvent();
    const std::vector<std::vector<std::size_t>> groups = {{0}, {1}, {2}};
    const Links tied = {tieOf(1, 2, -3.0, Verdict::contradicted)};
    vxlsync::Run run(1, measuring::plenty, {});

    const Links ofOne = vxlsync::searchParted(recordings, {"", "camera", "camera"}, {},
                                              {groups, tied}, 0.0, 1.0, run);
    const Links ofTwo =
        vxlsync::searchParted(recordings, {"", "", ""}, {}, {groups, tied}, 0.0, 1.0, run);

    ASSERT_EQ(ofOne.size(), 1u);
    EXPECT_EQ(ofOne[0].line.offset, -3.0);
    ASSERT_EQ(ofTwo.size(), 1u);
    EXPECT_NEAR(ofTwo[0].line.offset, 5.0, 1e-4);
}

TEST(SearchParted, GivesTheLinksBackAsTheyWereMeasured)
{
    Link clash = tieOf(0, 1, 10.0, Verdict::forbidden);
    clash.isDeviceClash = true;
    const std::vector<Prepared> strangers = [] {
        std::vector<Prepared> recordings;
        for (const std::uint32_t seed : {1u, 2u})
            recordings.push_back(measuring::preparedOf(noise(seed, 15 * rate)));
        return recordings;
    }();

    const Links links = searchedAgain(strangers, {{{0}, {1}}, {clash}});

    ASSERT_EQ(links.size(), 1u);
    EXPECT_EQ(links[0].line.offset, 10.0);
    EXPECT_EQ(links[0].verdict, Verdict::weak);
    EXPECT_FALSE(links[0].isDeviceClash);
}

TEST(SearchParted, IsTheSameForAnyNumberOfThreads)
{
    const Parted parted{
        {{0}, {1}, {2}},
        {tieOf(0, 1, -3.0, Verdict::ambiguous), tieOf(0, 2, -18.0, Verdict::contradicted)}};
    const std::vector<Prepared> recordings = threeOfOneEvent();
    vxlsync::Run run(4, measuring::plenty, {});

    const Links links = vxlsync::searchParted(recordings, {"", "", ""}, {}, parted, 0.0, 1.0, run);
    const Links ofOne = searchedAgain(recordings, parted);

    ASSERT_EQ(pairsOf(links), pairsOf(ofOne));
    for (std::size_t i = 0; i < links.size(); ++i)
        EXPECT_EQ(links[i].line.offset, ofOne[i].line.offset);
}

} // namespace
