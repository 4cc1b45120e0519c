#include "match/Looking.h"

#include <vector>

#include <gmock/gmock.h>

#include "Searching.h"

namespace
{

using searching::recorderOf;
using searching::SearchUnderTest;
using signals::noise;
using signals::rate;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using vxlsync::Link;
using vxlsync::Links;
using vxlsync::LookTask;
using vxlsync::Prepared;
using vxlsync::Proposal;
using vxlsync::RecordingPair;

Proposal proposalAt(double offset)
{
    Proposal proposal;
    proposal.request.offset = offset;
    return proposal;
}

// Three that share 15, 10 and 10 s, each 5 s after the one before.
std::vector<Prepared> threeRecorders()
{
    const std::vector<float> event = noise(1, 30 * rate);
    std::vector<Prepared> recordings;
    for (std::uint32_t i = 0; i < 3; ++i)
        recordings.push_back(recorderOf(event, 5 * std::size_t{i}, 20, 2 + i));
    return recordings;
}

std::vector<Prepared> silentRecorders(std::size_t count)
{
    std::vector<Prepared> recordings;
    for (std::size_t i = 0; i < count; ++i)
        recordings.push_back(measuring::preparedOf(std::vector<float>(10 * rate)));
    return recordings;
}

TEST(SearchState, BeginsWithNothingKnown)
{
    SearchUnderTest search(silentRecorders(3), 4);

    EXPECT_THAT(search.state.spaces, SizeIs(4));
    EXPECT_THAT(search.state.book, IsEmpty());
    EXPECT_THAT(search.state.linksOf({0, 1}), IsEmpty());
    EXPECT_THAT(search.state.gathering.names(), ElementsAre(0, 1, 2));
    EXPECT_EQ(search.state.gathering.endOf(2), 10.0);
}

TEST(SearchState, HandsOutPairsAndTheirLinks)
{
    SearchUnderTest search(silentRecorders(3));
    search.state.book[{1, 2}] = Links(2);

    const vxlsync::PairInHand pair = search.state.inHand({0, 2});

    EXPECT_TRUE(isSame(pair.pair, {0, 2}));
    EXPECT_EQ(&pair.first, &search.recordings[0]);
    EXPECT_EQ(&pair.second, &search.recordings[2]);
    EXPECT_THAT(search.state.linksOf({1, 2}), SizeIs(2));
    EXPECT_THAT(search.state.linksOf({0, 2}), IsEmpty());
}

TEST(SearchState, ComparesAllButRecordingsOfOneStatedDevice)
{
    SearchUnderTest search(silentRecorders(5));
    search.devices = {"camera", "", "camera", "", "recorder"};

    EXPECT_FALSE(search.state.mayCompare(0, 2));
    EXPECT_TRUE(search.state.mayCompare(0, 4));
    EXPECT_TRUE(search.state.mayCompare(0, 1));
    EXPECT_TRUE(search.state.mayCompare(1, 3));
}

TEST(LandmarkProposals, LookAtTheOffsetAndDoubtWhatStrangersReach)
{
    const Proposal proposal = vxlsync::proposalOf({0, 1, 5.25, 13.9});

    EXPECT_EQ(proposal.request.offset, 5.25);
    // More than a frame of the landmarks to either side.
    EXPECT_GT(proposal.request.reach, 0.032);
    EXPECT_EQ(proposal.method, vxlsync::Method::landmarks);
    EXPECT_EQ(proposal.height, 0.0);
    EXPECT_TRUE(proposal.isDoubtful);
    EXPECT_FALSE(vxlsync::proposalOf({0, 1, 5.25, vxlsync::clearStanding}).isDoubtful);
}

TEST(LandmarkProposals, AreOfOnePairInTheirOrder)
{
    SearchUnderTest search(silentRecorders(4));
    search.landmarks = {{0, 1, 1.0, 20.0}, {0, 2, 2.0, 30.0}, {0, 2, 3.0, 20.0},
                        {0, 3, 4.0, 20.0}, {1, 2, 5.0, 20.0}, {2, 3, 6.0, 20.0}};
    const auto offsetsOf = [&](const RecordingPair& pair) {
        std::vector<double> offsets;
        for (const Proposal& proposal : vxlsync::landmarkProposals(pair, search.state))
            offsets.push_back(proposal.request.offset);
        return offsets;
    };

    EXPECT_THAT(offsetsOf({0, 1}), ElementsAre(1.0));
    EXPECT_THAT(offsetsOf({0, 2}), ElementsAre(2.0, 3.0));
    EXPECT_THAT(offsetsOf({2, 3}), ElementsAre(6.0));
    EXPECT_THAT(offsetsOf({1, 3}), IsEmpty());
}

TEST(Looking, EntersWhatItFindsAndGathersByIt)
{
    SearchUnderTest search(threeRecorders());

    vxlsync::look({{{0, 1}, {proposalAt(5.03)}}, {{0, 2}, {proposalAt(3.0)}}}, search.state);

    ASSERT_THAT(search.state.linksOf({0, 1}), SizeIs(1));
    EXPECT_NEAR(search.state.linksOf({0, 1})[0].line.offset, 5.0, 1e-4);
    // Looked at in vain, which is known as well.
    EXPECT_THAT(search.state.linksOf({0, 2}), IsEmpty());
    EXPECT_EQ(search.state.book.count({0, 2}), 1u);
    EXPECT_EQ(search.state.book.count({1, 2}), 0u);
    EXPECT_THAT(search.state.gathering.names(), ElementsAre(0, 2));
    EXPECT_NEAR(search.state.gathering.lineOf(0, 1).offset, 5.0, 1e-4);
}

// A loop, which fits at three places.
TEST(Looking, AddsToWhatIsKnownTheMostCoherentFirst)
{
    const std::vector<float> turn = noise(1, 10 * rate);
    std::vector<float> event = turn;
    event.insert(event.end(), turn.begin(), turn.end());
    std::vector<Prepared> recordings;
    recordings.push_back(recorderOf(event, 0, 20, 2));
    recordings.push_back(recorderOf(event, 10, 10, 3));
    SearchUnderTest search(std::move(recordings));

    vxlsync::look({{{0, 1}, {proposalAt(0.0)}}}, search.state);
    EXPECT_THAT(search.state.linksOf({0, 1}), SizeIs(1));
    vxlsync::look({{{0, 1}, {proposalAt(10.0), proposalAt(4.0)}}}, search.state);

    const Links& links = search.state.linksOf({0, 1});
    ASSERT_THAT(links, SizeIs(2));
    EXPECT_GE(links[0].line.coherence, links[1].line.coherence);
    EXPECT_NEAR(links[0].line.offset + links[1].line.offset, 10.0, 1e-4);
}

// Two that share 40 s, of which a first look has 12 windows.
std::vector<Prepared> longRecorders()
{
    const std::vector<float> event = noise(1, 80 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(recorderOf(event, 0, 60, 2));
    recordings.push_back(recorderOf(event, 20, 60, 3));
    return recordings;
}

TEST(Looking, MeasuresWithAllWindowsWhatAFirstLookFinds)
{
    SearchUnderTest search(longRecorders());

    vxlsync::look({{{0, 1}, {proposalAt(20.0)}}}, search.state);

    ASSERT_THAT(search.state.linksOf({0, 1}), SizeIs(1));
    EXPECT_GT(search.state.linksOf({0, 1})[0].line.windows.size(), 12u);
}

// The few windows of a first look are at times more coherent than all are.
TEST(Looking, MeasuresWithAllWindowsWhatTakesThePlaceOfAKnownLine)
{
    SearchUnderTest search(longRecorders());
    vxlsync::look({{{0, 1}, {proposalAt(20.0)}}}, search.state);
    Links& known = search.state.book[{0, 1}];
    const double coherence = known[0].line.coherence;
    known[0].line.coherence = 0.5 * coherence;
    known.insert(known.begin(), known[0]);
    known[0].line.offset = 8.0;
    known[0].line.coherence = 0.6 * coherence;

    // Too far from the line for it to be seen at once that it is the same.
    vxlsync::look({{{0, 1}, {proposalAt(20.03)}}}, search.state);

    ASSERT_THAT(known, SizeIs(2));
    EXPECT_NEAR(known[0].line.offset, 20.0, 1e-4);
    EXPECT_NEAR(known[0].line.coherence, coherence, 0.01);
    EXPECT_GT(known[0].line.windows.size(), 12u);
}

TEST(Looking, LeavesWhatIsKnownAsItIsWhereNothingIsNew)
{
    SearchUnderTest search(threeRecorders());
    Link known;
    known.second = 1;
    known.line.offset = 5.004;
    known.line.coherence = 0.9;
    search.state.book[{0, 1}] = {known};

    vxlsync::look({{{0, 1}, {proposalAt(5.0), proposalAt(1.0)}}}, search.state);

    ASSERT_THAT(search.state.linksOf({0, 1}), SizeIs(1));
    EXPECT_EQ(search.state.linksOf({0, 1})[0].line.offset, 5.004);
}

TEST(Looking, DoesNotDependOnThreads)
{
    const auto linksWith = [](std::size_t threads) {
        SearchUnderTest search(threeRecorders(), threads);
        vxlsync::look({{{0, 1}, {proposalAt(5.0)}},
                       {{0, 2}, {proposalAt(10.0)}},
                       {{1, 2}, {proposalAt(5.0)}}},
                      search.state);
        std::vector<std::pair<double, double>> links;
        for (const auto& [pair, ofPair] : search.state.book) {
            for (const Link& link : ofPair)
                links.emplace_back(link.line.offset, link.line.coherence);
        }
        return links;
    };

    const auto byOne = linksWith(1);

    EXPECT_THAT(byOne, SizeIs(3));
    EXPECT_EQ(linksWith(3), byOne);
}

TEST(Looking, MakesAStepForEachPair)
{
    std::vector<double> shares;
    vxlsync::Callbacks callbacks;
    callbacks.progress = [&](const vxlsync::Progress& progress) {
        shares.push_back(progress.stageShare);
    };
    SearchUnderTest search(silentRecorders(3), 1, callbacks);
    search.run.meter.part({0.5, 1.0, 2});

    vxlsync::look({{{0, 1}, {proposalAt(0.0), proposalAt(1.0)}}, {{0, 2}, {}}}, search.state);

    EXPECT_THAT(shares, ElementsAre(0.5, 0.75, 1.0));
}

TEST(Looking, CanBeCancelled)
{
    SearchUnderTest search(threeRecorders(), 2, measuring::cancelling());

    EXPECT_THROW(vxlsync::look({{{0, 1}, {proposalAt(5.0)}}}, search.state), vxlsync::Cancelled);
    EXPECT_THAT(search.state.book, IsEmpty());
}

} // namespace
