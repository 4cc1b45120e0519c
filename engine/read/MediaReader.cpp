#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

extern "C" {
#include <libavutil/log.h>
#include <libavutil/mem.h>
}

#include "read/Failure.h"
#include "read/MediaFacts.h"
#include "read/MediaInput.h"
#include "read/MediaSamples.h"
#include "read/Reader.h"
#include "read/Timeline.h"
#include "read/WaveHeader.h"

namespace vxlsync
{

namespace
{

// The index of a day of sound and a raw picture of 8K take less.
constexpr std::size_t largestRequestBytes = 512u << 20u;

struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct FreePacket {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};

class MediaReader
{
public:
    MediaReader(const ReadRequest& newRequest, Intake& newIntake)
        : request(newRequest),
          intake(newIntake),
          input(newRequest),
          stream(input.chooseStream(newRequest.options.stream)),
          decoder(input.openDecoder(stream)),
          packet(av_packet_alloc()),
          frame(av_frame_alloc()),
          hasBytes(stream.codecpar->codec_id == AV_CODEC_ID_PCM_U8)
    {
        requireMemory(packet.get());
        requireMemory(frame.get());
        intake.limitSamples(mostSamples());
    }

    ReadFindings run()
    {
        int result = 0;
        while (result >= 0) {
            input.requireMoving();
            result = av_read_frame(&input.format(), packet.get());
            // An empty packet would be taken for the end.
            if (result >= 0 && packet->stream_index == stream.index && packet->size > 0) give();
            av_packet_unref(packet.get());
        }
        // Where it came to a stop, that was no end.
        input.requireMoving();
        decode(nullptr);
        if (framesTaken == 0 && (packetsGiven > 0 || result != AVERROR_EOF))
            throw ReadFailure(failures::undecodable);
        return findings();
    }

private:
    // What a byte can stand for: in what is not compressed as many samples as have room in it.
    // Twice that, for blocks whose headers hold samples too.
    std::int64_t mostSamples() const
    {
        const int bits = av_get_bits_per_sample(stream.codecpar->codec_id);
        if (bits > 0) return 2 * (input.bytes().size() * 8 / bits);
        return input.bytes().size() * request.limits.compressedSamplesPerByte;
    }

    void give()
    {
        ++packetsGiven;
        decode(packet.get());
    }

    // Null drains the decoder. A packet that it refuses is a gap; the times of the next ones tell
    // how long it is.
    void decode(const AVPacket* given)
    {
        int result = avcodec_send_packet(decoder.get(), given);
        while (result >= 0) {
            result = avcodec_receive_frame(decoder.get(), frame.get());
            if (result >= 0) take();
            av_frame_unref(frame.get());
        }
        if (result != AVERROR(EAGAIN) && result != AVERROR_EOF) ++undecodedPieces;
    }

    void take()
    {
        intake.setRate(frame->sample_rate);
        const FramePlace place =
            timeline.place(timeOf(*frame), intake.seconds(), frame->sample_rate, frame->nb_samples);
        intake.appendSilence(place.silence);
        const ChannelRange channels = channelsOf(request.options, frame->ch_layout.nb_channels);
        samples.assign(static_cast<std::size_t>(frame->nb_samples - place.dropped), 0.0);
        for (int channel = channels.first; channel < channels.first + channels.count; ++channel) {
            if (hasBytes)
                addBytes(channel, place.dropped);
            else
                addChannel(*frame, channel, place.dropped, samples);
        }
        for (double& sample : samples)
            sample /= channels.count;
        channelTaken = channels.number();
        intake.append(samples.data(), samples.size());
        input.move();
        ++framesTaken;
    }

    void addBytes(int channel, std::int64_t first)
    {
        bytes.assign(samples.size(), 0.0);
        addChannel(*frame, channel, first, bytes);
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            votes.count(bytes[i]);
            samples[i] += request.takesBytesAsSigned ? asSigned(bytes[i]) : bytes[i];
        }
    }

    // Seconds from the start of the file. Nothing before time 0 is part of it.
    std::optional<double> timeOf(const AVFrame& decoded) const
    {
        const std::int64_t stamp = decoded.best_effort_timestamp;
        if (stamp == AV_NOPTS_VALUE) return std::nullopt;
        // Less than any time, if the file has none.
        const std::int64_t start = std::max<std::int64_t>(0, input.format().start_time);
        return static_cast<double>(stamp) * av_q2d(stream.time_base) -
               static_cast<double>(start) / AV_TIME_BASE;
    }

    // CAF files whose packets are alike say how many samples they have, and nothing of time.
    bool hasFrameCount() const { return std::strcmp(input.format().iformat->name, "caf") == 0; }

    // What the file says of its length; nothing, or less, if it says nothing. A guess from its size
    // is none, and the length of a film is not that of its sound. Of what a WAV file says, the
    // library tells only what is there.
    double statedSeconds() const
    {
        if (const std::optional<WaveHeader> header = findWaveHeader(input.bytes()))
            return header->statedSeconds();
        const double unit = av_q2d(stream.time_base);
        if (input.format().duration_estimation_method == AVFMT_DURATION_FROM_BITRATE)
            return hasFrameCount() ? static_cast<double>(stream.nb_frames) * unit : 0.0;
        if (stream.duration != AV_NOPTS_VALUE) return static_cast<double>(stream.duration) * unit;
        return input.format().nb_streams == 1
                   ? static_cast<double>(input.format().duration) / AV_TIME_BASE
                   : 0.0;
    }

    ReadFindings findings() const
    {
        ReadFindings result;
        result.bytesLookSigned = hasBytes && !request.takesBytesAsSigned && votes.areSigned();
        result.facts = mediaFactsOf(input.format(), stream);
        result.facts.channel = channelTaken;
        result.notes = timeline.notes();
        if (undecodedPieces > 0) result.notes.push_back(notes::undecodedPieces(undecodedPieces));
        if (statedSeconds() - intake.seconds() > shortestLossSeconds)
            result.notes.push_back(notes::endsEarly(intake.seconds(), statedSeconds()));
        return result;
    }

    const ReadRequest request;
    Intake& intake;
    MediaInput input;
    const AVStream& stream;
    std::unique_ptr<AVCodecContext, void (*)(AVCodecContext*)> decoder;
    std::unique_ptr<AVPacket, FreePacket> packet;
    std::unique_ptr<AVFrame, FreeFrame> frame;
    // Its samples are eight-bit integers.
    bool hasBytes;
    Timeline timeline;
    ByteVotes votes;
    // From 1, or 0 for the mean of all.
    int channelTaken = 0;
    std::int64_t packetsGiven = 0;
    std::int64_t framesTaken = 0;
    std::int64_t undecodedPieces = 0;
    std::vector<double> samples;
    std::vector<double> bytes;
};

} // namespace

bool readsAnyMedia()
{
    return true;
}

void silenceDecoders()
{
    av_log_set_level(AV_LOG_QUIET);
}

void boundDecoders()
{
    av_max_alloc(largestRequestBytes);
}

ReadFindings readMedia(const ReadRequest& request, Intake& intake)
{
    return MediaReader(request, intake).run();
}

} // namespace vxlsync
