#include "read/Intake.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "read/Failure.h"

namespace vxlsync
{

namespace
{

// Programs write integers of 16 bits as floats, which are worked with as they are. Beyond, sums of
// squares over whole recordings leave the range of a float.
constexpr double greatestPlausibleSample = 1e5;
// A device changes its rate when someone sets it; each change builds filters anew.
constexpr int mostRateChanges = 100;
// What the steps after reading hold at one time for a second in which something is heard:
// landmarks, 50 to 115 kB a second of noise and less for anything else. Phases, 20 kB, come when
// they are gone, and the prepared samples replace those read.
constexpr std::size_t laterBytesPerSoundSecond = 80'000;
// What a second costs in which nothing is heard: its places in the tables of blocks.
constexpr std::size_t bytesPerSecond = 128;

} // namespace

Intake::Intake(Recording& newRecording, Run& newRun, const ReadLimits& newLimits, double newGain)
    : recording(newRecording),
      run(newRun),
      limits(newLimits),
      gain(newGain),
      track(newRecording),
      mostSamples(std::numeric_limits<std::int64_t>::max())
{
}

Intake::~Intake()
{
    giveBackMemory();
}

void Intake::setRate(std::int64_t newRate)
{
    if (newRate == rate) return;
    if (newRate < leastSampleRate || newRate > greatestSampleRate)
        throw ReadFailure(failures::rateOutOfRange(newRate));
    if (++rateChanges > mostRateChanges) throw ReadFailure(failures::rateChanges);
    formerSeconds = seconds();
    samplesAtRate = 0;
    rate = static_cast<int>(newRate);
    // The recording's fine rate is part of what it needs, whether its samples are kept or not.
    track.setRate(rate);
}

double Intake::seconds() const
{
    if (rate == 0) return 0.0;
    return formerSeconds + static_cast<double>(samplesAtRate) / rate;
}

void Intake::append(const double* samples, std::size_t count)
{
    run.interrupt.check();
    samplesGiven += static_cast<std::int64_t>(count);
    if (samplesGiven > mostSamples)
        throw ReadFailure(failures::tooLong(static_cast<double>(mostSamples) / rate));
    const bool hasSound = clean(samples, count);
    const double from = seconds();
    advance(static_cast<std::int64_t>(count));
    if (hasSound) countSound(from, seconds());
    claimMemory();
    if (kept) track.append(cleaned.data(), cleaned.size());
}

void Intake::appendSilence(std::int64_t count)
{
    advance(count);
    if (kept) track.appendSilence(count);
}

void Intake::advance(std::int64_t count)
{
    samplesAtRate += count;
    if (seconds() > limits.longestSeconds)
        throw ReadFailure(failures::tooLong(limits.longestSeconds));
}

// Fills `cleaned`; true if anything is heard in it. One broken sample must not spoil every
// transform that it is part of.
bool Intake::clean(const double* samples, std::size_t count)
{
    cleaned.resize(count);
    std::int64_t sound = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const double sample = samples[i] * gain;
        const double size = std::fabs(sample);
        if (size <= greatestPlausibleSample) {
            cleaned[i] = static_cast<float>(sample);
            sound += size > 0.0 ? 1 : 0;
            continue;
        }
        cleaned[i] = 0.0f;
        if (std::isfinite(sample)) {
            ++odd.absurd;
            odd.peak = std::max(odd.peak, size);
        } else {
            ++odd.broken;
        }
    }
    odd.sound += sound;
    return sound > 0;
}

void Intake::countSound(double from, double to)
{
    const std::int64_t begin = std::max(static_cast<std::int64_t>(from), nextSecond);
    const std::int64_t end = static_cast<std::int64_t>(to) + 1;
    if (end <= begin) return;
    soundSeconds += end - begin;
    nextSecond = end;
}

std::size_t Intake::bytesNeeded() const
{
    std::size_t perSound = laterBytesPerSoundSecond + analysisRate * sizeof(float);
    if (recording.fineRate > analysisRate)
        perSound += static_cast<std::size_t>(recording.fineRate) * sizeof(std::uint16_t);
    return static_cast<std::size_t>(soundSeconds) * perSound +
           static_cast<std::size_t>(seconds()) * bytesPerSecond;
}

void Intake::claimMemory()
{
    const std::size_t needed = bytesNeeded();
    if (!kept || needed <= bytesTaken) return;
    if (run.memory.take(needed - bytesTaken))
        bytesTaken = needed;
    else
        drop();
}

void Intake::drop()
{
    kept = false;
    recording.samples.clear();
    recording.fine.clear();
    giveBackMemory();
}

void Intake::giveBackMemory()
{
    run.memory.giveBack(bytesTaken);
    bytesTaken = 0;
}

void Intake::finish()
{
    claimMemory();
    if (kept) {
        track.finish();
        measure();
    } else {
        recording.durationSeconds = seconds();
    }
    bytesTaken = 0;
}

// The sum goes through the blocks with sound only; the others change the mean and nothing else.
void Intake::measure()
{
    constexpr std::size_t blockSize = SampleStore<float>::blockSize;
    const std::size_t size = recording.samples.size();
    recording.durationSeconds = static_cast<double>(size) / analysisRate;
    std::vector<float> block(blockSize);
    double sum = 0.0;
    double squares = 0.0;
    for (std::size_t at = 0; at < size; at += blockSize) {
        const std::size_t count = std::min(blockSize, size - at);
        if (!recording.samples.hasSound(at, count)) continue;
        recording.samples.copy(at, count, block.data());
        for (std::size_t i = 0; i < count; ++i) {
            const double sample = block[i];
            sum += sample;
            squares += sample * sample;
        }
    }
    const double count = std::max(static_cast<double>(size), 1.0);
    recording.meanSquare = squares / count - (sum / count) * (sum / count);
}

} // namespace vxlsync
