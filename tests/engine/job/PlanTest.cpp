#include "job/Plan.h"

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using vxlsync::Options;
using vxlsync::Plan;
using vxlsync::planOf;
using vxlsync::Source;

Source file(const std::string& path)
{
    Source source;
    source.path = path;
    return source;
}

Source samples(const std::string& name, std::vector<float> values)
{
    Source source;
    source.name = name;
    source.samples = std::move(values);
    source.sampleRate = 8000;
    return source;
}

TEST(Plan, OrdersFilesByPathWhateverTheOrderGiven)
{
    const Plan plan = planOf({file("c"), file("a"), file("b")}, Options());

    EXPECT_THAT(plan.sourceAt, ElementsAre(1, 2, 0));
    EXPECT_EQ(plan.sources[0].path, "a");
    EXPECT_EQ(plan.sources[2].path, "c");
}

TEST(Plan, OrdersSamplesByNameAndThenByWhatTheyAre)
{
    const Plan plan =
        planOf({samples("b", {1.0f}), samples("a", {2.0f}), samples("a", {1.0f})}, Options());

    EXPECT_THAT(plan.sourceAt, ElementsAre(2, 1, 0));
}

TEST(Plan, OrdersTheSoundsOfOneFileByStreamAndChannel)
{
    Source second = file("a");
    second.stream = 2;
    Source mix = file("a");
    mix.channel = vxlsync::Channel::mix;
    Source third = file("a");
    third.channel = vxlsync::Channel::numbered;
    third.channelNumber = 3;
    Source fourth = third;
    fourth.channelNumber = 4;

    const Plan plan = planOf({second, fourth, third, mix, file("a")}, Options());

    EXPECT_THAT(plan.sourceAt, ElementsAre(4, 3, 2, 1, 0));
}

TEST(Plan, LeavesEqualSourcesInTheOrderGiven)
{
    const Plan plan = planOf({file("a"), file("a")}, Options());

    EXPECT_THAT(plan.sourceAt, ElementsAre(0, 1));
}

TEST(Plan, TurnsIndicesOfTheHostIntoPositions)
{
    Options options;
    options.apart = {{0, 1}};
    options.reference = 2;
    Source known = file("b");
    known.knownStartSeconds = 7.5;
    known.device = "camera";

    const Plan plan = planOf({file("c"), file("a"), known}, options);

    EXPECT_THAT(plan.constraints.apart, ElementsAre(Pair(2, 0)));
    EXPECT_EQ(plan.constraints.reference, 1u);
    EXPECT_THAT(plan.constraints.known, ElementsAre(Pair(1, 7.5)));
    EXPECT_THAT(plan.constraints.devices, ElementsAre("", "camera", ""));
}

TEST(Plan, HasNoReferenceUnlessOneIsAskedFor)
{
    EXPECT_FALSE(planOf({file("a")}, Options()).constraints.reference.has_value());
}

TEST(Plan, LetsSamplesGoAndKeepsTheRest)
{
    Plan plan = planOf({samples("a", {1.0f, 2.0f})}, Options());

    plan.letSamplesGo();

    EXPECT_THAT(plan.sources[0].samples, IsEmpty());
    EXPECT_EQ(plan.sources[0].name, "a");
}

} // namespace
