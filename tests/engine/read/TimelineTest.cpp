#include "read/Timeline.h"

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using vxlsync::FramePlace;
using vxlsync::Timeline;

constexpr int rate = 48000;
constexpr std::int64_t frame = 480;

void expectPlace(const FramePlace& place, std::int64_t dropped, std::int64_t silence)
{
    EXPECT_EQ(place.dropped, dropped);
    EXPECT_EQ(place.silence, silence);
}

TEST(Timeline, PutsFramesBehindEachOther)
{
    Timeline timeline;

    expectPlace(timeline.place(0.0, 0.0, rate, frame), 0, 0);
    expectPlace(timeline.place(0.01, 0.01, rate, frame), 0, 0);
    // Rounded by 20 ms at most.
    expectPlace(timeline.place(0.0399, 0.02, rate, frame), 0, 0);
    expectPlace(timeline.place(0.0101, 0.03, rate, frame), 0, 0);
    EXPECT_THAT(timeline.notes(), IsEmpty());
}

TEST(Timeline, KeepsALateStartToTheSample)
{
    Timeline timeline;

    expectPlace(timeline.place(0.001, 0.0, rate, frame), 0, 48);
    EXPECT_THAT(timeline.notes(), IsEmpty());
}

TEST(Timeline, DropsWhatTheEncoderPutInFront)
{
    Timeline timeline;

    expectPlace(timeline.place(-0.025, 0.0, rate, frame), 480, 0);
    expectPlace(timeline.place(-0.015, 0.0, rate, frame), 480, 0);
    expectPlace(timeline.place(-0.005, 0.0, rate, frame), 240, 0);
    expectPlace(timeline.place(0.005, 0.005, rate, frame), 0, 0);
    EXPECT_THAT(timeline.notes(), IsEmpty());
}

TEST(Timeline, DropsNoMoreThanASecond)
{
    Timeline timeline;

    expectPlace(timeline.place(-1.01, 0.0, rate, frame), 0, 0);
    expectPlace(timeline.place(-1.0, 0.01, rate, frame), 0, 0);
    EXPECT_THAT(
        timeline.notes(),
        ElementsAre("its clock jumps back by 1.0 s at 0.0 s; the sound goes on without a gap"));
}

TEST(Timeline, FillsGapsAndCountsThem)
{
    Timeline timeline;
    timeline.place(0.0, 0.0, rate, frame);

    expectPlace(timeline.place(1.01, 0.01, rate, frame), 0, 48000);
    EXPECT_THAT(timeline.notes(), ElementsAre("1 gap of 1.0 s is filled with silence"));
    expectPlace(timeline.place(3.42, 1.02, rate, frame), 0, 115200);
    EXPECT_THAT(timeline.notes(), ElementsAre("2 gaps, 3.4 s in all, are filled with silence"));
}

TEST(Timeline, GoesOnWhereTheClockJumpsBack)
{
    Timeline timeline;
    timeline.place(0.0, 0.0, rate, frame);

    expectPlace(timeline.place(33.3, 45.6, rate, frame), 0, 0);
    // From now on the clock is 12.3 s behind, and a gap is one that it shows.
    expectPlace(timeline.place(33.31, 45.61, rate, frame), 0, 0);
    expectPlace(timeline.place(34.32, 45.62, rate, frame), 0, 48000);

    EXPECT_THAT(timeline.notes(),
                ElementsAre("1 gap of 1.0 s is filled with silence",
                            "its clock jumps back by 12.3 s at 45.6 s; the sound goes on without "
                            "a gap"));
}

TEST(Timeline, CountsTheJumpsOfAClock)
{
    Timeline timeline;
    timeline.place(0.0, 0.0, rate, frame);
    timeline.place(0.0 - 8.0, 10.0, rate, frame);
    timeline.place(0.0 - 8.0 - 5.0, 20.0, rate, frame);

    EXPECT_THAT(
        timeline.notes(),
        ElementsAre("its clock jumps back 2 times, first by 18.0 s at 10.0 s; the sound goes "
                    "on without a gap"));
}

TEST(Timeline, TakesALeapOfMoreThanAnHourForAClockThatWasSet)
{
    Timeline timeline;
    timeline.place(0.0, 0.0, rate, frame);

    expectPlace(timeline.place(3601.0, 0.5, rate, frame), 0, 0);
    expectPlace(timeline.place(3601.01, 0.51, rate, frame), 0, 0);

    EXPECT_THAT(
        timeline.notes(),
        ElementsAre("its clock jumps ahead by 3600.5 s at 0.5 s; the sound goes on without a "
                    "gap"));
}

TEST(Timeline, TakesALateStartOfMoreThanAnHourForAClockThatWasSet)
{
    Timeline timeline;

    expectPlace(timeline.place(7200.0, 0.0, rate, frame), 0, 0);
    expectPlace(timeline.place(7200.01, 0.01, rate, frame), 0, 0);
}

TEST(Timeline, MakesNoMoreThanSixHoursOfSilence)
{
    Timeline timeline;
    double position = 0.0;
    timeline.place(0.0, position, rate, frame);
    for (int hour = 0; hour < 6; ++hour) {
        position += 3600.0;
        EXPECT_GT(timeline.place(position, position - 3600.0, rate, frame).silence, 0) << hour;
    }

    expectPlace(timeline.place(position + 3600.0, position, rate, frame), 0, 0);
}

TEST(Timeline, HearsNothingFromAClockThatStands)
{
    Timeline timeline;

    expectPlace(timeline.place(0.0, 0.0, rate, frame), 0, 0);
    expectPlace(timeline.place(0.0, 0.01, rate, frame), 0, 0);
    expectPlace(timeline.place(0.0, 100.0, rate, frame), 0, 0);
    EXPECT_THAT(timeline.notes(), IsEmpty());
}

TEST(Timeline, NeedsNoClock)
{
    Timeline timeline;

    expectPlace(timeline.place(std::nullopt, 0.0, rate, frame), 0, 0);
    expectPlace(timeline.place(std::nullopt, 0.01, rate, frame), 0, 0);
    // The start is behind: what is before 0 now is a jump.
    expectPlace(timeline.place(-0.5, 0.02, rate, frame), 0, 0);
}

} // namespace
