#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Signals.h"
#include "VXFile.h"
#include "VXLandmarkExtract.h"
#include "Wave.h"
#include "wavfile.h"

// What holds for every recording, looked at in real music and speech.

namespace
{

using signals::LandmarkRow;
using signals::PeakRow;
using signals::PeakTable;
using VXS::VXExtractParams;
using VXS::VXFile;
using VXS::VXLandmarkExtract;

std::string testRecording(const std::string& name)
{
    return std::string(VXS_TEST_RECORDINGS) + "/" + name;
}

// Music with little noise, and a talk with more.
std::vector<std::string> someRecordings()
{
    return {testRecording("music-chain/first.wav"), testRecording("two-groups/talk-late.wav")};
}

PeakTable peaksOf(const std::string& path)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    const std::unique_ptr<VXFile> file(extractor.run(path, 1));
    return signals::peaksOf(extractor);
}

std::vector<LandmarkRow> landmarksOf(const std::string& path)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    const std::unique_ptr<VXFile> file(extractor.run(path, 1));
    return signals::landmarksOf(*file);
}

std::size_t countPeaks(const PeakTable& table)
{
    std::size_t count = 0;
    for (const auto& list : table)
        count += list.size();
    return count;
}

// The key by its definition.
std::uint32_t keyOf(const PeakRow& anchor, const PeakRow& neighbour)
{
    return static_cast<std::uint32_t>(neighbour.time - anchor.time) << 20u |
           static_cast<std::uint32_t>(anchor.frequency) << 10u |
           static_cast<std::uint32_t>(neighbour.frequency);
}

// The samples of a WAV file of the tests, whose data chunk ends the file.
std::vector<int> samplesOf(const std::string& path)
{
    VXS::wavfile_t file(path, 8, 1, 16000);
    VXS::array<float> block(static_cast<std::int32_t>(file.frames));
    file.read_mono(block);
    std::vector<int> samples;
    for (std::int32_t i = 0; i < block.dim0; ++i)
        samples.push_back(static_cast<int>(block.data[i] * 32768.0f));
    return samples;
}

} // namespace

TEST(RealSound, ListsHoldAtMostFivePeaksOfTheirFrameLoudestFirst)
{
    for (const std::string& path : someRecordings()) {
        const PeakTable table = peaksOf(path);

        EXPECT_LT(100u, countPeaks(table)) << path;
        for (std::size_t f = 0; f < table.size(); ++f) {
            ASSERT_GE(5u, table[f].size()) << path << ", frame " << f;
            for (std::size_t i = 0; i < table[f].size(); ++i) {
                ASSERT_EQ(static_cast<std::int32_t>(f), table[f][i].time);
                ASSERT_LE(1, table[f][i].frequency);
                ASSERT_GE(254, table[f][i].frequency);
                const std::size_t before = i == 0 ? 0 : i - 1;
                ASSERT_GE(table[f][before].amplitude, table[f][i].amplitude);
            }
        }
    }
}

// Looked at both ways in time: a peak lies above the mask of every louder one of its frame and of
// every one before it, and not below the mask of any after it.
TEST(RealSound, NoPeakIsMaskedByAnother)
{
    // The threshold sinks in single precision, frame by frame.
    constexpr float rounding = 0.01f;
    const VXExtractParams params;
    for (const std::string& path : someRecordings()) {
        VXLandmarkExtract extractor(params);
        const std::unique_ptr<VXFile> file(extractor.run(path, 1));
        std::vector<PeakRow> peaks;
        for (const auto& list : signals::peaksOf(extractor))
            peaks.insert(peaks.end(), list.begin(), list.end());

        for (std::size_t i = 0; i < peaks.size(); ++i) {
            for (std::size_t j = 0; j < peaks.size(); ++j) {
                if (i == j) continue;
                // Of one frame only the louder peak masks the other.
                if (peaks[i].time == peaks[j].time && i < j) continue;
                const auto distance =
                    static_cast<std::size_t>(std::abs(peaks[i].frequency - peaks[j].frequency));
                const auto frames = static_cast<float>(std::abs(peaks[i].time - peaks[j].time));
                const float mask = peaks[j].amplitude + extractor.maskShape[distance] -
                                   frames * params.thresholdDecay;
                ASSERT_LT(mask - rounding, peaks[i].amplitude)
                    << path << ": " << peaks[i] << " under " << peaks[j];
            }
        }
    }
}

