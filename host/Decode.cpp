#include "Decode.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

#include "FailureReason.h"

namespace vxlsync
{

namespace
{

// The refinement works at the recording's own rate up to this one: 16 kHz holds all that two
// microphones share, and costs a third of 48 kHz.
constexpr int greatestFineRate = 16000;
// Times in containers are rounded to as much as a millisecond and wander by a packet; what is
// longer is missing sound.
constexpr double smallestGapSeconds = 0.02;
// A longer jump is a clock that was set, not sound that was lost.
constexpr double greatestGapSeconds = 3600.0;
// Broken times must not fill the memory with silence.
constexpr double mostSilence = 6.0 * 3600.0;

struct CloseInput {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
struct FreeDecoder {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct FreePacket {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct FreeResampler {
    void operator()(SwrContext* context) const { swr_free(&context); }
};

std::string messageOf(int error)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof text);
    return text;
}

void require(int result)
{
    if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (result < 0) throw std::runtime_error(messageOf(result));
}

// One channel at one rate in, the same at another rate out.
class Resampler
{
public:
    Resampler(int newFrom, int newTo) : from(newFrom), to(newTo)
    {
        if (from == to) return;
        AVChannelLayout mono = AV_CHANNEL_LAYOUT_MONO;
        SwrContext* made = nullptr;
        require(swr_alloc_set_opts2(&made, &mono, AV_SAMPLE_FMT_FLT, to, &mono, AV_SAMPLE_FMT_FLT,
                                    from, 0, nullptr));
        context.reset(made);
        // The default engine lets through a tenth of what lies above half the new rate.
        require(av_opt_set_int(made, "resampler", SWR_ENGINE_SOXR, 0));
        require(av_opt_set_double(made, "precision", 20.0, 0));
        require(swr_init(made));
    }

    // A null input drains what the filter still holds.
    template <typename Sink>
    void run(const float* samples, std::size_t count, Sink&& sink)
    {
        if (!context) {
            if (samples != nullptr) sink(samples, count);
            return;
        }
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(samples);
        const std::uint8_t** in = samples == nullptr ? nullptr : &bytes;
        int left = static_cast<int>(count);
        for (;;) {
            auto* place = reinterpret_cast<std::uint8_t*>(buffer);
            const int made = swr_convert(context.get(), &place, bufferSize, in, left);
            require(made);
            if (made == 0) return;
            sink(buffer, static_cast<std::size_t>(made));
            if (made < bufferSize && in != nullptr) return;
            // What was given is taken up at once; the next rounds only fetch.
            left = 0;
        }
    }

private:
    static constexpr int bufferSize = 8192;

    int from;
    int to;
    std::unique_ptr<SwrContext, FreeResampler> context;
    float buffer[bufferSize] = {};
};

float sampleAt(const AVFrame& frame, int channel, int index)
{
    const auto format = static_cast<AVSampleFormat>(frame.format);
    const bool planar = av_sample_fmt_is_planar(format) != 0;
    const int channels = frame.ch_layout.nb_channels;
    const std::uint8_t* plane = frame.extended_data[planar ? channel : 0];
    const std::size_t at =
        planar ? static_cast<std::size_t>(index)
               : static_cast<std::size_t>(index) * static_cast<std::size_t>(channels) +
                     static_cast<std::size_t>(channel);
    switch (av_get_packed_sample_fmt(format)) {
    case AV_SAMPLE_FMT_U8:
        return static_cast<float>(plane[at] - 128) / 128.0F;
    case AV_SAMPLE_FMT_S16:
        return static_cast<float>(reinterpret_cast<const std::int16_t*>(plane)[at]) / 32768.0F;
    case AV_SAMPLE_FMT_S32:
        return static_cast<float>(reinterpret_cast<const std::int32_t*>(plane)[at]) / 2147483648.0F;
    case AV_SAMPLE_FMT_S64:
        return static_cast<float>(reinterpret_cast<const std::int64_t*>(plane)[at]) /
               9223372036854775808.0F;
    case AV_SAMPLE_FMT_FLT:
        return reinterpret_cast<const float*>(plane)[at];
    case AV_SAMPLE_FMT_DBL:
        return static_cast<float>(reinterpret_cast<const double*>(plane)[at]);
    default:
        return 0.0F;
    }
}

class Decoder
{
public:
    Decoder(Recording& newRecording, const DecodeOptions& newOptions)
        : recording(newRecording), options(newOptions)
    {
    }

