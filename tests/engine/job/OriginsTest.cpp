#include "job/Origins.h"

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using testing::Optional;
using vxlsync::addOrigins;
using vxlsync::Constraints;
using vxlsync::DateTime;
using vxlsync::DayTime;
using vxlsync::DeviceEvidence;
using vxlsync::findOrigins;
using vxlsync::Options;
using vxlsync::Origin;
using vxlsync::Recording;
using vxlsync::Source;

// Sources and what was read of them, each of half a minute.
struct Job {
    void add(const std::string& device, const std::string& originator, double createdAfter)
    {
        Source source;
        source.path = "rec" + std::to_string(sources.size()) + ".wav";
        source.device = device;
        sources.push_back(source);
        Recording recording;
        recording.durationSeconds = 30.0;
        recording.facts.originator = originator;
        recording.facts.created = DateTime{1e9 + createdAfter, 0};
        recordings.push_back(std::move(recording));
    }

    std::vector<Source> sources;
    std::vector<Recording> recordings;
};

TEST(Origins, AreWhatTheHostStatesAndTheFilesSay)
{
    Job job;
    job.add("mine", "camera a", 0.0);
    job.add("", "camera a", 40.0);
    job.add("", "", 80.0);

    const std::vector<Origin> origins = findOrigins(job.sources, job.recordings, Options());

    EXPECT_EQ(origins[0].device, "mine");
    EXPECT_EQ(origins[0].knownBy, DeviceEvidence::stated);
    EXPECT_THAT(origins[0].clockStart, Optional(1e9));
    EXPECT_EQ(origins[1].device, "camera a");
    EXPECT_THAT(origins[1].clockStart, Optional(1e9 + 40.0));
    EXPECT_EQ(origins[2].device, "");
}

TEST(Origins, GoByTheLengthOfTheRecordings)
{
    Job job;
    job.add("mine", "", 0.0);
    job.add("mine", "", 20.0);
    EXPECT_FALSE(findOrigins(job.sources, job.recordings, Options())[0].clockStart);

    job.recordings[0].durationSeconds = 15.0;
    EXPECT_TRUE(findOrigins(job.sources, job.recordings, Options())[0].clockStart);
}

TEST(Origins, HaveNoClockWhereTheUserDoesNotWantIt)
{
    Job job;
    job.add("mine", "", 0.0);
    job.recordings[0].facts.started = DayTime{36000.0};
    Options options;
    options.ignoreClocks = true;

    const std::vector<Origin> origins = findOrigins(job.sources, job.recordings, options);

    EXPECT_EQ(origins[0].device, "mine");
    EXPECT_FALSE(origins[0].clockStart);
}

TEST(Origins, GoToTheDecisionButForWhatItKnows)
{
    Constraints constraints;
    addOrigins({{"mine", DeviceEvidence::stated, 5.0},
                {"camera a", DeviceEvidence::originator, std::nullopt}},
               constraints);

    EXPECT_THAT(constraints.likelyDevices, ElementsAre("", "camera a"));
    EXPECT_THAT(constraints.clockStarts, ElementsAre(Optional(5.0), std::nullopt));
}

} // namespace
