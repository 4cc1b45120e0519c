#include "match/Examine.h"

#include <gtest/gtest.h>

#include "Measuring.h"
#include "Signals.h"

namespace
{

using measuring::preparedOf;
using signals::noise;
using signals::part;
using signals::rate;
using vxlsync::Alignment;
using vxlsync::Prepared;

class Examine : public testing::Test
{
protected:
    Examine()
    {
        const std::vector<float> event = noise(1, 14 * rate);
        recordings.push_back(preparedOf(part(event, 0, 10 * rate)));
        recordings.push_back(preparedOf(part(event, 4 * rate, 10 * rate)));
        recordings.push_back(preparedOf(noise(2, 10 * rate)));
    }

    std::vector<Prepared> recordings;
    const vxlsync::Interrupt never;
};

TEST_F(Examine, MeasuresALineThatIsImplied)
{
    vxlsync::Examiner examine(recordings, never);

    EXPECT_NEAR(examine(0, 1, 4.01, 0.0).offset, 4.0, 1e-5);
    // The higher index may come first.
    EXPECT_NEAR(examine(1, 0, -4.01, 0.0).offset, -4.0, 1e-5);
}

TEST_F(Examine, AnswersThatThereIsNothing)
{
    vxlsync::Examiner examine(recordings, never);

    const Alignment nothing = examine(0, 2, 4.0, 0.0);

    EXPECT_EQ(nothing.allBands, 35);
    EXPECT_LT(nothing.bands, 3);
    EXPECT_TRUE(examine(0, 2, 9.5, 0.0).windows.empty());
}

TEST_F(Examine, CanBeEnded)
{
    const vxlsync::Interrupt now(measuring::endingAt(1));
    vxlsync::Examiner examine(recordings, now);

    EXPECT_THROW(examine(0, 1, 4.0, 0.0), vxlsync::Cancelled);
}

} // namespace
