#include <cstdint>
#include <limits>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Bits.h"
#include "Extraction.h"
#include "Job.h"
#include "Random.h"
#include "VXFile.h"
#include "VXFileSetProcessor.h"
#include "VXHistogram.h"
#include "VXHistogramSetProcessor.h"
#include "VXLandmark.h"
#include "plain/Evaluation.h"
#include "plain/Reader.h"

using property::Job;
using property::Random;

namespace
{

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();

// Ids without order or closeness, some of them negative.
std::vector<std::int64_t> anyIds(Random& random, std::size_t count)
{
    std::set<std::int64_t> ids;
    while (ids.size() < count) {
        ids.insert(random.between(-60, 60));
        if (random.oneIn(10)) ids.insert(static_cast<std::int64_t>(random.bits()));
    }
    std::vector<std::int64_t> list(ids.begin(), ids.end());
    list.resize(count);
    return list;
}

std::uint32_t anyKey(Random& random, std::uint64_t keys)
{
    // Keys spread over all 32 bits, so that those with the top bit set are ordered too.
    return static_cast<std::uint32_t>(random.below(keys) * 2654435761u);
}

// The same landmarks in every file, each file beginning somewhere else, with strangers between.
void addEvent(Random& random, Job& job, const std::vector<std::int64_t>& ids, std::int32_t frames)
{
    std::vector<std::pair<std::int32_t, std::uint32_t>> event;
    for (std::int32_t frame = 0; frame < frames; ++frame) {
        for (std::uint64_t count = random.below(4); count > 0; --count) {
            event.emplace_back(frame, anyKey(random, 400));
        }
    }
    for (const std::int64_t id : ids) {
        const std::int32_t start = static_cast<std::int32_t>(random.between(-20, frames / 2));
        for (const auto& [frame, key] : event) {
            if (random.oneIn(4)) continue;
            const std::uint32_t heard = random.oneIn(5) ? anyKey(random, 400) : key;
            job.addLandmark(id, frame - start, heard);
        }
    }
}

} // namespace

TEST(VXFileSetProcessor, VotesForAnyLandmarksAsThePlainTwin)
{
    for (std::uint64_t seed = 8000; seed < 8300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Job job;
        const std::vector<std::int64_t> ids = anyIds(random, 1 + random.below(40));
        const std::uint64_t keys = random.pick<std::uint64_t>({1, 2, 5, 40, 400, 100000});
        const std::int32_t span = random.pick({0, 3, 20, 300, 3000});
        const std::int32_t start = random.pick({0, 0, -100, -5000, 1000000});
        for (const std::int64_t id : ids) {
            job.addFile(id);
            // Some files without any landmark.
            if (random.oneIn(6)) continue;
            const std::int32_t own = start + static_cast<std::int32_t>(random.below(50));
            for (std::uint64_t count = random.below(30); count > 0; --count) {
                const std::int32_t offset =
                    own + static_cast<std::int32_t>(random.between(0, span));
                const std::uint32_t key = anyKey(random, keys);
                job.addLandmark(id, offset, key);
                if (random.oneIn(5)) job.addLandmark(id, offset, key);
            }
        }
        // Without counts the evaluation finds -1 landmarks everywhere.
        if (!random.oneIn(5)) job.countUp();

        property::compareJob(job, random.pick<std::uint32_t>({250, 250, 0, 1, 2, 3, 20, 100}));

        if (HasFatalFailure()) return;
    }
}

TEST(VXFileSetProcessor, VotesForOneEventAsThePlainTwin)
{
    for (std::uint64_t seed = 8400; seed < 8430; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Job job;
        const std::vector<std::int64_t> ids = anyIds(random, 2 + random.below(6));
        for (const std::int64_t id : ids)
            job.addFile(id);
        addEvent(random, job, ids, static_cast<std::int32_t>(random.between(50, 800)));
        job.countUp();

        property::compareJob(job, 250);

        if (HasFatalFailure()) return;
    }
}

TEST(VXFileSetProcessor, DropsKeysAroundTheCapAsThePlainTwin)
{
    for (std::uint64_t seed = 8500; seed < 8530; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Job job;
        const std::vector<std::int64_t> ids = anyIds(random, 1 + random.below(6));
        for (const std::int64_t id : ids)
            job.addFile(id);
        // Each key one landmark below the cap, at it, one above, or far above.
        for (std::uint32_t key = 0; key < 6; ++key) {
            const int count = random.pick({249, 250, 251, 900, 2, 1});
            for (int i = 0; i < count; ++i) {
                job.addLandmark(ids[random.below(ids.size())],
                                static_cast<std::int32_t>(random.below(400)), key);
            }
        }
        job.countUp();

        property::compareJob(job, 250);

        if (HasFatalFailure()) return;
    }
}

