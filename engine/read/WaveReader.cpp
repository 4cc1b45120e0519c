#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "read/Failure.h"
#include "read/InputFile.h"
#include "read/LittleEndian.h"
#include "read/Reader.h"
#include "read/WaveFacts.h"
#include "read/WaveHeader.h"

namespace vxlsync
{

namespace
{

constexpr std::size_t bytesAtOnce = 65536;
// Full scale is from -1 to 1.
double integerSample(const unsigned char* bytes, std::size_t count)
{
    // Bytes alone are unsigned.
    if (count == 1) return (static_cast<double>(bytes[0]) - 128.0) / 128.0;
    const std::uint64_t top = littleEndian(bytes, count) << (64U - 8U * count);
    constexpr double fullScale = 9223372036854775808.0;
    return static_cast<double>(static_cast<std::int64_t>(top)) / fullScale;
}

double realSample(const unsigned char* bytes, std::size_t count)
{
    const std::uint64_t bits = littleEndian(bytes, count);
    if (count == sizeof(float)) {
        const auto half = static_cast<std::uint32_t>(bits);
        float sample = 0.0f;
        std::memcpy(&sample, &half, sizeof sample);
        return sample;
    }
    double sample = 0.0;
    std::memcpy(&sample, &bits, sizeof sample);
    return sample;
}

class WaveFile
{
public:
    explicit WaveFile(const ReadRequest& newRequest)
        : request(newRequest), file(newRequest.path), header(headerOf(file))
    {
    }

    ReadFindings readInto(Intake& intake)
    {
        if (request.options.stream > 1)
            throw ReadFailure(failures::noStream(request.options.stream));
        const ChannelRange channels = channelsOf(request.options, header.channels);
        intake.setRate(header.rate);
        const std::int64_t held = file.size() - header.dataStart;
        const bool isOpen = header.dataBytes == WaveHeader::runsToTheEnd;
        const std::int64_t given = isOpen ? held : std::min(header.dataBytes, held);
        giveFrames(intake, channels, given / static_cast<std::int64_t>(header.frameBytes()));

        ReadFindings findings;
        findings.bytesLookSigned = !request.takesBytesAsSigned && votes.areSigned();
        findings.facts = waveFactsOf(file, header);
        findings.facts.stream = 1;
        findings.facts.channel = channels.number();
        if (!isOpen) findings.facts.fileSeconds = header.statedSeconds();
        if (header.statedSeconds() - intake.seconds() > shortestLossSeconds)
            findings.notes.push_back(notes::endsEarly(intake.seconds(), header.statedSeconds()));
        return findings;
    }

private:
    static WaveHeader headerOf(const InputFile& file)
    {
        const std::optional<WaveHeader> header = findWaveHeader(file);
        if (!header) throw ReadFailure(failures::notWave);
        return *header;
    }

    void giveFrames(Intake& intake, ChannelRange channels, std::int64_t frames)
    {
        const std::size_t frameBytes = header.frameBytes();
        std::vector<unsigned char> bytes(std::max<std::size_t>(1, bytesAtOnce / frameBytes) *
                                         frameBytes);
        const auto framesAtOnce = static_cast<std::int64_t>(bytes.size() / frameBytes);
        std::vector<double> samples;
        for (std::int64_t done = 0; done < frames; done += framesAtOnce) {
            const auto part = static_cast<std::size_t>(std::min(framesAtOnce, frames - done));
            const std::size_t got =
                file.read(header.dataStart + done * static_cast<std::int64_t>(frameBytes),
                          bytes.data(), part * frameBytes);
            samples.clear();
            for (std::size_t frame = 0; frame < got / frameBytes; ++frame)
                samples.push_back(meanOf(bytes.data() + frame * frameBytes, channels));
            intake.append(samples.data(), samples.size());
        }
    }

    double meanOf(const unsigned char* frame, ChannelRange channels)
    {
        double sum = 0.0;
        for (int channel = channels.first; channel < channels.first + channels.count; ++channel)
            sum += sampleAt(frame + static_cast<std::size_t>(channel) * header.sampleBytes);
        return sum / channels.count;
    }

    double sampleAt(const unsigned char* bytes)
    {
        if (header.coding == WaveHeader::Coding::real) return realSample(bytes, header.sampleBytes);
        const double sample = integerSample(bytes, header.sampleBytes);
        if (header.sampleBytes > 1) return sample;
        votes.count(sample);
        return request.takesBytesAsSigned ? asSigned(sample) : sample;
    }

    const ReadRequest request;
    const InputFile file;
    const WaveHeader header;
    ByteVotes votes;
};

} // namespace

#ifndef VXL_SYNC_FFMPEG

bool readsAnyMedia()
{
    return false;
}

// There are none.
void silenceDecoders() {}
void boundDecoders() {}

#endif

ReadFindings readWave(const ReadRequest& request, Intake& intake)
{
    return WaveFile(request).readInto(intake);
}

} // namespace vxlsync
