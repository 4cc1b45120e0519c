#include "decide/DeviceClocks.h"

#include <gmock/gmock.h>

#include "TestLinks.h"

namespace
{

using links::constraintsOf;
using links::minute;
using vxlsync::Constraints;
using vxlsync::DeviceClocks;
using vxlsync::Groups;
using vxlsync::ImpliedPair;
using vxlsync::Placement;

ImpliedPair pairAt(std::size_t first, std::size_t second, double offset)
{
    Placement place;
    place.start = offset;
    return {first, second, vxlsync::impliedLine(Placement(), minute, place, minute)};
}

// Recordings that seem to be of one camera, begun at these seconds by its clock.
Constraints cameraAt(const std::vector<double>& clock)
{
    Constraints constraints = constraintsOf(clock.size());
    constraints.likelyDevices.assign(clock.size(), "camera");
    constraints.clockStarts.assign(clock.begin(), clock.end());
    return constraints;
}

// In one group, at these seconds; the last is alone.
Groups groupsAt(const std::vector<double>& starts)
{
    Groups groups(starts.size() + 1);
    for (std::size_t i = 0; i < starts.size(); ++i)
        groups.setStart(i, starts[i]);
    for (std::size_t i = 1; i < starts.size(); ++i)
        groups.unite({groups.groupOf(0), groups.groupOf(i), Placement()});
    return groups;
}

double balanceOf(const Constraints& constraints, const std::vector<ImpliedPair>& pairs,
                 const Groups& groups)
{
    return DeviceClocks(constraints).weigh(pairs, groups).balance();
}

TEST(DeviceClocks, AreInOnePlaceAtATimeIfTheUserNamesThem)
{
    Constraints constraints = constraintsOf(3);
    constraints.devices = {"camera", "camera", ""};
    const DeviceClocks devices(constraints);

    EXPECT_TRUE(devices.isTwice({pairAt(0, 1, 59.4)}));
    EXPECT_FALSE(devices.isTwice({pairAt(0, 1, 59.6)}));
    EXPECT_FALSE(devices.isTwice({pairAt(0, 2, 10.0)}));
    EXPECT_FALSE(devices.isTwice({pairAt(2, 2, 10.0)}));
}

TEST(DeviceClocks, SpeakAgainstOneThatSeemsToBeInTwoPlaces)
{
    Constraints constraints = constraintsOf(3);
    constraints.likelyDevices = {"camera", "camera", ""};
    const DeviceClocks devices(constraints);

    EXPECT_FALSE(devices.isTwice({pairAt(0, 1, 10.0)}));
    EXPECT_EQ(devices.weigh({pairAt(0, 1, 10.0), pairAt(1, 0, 10.0)}, Groups(3)).balance(), -12.0);
    EXPECT_EQ(devices.weigh({pairAt(0, 1, 59.6)}, Groups(3)).balance(), 0.0);
    EXPECT_EQ(devices.weigh({pairAt(0, 2, 10.0)}, Groups(3)).balance(), 0.0);
}

TEST(DeviceClocks, DoNotTakeANameThatTheUserGaveForOneInAFile)
{
    Constraints constraints = constraintsOf(2);
    constraints.devices = {"camera", ""};
    constraints.likelyDevices = {"", "camera"};
    EXPECT_EQ(balanceOf(constraints, {pairAt(0, 1, 10.0)}, Groups(2)), 0.0);
}

TEST(Clocks, SpeakForWhatTheySayAndAgainstOtherPlaces)
{
    const Constraints constraints = cameraAt({1000.0, 1100.0});
    EXPECT_EQ(balanceOf(constraints, {pairAt(0, 1, 101.9)}, Groups(2)), 2.0);
    EXPECT_EQ(balanceOf(constraints, {pairAt(0, 1, 98.1)}, Groups(2)), 2.0);
    EXPECT_EQ(balanceOf(constraints, {pairAt(0, 1, 103.0)}, Groups(2)), 0.0);
    EXPECT_EQ(balanceOf(constraints, {pairAt(0, 1, 105.1)}, Groups(2)), -6.0);
}

TEST(Clocks, SpeakForOneDeviceOnceAndByMostOfItsRecordings)
{
    const Constraints constraints = cameraAt({0.0, 100.0, 200.0, 900.0});
    const Groups groups = groupsAt({0.0, 100.0, 200.0});
    EXPECT_EQ(balanceOf(constraints, {pairAt(0, 3, 900.0), pairAt(1, 3, 800.0)}, groups), 2.0);
    EXPECT_EQ(balanceOf(constraints,
                        {pairAt(0, 3, 300.0), pairAt(1, 3, 200.0), pairAt(2, 3, 700.0)}, groups),
              -6.0);
}

TEST(Clocks, SayNothingOfOtherDevicesOrWithoutATime)
{
    Constraints constraints = cameraAt({0.0, 100.0});
    constraints.likelyDevices = {"camera", "recorder"};
    EXPECT_EQ(balanceOf(constraints, {pairAt(0, 1, 100.0)}, Groups(2)), 0.0);
    constraints = cameraAt({0.0, 100.0});
    constraints.clockStarts[1].reset();
    EXPECT_EQ(balanceOf(constraints, {pairAt(0, 1, 100.0)}, Groups(2)), 0.0);
    constraints.clockStarts[0].reset();
    constraints.clockStarts[1] = 100.0;
    EXPECT_EQ(balanceOf(constraints, {pairAt(0, 1, 100.0)}, Groups(2)), 0.0);
}

TEST(Clocks, SayNothingOnceSoundHasShownThemWrong)
{
    // The second was placed 50 s from where the clock says it is.
    const Constraints constraints = cameraAt({0.0, 100.0, 200.0});
    EXPECT_EQ(balanceOf(constraints, {pairAt(0, 2, 500.0)}, groupsAt({0.0, 150.0})), 0.0);
    EXPECT_EQ(balanceOf(constraints, {pairAt(0, 2, 500.0)}, groupsAt({0.0, 102.0})), -6.0);
}

TEST(Clocks, BackAPlaceOnceTwoRecordingsAreWhereTheySay)
{
    const Constraints constraints = cameraAt({0.0, 100.0, 200.0});
    const DeviceClocks devices(constraints);
    const std::vector<ImpliedPair> right{pairAt(0, 2, 201.0), pairAt(1, 2, 99.0)};

    EXPECT_TRUE(devices.backs(right, groupsAt({0.0, 102.0})));
    EXPECT_FALSE(devices.backs(right, groupsAt({0.0, 150.0})));
    EXPECT_FALSE(devices.backs(right, Groups(3)));
    EXPECT_FALSE(devices.backs({pairAt(0, 2, 201.0), pairAt(1, 2, 90.0)}, groupsAt({0.0, 102.0})));
    EXPECT_FALSE(devices.backs({pairAt(0, 2, 203.0)}, groupsAt({0.0, 102.0})));
}

} // namespace
