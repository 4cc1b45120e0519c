#ifndef VXS_BENCH_RECORDINGS_H
#define VXS_BENCH_RECORDINGS_H

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "VXLandmarkExtract.h"

namespace bench
{

constexpr std::size_t sampleRate = 8000;
constexpr double cleanDecibels = 40.0;
constexpr double lightDecibels = 20.0;
constexpr double heavyDecibels = 5.0;
// Each recorder starts so much later than the one before.
constexpr double startStepInSeconds = 17.3;

// Samples of 16 bits as floats, not scaled.
using Samples = std::vector<float>;

// The music of the files, one after the other.
Samples readMusic(const std::vector<std::string>& paths);

// More music than there is: the whole of it again and again, each time at another speed, and so at
// another pitch. A mere loop would match itself at every turn.
Samples lengthen(const Samples& music, double seconds);

// The level of noise so many decibels below the event.
float noiseLevel(const Samples& event, double decibels);

// What one recorder hears of the event: the music at 0.7 of its level, with gaussian noise whose
// seed follows from the recorder's number.
class Recorder
{
public:
    // `event` is borrowed.
    Recorder(const Samples& event, double startInSeconds, float newNoiseLevel, std::size_t number);

    std::int16_t next();
    void restart();

private:
    const Samples* event;
    std::size_t start;
    std::size_t position = 0;
    std::uint32_t seed;
    std::mt19937 generator;
    std::normal_distribution<float> noise;
};

// A recording that is made while it is read, for jobs that would fill a disk.
class RecorderInput final : public VXS::VXInput
{
public:
    RecorderInput(const Recorder& newRecorder, double seconds);

    unsigned int getFrames() override { return static_cast<unsigned int>(count); }
    bool read_mono(VXS::array<float>& block) override;
    bool rewind() override;

private:
    Recorder recorder;
    std::size_t count;
    std::size_t position = 0;
};

void writeRecording(const std::string& path, Recorder recorder, double seconds);

// The files of a folder that end in ".wav" and start with the prefix, by name.
std::vector<std::string> wavesIn(const std::string& folder, const std::string& prefix);

} // namespace bench

#endif
