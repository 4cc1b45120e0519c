#include "Jumps.h"

#include <gmock/gmock.h>

#include "Signals.h"

namespace
{

using signals::mixed;
using signals::noise;
using signals::part;
using signals::rate;
using vxlsync::Hypothesis;
using vxlsync::PairFinding;

// A line with a window each second of 40, which agrees from `from` to `to`.
Hypothesis lineThatHolds(double offset, double from, double to)
{
    Hypothesis one;
    one.line.offset = offset;
    one.line.end = 40.0;
    one.line.middle = 20.0;
    one.line.significance = 100.0;
    for (int second = 0; second < 40; ++second) {
        vxlsync::AlignWindow window;
        window.time = second + 0.5;
        window.weight = 1.0;
        window.agrees = window.time > from && window.time < to;
        window.coherence = window.agrees ? 0.5 : 0.0;
        one.line.windows.push_back(window);
        one.line.coherence += window.coherence / 40.0;
        one.line.agreement += window.agrees ? 1.0 / 40.0 : 0.0;
    }
    return one;
}

TEST(Jumps, JoinALineThatGoesOnBesideItself)
{
    PairFinding finding{0, 1, {lineThatHolds(3.5, 25.0, 40.0), lineThatHolds(3.0, 0.0, 25.0)}};

    vxlsync::joinJumps(finding);

    ASSERT_EQ(finding.hypotheses.size(), 1u);
    const Hypothesis& joined = finding.hypotheses[0];
    EXPECT_EQ(joined.line.offset, 3.0);
    EXPECT_NEAR(joined.line.agreement, 1.0, 1e-9);
    EXPECT_NEAR(joined.line.coherence, 0.5, 1e-9);
    ASSERT_EQ(joined.jumps.size(), 1u);
    EXPECT_NEAR(joined.jumps[0].at, 25.5, 1.0);
    EXPECT_NEAR(joined.jumps[0].size, 0.5, 1e-9);
}

TEST(Jumps, LeaveLinesAloneThatHoldAtTheSameTime)
{
    PairFinding finding{0, 1, {lineThatHolds(3.0, 0.0, 40.0), lineThatHolds(3.5, 0.0, 40.0)}};

    vxlsync::joinJumps(finding);

    EXPECT_EQ(finding.hypotheses.size(), 2u);
}

TEST(Jumps, LeaveLinesAloneThatAreFarApart)
{
    PairFinding finding{0, 1, {lineThatHolds(3.0, 0.0, 25.0), lineThatHolds(8.5, 25.0, 40.0)}};

    vxlsync::joinJumps(finding);

    EXPECT_EQ(finding.hypotheses.size(), 2u);
}

TEST(Jumps, AreFoundWhereARecorderDroppedSound)
{
    // The second recorder starts 3 s later and loses 0.4 s after 20 s of its own.
    const std::vector<float> event = noise(1, 50 * rate);
    std::vector<float> second = part(event, 3 * rate, 20 * rate);
    const std::vector<float> rest = part(event, 3 * rate + 20 * rate + 3200, 20 * rate);
    second.insert(second.end(), rest.begin(), rest.end());
    std::vector<vxlsync::Prepared> recordings;
    recordings.push_back(
        vxlsync::prepare(mixed(part(event, 0, 45 * rate), noise(2, 45 * rate), 0.3F), rate));
    recordings.push_back(vxlsync::prepare(mixed(second, noise(3, 40 * rate), 0.3F), rate));

    const auto findings = vxlsync::searchPairs(recordings, {}, 1, [](double) {});

    ASSERT_EQ(findings[0].hypotheses.size(), 1u);
    const Hypothesis& found = findings[0].hypotheses[0];
    EXPECT_NEAR(found.line.offset, 3.0, 1e-4);
    ASSERT_EQ(found.jumps.size(), 1u);
    // Sound after the loss stands 3.4 s later in the first; windows are 4 s long.
    EXPECT_NEAR(found.jumps[0].size, 0.4, 1e-4);
    EXPECT_NEAR(found.jumps[0].at, 23.0, 4.0);
}

} // namespace