    void run()
    {
        open();
        AVStream* stream = input->streams[streamIndex];
        const std::unique_ptr<AVPacket, FreePacket> packet(av_packet_alloc());
        const std::unique_ptr<AVFrame, FreeFrame> frame(av_frame_alloc());
        if (!packet || !frame) throw std::bad_alloc();
        int lastError = 0;
        for (;;) {
            const int got = av_read_frame(input.get(), packet.get());
            if (got == AVERROR(ENOMEM)) throw std::bad_alloc();
            if (got < 0) {
                if (got != AVERROR_EOF) lastError = got;
                break;
            }
            if (packet->stream_index == streamIndex) {
                // A packet that the decoder refuses is a gap; the times of the next ones tell how
                // long it is.
                const int sent = avcodec_send_packet(decoder.get(), packet.get());
                if (sent == AVERROR(ENOMEM)) throw std::bad_alloc();
                if (sent < 0) lastError = sent;
                receive(*frame, stream->time_base);
            }
            av_packet_unref(packet.get());
        }
        avcodec_send_packet(decoder.get(), nullptr);
        receive(*frame, stream->time_base);
        drain();
        if (!started && lastError < 0) throw std::runtime_error(messageOf(lastError));
        if (foundEightBit && signedVotes > unsignedVotes) readAsSigned = true;
    }

