#include "match/Prepared.h"

#include <algorithm>

#include "match/HighPass.h"
#include "model/Recording.h"
#include "running/Parallel.h"

namespace vxlsync
{

namespace
{

// One step in so many is quieter than the floor: few enough that the pauses of dense music do, and
// enough that a dropout does not.
constexpr std::size_t stepsPerFloor = 20;

double meanSquareOf(const std::vector<float>& samples)
{
    double sum = 0.0;
    for (const float sample : samples)
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    return sum / static_cast<double>(samples.size());
}

std::vector<float> energyOf(const SampleStore<float>& samples, int rate, const Interrupt& interrupt)
{
    std::vector<float> energy;
    std::vector<float> step(static_cast<std::size_t>(energyStepSeconds * rate));
    for (std::size_t at = 0; at + step.size() <= samples.size(); at += step.size()) {
        interrupt.check();
        if (!samples.hasSound(at, step.size())) {
            energy.push_back(0.0f);
            continue;
        }
        samples.copy(at, step.size(), step.data());
        energy.push_back(static_cast<float>(meanSquareOf(step)));
    }
    return energy;
}

double floorOf(std::vector<float> energy)
{
    if (energy.empty()) return 0.0;
    const auto quiet = energy.begin() + static_cast<std::ptrdiff_t>(energy.size() / stepsPerFloor);
    std::nth_element(energy.begin(), quiet, energy.end());
    return *quiet;
}

} // namespace

template <typename Stored>
Prepared prepare(const SampleStore<Stored>& samples, int rate, const Interrupt& interrupt)
{
    Prepared prepared;
    prepared.samples = highPassed(samples, rate, interrupt);
    prepared.rate = rate;
    prepared.energy = energyOf(prepared.samples, rate, interrupt);
    prepared.floor = floorOf(prepared.energy);
    return prepared;
}

template Prepared prepare(const SampleStore<float>& samples, int rate, const Interrupt& interrupt);
template Prepared prepare(const SampleStore<std::uint16_t>& samples, int rate,
                          const Interrupt& interrupt);

std::vector<Prepared> prepareAll(std::vector<SampleStore<float>> recordings, const Run& run)
{
    std::vector<Prepared> prepared(recordings.size());
    runParallel(recordings.size(), run.threads, [&](std::size_t index, std::size_t) {
        prepared[index] = prepare(recordings[index], analysisRate, run.interrupt);
        recordings[index].clear();
    });
    return prepared;
}

} // namespace vxlsync
