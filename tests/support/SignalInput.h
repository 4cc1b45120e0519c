#ifndef VXS_TESTS_SUPPORT_SIGNALINPUT_H
#define VXS_TESTS_SUPPORT_SIGNALINPUT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "VXLandmarkExtract.h"

namespace signals
{

using Samples = std::vector<float>;

// A source over samples in memory. After the last sample it delivers nothing more. What a source
// does wrong takes the place of an operation, and falls back on deliver and goBack for the rest.
class SignalInput final : public VXS::VXInput
{
public:
    using Block = VXS::array<float>;

    explicit SignalInput(Samples newSamples)
        : samples(std::move(newSamples)), claimedFrames(static_cast<unsigned int>(samples.size()))
    {
    }
    SignalInput(Samples newSamples, unsigned int claim)
        : samples(std::move(newSamples)), claimedFrames(claim)
    {
    }

    unsigned int getFrames() override
    {
        note("getFrames");
        return onGetFrames ? onGetFrames() : claimedFrames;
    }
    bool read_mono(Block& block) override
    {
        ++reads;
        note("read_mono");
        return onRead ? onRead(block) : deliver(block);
    }
    bool rewind() override
    {
        note("rewind");
        return onRewind ? onRewind() : goBack();
    }

    bool deliver(Block& block)
    {
        const auto wanted = static_cast<std::size_t>(std::max(block.count(), 0));
        const std::size_t count = std::min(samples.size() - position, wanted);
        std::copy_n(samples.begin() + static_cast<std::ptrdiff_t>(position), count, block.data);
        position += count;
        return true;
    }
    bool goBack()
    {
        position = 0;
        return true;
    }

    // Gives each block other dimensions before it is filled.
    void resizeBlocks(std::int32_t dim0, std::int32_t dim1 = 1)
    {
        onRead = [this, dim0, dim1](Block& block) {
            block.resize(dim0, dim1, 1);
            std::fill(block.data, block.data + block.count(), 0.0f);
            return deliver(block);
        };
    }

    // Throws std::domain_error in the call of the given number, from 1, of the given operation.
    void throwIn(const std::string& operation, int turn)
    {
        onCall = [operation, turnsLeft = turn](const std::string& called) mutable {
            if (called == operation && --turnsLeft == 0) throw std::domain_error(operation);
        };
    }

    Samples samples;
    std::size_t position = 0;
    // What getFrames answers.
    unsigned int claimedFrames;
    int reads = 0;
    // The names of the operations in the order in which they were called, if they are kept.
    std::vector<std::string> calls;
    bool keepsCalls = false;

    std::function<unsigned int()> onGetFrames;
    std::function<bool(Block&)> onRead;
    std::function<bool()> onRewind;
    // Told the name of each operation before it is carried out.
    std::function<void(const std::string& operation)> onCall;

private:
    void note(const char* operation)
    {
        if (keepsCalls) calls.emplace_back(operation);
        if (onCall) onCall(operation);
    }
};

} // namespace signals

#endif
