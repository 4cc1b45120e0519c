#include "read/Resampler.h"

#include <algorithm>
#include <stdexcept>

#include <soxr.h>

namespace vxlsync
{

namespace
{

// Samples that go in and come out at once: bounds the memory that the filter takes for itself, and
// the time between two questions whether to go on.
constexpr std::size_t samplesAtOnce = 4096;

void require(soxr_error_t error)
{
    if (error != nullptr) throw std::runtime_error("a sample rate that cannot be converted");
}

} // namespace

void Resampler::Delete::operator()(soxr* filter) const
{
    soxr_delete(filter);
}

Resampler::Resampler(int newFrom, int newTo) : from(newFrom), to(newTo)
{
    if (from == to) return;
    // 20 bits: what is let through lies at -120 dB.
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_20_BITQ, 0);
    soxr_error_t error = nullptr;
    state.reset(soxr_create(from, to, 1, &error, nullptr, &quality, nullptr));
    require(error);
    buffer.resize(samplesAtOnce);
}

void Resampler::run(const float* samples, std::size_t count, const Sink& sink)
{
    while (count > 0) {
        const std::size_t part = std::min(count, samplesAtOnce);
        std::size_t taken = part;
        if (state) {
            std::size_t made = 0;
            require(soxr_process(state.get(), samples, part, &taken, buffer.data(), buffer.size(),
                                 &made));
            sink(buffer.data(), made);
        } else {
            sink(samples, part);
        }
        samples += taken;
        count -= taken;
    }
}

void Resampler::drain(const Sink& sink)
{
    if (!state) return;
    std::size_t made = 0;
    do {
        require(
            soxr_process(state.get(), nullptr, 0, nullptr, buffer.data(), buffer.size(), &made));
        sink(buffer.data(), made);
    } while (made > 0);
    require(soxr_clear(state.get()));
}

} // namespace vxlsync
