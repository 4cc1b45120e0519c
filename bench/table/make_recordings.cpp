// make_recordings MUSIC RECORDINGS: from the WAV files of one folder, the recordings that the table
// is measured on in another.

#include <cstddef>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

#include "Recordings.h"

namespace
{

void writeSet(const std::string& prefix, const bench::Samples& event, double seconds,
              double noiseDecibels)
{
    constexpr std::size_t recorders = 8;
    const float noise = bench::noiseLevel(event, noiseDecibels);
    for (std::size_t i = 0; i < recorders; ++i) {
        const bench::Recorder recorder(event, static_cast<double>(i) * bench::startStepInSeconds,
                                       noise, i);
        const std::string path = prefix + "00" + std::to_string(i) + ".wav";
        bench::writeRecording(path, recorder, seconds);
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s MUSIC RECORDINGS, two folders\n", argv[0]);
        return 2;
    }
    try {
        const bench::Samples music = bench::readMusic(bench::wavesIn(argv[1], ""));
        std::filesystem::create_directories(argv[2]);
        const std::string folder = std::string(argv[2]) + "/";
        writeSet(folder + "clean", music, 600.0, bench::cleanDecibels);
        writeSet(folder + "light", music, 600.0, bench::lightDecibels);
        writeSet(folder + "heavy", music, 600.0, bench::heavyDecibels);
        writeSet(folder + "hour", bench::lengthen(music, 3800.0), 3600.0, bench::heavyDecibels);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
