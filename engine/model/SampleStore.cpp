#include "model/SampleStore.h"

#include <algorithm>
#include <cstring>

namespace vxlsync
{

namespace
{

void store(float sample, float& out)
{
    out = sample;
}

// Rounds to the nearest; a carry goes into the exponent, as it should.
void store(float sample, std::uint16_t& out)
{
    std::uint32_t bits = 0;
    std::memcpy(&bits, &sample, sizeof bits);
    out = static_cast<std::uint16_t>((bits + 0x8000U) >> 16U);
}

float load(float stored)
{
    return stored;
}

float load(std::uint16_t stored)
{
    const std::uint32_t bits = static_cast<std::uint32_t>(stored) << 16U;
    float sample = 0.0f;
    std::memcpy(&sample, &bits, sizeof sample);
    return sample;
}

bool isSilent(const float* samples, std::size_t count)
{
    return std::all_of(samples, samples + count, [](float sample) { return sample == 0.0f; });
}

} // namespace

template <typename Stored>
void SampleStore<Stored>::append(const float* samples, std::size_t count)
{
    while (count > 0) {
        const std::size_t at = length % blockSize;
        const std::size_t part = std::min(count, blockSize - at);
        if (at == 0) blocks.emplace_back();
        std::unique_ptr<Stored[]>& block = blocks.back();
        if (!block && !isSilent(samples, part)) {
            block = std::make_unique<Stored[]>(blockSize);
            ++heldBlocks;
        }
        if (block) {
            for (std::size_t i = 0; i < part; ++i)
                store(samples[i], block[at + i]);
        }
        length += part;
        samples += part;
        count -= part;
    }
}

template <typename Stored>
void SampleStore<Stored>::appendSilence(std::size_t count)
{
    length += count;
    blocks.resize((length + blockSize - 1) / blockSize);
}

template <typename Stored>
void SampleStore<Stored>::clear()
{
    *this = SampleStore();
}

template <typename Stored>
std::size_t SampleStore<Stored>::bytes() const
{
    return heldBlocks * blockSize * sizeof(Stored) + blocks.capacity() * sizeof blocks[0];
}

template <typename Stored>
bool SampleStore<Stored>::hasSound(std::size_t from, std::size_t count) const
{
    if (count == 0) return false;
    const auto begin = blocks.begin() + static_cast<std::ptrdiff_t>(from / blockSize);
    const auto end =
        blocks.begin() + static_cast<std::ptrdiff_t>((from + count - 1) / blockSize + 1);
    return std::any_of(begin, end, [](const auto& block) { return block != nullptr; });
}

template <typename Stored>
void SampleStore<Stored>::copy(std::size_t from, std::size_t count, float* out) const
{
    while (count > 0) {
        const std::size_t at = from % blockSize;
        const std::size_t part = std::min(count, blockSize - at);
        const std::unique_ptr<Stored[]>& block = blocks[from / blockSize];
        if (block) {
            for (std::size_t i = 0; i < part; ++i)
                out[i] = load(block[at + i]);
        } else {
            std::fill(out, out + part, 0.0f);
        }
        from += part;
        out += part;
        count -= part;
    }
}

template class SampleStore<float>;
template class SampleStore<std::uint16_t>;

} // namespace vxlsync
