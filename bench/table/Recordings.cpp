#include "Recordings.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "wavfile.h"

namespace bench
{

namespace
{

constexpr float fullScale = 32768.0f;

double rootMeanSquare(const Samples& samples)
{
    double sum = 0.0;
    for (const float sample : samples)
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    return std::sqrt(sum / static_cast<double>(samples.size()));
}

void append(std::string& bytes, std::uint32_t value, int count)
{
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<char>((value >> (8 * i)) & 0xFFu));
}

} // namespace

Samples readMusic(const std::vector<std::string>& paths)
{
    Samples music;
    for (const std::string& path : paths) {
        VXS::wavfile_t file(path, 8, 0, 0);
        if (file.sampleRate != sampleRate) {
            throw std::runtime_error(path + ": sample rate " + std::to_string(file.sampleRate) +
                                     ", expected " + std::to_string(sampleRate));
        }
        VXS::array<float> block(static_cast<std::int32_t>(file.frames));
        file.read_mono(block);
        for (std::int32_t i = 0; i < block.count(); ++i)
            music.push_back(block.data[i] * fullScale);
    }
    return music;
}

Samples lengthen(const Samples& music, double seconds)
{
    const auto wanted = static_cast<std::size_t>(seconds * sampleRate);
    Samples longer;
    longer.reserve(wanted);
    for (const double speed : {1.0, 0.89, 1.12, 0.94, 1.06, 0.84, 1.19, 0.79}) {
        const auto count = static_cast<std::size_t>(static_cast<double>(music.size() - 1) / speed);
        for (std::size_t i = 0; i < count && longer.size() < wanted; ++i) {
            const double place = static_cast<double>(i) * speed;
            const auto before = static_cast<std::size_t>(place);
            const auto share = static_cast<float>(place - static_cast<double>(before));
            longer.push_back(music[before] + share * (music[before + 1] - music[before]));
        }
    }
    if (longer.size() < wanted) throw std::runtime_error("the music is too short for this job");
    return longer;
}

float noiseLevel(const Samples& event, double decibels)
{
    return static_cast<float>(rootMeanSquare(event) * std::pow(10.0, -decibels / 20.0));
}

Recorder::Recorder(const Samples& newEvent, double startInSeconds, float newNoiseLevel,
                   std::size_t number)
    : event(&newEvent),
      start(static_cast<std::size_t>(startInSeconds * sampleRate)),
      seed(static_cast<std::uint32_t>(number + 1)),
      generator(seed),
      noise(0.0f, newNoiseLevel)
{
}

std::int16_t Recorder::next()
{
    const float music = (*event)[(start + position) % event->size()];
    ++position;
    const float heard = music * 0.7f + noise(generator);
    return static_cast<std::int16_t>(std::clamp(heard, -fullScale, fullScale - 1.0f));
}

void Recorder::restart()
{
    position = 0;
    generator.seed(seed);
    noise.reset();
}

RecorderInput::RecorderInput(const Recorder& newRecorder, double seconds)
    : recorder(newRecorder), count(static_cast<std::size_t>(seconds * sampleRate))
{
}

bool RecorderInput::read_mono(VXS::array<float>& block)
{
    for (std::int32_t i = 0; i < block.count() && position < count; ++i, ++position)
        block.data[i] = static_cast<float>(recorder.next()) / fullScale;
    return true;
}

bool RecorderInput::rewind()
{
    position = 0;
    recorder.restart();
    return true;
}

void writeRecording(const std::string& path, Recorder recorder, double seconds)
{
    const auto count = static_cast<std::size_t>(seconds * sampleRate);
    const auto dataBytes = static_cast<std::uint32_t>(count * 2);
    std::string bytes = "RIFF";
    bytes.reserve(44 + dataBytes);
    append(bytes, 36 + dataBytes, 4);
    bytes += "WAVEfmt ";
    append(bytes, 16, 4);
    append(bytes, 1, 2);
    append(bytes, 1, 2);
    append(bytes, sampleRate, 4);
    append(bytes, sampleRate * 2, 4);
    append(bytes, 2, 2);
    append(bytes, 16, 2);
    bytes += "data";
    append(bytes, dataBytes, 4);
    for (std::size_t i = 0; i < count; ++i)
        append(bytes, static_cast<std::uint16_t>(recorder.next()), 2);
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    if (!file.flush()) throw std::runtime_error(path + ": cannot be written");
}

std::vector<std::string> wavesIn(const std::string& folder, const std::string& prefix)
{
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (entry.path().extension() == ".wav" && name.compare(0, prefix.size(), prefix) == 0) {
            paths.push_back(entry.path().string());
        }
    }
    std::sort(paths.begin(), paths.end());
    if (paths.empty()) throw std::runtime_error(folder + ": no WAV file " + prefix + "*");
    return paths;
}

} // namespace bench
