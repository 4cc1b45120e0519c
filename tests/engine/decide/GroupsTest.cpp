#include "decide/Groups.h"

#include <gmock/gmock.h>

#include "TestLinks.h"

namespace
{

using links::linkOf;
using testing::ElementsAre;
using vxlsync::Groups;
using vxlsync::ImpliedPair;
using vxlsync::Join;
using vxlsync::Placement;

Placement startingAt(double start)
{
    Placement place;
    place.start = start;
    return place;
}

TEST(Groups, AreAtFirstOneForEachRecording)
{
    const Groups groups(3);

    EXPECT_THAT(groups.all(), ElementsAre(ElementsAre(0), ElementsAre(1), ElementsAre(2)));
    EXPECT_EQ(groups.placeOf(2).start, 0.0);
    EXPECT_NE(groups.groupOf(0), groups.groupOf(1));
}

TEST(Groups, MoveTheOneThatIsJoined)
{
    Groups groups(3);
    groups.setStart(1, 2.0);
    groups.unite({groups.groupOf(1), groups.groupOf(0), startingAt(10.0)});

    groups.unite({groups.groupOf(2), groups.groupOf(0), startingAt(100.0)});

    EXPECT_EQ(groups.placeOf(0).start, 110.0);
    EXPECT_EQ(groups.placeOf(1).start, 102.0);
    EXPECT_EQ(groups.placeOf(2).start, 0.0);
}

TEST(Groups, KeepMembersAndThemselvesInOrder)
{
    Groups groups(5);
    groups.unite({groups.groupOf(3), groups.groupOf(4), Placement()});
    groups.unite({groups.groupOf(4), groups.groupOf(1), Placement()});

    EXPECT_THAT(groups.all(), ElementsAre(ElementsAre(0), ElementsAre(1, 3, 4), ElementsAre(2)));
    for (const std::size_t member : {1u, 3u, 4u})
        EXPECT_THAT(groups.membersOf(groups.groupOf(member)), ElementsAre(1, 3, 4));
}

TEST(Groups, JoinTheSecondsToTheFirstsSoThatTheLinkHolds)
{
    Groups groups(3);
    groups.setStart(0, 4.0);
    groups.unite({groups.groupOf(1), groups.groupOf(2), startingAt(3.0)});

    const Join join = groups.joinBy(linkOf(0, 2, 10.0, 0.5));
    groups.unite(join);

    // The third starts 10 s after the first, and 3 s after the second as before.
    EXPECT_DOUBLE_EQ(groups.placeOf(0).start, 4.0);
    EXPECT_DOUBLE_EQ(groups.placeOf(2).start, 14.0);
    EXPECT_DOUBLE_EQ(groups.placeOf(1).start, 11.0);
}

TEST(PairsAcross, AreAllOfTheOneGroupWithAllOfTheOther)
{
    Groups groups(4);
    groups.unite({groups.groupOf(0), groups.groupOf(3), startingAt(20.0)});
    groups.unite({groups.groupOf(1), groups.groupOf(2), startingAt(5.0)});

    const std::vector<ImpliedPair> pairs = pairsAcross(
        {groups.groupOf(0), groups.groupOf(1), startingAt(7.0)}, groups, {60.0, 60.0, 50.0, 60.0});

    ASSERT_EQ(pairs.size(), 4u);
    EXPECT_EQ(pairs[0].first, 0u);
    EXPECT_EQ(pairs[0].second, 1u);
    EXPECT_DOUBLE_EQ(pairs[0].line.offset, 7.0);
    EXPECT_EQ(pairs[1].second, 2u);
    EXPECT_DOUBLE_EQ(pairs[1].line.offset, 12.0);
    // From 12 to 60 s; the third lasts until 62.
    EXPECT_DOUBLE_EQ(pairs[1].line.overlap, 48.0);
    EXPECT_EQ(pairs[2].first, 3u);
    EXPECT_EQ(pairs[2].second, 1u);
    EXPECT_DOUBLE_EQ(pairs[2].line.offset, -13.0);
    EXPECT_EQ(pairs[3].second, 2u);
    EXPECT_DOUBLE_EQ(pairs[3].line.offset, -8.0);
}

} // namespace