TEST(RealSound, LandmarksAreEachPeakWithTheElevenThatFollow)
{
    for (const std::string& path : someRecordings()) {
        std::vector<PeakRow> peaks;
        const PeakTable table = peaksOf(path);
        for (const auto& list : table)
            peaks.insert(peaks.end(), list.begin(), list.end());
        std::vector<LandmarkRow> expected;
        for (std::size_t i = 0; i < peaks.size(); ++i) {
            std::size_t found = 0;
            for (std::size_t j = 0; j < peaks.size() && found < 11; ++j) {
                const std::int32_t frames = peaks[j].time - peaks[i].time;
                if (i == j || frames < 0 || frames > 126) continue;
                expected.emplace_back(peaks[i].time, keyOf(peaks[i], peaks[j]));
                ++found;
            }
        }

        EXPECT_EQ(expected, landmarksOf(path)) << path;
    }
}

TEST(RealSound, SameSamplesInAnotherFormatGiveTheSameLandmarks)
{
    const wave::TempFolder folder;
    const std::string original = testRecording("two-groups/talk-late.wav");
    const std::vector<int> samples = samplesOf(original);
    const std::vector<float> floats = signals::asRead(samples);
    std::vector<int> stereo;
    for (const int sample : samples)
        stereo.insert(stereo.end(), {sample, -12345});
    wave::Bytes chunked = wave::riffStart();
    wave::append(chunked, wave::chunk("JUNK", wave::Bytes(28)));
    wave::append(chunked, wave::formatChunk(wave::Format()));
    wave::append(chunked, wave::chunk("LIST", wave::Bytes(40, 3)));
    wave::append(chunked, wave::chunk("data", wave::samples16(samples)));
    const std::vector<std::string> others = {
        folder.write("stereo.wav", wave::file(wave::format(1, 2, 16), wave::samples16(stereo))),
        folder.write("float.wav", wave::file(wave::format(3, 1, 32), wave::samplesFloat(floats))),
        folder.write("chunked.wav", chunked)};

    const std::vector<LandmarkRow> expected = landmarksOf(original);

    EXPECT_LT(1000u, expected.size());
    for (const std::string& other : others)
        EXPECT_EQ(expected, landmarksOf(other)) << other;
}

// Half the amplitude is 6.02 dB less everywhere, and the choice of peaks compares levels with one
// another only. A power of two keeps every bit of the spectrum.
TEST(RealSound, LoudnessHardlyMattersToTheLandmarks)
{
    // A level is rounded to single precision, so that near ties may fall the other way.
    constexpr double share = 0.99;
    const std::vector<int> samples = samplesOf(testRecording("two-groups/talk-late.wav"));
    const signals::Samples loud = signals::asRead(samples);
    signals::Samples quiet;
    for (const float sample : loud)
        quiet.push_back(sample / 2.0f);

    const auto expected = signals::extractLandmarks(VXExtractParams(), loud);
    const auto landmarks = signals::extractLandmarks(VXExtractParams(), quiet);

    std::vector<LandmarkRow> sortedExpected = expected;
    std::vector<LandmarkRow> sorted = landmarks;
    std::sort(sortedExpected.begin(), sortedExpected.end());
    std::sort(sorted.begin(), sorted.end());
    std::vector<LandmarkRow> common;
    std::set_intersection(sortedExpected.begin(), sortedExpected.end(), sorted.begin(),
                          sorted.end(), std::back_inserter(common));
    EXPECT_LE(share * static_cast<double>(expected.size()), static_cast<double>(common.size()));
}
