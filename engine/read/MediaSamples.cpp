#include "read/MediaSamples.h"

#include <cstddef>

extern "C" {
#include <libavutil/samplefmt.h>
}

namespace vxlsync
{

namespace
{

// Samples of one channel that lie `stride` apart.
struct Strided {
    const std::uint8_t* plane;
    std::size_t first;
    std::size_t stride;
};

template <typename Sample>
void add(const Strided& from, double zero, double fullScale, std::vector<double>& sums)
{
    const auto* samples = reinterpret_cast<const Sample*>(from.plane);
    std::size_t at = from.first;
    for (double& sum : sums) {
        sum += (static_cast<double>(samples[at]) - zero) / fullScale;
        at += from.stride;
    }
}

} // namespace

void addChannel(const AVFrame& frame, int channel, std::int64_t first, std::vector<double>& sums)
{
    const auto format = static_cast<AVSampleFormat>(frame.format);
    const bool isPlanar = av_sample_fmt_is_planar(format) != 0;
    const auto start = static_cast<std::size_t>(first);
    const auto channels = static_cast<std::size_t>(frame.ch_layout.nb_channels);
    const Strided from =
        isPlanar ? Strided{frame.extended_data[channel], start, 1}
                 : Strided{frame.extended_data[0],
                           start * channels + static_cast<std::size_t>(channel), channels};
    switch (av_get_packed_sample_fmt(format)) {
    case AV_SAMPLE_FMT_U8:
        return add<std::uint8_t>(from, 128.0, 128.0, sums);
    case AV_SAMPLE_FMT_S16:
        return add<std::int16_t>(from, 0.0, 32768.0, sums);
    case AV_SAMPLE_FMT_S32:
        return add<std::int32_t>(from, 0.0, 2147483648.0, sums);
    case AV_SAMPLE_FMT_FLT:
        return add<float>(from, 0.0, 1.0, sums);
    case AV_SAMPLE_FMT_DBL:
        return add<double>(from, 0.0, 1.0, sums);
    default:
        // The one that is left.
        return add<std::int64_t>(from, 0.0, 9223372036854775808.0, sums);
    }
}

} // namespace vxlsync
