#include "read/MediaFacts.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>

#include "read/FactFields.h"

namespace vxlsync
{

namespace
{

using Keys = std::initializer_list<const char*>;

// The first of these tags that says something.
std::string textOf(const AVDictionary* tags, Keys keys)
{
    for (const char* key : keys) {
        const AVDictionaryEntry* entry = av_dict_get(tags, key, nullptr, 0);
        if (entry == nullptr) continue;
        std::string text = factText(entry->value);
        if (!text.empty()) return text;
    }
    return "";
}

// Of the whole file, or else of the first stream that has it.
std::string textOf(const AVFormatContext& file, Keys keys)
{
    std::string text = textOf(file.metadata, keys);
    for (unsigned int i = 0; i < file.nb_streams && text.empty(); ++i)
        text = textOf(file.streams[i]->metadata, keys);
    return text;
}

// Times with a zone come first: where a file has both, the other one may be that of a copy.
// Recorders' files have the date and the time of day apart.
std::optional<DateTime> creationOf(const AVFormatContext& file)
{
    for (const char* key : {"com.apple.quicktime.creationdate", "creation_time", "date"}) {
        if (const auto time = parseDateTime(textOf(file, {key}))) return time;
    }
    return parseDateTime(textOf(file, {"date"}) + ' ' + textOf(file, {"creation_time"}));
}

// True for the software of phones that notes the time when it closes a file.
bool notesTheEnd(const AVFormatContext& file)
{
    return !textOf(file, {"com.android.version", "com.android.manufacturer", "com.android.model"})
                .empty();
}

std::optional<FrameRate> rateOf(const AVRational& rate)
{
    constexpr double slowest = 1.0;
    constexpr double fastest = 1000.0;
    const FrameRate found{rate.num, rate.den};
    // A denominator of 0 makes no rate within the bounds.
    if (found.numerator <= 0 || found.perSecond() < slowest || found.perSecond() > fastest)
        return std::nullopt;
    return found;
}

// Null if there is none. The cover of a song is no picture.
const AVStream* pictureOf(const AVFormatContext& file)
{
    for (unsigned int i = 0; i < file.nb_streams; ++i) {
        const AVStream& stream = *file.streams[i];
        if (stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
            (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0)
            return &stream;
    }
    return nullptr;
}

void addPicture(const AVFormatContext& file, FileFacts& facts)
{
    const AVStream* picture = pictureOf(file);
    if (picture == nullptr) return;
    facts.frameRate = rateOf(picture->avg_frame_rate);
    if (!facts.frameRate) facts.frameRate = rateOf(picture->r_frame_rate);
    // Less than any time where the file does not say it; what lies before time 0 is not shown.
    const std::int64_t fileStart = std::max<std::int64_t>(0, file.start_time);
    const double start = static_cast<double>(picture->start_time) * av_q2d(picture->time_base) -
                         static_cast<double>(fileStart) / AV_TIME_BASE;
    facts.pictureStart = std::max(0.0, start);
}

// The timecode, with the rate of the stream that has it, or else of the picture.
void addTimecode(const AVFormatContext& file, FileFacts& facts)
{
    facts.timecode = textOf(file.metadata, {"timecode"});
    std::optional<FrameRate> rate = facts.frameRate;
    for (unsigned int i = 0; i < file.nb_streams && facts.timecode.empty(); ++i) {
        const AVStream& stream = *file.streams[i];
        facts.timecode = textOf(stream.metadata, {"timecode"});
        const std::optional<FrameRate> own = rateOf(stream.avg_frame_rate);
        if (!facts.timecode.empty() && own) rate = own;
    }
    // Whatever else is in there is no timecode, and is told to no one.
    if (facts.timecode.find_first_not_of("0123456789:;.,") != std::string::npos)
        facts.timecode.clear();
    const std::optional<DayTime> named =
        rate ? dayTimeOf(facts.timecode, *rate) : std::optional<DayTime>();
    if (named) facts.started = named;
}

// What recorders write into WAV files. The library gives their name under the key of those who
// encode songs, so that it is believed only beside a time that recorders alone write.
void addBroadcast(const AVFormatContext& file, const AVStream& sound, FileFacts& facts)
{
    const std::string samples = textOf(file, {"time_reference"});
    if (samples.empty()) return;
    facts.originator = textOf(file, {"encoded_by"});
    facts.originatorReference = textOf(file, {"originator_reference"});
    constexpr int decimal = 10;
    setTimeReference(std::strtoull(samples.c_str(), nullptr, decimal), sound.codecpar->sample_rate,
                     facts);
}

int numberOf(const AVFormatContext& file, const AVStream& sound)
{
    int number = 0;
    for (int i = 0; i <= sound.index; ++i)
        number += file.streams[i]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO ? 1 : 0;
    return number;
}

} // namespace

FileFacts mediaFactsOf(const AVFormatContext& file, const AVStream& sound)
{
    FileFacts facts;
    facts.make = textOf(file, {"make", "com.apple.quicktime.make", "com.android.manufacturer",
                               "manufacturer", "maker", "company_name"});
    facts.model =
        textOf(file, {"model", "com.apple.quicktime.model", "com.android.model", "product_name"});
    facts.serialNumber =
        textOf(file, {"serial_number", "camera_serial_number", "serialnumber", "serial"});
    facts.encoder = textOf(file, {"encoder", "com.apple.quicktime.software"});
    facts.created = creationOf(file);
    facts.isCreatedAtEnd = notesTheEnd(file);
    addPicture(file, facts);
    addBroadcast(file, sound, facts);
    addTimecode(file, facts);
    // A guess from the size is none.
    const bool isGuess = file.duration_estimation_method == AVFMT_DURATION_FROM_BITRATE;
    const std::int64_t length = isGuess ? 0 : file.duration;
    if (length > 0) facts.fileSeconds = static_cast<double>(length) / AV_TIME_BASE;
    facts.stream = numberOf(file, sound);
    return facts;
}

} // namespace vxlsync
