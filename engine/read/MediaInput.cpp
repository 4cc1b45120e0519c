#include "read/MediaInput.h"

#include <algorithm>
#include <filesystem>
#include <new>

extern "C" {
#include <libavutil/avstring.h>
#include <libavutil/mem.h>
}

#include "read/Failure.h"
#include "read/MediaLists.h"

namespace vxlsync
{

namespace
{

// Bytes that are read at once.
constexpr int bufferBytes = 65536;

// Whatever a file refers to stays closed.
int refuseOpening(AVFormatContext* /*context*/, AVIOContext** /*opened*/, const char* /*url*/,
                  int /*flags*/, AVDictionary** /*settings*/)
{
    return AVERROR(EPERM);
}

// Some formats are known by the ending of the name alone, so that it is shown, and nothing more of
// the name, which the library would take apart for protocols and patterns.
std::string shownName(const std::string& path)
{
    constexpr std::size_t longestEnding = 8;
    const std::size_t dot = path.find_last_of("./\\");
    if (dot == std::string::npos || path[dot] != '.') return "sound";
    std::string name = "sound.";
    for (std::size_t i = dot + 1; i < path.size() && i <= dot + longestEnding; ++i) {
        if (av_isgraph(path[i]) != 0) name += path[i];
    }
    return name;
}

void freeDecoder(AVCodecContext* decoder)
{
    avcodec_free_context(&decoder);
}

} // namespace

void requireMemory(const void* memory)
{
    if (memory == nullptr) throw std::bad_alloc();
}

void MediaInput::FreeBytes::operator()(AVIOContext* stream) const
{
    av_freep(&stream->buffer);
    avio_context_free(&stream);
}

MediaInput::MediaInput(const ReadRequest& newRequest)
    : request(newRequest), file(newRequest.path), watch(newRequest.limits)
{
    prepare();
    open();
}

void MediaInput::prepare()
{
    auto* buffer = static_cast<unsigned char*>(av_malloc(bufferBytes));
    reader.reset(avio_alloc_context(buffer, bufferBytes, 0, this, &readBytes, nullptr, &seek));
    if (!reader) av_free(buffer);
    context.reset(avformat_alloc_context());
    requireMemory(reader.get());
    requireMemory(context.get());
    context->pb = reader.get();
    context->flags |= AVFMT_FLAG_CUSTOM_IO;
    context->interrupt_callback = {&isInterrupted, this};
    context->io_open = &refuseOpening;
    context->format_whitelist = av_strdup(allowedContainers());
    context->codec_whitelist = av_strdup(allowedCodecs());
    context->protocol_whitelist = av_strdup("none");
    requireMemory(context->format_whitelist);
    requireMemory(context->codec_whitelist);
    requireMemory(context->protocol_whitelist);
}

void MediaInput::open()
{
    // Frees the context where it fails.
    AVFormatContext* opened = context.release();
    const int result =
        avformat_open_input(&opened, shownName(request.path).c_str(), nullptr, nullptr);
    context.reset(opened);
    require(result, failures::unknownFormat);
    require(avformat_find_stream_info(context.get(), nullptr), failures::damaged);
}

void MediaInput::require(int result, const char* failure) const
{
    if (result >= 0) return;
    requireMoving();
    if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
    throw ReadFailure(failure);
}

void MediaInput::requireMoving() const
{
    request.interrupt.check();
    if (watch.isStalled()) throw ReadFailure(failures::stalled);
}

AVStream& MediaInput::chooseStream(int number)
{
    int chosen = -1;
    if (number == 0)
        chosen = av_find_best_stream(context.get(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    int audioStreams = 0;
    for (int i = 0; i < static_cast<int>(context->nb_streams); ++i) {
        const bool isAudio = context->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
        if (isAudio && ++audioStreams == number) chosen = i;
    }
    if (chosen < 0) throw ReadFailure(failures::noStream(number));
    for (int i = 0; i < static_cast<int>(context->nb_streams); ++i) {
        if (i != chosen) context->streams[i]->discard = AVDISCARD_ALL;
    }
    return *context->streams[chosen];
}

std::unique_ptr<AVCodecContext, void (*)(AVCodecContext*)>
MediaInput::openDecoder(const AVStream& stream)
{
    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    if (codec == nullptr || av_match_list(codec->name, allowedCodecs(), ',') <= 0)
        throw ReadFailure(failures::noDecoder);
    std::unique_ptr<AVCodecContext, void (*)(AVCodecContext*)> decoder(
        avcodec_alloc_context3(codec), &freeDecoder);
    requireMemory(decoder.get());
    require(avcodec_parameters_to_context(decoder.get(), stream.codecpar), failures::damaged);
    decoder->pkt_timebase = stream.time_base;
    require(avcodec_open2(decoder.get(), codec, nullptr), failures::damaged);
    return decoder;
}

int MediaInput::readBytes(void* input, std::uint8_t* out, int count)
{
    auto* self = static_cast<MediaInput*>(input);
    if (isInterrupted(input) != 0) return AVERROR_EXIT;
    const std::size_t got = self->file.read(self->position, out, static_cast<std::size_t>(count));
    if (got == 0) return AVERROR_EOF;
    self->position += static_cast<std::int64_t>(got);
    if (self->position > self->furthest) {
        self->furthest = self->position;
        self->watch.move();
    }
    return static_cast<int>(got);
}

// Asked for places from the start and for the size only.
std::int64_t MediaInput::seek(void* input, std::int64_t offset, int whence)
{
    auto* self = static_cast<MediaInput*>(input);
    if ((whence & AVSEEK_SIZE) != 0) return self->file.size();
    self->position = offset;
    return offset;
}

int MediaInput::isInterrupted(void* input)
{
    const auto* self = static_cast<const MediaInput*>(input);
    return self->request.interrupt.isRaised() || self->watch.isStalled() ? 1 : 0;
}

} // namespace vxlsync