TEST(VXFileSetProcessor, VotesForOffsetsAtTheEndsOfTheirRangeAsThePlainTwin)
{
    for (std::uint64_t seed = 8600; seed < 8660; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Job job;
        const std::vector<std::int64_t> ids = anyIds(random, 2 + random.below(4));
        for (const std::int64_t id : ids) {
            job.addFile(id);
            const std::int32_t start = random.pick({lowest, highest - 200, -100, 0, 1 << 24});
            for (int i = 0; i < 20; ++i) {
                const std::int32_t offset = start + static_cast<std::int32_t>(random.below(200));
                job.addLandmark(id, offset, static_cast<std::uint32_t>(random.below(4)));
            }
        }
        job.countUp();

        property::compareJob(job, 250);

        if (HasFatalFailure()) return;
    }
}

// Files of many landmarks in few frames beside files of few in many: some pairs are counted in a
// table, some by sorting, and a stray may stand anywhere.
TEST(VXFileSetProcessor, VotesForDenseAndFarFilesAsThePlainTwin)
{
    for (std::uint64_t seed = 8670; seed < 8700; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Job job;
        const std::vector<std::int64_t> ids = anyIds(random, 2 + random.below(6));
        for (const std::int64_t id : ids)
            job.addFile(id);
        for (const std::int64_t id : ids) {
            const bool isFar = random.oneIn(3);
            const std::int32_t step = isFar ? random.pick({1000, 100000, 5000000}) : 1;
            for (std::uint64_t count = isFar ? 30 : 300; count > 0; --count) {
                const std::int32_t offset = step * static_cast<std::int32_t>(random.below(300));
                job.addLandmark(id, offset, anyKey(random, 40));
            }
            if (random.oneIn(4)) {
                job.addStray(id, random.pick({lowest, highest}), anyKey(random, 40),
                             ids[random.below(ids.size())]);
            }
        }

        // Without counts, which would have an entry for each of a billion frames.
        property::compareJob(job, 250);

        if (HasFatalFailure()) return;
    }
}

TEST(VXFileSetProcessor, PassesOverStraysAndAbsentFilesAsThePlainTwin)
{
    for (std::uint64_t seed = 8700; seed < 8780; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Job job;
        const std::vector<std::int64_t> ids = anyIds(random, 2 + random.below(5));
        for (const std::int64_t id : ids)
            job.addFile(id);
        for (std::int64_t id = 100; id < 103; ++id) {
            if (random.oneIn(2)) job.addNothing(id);
        }
        for (const std::int64_t id : ids) {
            for (int i = 0; i < 25; ++i) {
                const std::int32_t offset = static_cast<std::int32_t>(random.between(-50, 50));
                const std::uint32_t key = static_cast<std::uint32_t>(random.below(12));
                if (random.oneIn(3)) {
                    job.addStray(id, offset, key, std::nullopt);
                } else {
                    job.addLandmark(id, offset, key);
                }
            }
        }
        job.countUp();

        property::compareJob(job, random.pick<std::uint32_t>({250, 10}));

        if (HasFatalFailure()) return;
    }
}

TEST(VXFileSetProcessor, GroupsLandmarksByTheFileThatTheyNameAsThePlainTwin)
{
    for (std::uint64_t seed = 8800; seed < 8840; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Job job;
        const std::vector<std::int64_t> ids = anyIds(random, 2 + random.below(5));
        for (const std::int64_t id : ids)
            job.addFile(id);
        for (const std::int64_t id : ids) {
            for (int i = 0; i < 25; ++i) {
                job.addStray(id, static_cast<std::int32_t>(random.between(-50, 50)),
                             static_cast<std::uint32_t>(random.below(12)),
                             ids[random.below(ids.size())]);
            }
        }
        job.countUp();

        property::compareJob(job, 250);

        if (HasFatalFailure()) return;
    }
}

TEST(VXFileSetProcessor, VotesForFilesOutsideTheSetAsThePlainTwin)
{
    for (std::uint64_t seed = 8850; seed < 8870; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Job job;
        const std::vector<std::int64_t> ids = anyIds(random, 3);
        for (const std::int64_t id : ids)
            job.addFile(id);
        job.addOutsider(0x7FFFFFFF00);
        job.addOutsider(-0x7FFFFFFF00);
        for (const std::int64_t id : ids) {
            for (int i = 0; i < 25; ++i) {
                job.addStray(
                    id, static_cast<std::int32_t>(random.between(-50, 50)),
                    static_cast<std::uint32_t>(random.below(12)),
                    random.pick({id, id, std::int64_t{0x7FFFFFFF00}, std::int64_t{-0x7FFFFFFF00}}));
            }
        }
        job.countUp();

        property::compareJob(job, 250);

        if (HasFatalFailure()) return;
    }
}

