// Samples and parameters through a VXInput, beside the plain twin; and sources that misbehave,
// after which the extractor must be as good as new.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>

#include "Bytes.h"
#include "Comparison.h"
#include "Harness.h"
#include "Sound.h"
#include "VXFile.h"
#include "VXLandmarkExtract.h"
#include "support/SignalInput.h"
#include "support/twin/Comparison.h"
#include "support/twin/Source.h"

namespace
{

using fuzz::Bytes;
using fuzz::require;
using fuzz::Samples;
using signals::SignalInput;

constexpr std::int64_t fileID = -7;
constexpr std::size_t mostSamples = 8000;

// What a source of a careless host may throw.
struct HostFailure {
};

// What a source does wrong, and at which of its calls.
struct Misdeed {
    explicit Misdeed(Bytes& bytes)
        : kind(bytes.below(12)),
          callsBefore(bytes.below(32)),
          isRepeated(bytes.oneIn(2)),
          blockSize(bytes.raw<std::int16_t>())
    {
    }

    std::uint32_t kind;
    std::uint32_t callsBefore;
    bool isRepeated;
    std::int16_t blockSize;
};

// Makes a source do it.
class Misbehaviour
{
public:
    Misbehaviour(SignalInput& newSource, const Misdeed& newMisdeed,
                 VXS::VXLandmarkExtract& newExtractor)
        : source(newSource), misdeed(newMisdeed), extractor(newExtractor)
    {
        source.onGetFrames = [this] { return claim(); };
        source.onRead = [this](VXS::array<float>& block) { return read(block); };
        source.onRewind = [this] { return rewind(); };
    }

private:
    unsigned int claim()
    {
        if (misdeed.kind == 0) throw HostFailure();
        if (misdeed.kind == 1) ++source.claimedFrames;
        return source.claimedFrames;
    }

    bool read(VXS::array<float>& block)
    {
        const bool isTime =
            misdeed.isRepeated ? calls >= misdeed.callsBefore : calls == misdeed.callsBefore;
        ++calls;
        if (!isTime) return source.deliver(block);
        switch (misdeed.kind) {
        case 2:
            throw HostFailure();
        case 3:
            throw std::runtime_error("the host's own");
        case 4:
            block.resize(std::max<std::int16_t>(misdeed.blockSize, 0), 1, 1);
            return false;
        case 5:
            block.resize(2, 3, 5);
            return source.deliver(block);
        case 6:
            shrinkToNothing(block);
            return true;
        case 7:
            runAnother();
            return source.deliver(block);
        case 8:
            return false;
        case 11:
            loseBlock(block, misdeed.blockSize);
            return false;
        case 10:
            runTheSame();
            return source.deliver(block);
        default:
            source.deliver(block);
            return false;
        }
    }

    bool rewind()
    {
        if (misdeed.kind == 9) throw HostFailure();
        return source.goBack() && misdeed.kind != 8;
    }

    // Leaves dimensions without a block, which the host overlooks.
    static void shrinkToNothing(VXS::array<float>& block)
    {
        try {
            block.resize(-1, 1, 1);
        } catch (const std::runtime_error&) {
        }
    }

    // As a resize leaves it that runs out of memory, which the host overlooks.
    static void loseBlock(VXS::array<float>& block, std::int16_t size)
    {
        delete[] block.data;
        block.data = nullptr;
        block.dim0 = 1;
        block.dim1 = size;
        block.dim2 = 1;
    }

    // Extracts from inside of an extraction.
    void runAnother()
    {
        const Samples silence(64, 0.0f);
        SignalInput other(silence, 6000);
        VXS::VXLandmarkExtract inner{VXS::VXExtractParams()};
        const std::unique_ptr<VXS::VXFile> file(inner.run(&other, 1));
        require(file->getLandmarkMap().empty(), "no landmarks of silence");
    }

    // What the outer extraction then gives is worth nothing, but it is safe.
    void runTheSame()
    {
        const Samples click(64, 0.5f);
        SignalInput other(click, 64);
        const std::unique_ptr<VXS::VXFile> file(extractor.run(&other, 2));
        require(file != nullptr, "a file from every run");
    }

