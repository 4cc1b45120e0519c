#include "match/Rivals.h"

#include <cmath>

#include <gmock/gmock.h>

#include "Searching.h"

namespace
{

using searching::lineOf;
using searching::recorderOf;
using searching::SearchUnderTest;
using signals::noise;
using signals::rate;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using vxlsync::Link;
using vxlsync::Prepared;

// Recorders that start 8 s apart.
std::vector<Prepared> recordersOfOneEvent(std::size_t count)
{
    const std::vector<float> event = noise(1, 40 * rate);
    std::vector<Prepared> recordings;
    for (std::size_t i = 0; i < count; ++i)
        recordings.push_back(recorderOf(event, 8 * i, 20, static_cast<std::uint32_t>(i) + 2));
    return recordings;
}

// Ties the two as a search would that had only found this place.
void tie(SearchUnderTest& search, std::size_t first, std::size_t second, double offset)
{
    Link link;
    link.first = first;
    link.second = second;
    link.line = lineOf(offset);
    link.line.coherence = 0.1;
    search.state.book[{first, second}] = {link};
    search.state.gathering.join(first, second, link.line);
}

std::vector<double> offsetsOf(const vxlsync::Links& links)
{
    std::vector<double> offsets;
    for (const Link& link : links)
        offsets.push_back(std::round(link.line.offset * 1000.0) / 1000.0);
    return offsets;
}

TEST(Rivals, AreLookedForWhereNoThirdRecordingBacksALink)
{
    SearchUnderTest search(recordersOfOneEvent(2));
    tie(search, 0, 1, -5.0);

    vxlsync::lookForRivals(0.0, 1.0, search.state);

    // The tie itself was never measured, and is gone with the look.
    EXPECT_THAT(offsetsOf(search.state.linksOf({0, 1})), testing::Contains(8.0));
    EXPECT_DOUBLE_EQ(search.state.gathering.clockOf(1).start, -5.0);
}

TEST(Rivals, AreLookedForInEachPartOfAChain)
{
    SearchUnderTest search(recordersOfOneEvent(3));
    tie(search, 0, 1, -5.0);
    tie(search, 1, 2, -5.0);

    vxlsync::lookForRivals(0.0, 1.0, search.state);

    EXPECT_THAT(offsetsOf(search.state.linksOf({0, 1})), testing::Contains(8.0));
    EXPECT_THAT(offsetsOf(search.state.linksOf({1, 2})), testing::Contains(8.0));
    EXPECT_EQ(search.state.book.count({0, 2}), 0u);
}

TEST(Rivals, AreNotAskedForWhereAThirdRecordingSaysTheSame)
{
    SearchUnderTest search(recordersOfOneEvent(3));
    tie(search, 0, 1, -5.0);
    tie(search, 1, 2, -5.0);
    tie(search, 0, 2, -10.0);

    vxlsync::lookForRivals(0.0, 1.0, search.state);

    EXPECT_THAT(offsetsOf(search.state.linksOf({0, 1})), ElementsAre(-5.0));
    EXPECT_THAT(offsetsOf(search.state.linksOf({0, 2})), ElementsAre(-10.0));
}

// A link that the group does not follow backs nothing, and holds nothing together.
TEST(Rivals, AreLookedForWhereTheThirdSaysSomethingElse)
{
    SearchUnderTest search(recordersOfOneEvent(3));
    tie(search, 0, 1, -5.0);
    tie(search, 1, 2, -5.0);
    tie(search, 0, 2, 3.0);

    vxlsync::lookForRivals(0.0, 1.0, search.state);

    EXPECT_THAT(offsetsOf(search.state.linksOf({0, 1})), testing::Contains(8.0));
    EXPECT_THAT(offsetsOf(search.state.linksOf({0, 2})), ElementsAre(3.0));
}

TEST(Rivals, AreNotAskedForWhereNothingIsTied)
{
    SearchUnderTest search(recordersOfOneEvent(2));

    vxlsync::lookForRivals(0.0, 1.0, search.state);

    EXPECT_THAT(search.state.book, IsEmpty());
    EXPECT_THAT(search.state.gathering.names(), SizeIs(2));
}

} // namespace
