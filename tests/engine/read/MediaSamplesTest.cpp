#include "read/MediaSamples.h"

#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include <gmock/gmock.h>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/samplefmt.h>
}

namespace
{

using testing::ElementsAre;

struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using Frame = std::unique_ptr<AVFrame, FreeFrame>;

// A frame with the samples of each channel, of which each has as many.
template <typename Sample>
Frame frameOf(AVSampleFormat format, const std::vector<std::vector<Sample>>& channels)
{
    Frame frame(av_frame_alloc());
    frame->format = format;
    frame->nb_samples = static_cast<int>(channels.front().size());
    av_channel_layout_default(&frame->ch_layout, static_cast<int>(channels.size()));
    EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
    for (std::size_t channel = 0; channel < channels.size(); ++channel) {
        for (std::size_t i = 0; i < channels[channel].size(); ++i) {
            const bool isPlanar = av_sample_fmt_is_planar(format) != 0;
            std::uint8_t* plane = frame->extended_data[isPlanar ? channel : 0];
            const std::size_t place = isPlanar ? i : i * channels.size() + channel;
            std::memcpy(plane + place * sizeof(Sample), &channels[channel][i], sizeof(Sample));
        }
    }
    return frame;
}

std::vector<double> samplesOf(const Frame& frame, int channel = 0, std::int64_t first = 0)
{
    std::vector<double> sums(static_cast<std::size_t>(frame->nb_samples - first));
    vxlsync::addChannel(*frame, channel, first, sums);
    return sums;
}

// Packed and planar. The second channel is what must not be heard.
template <typename Sample>
void expectScaled(AVSampleFormat packed, const std::vector<Sample>& samples,
                  const std::vector<double>& expected)
{
    const std::vector<Sample> other(samples.size(), Sample{1});
    for (const AVSampleFormat format : {packed, av_get_planar_sample_fmt(packed)})
        EXPECT_EQ(samplesOf(frameOf<Sample>(format, {samples, other})), expected)
            << av_get_sample_fmt_name(format);
}

TEST(MediaSamples, AreFromMinusOneToOneWhateverTheyAreStoredAs)
{
    expectScaled<std::uint8_t>(AV_SAMPLE_FMT_U8, {0, 64, 128, 192}, {-1.0, -0.5, 0.0, 0.5});
    expectScaled<std::int16_t>(AV_SAMPLE_FMT_S16, {-32768, 0, 16384}, {-1.0, 0.0, 0.5});
    expectScaled<std::int32_t>(AV_SAMPLE_FMT_S32,
                               {std::numeric_limits<std::int32_t>::min(), 0, 1 << 30},
                               {-1.0, 0.0, 0.5});
    expectScaled<std::int64_t>(AV_SAMPLE_FMT_S64,
                               {std::numeric_limits<std::int64_t>::min(), 0, std::int64_t{1} << 62},
                               {-1.0, 0.0, 0.5});
    expectScaled<float>(AV_SAMPLE_FMT_FLT, {-1.0f, 0.25f, 3.0f}, {-1.0, 0.25, 3.0});
    expectScaled<double>(AV_SAMPLE_FMT_DBL, {-1.0, 0.1, 3.0}, {-1.0, 0.1, 3.0});
}

TEST(MediaSamples, AreOfTheChannelAskedFor)
{
    const std::vector<std::vector<float>> channels{{0.5f, 0.25f}, {-1.0f, -0.5f}, {2.0f, 4.0f}};

    for (const AVSampleFormat format : {AV_SAMPLE_FMT_FLT, AV_SAMPLE_FMT_FLTP}) {
        const Frame frame = frameOf(format, channels);
        EXPECT_THAT(samplesOf(frame, 0), ElementsAre(0.5, 0.25));
        EXPECT_THAT(samplesOf(frame, 1), ElementsAre(-1.0, -0.5));
        EXPECT_THAT(samplesOf(frame, 2), ElementsAre(2.0, 4.0));
    }
}

// The frame itself has room for eight.
TEST(MediaSamples, AreOfAnyChannelOfManyInPlanes)
{
    std::vector<std::vector<float>> channels(10, std::vector<float>(2));
    channels[9] = {0.5f, 0.25f};

    EXPECT_THAT(samplesOf(frameOf(AV_SAMPLE_FMT_FLTP, channels), 9), ElementsAre(0.5, 0.25));
}

TEST(MediaSamples, BeginAtTheSampleAskedFor)
{
    const std::vector<std::vector<float>> channels{{1.0f, 2.0f, 3.0f}, {4.0f, 5.0f, 6.0f}};

    for (const AVSampleFormat format : {AV_SAMPLE_FMT_FLT, AV_SAMPLE_FMT_FLTP}) {
        const Frame frame = frameOf(format, channels);
        EXPECT_THAT(samplesOf(frame, 1, 1), ElementsAre(5.0, 6.0));
        EXPECT_THAT(samplesOf(frame, 1, 3), ElementsAre());
    }
}

TEST(MediaSamples, AreAddedToWhatIsThere)
{
    std::vector<double> sums{10.0, 20.0};

    vxlsync::addChannel(*frameOf<float>(AV_SAMPLE_FMT_FLT, {{1.0f, 2.0f}}), 0, 0, sums);

    EXPECT_THAT(sums, ElementsAre(11.0, 22.0));
}

TEST(MediaSamples, AreAsManyAsThereArePlaces)
{
    std::vector<double> sums(2);

    vxlsync::addChannel(*frameOf<float>(AV_SAMPLE_FMT_FLT, {{1.0f, 2.0f, 3.0f}}), 0, 0, sums);

    EXPECT_THAT(sums, ElementsAre(1.0, 2.0));
}

} // namespace
