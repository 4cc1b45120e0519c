#include "read/Track.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vxlsync
{

namespace
{

// The refinement works at the recording's own rate up to this one: 16 kHz holds all that two
// microphones share, and costs a third of 48 kHz.
constexpr int greatestFineRate = 16000;
// Longer silence is not fed sample by sample. It must hold both ends that are.
constexpr std::int64_t longestFedSilenceSeconds = 3;
// The part of a second for which the filter hears silence before and after what is skipped: ten
// times as long as it rings.
constexpr std::int64_t ringShare = 4;

} // namespace

int fineRateOf(int sampleRate)
{
    return std::clamp(sampleRate, analysisRate, greatestFineRate);
}

template <typename Stored>
void Lane<Stored>::open(int sourceRate)
{
    resampler = std::make_unique<Resampler>(sourceRate, rate);
}

template <typename Stored>
void Lane<Stored>::append(const float* samples, std::size_t count)
{
    resampler->run(samples, count,
                   [this](const float* made, std::size_t number) { store.append(made, number); });
}

template <typename Stored>
void Lane<Stored>::close(double seconds)
{
    const auto end = static_cast<std::size_t>(std::llround(seconds * rate));
    resampler->drain([&](const float* made, std::size_t number) {
        store.append(made, std::min(number, end - std::min(end, store.size())));
    });
    store.appendSilence(end - std::min(end, store.size()));
}

template <typename Stored>
void Lane<Stored>::skip(std::size_t seconds)
{
    store.appendSilence(seconds * static_cast<std::size_t>(rate));
}

template class Lane<float>;
template class Lane<std::uint16_t>;

void Track::setRate(int newRate)
{
    if (rate == 0) {
        recording.fineRate = fineRateOf(newRate);
        coarse = std::make_unique<Lane<float>>(recording.samples, analysisRate);
        if (recording.fineRate > analysisRate)
            fine = std::make_unique<Lane<std::uint16_t>>(recording.fine, recording.fineRate);
    } else {
        bridgeSilence();
        closeStretch();
    }
    rate = newRate;
    coarse->open(rate);
    if (fine) fine->open(rate);
}

void Track::append(const float* samples, std::size_t count)
{
    if (std::all_of(samples, samples + count, [](float sample) { return sample == 0.0f; })) {
        silence += static_cast<std::int64_t>(count);
        return;
    }
    bridgeSilence();
    feed(samples, count);
}

void Track::finish()
{
    if (rate == 0) return;
    bridgeSilence();
    closeStretch();
}

void Track::feed(const float* samples, std::size_t count)
{
    coarse->append(samples, count);
    if (fine) fine->append(samples, count);
    stretchSamples += static_cast<std::int64_t>(count);
}

void Track::feedSilence(std::int64_t count)
{
    static constexpr std::array<float, 4096> zeros{};
    while (count > 0) {
        const auto part = std::min(count, static_cast<std::int64_t>(zeros.size()));
        feed(zeros.data(), static_cast<std::size_t>(part));
        count -= part;
    }
}

// Feeds the silence that was put off. Of a long one only the ends are fed: what lies between is
// whole seconds, and begins a whole second after its stretch did, because there the samples of all
// rates meet, and what follows lies to the kept samples as it would have without the leap.
void Track::bridgeSilence()
{
    std::int64_t left = silence;
    silence = 0;
    if (left > longestFedSilenceSeconds * rate) {
        const std::int64_t ring = rate / ringShare;
        const std::int64_t lead = ring + (rate - (stretchSamples + ring) % rate) % rate;
        feedSilence(lead);
        closeStretch();
        const std::int64_t seconds = (left - lead - ring) / rate;
        coarse->skip(static_cast<std::size_t>(seconds));
        if (fine) fine->skip(static_cast<std::size_t>(seconds));
        stretchStart += static_cast<double>(seconds);
        left -= lead + seconds * rate;
    }
    feedSilence(left);
}

void Track::closeStretch()
{
    stretchStart += static_cast<double>(stretchSamples) / rate;
    stretchSamples = 0;
    coarse->close(stretchStart);
    if (fine) fine->close(stretchStart);
}

} // namespace vxlsync