    // True if the bytes of an eight-bit file are signed against the rule of its format; run again
    // with setSigned then.
    bool looksSigned() const { return readAsSigned; }
    void setSigned() { signedBytes = true; }

private:
    void open()
    {
        const std::string obstacle = obstacleOf(recording.path);
        if (!obstacle.empty()) throw std::runtime_error(obstacle);
        // A path is a file, whatever it looks like, and a play list may not lead to the network.
        AVDictionary* settings = nullptr;
        require(av_dict_set(&settings, "protocol_whitelist", "file", 0));
        AVFormatContext* opened = nullptr;
        const std::string url = "file:" + recording.path;
        const int result = avformat_open_input(&opened, url.c_str(), nullptr, &settings);
        av_dict_free(&settings);
        require(result);
        input.reset(opened);
        require(avformat_find_stream_info(opened, nullptr));
        const AVCodec* codec = nullptr;
        if (options.stream == 0) {
            streamIndex = av_find_best_stream(opened, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
            if (streamIndex < 0) throw std::runtime_error("no audio stream");
        } else {
            int number = 0;
            for (unsigned int i = 0; i < opened->nb_streams && streamIndex < 0; ++i) {
                if (opened->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO &&
                    ++number == options.stream) {
                    streamIndex = static_cast<int>(i);
                }
            }
            if (streamIndex < 0)
                throw std::runtime_error("no audio stream " + std::to_string(options.stream));
        }
        AVStream* stream = opened->streams[streamIndex];
        codec = avcodec_find_decoder(stream->codecpar->codec_id);
        if (codec == nullptr) throw std::runtime_error("no decoder for its audio");
        decoder.reset(avcodec_alloc_context3(codec));
        if (!decoder) throw std::bad_alloc();
        require(avcodec_parameters_to_context(decoder.get(), stream->codecpar));
        decoder->pkt_timebase = stream->time_base;
        require(avcodec_open2(decoder.get(), codec, nullptr));
        for (unsigned int i = 0; i < opened->nb_streams; ++i) {
            if (static_cast<int>(i) != streamIndex) opened->streams[i]->discard = AVDISCARD_ALL;
        }
        foundEightBit = codec->id == AV_CODEC_ID_PCM_U8;
    }

    void receive(AVFrame& frame, AVRational timeBase)
    {
        while (avcodec_receive_frame(decoder.get(), &frame) >= 0) {
            take(frame, timeBase);
            av_frame_unref(&frame);
        }
    }

    void take(const AVFrame& frame, AVRational timeBase)
    {
        const int channels = frame.ch_layout.nb_channels;
        if (frame.nb_samples <= 0 || frame.sample_rate <= 0 || channels <= 0) return;
        if (frame.sample_rate != rate) restart(frame.sample_rate);

        const std::int64_t drop = place(frame, timeBase);
        if (drop >= frame.nb_samples) return;
        if (options.channel == DecodeOptions::Channel::numbered && options.channelNumber > channels)
            throw std::runtime_error("no channel " + std::to_string(options.channelNumber) +
                                     " among " + std::to_string(channels));
        const int first =
            options.channel == DecodeOptions::Channel::numbered ? options.channelNumber - 1 : 0;
        const int count = options.channel == DecodeOptions::Channel::mix ? channels : 1;
        block.clear();
        for (int i = static_cast<int>(drop); i < frame.nb_samples; ++i) {
            float sum = 0.0F;
            for (int channel = first; channel < first + count; ++channel)
                sum += value(frame, channel, i);
            const float mean = sum / static_cast<float>(count);
            // One broken sample of a float file must not spoil every transform it is part of.
            block.push_back(std::isfinite(mean) ? mean : 0.0F);
        }
        give(block.data(), block.size());
    }

    float value(const AVFrame& frame, int channel, int index)
    {
        const float sample = sampleAt(frame, channel, index);
        if (!foundEightBit) return sample;
        // Signed bytes read as unsigned ones lie about the ends of the range where they are quiet.
        if (std::fabs(sample) > 0.5F)
            ++signedVotes;
        else
            ++unsignedVotes;
        if (!signedBytes) return sample;
        return sample < 0.0F ? sample + 1.0F : sample - 1.0F;
    }

    // Fills the gap before the frame and returns how many of its samples are already there.
    std::int64_t place(const AVFrame& frame, AVRational timeBase)
    {
        const std::int64_t stamp = frame.best_effort_timestamp;
        if (stamp == AV_NOPTS_VALUE) {
            started = true;
            return 0;
        }
        // What lies before time 0 is what the encoder put in front, and no part of the file's time.
        const double fileStart = input->start_time == AV_NOPTS_VALUE || input->start_time < 0
                                     ? 0.0
                                     : static_cast<double>(input->start_time) / AV_TIME_BASE;
        const double time = static_cast<double>(stamp) * av_q2d(timeBase) - fileStart;
        const double expected = segmentStart + static_cast<double>(segmentSamples) / rate;
        // The start of the audio after that of the file is kept to the sample; later times are
        // believed only where they differ by more than their rounding.
        const double limit = started ? smallestGapSeconds : 0.5 / rate;
        const double gap = time - expected - shift;
        started = true;
        if (std::fabs(gap) <= limit) return 0;
        if (std::fabs(gap) > greatestGapSeconds || silence > mostSilence) {
            shift += gap;
            return 0;
        }
        const auto missing = static_cast<std::int64_t>(std::llround(gap * rate));
        if (missing < 0) return -missing;
        silence += gap;
        static const std::vector<float> nothing(4096, 0.0F);
        for (std::int64_t left = missing; left > 0;) {
            const std::int64_t part =
                std::min<std::int64_t>(left, static_cast<std::int64_t>(nothing.size()));
            give(nothing.data(), static_cast<std::size_t>(part));
            left -= part;
        }
        return 0;
    }

    void restart(int newRate)
    {
        drain();
        if (rate != 0) segmentStart += static_cast<double>(segmentSamples) / rate;
        rate = newRate;
        segmentSamples = 0;
        coarse = std::make_unique<Resampler>(rate, analysisRate);
        // The fine rate is that of the first frame; a later rate is brought to it.
        if (fineTarget == 0) {
            fineTarget = std::min(rate, greatestFineRate);
            recording.fineRate = std::max(fineTarget, analysisRate);
        }
        if (fineTarget > analysisRate) exact = std::make_unique<Resampler>(rate, fineTarget);
    }

    void give(const float* samples, std::size_t count)
    {
        coarse->run(samples, count, [this](const float* values, std::size_t number) {
            recording.samples.insert(recording.samples.end(), values, values + number);
        });
        if (exact) {
            exact->run(samples, count, [this](const float* values, std::size_t number) {
                recording.fine.append(values, number);
            });
        }
        segmentSamples += static_cast<std::int64_t>(count);
    }

    void drain()
    {
        if (coarse) {
            coarse->run(nullptr, 0, [this](const float* values, std::size_t number) {
                recording.samples.insert(recording.samples.end(), values, values + number);
            });
        }
        if (exact) {
            exact->run(nullptr, 0, [this](const float* values, std::size_t number) {
                recording.fine.append(values, number);
            });
        }
    }

    Recording& recording;
    const DecodeOptions& options;
    std::unique_ptr<AVFormatContext, CloseInput> input;
    std::unique_ptr<AVCodecContext, FreeDecoder> decoder;
    int streamIndex = -1;
    int rate = 0;
    int fineTarget = 0;
    std::unique_ptr<Resampler> coarse;
    std::unique_ptr<Resampler> exact;
    std::vector<float> block;
    // Seconds given before the present rate, and samples given since.
    double segmentStart = 0.0;
    std::int64_t segmentSamples = 0;
    // Seconds by which the file's clock was set on the way.
    double shift = 0.0;
    // Seconds of silence put into gaps.
    double silence = 0.0;
    bool started = false;
    bool foundEightBit = false;
    bool signedBytes = false;
    bool readAsSigned = false;
    std::int64_t signedVotes = 0;
    std::int64_t unsignedVotes = 0;
};

std::string nameOf(const std::string& path)
{
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

} // namespace

void silenceDecoders()
{
    av_log_set_level(AV_LOG_QUIET);
}

Recording decode(const std::string& path, const DecodeOptions& options)
{
    Recording recording;
    recording.path = path;
    recording.name = nameOf(path);
    try {
        Decoder decoder(recording, options);
        decoder.run();
        if (decoder.looksSigned()) {
            recording.samples.clear();
            recording.fine.clear();
            recording.notes.emplace_back("eight-bit samples are signed");
            Decoder again(recording, options);
            again.setSigned();
            again.run();
        }
    } catch (const std::runtime_error& error) {
        recording.samples.clear();
        recording.fine.clear();
        recording.failure = error.what();
    }
    return recording;
}

} // namespace vxlsync
