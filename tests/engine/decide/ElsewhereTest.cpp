#include "decide/Elsewhere.h"

#include <gmock/gmock.h>

#include "TestScene.h"

namespace
{

using links::linkOf;
using links::Scene;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using vxlsync::Place;
using vxlsync::placesFor;

std::vector<double> startsOf(const std::vector<Place>& places)
{
    std::vector<double> starts;
    for (const Place& place : places)
        starts.push_back(place.start);
    return starts;
}

TEST(Elsewhere, IsWhereMostLinksSayTheBestFirst)
{
    Scene scene({linkOf(0, 1, 10.0, 0.6), linkOf(0, 2, 20.0, 0.55), linkOf(1, 2, 18.0, 0.6),
                 linkOf(1, 2, 10.0, 0.55)},
                3);
    scene.join(0);

    const std::vector<Place> places = placesFor({2}, scene.arrangement);

    // Two links say 20 s, and one, more coherent than either, says 10 + 18 s.
    EXPECT_THAT(startsOf(places),
                ElementsAre(testing::DoubleNear(20.0, 1e-9), testing::DoubleNear(28.0, 1e-9)));
    EXPECT_DOUBLE_EQ(places[0].weight, weightOf(scene.judged[1]) + weightOf(scene.judged[3]));
    EXPECT_DOUBLE_EQ(places[1].weight, weightOf(scene.judged[2]));
    EXPECT_EQ(places[1].link, 2u);
}

TEST(Elsewhere, IsToldByTheHeaviestOfTheLinksThatSayIt)
{
    for (const bool isFirstHeavier : {true, false}) {
        const double first = isFirstHeavier ? 0.6 : 0.55;
        Scene scene(
            {linkOf(0, 1, 10.0, 0.6), linkOf(0, 2, 20.0, first), linkOf(1, 2, 10.01, 1.15 - first)},
            3);
        scene.join(0);

        const std::vector<Place> places = placesFor({2}, scene.arrangement);

        // The first shares 40 s, the second 50 less a little.
        const double ofFirst = weightOf(scene.judged[1]);
        const double ofSecond = weightOf(scene.judged[2]);
        ASSERT_THAT(places, SizeIs(1));
        EXPECT_DOUBLE_EQ(places[0].weight, ofFirst + ofSecond);
        EXPECT_EQ(places[0].link, ofFirst > ofSecond ? 1u : 2u);
        EXPECT_NEAR(places[0].start, ofFirst > ofSecond ? 20.0 : 20.01, 1e-9);
        EXPECT_EQ(ofFirst > ofSecond, isFirstHeavier);
    }
}

TEST(Elsewhere, IsAnotherPlaceFromSomeFramesOn)
{
    const auto placesAt = [](double offset) {
        const Scene scene({linkOf(0, 1, 10.0, 0.6), linkOf(0, 1, offset, 0.6)}, 2);
        return placesFor({1}, scene.arrangement);
    };

    EXPECT_THAT(placesAt(10.019), SizeIs(1));
    EXPECT_THAT(placesAt(10.021), SizeIs(2));
    EXPECT_THAT(placesAt(9.981), SizeIs(1));
}

// By links that have the part first and by links that have it second.
TEST(Elsewhere, IsWhereThePartsFirstRecordingWouldBegin)
{
    Scene scene({linkOf(0, 1, 7.0, 0.6), linkOf(0, 3, 10.0, 0.6), linkOf(1, 3, 3.0, 0.6),
                 linkOf(2, 3, 4.0, 0.6)},
                4);
    const vxlsync::Groups& groups = scene.arrangement.groups();
    // On the clock of 2, with 3 at 4 s and 0 at -6 s.
    scene.join(1);
    scene.join(3);

    const std::vector<Place> ofThree = placesFor({0, 2, 3}, scene.arrangement);
    ASSERT_THAT(ofThree, SizeIs(1));
    EXPECT_DOUBLE_EQ(ofThree[0].start, -7.0);
    EXPECT_EQ(ofThree[0].join.from, groups.groupOf(0));
    EXPECT_EQ(ofThree[0].join.into, groups.groupOf(1));

    const std::vector<Place> ofOne = placesFor({1}, scene.arrangement);
    ASSERT_THAT(ofOne, SizeIs(1));
    EXPECT_DOUBLE_EQ(ofOne[0].start, 1.0);
    EXPECT_EQ(ofOne[0].join.from, groups.groupOf(1));
    EXPECT_EQ(ofOne[0].join.into, groups.groupOf(0));
}

TEST(Elsewhere, IsReachedByItsJoin)
{
    Scene scene({linkOf(0, 1, 10.0, 0.6), linkOf(0, 2, 20.0, 0.6)}, 3);
    scene.join(0);

    const Place place = placesFor({2}, scene.arrangement).front();
    scene.arrangement.unite(place.join, place.link);

    EXPECT_DOUBLE_EQ(scene.startOf(2), place.start);
    EXPECT_TRUE(scene.arrangement.holds(1));
}

TEST(Elsewhere, IsOneInEachOtherGroup)
{
    const Scene scene({linkOf(0, 2, 20.0, 0.6), linkOf(1, 2, 20.0, 0.6)}, 3);

    EXPECT_THAT(startsOf(placesFor({2}, scene.arrangement)), ElementsAre(20.0, 20.0));
}

TEST(Elsewhere, IsNeverInTheGroupItself)
{
    Scene scene({linkOf(0, 1, 10.0, 0.6), linkOf(0, 1, 18.0, 0.6)}, 2);
    scene.join(0);

    EXPECT_THAT(placesFor({0, 1}, scene.arrangement), IsEmpty());
}

TEST(Elsewhere, IsNotToldByLinksThatHoldInPartOnly)
{
    // Of as coherent a link 0.85 of the windows must agree.
    const auto placesWith = [](double agreement) {
        const Scene scene({linkOf(0, 1, 10.0, 0.6, agreement)}, 2);
        return placesFor({1}, scene.arrangement);
    };

    EXPECT_THAT(placesWith(0.84), IsEmpty());
    EXPECT_THAT(placesWith(0.86), SizeIs(1));
}

TEST(Elsewhere, IsAtFewOfManyPlaces)
{
    // Turns of a loop, each less coherent than the one before.
    vxlsync::Links turns;
    for (int i = 0; i < 6; ++i)
        turns.push_back(linkOf(0, 1, 8.0 * (5 - i), 0.6 - 0.01 * i));
    const Scene scene(turns, 2);

    const std::vector<Place> places = placesFor({1}, scene.arrangement);

    EXPECT_THAT(places, SizeIs(4));
    EXPECT_TRUE(
        std::is_sorted(places.begin(), places.end(), [](const Place& left, const Place& right) {
            return left.weight > right.weight;
        }));
}

TEST(Elsewhere, IsNowhereWithoutLinks)
{
    const Scene scene({}, 2);

    EXPECT_THAT(placesFor({1}, scene.arrangement), IsEmpty());
}

} // namespace
