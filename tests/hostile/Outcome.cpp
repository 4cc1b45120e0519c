#include "Outcome.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "Clean.h"
#include "Console.h"
#include "VXFile.h"
#include "VXLandmarkExtract.h"
#include "plain/Reader.h"
#include "property/Bits.h"
#include "wavfile.h"

namespace hostile
{

namespace
{

constexpr unsigned int openForReading = 8;

// What a reader says, and nothing if it opens the file.
template <typename Open>
std::string messageOf(Open open)
{
    try {
        open();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

// Blocks that do not divide anything, from the start to past the end, and from the start again.
void expectSamplesOfPlainReader(const std::string& path)
{
    constexpr std::uint32_t blockSize = 257;
    constexpr std::uint32_t mostBlocks = 80;
    constexpr float untouched = 9.0f;
    VXS::wavfile_t library(path, openForReading, 1, 16000);
    plain::Reader plain(path);
    EXPECT_EQ(plain.channels, library.channels);
    EXPECT_EQ(plain.sampleRate, library.sampleRate);
    EXPECT_EQ(plain.frames(), library.frames);

    for (const int pass : {1, 2}) {
        const std::uint32_t blocks = std::min(library.frames / blockSize + 3, mostBlocks);
        for (std::uint32_t i = 0; i < blocks; ++i) {
            VXS::array<float> block(blockSize);
            std::fill(block.data, block.data + blockSize, untouched);
            std::vector<float> plainBlock(blockSize, untouched);
            EXPECT_TRUE(library.read_mono<float>(block));
            plain.read(plainBlock);
            ASSERT_TRUE(property::sameFloats(plainBlock.data(), block.data, blockSize))
                << "block " << i << " of pass " << pass;
        }
        library.rewind();
        plain.rewind();
    }
}

std::string reportOf(const std::string& path, const Outcome& outcome)
{
    if (!outcome.message.empty()) return "[ERROR]: Could not load: " + path + "\n";
    if (outcome.hasOtherRate) return "[ERROR]:" + path + " has an incorrect sample rate\n";
    return "";
}

Landmarks landmarksFor(const std::string& path, Sound sound, const VXS::VXExtractParams& params)
{
    if (sound == Sound::Clean) return cleanLandmarks();
    if (sound == Sound::None) return {};
    plain::Reader reader(path);
    return twinLandmarks(params, reader);
}

} // namespace

Outcome refused(const std::string& message)
{
    Outcome outcome;
    outcome.message = message;
    return outcome;
}

Outcome ofOtherRate()
{
    Outcome outcome;
    outcome.hasOtherRate = true;
    outcome.frames = cleanCount;
    return outcome;
}

Outcome clean()
{
    return {"", false, cleanCount, Sound::Clean};
}

Outcome silent(std::uint32_t frames)
{
    return {"", false, frames, Sound::None};
}

Outcome asTwin(std::uint32_t frames)
{
    return {"", false, frames, Sound::AsTwin};
}

Outcome tooLong(std::uint32_t frames)
{
    return {"", false, frames, Sound::NotSought};
}

void expectOutcome(const std::string& path, const Outcome& outcome,
                   const VXS::VXExtractParams& params)
{
    const bool isRefused = !outcome.message.empty();
    const bool isNull = isRefused || outcome.hasOtherRate;
    std::unique_ptr<VXS::wavfile_t> reader;
    EXPECT_EQ(isRefused ? "wavfile_t::wavfile_t() : " + outcome.message : "", messageOf([&] {
                  reader = std::make_unique<VXS::wavfile_t>(path, openForReading, 1, 16000);
              }));
    ASSERT_EQ(isRefused, reader == nullptr);
    if (!isRefused) {
        EXPECT_EQ(outcome.frames, reader->frames);
        expectSamplesOfPlainReader(path);
    }
    reader.reset();

    VXS::VXLandmarkExtract extractor(params);
    {
        const Console console;
        reader.reset(extractor.loadFile(path));
        EXPECT_EQ(isNull, reader == nullptr);
        EXPECT_EQ(reportOf(path, outcome), console.text());
        reader.reset();
    }
    if (outcome.sound != Sound::NotSought) expectRunOutcome(path, outcome, params);
}

void expectRunOutcome(const std::string& path, const Outcome& outcome,
                      const VXS::VXExtractParams& params)
{
    const bool isNull = !outcome.message.empty() || outcome.hasOtherRate;
    VXS::VXLandmarkExtract extractor(params);
    {
        const Console console;
        const std::unique_ptr<VXS::VXFile> file(extractor.run(path, 7));
        EXPECT_EQ(reportOf(path, outcome), console.text());
        ASSERT_EQ(isNull, file == nullptr);
        if (file != nullptr) {
            EXPECT_EQ(7, file->getFileID());
            EXPECT_EQ(landmarksFor(path, outcome.sound, params), signals::landmarksOf(*file));
        }
    }
    expectUsable(extractor);
}

} // namespace hostile
