#include "read/MediaLists.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/avstring.h>
}

namespace
{

std::vector<std::string> namesOf(const char* list)
{
    std::istringstream stream(list);
    std::vector<std::string> names;
    for (std::string name; std::getline(stream, name, ',');)
        names.push_back(name);
    return names;
}

TEST(MediaLists, HoldNothingThatLeadsElsewhereOrMakesSoundByProgram)
{
    for (const char* name : {"hls",     "dash",       "concat",
                             "concatf", "sdp",        "rtsp",
                             "rtp",     "sap",        "imf",
                             "image2",  "lavfi",      "tty",
                             "vobsub",  "image2pipe", "ffmetadata",
                             "mlv",     "libopenmpt", "libmodplug",
                             "libgme",  "sbg",        "webm_dash_manifest"})
        EXPECT_EQ(av_match_list(name, vxlsync::allowedContainers(), ','), 0) << name;
    for (const char* name : {"wavesynth", "ffwavesynth", "h264", "png", "ass"})
        EXPECT_EQ(av_match_list(name, vxlsync::allowedCodecs(), ','), 0) << name;
}

TEST(MediaLists, HoldNothingThatIsKnownByItsNameAloneAndNoFormatsOfGames)
{
    for (const char* name :
         {"s16le", "u8", "f32le", "alaw", "mulaw", "data", "roq", "smk", "bink", "psxstr", "adx"})
        EXPECT_EQ(av_match_list(name, vxlsync::allowedContainers(), ','), 0) << name;
    for (const char* name : {"roq_dpcm", "smackaud", "binkaudio_dct", "adpcm_psx", "adpcm_adx"})
        EXPECT_EQ(av_match_list(name, vxlsync::allowedCodecs(), ','), 0) << name;
}

TEST(MediaLists, HoldWhatRecordersWrite)
{
    for (const char* name :
         {"wav", "mp3", "mov,mp4,m4a,3gp,3g2,mj2", "matroska,webm", "wv", "mpegts"})
        EXPECT_GT(av_match_list(name, vxlsync::allowedContainers(), ','), 0) << name;
    for (const char* name : {"pcm_s16le", "aac", "mp3float", "opus"})
        EXPECT_GT(av_match_list(name, vxlsync::allowedCodecs(), ','), 0) << name;
}

// A blank or a comma too many would make a name that FFmpeg never finds.
TEST(MediaLists, AreNamesWithCommasBetweenEachOnce)
{
    const auto isOfName = [](unsigned char letter) {
        return std::islower(letter) != 0 || std::isdigit(letter) != 0 || letter == '_';
    };
    for (const char* list : {vxlsync::allowedContainers(), vxlsync::allowedCodecs()}) {
        std::vector<std::string> names = namesOf(list);
        for (const std::string& name : names) {
            EXPECT_FALSE(name.empty()) << list;
            EXPECT_TRUE(std::all_of(name.begin(), name.end(), isOfName)) << name;
        }
        std::sort(names.begin(), names.end());
        EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end()) << list;
        EXPECT_NE(std::string(list).back(), ',');
    }
}

TEST(MediaLists, HoldNoContainersThatFfmpegOnlyWrites)
{
    for (const std::string& name : namesOf(vxlsync::allowedContainers())) {
        if (av_find_input_format(name.c_str()) != nullptr) continue;
        EXPECT_EQ(av_guess_format(name.c_str(), nullptr, nullptr), nullptr) << name;
    }
}

} // namespace