TEST(VXFileSetProcessor, GivesTheSameTwiceAsThePlainTwin)
{
    const std::uint64_t seed = 8900;
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    Job job;
    const std::vector<std::int64_t> ids = {-4, 1, 9};
    for (const std::int64_t id : ids)
        job.addFile(id);
    addEvent(random, job, ids, 200);
    job.countUp();

    property::compareJob(job, 250);
    property::compareJob(job, 250);
}

TEST(VXFileSetProcessor, VotesForTheExampleRecordingsAsThePlainTwin)
{
    const std::vector<std::string> paths = property::exampleRecordings();
    ASSERT_FALSE(paths.empty());
    Job job;
    std::int64_t id = 0;
    for (const std::string& path : paths) {
        ++id;
        plain::Reader reader(path);
        plain::Extractor extractor{plain::Parameters()};
        plain::Recording recording(id);
        extractor.run(reader, recording);
        job.addFile(id);
        for (const auto& [frame, list] : recording.landmarks) {
            for (const plain::Landmark& landmark : list) {
                job.addLandmark(id, landmark.offset, landmark.key);
            }
        }
    }
    job.countUp();

    property::compareJob(job, 250);
}

TEST(VXHistogramSetProcessor, MeasuresAnyOverlapAsThePlainTwin)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    for (std::uint64_t seed = 9000; seed < 9100; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Job job;
        for (const std::int64_t id : {1, 2}) {
            job.addFile(id);
            if (random.oneIn(8)) continue;
            const std::int32_t start = random.pick({0, -300, lowest, highest - 300});
            for (std::uint64_t count = 1 + random.below(50); count > 0; --count) {
                job.addLandmark(id, start + static_cast<std::int32_t>(random.below(300)), 1);
            }
        }
        if (!random.oneIn(8)) job.countUp();

        for (int i = 0; i < 60; ++i) {
            const float offset = random.pick({static_cast<float>(random.between(-700, 700)),
                                              300.0f * random.sample(), 0.0f, -0.0f, 1e9f, -1e9f,
                                              4294967296.0f, -4294967296.0f, infinity, -infinity});
            float expectedFirst = -7.0f;
            float expectedSecond = -7.0f;
            float first = -7.0f;
            float second = -7.0f;

            const float expected = plain::overlapRegion(job.recordings[1], job.recordings[2],
                                                        offset, expectedFirst, expectedSecond);
            const float length = VXS::VXHistogramSetProcessor().proposedOverlapRegion(
                job.fileSet.getFiles()[1], job.fileSet.getFiles()[2], offset, first, second);

            ASSERT_TRUE(property::sameFloat(length, expected)) << "offset " << offset;
            ASSERT_TRUE(property::sameFloat(first, expectedFirst)) << "offset " << offset;
            ASSERT_TRUE(property::sameFloat(second, expectedSecond)) << "offset " << offset;
        }
    }
}

TEST(VXHistogramSetProcessor, MeasuresAnyBinAsThePlainTwin)
{
    for (std::uint64_t seed = 9200; seed < 9240; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Job job;
        const std::vector<std::int64_t> ids = anyIds(random, 2);
        for (const std::int64_t id : ids)
            job.addFile(id);
        addEvent(random, job, ids, 60);
        job.countUp();
        std::vector<float> ignored;
        const plain::HistogramSet expected = plain::histograms(job.recordings, 250, ignored);
        if (expected.empty()) continue;
        const plain::Pair pair = expected.begin()->first;
        VXS::VXHistogram histogram = property::histogramOf(job, expected.begin()->second);

        for (std::int64_t offset = -150; offset <= 150; ++offset) {
            SCOPED_TRACE("offset " + std::to_string(offset));
            float expectedA = -7.0f;
            float expectedB = -7.0f;
            float expectedLength = -7.0f;
            float percentA = -7.0f;
            float percentB = -7.0f;
            float length = -7.0f;

            plain::measureBin(pair, expected.begin()->second, offset, expectedA, expectedB,
                              expectedLength, job.recordings);
            VXS::VXHistogramSetProcessor().offset2Percetage(pair, &histogram, offset, percentA,
                                                            percentB, length, &job.fileSet);

            ASSERT_TRUE(property::sameFloat(percentA, expectedA));
            ASSERT_TRUE(property::sameFloat(percentB, expectedB));
            ASSERT_TRUE(property::sameFloat(length, expectedLength));
        }
    }
}