    SignalInput& source;
    Misdeed misdeed;
    VXS::VXLandmarkExtract& extractor;
    std::uint32_t calls = 0;
};

void runMisbehaving(VXS::VXLandmarkExtract& extractor, const Samples& samples, std::uint32_t claim,
                    const Misdeed& misdeed)
{
    SignalInput source(samples, claim);
    const Misbehaviour misbehaviour(source, misdeed, extractor);
    try {
        const std::unique_ptr<VXS::VXFile> file(extractor.run(&source, fileID));
        require(file != nullptr, "a file from every run");
    } catch (const HostFailure&) {
    } catch (const std::runtime_error&) {
    } catch (const std::length_error&) {
    } catch (const std::bad_alloc&) {
    }
}

// Sizes that no memory holds, which the setters take: what comes is an empty file or an exception.
void runOversized(Bytes& bytes)
{
    VXS::VXExtractParams params;
    const std::uint32_t claim =
        bytes.pick({0u, 1u, 5000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu, 0xFFFFFE00u});
    if (bytes.oneIn(2)) {
        require(params.setFftSize(0x80000000u), "a transform of 2^31 samples is taken");
    } else {
        require(params.setHopSize(bytes.pick({0x80000000u, 0x80000001u, 0xFFFFFFFFu})),
                "a hop of over 2^31 samples is taken");
    }
    params.setMaxPairsPerPeak(bytes.raw<std::uint32_t>());
    params.initialFrames = bytes.pick({10u, 0u, 1u});
    VXS::VXLandmarkExtract extractor(params);
    const Samples samples = fuzz::soundOf(bytes, 100);
    for (int i = 0; i < 2; ++i) {
        SignalInput source(samples, claim);
        try {
            const std::unique_ptr<VXS::VXFile> file(extractor.run(&source, fileID));
            require(file->getLandmarkMap().empty(), "no landmarks of so few frames");
        } catch (const std::runtime_error&) {
        } catch (const std::length_error&) {
        } catch (const std::bad_alloc&) {
        }
    }
}

// What a source says that it has, beside what it has.
struct Claim {
    explicit Claim(Bytes& bytes) : kind(bytes.below(8)), number(bytes.raw<std::uint16_t>()) {}

    std::uint32_t of(std::size_t samples, std::uint32_t most) const
    {
        const auto honest = static_cast<std::uint32_t>(samples);
        const std::uint32_t claims[] = {honest, honest,      honest, honest,
                                        number, honest / 2u, most,   0u};
        return std::min(claims[kind], most);
    }

    std::uint32_t kind;
    std::uint32_t number;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Bytes bytes(data, size);
    const std::uint32_t way = bytes.below(16);
    if (way == 15) {
        runOversized(bytes);
        return 0;
    }
    const plain::Parameters parameters = fuzz::parametersOf(bytes);
    const Claim claims(bytes);
    const std::size_t blockSize = way == 14 ? bytes.byte() : 0;
    const bool isMisbehaving = way >= 8 && way < 14;
    Bytes none(nullptr, 0);
    const Misdeed misdeed(isMisbehaving ? bytes : none);
    const Samples samples = fuzz::soundOf(bytes, mostSamples);
    const std::uint32_t claim = claims.of(samples.size(), fuzz::affordableClaim(parameters));

    VXS::VXLandmarkExtract extractor(twins::toLibrary(parameters));
    if (isMisbehaving) runMisbehaving(extractor, samples, claim, misdeed);

    plain::Extractor twin(parameters);
    plain::Recording recording(fileID);
    twins::Source plainSource(samples, claim, blockSize);
    twin.run(plainSource, recording);

    SignalInput source(samples, claim);
    if (blockSize > 0) source.resizeBlocks(static_cast<std::int32_t>(blockSize));
    const std::unique_ptr<VXS::VXFile> file(extractor.run(&source, fileID));
    fuzz::requireSamePeaks(extractor, twin);
    fuzz::requireSameLandmarks(*file, recording);
    return 0;
}
