#include <cstdint>
#include <fstream>
#include <functional>
#include <memory>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include <unistd.h>

#include <gtest/gtest.h>

#include "Clean.h"
#include "Limits.h"
#include "Outcome.h"
#include "VXFile.h"
#include "VXLandmarkExtract.h"
#include "Wave.h"

// Files and sources that are beyond 32 bits, or say that they are.

namespace
{

using hostile::clean;
using hostile::Limits;
using hostile::noData;
using hostile::noFormat;
using hostile::Outcome;
using hostile::refused;
using hostile::tooLong;
using VXS::VXExtractParams;
using VXS::VXFile;
using VXS::VXLandmarkExtract;
using wave::Bytes;

// Files with a hole.

constexpr std::uint64_t gigabyte = std::uint64_t{1} << 30u;

// Bytes in one place of a file.
struct Piece {
    std::uint64_t place;
    Bytes bytes;
};

struct SparseRow {
    std::string name;
    std::vector<Piece> pieces;
    std::uint64_t length;
    Outcome outcome;
};

std::ostream& operator<<(std::ostream& stream, const SparseRow& row)
{
    return stream << row.name;
}

class HostileSparseFile : public testing::TestWithParam<SparseRow>
{
};

// False where the file system takes no such file.
bool writeSparse(const std::string& path, const SparseRow& row)
{
    std::ofstream stream(path, std::ios::binary);
    for (const Piece& piece : row.pieces) {
        stream.seekp(static_cast<std::streamoff>(piece.place));
        stream.write(reinterpret_cast<const char*>(piece.bytes.data()),
                     static_cast<std::streamsize>(piece.bytes.size()));
    }
    stream.close();
    return stream.good() && truncate(path.c_str(), static_cast<off_t>(row.length)) == 0;
}

Bytes formatClaiming(std::uint32_t size)
{
    Bytes bytes = wave::formatChunk(wave::Format());
    for (std::size_t i = 0; i < 4; ++i)
        bytes[4 + i] = static_cast<unsigned char>(size >> (8 * i) & 0xFFu);
    return bytes;
}

Bytes strangerClaiming(std::uint32_t size)
{
    Bytes bytes;
    wave::appendText(bytes, "LIST");
    wave::append32(bytes, size);
    return bytes;
}

Bytes cleanChunks()
{
    Bytes bytes = wave::formatChunk(wave::Format());
    wave::append(bytes, wave::chunk("data", wave::samples16(hostile::cleanSamples16())));
    return bytes;
}

Bytes cleanData()
{
    return wave::chunk("data", wave::samples16(hostile::cleanSamples16()));
}

std::vector<SparseRow> sparseRows()
{
    constexpr std::uint64_t most = 0xFFFFFFFFu;
    constexpr std::uint64_t length = 5 * gigabyte;
    const Bytes start = wave::riffStart();
    const Bytes format = wave::formatChunk(wave::Format());
    const Bytes most32 = strangerClaiming(0xFFFFFFFFu);
    // The format chunk takes bytes 12 to 35, and the head of a chunk 8 bytes.
    return {
        {"DataBehindAChunkOf4GiB",
         {{0, start}, {12, format}, {36, most32}, {44 + most, cleanData()}},
         length,
         clean()},
        {"FormatBehindAChunkOf4GiB",
         {{0, start}, {12, most32}, {20 + most, cleanChunks()}},
         length,
         clean()},
        // 0 - 16 is 0xFFFFFFF0 behind the fields.
        {"DataWhereAFormatOf0BytesEnds",
         {{0, start}, {12, formatClaiming(0)}, {36 + std::uint64_t{0xFFFFFFF0u}, cleanData()}},
         length,
         clean()},
        {"DataBehindAFormatOf4GiB",
         {{0, start}, {12, formatClaiming(0xFFFFFFFFu)}, {36 + most - 16, cleanData()}},
         length,
         clean()},
        {"NothingBehindAChunkOf4GiB",
         {{0, start}, {12, format}, {36, most32}},
         44 + most,
         refused(noData)},
        {"NoFormatBehindAChunkOf4GiB", {{0, start}, {12, most32}}, 20 + most, refused(noFormat)},
        {"HoleBehindTheSamples", {{0, hostile::cleanFile()}}, length, clean()},
        {"HoleThatTheDataClaims",
         {{0, wave::fileClaiming(wave::Format(), 0xFFFFFFFFu, {1, 2, 3, 4})}},
         length,
         tooLong(0x7FFFFFFFu)},
    };
}

// Sources that claim the most.

struct ClaimRow {
    std::string name;
    // In the 44 bytes of a header, with 4 GiB less a byte of data and no sample.
    std::uint32_t bits;
    // 4294967295 / (bits / 8) / 256 + 512 / 256 - 1.
    std::uint32_t frames;
};

std::ostream& operator<<(std::ostream& stream, const ClaimRow& row)
{
    return stream << row.name;
}

class HostileClaim : public testing::TestWithParam<ClaimRow>
{
};

// What such a claim may cost: a list for each frame.
constexpr Limits claimLimits = {20.0, gigabyte};

std::string writeClaim(const wave::TempFolder& folder, const ClaimRow& row)
{
    return folder.write("take.wav",
                        wave::fileClaiming(wave::format(1, 1, row.bits), 0xFFFFFFFFu, {}));
}

} // namespace

TEST_P(HostileSparseFile, HasItsOutcome)
{
    const wave::TempFolder folder;
    const std::string path = folder / "take.wav";
    if (!writeSparse(path, GetParam())) GTEST_SKIP() << "the file system takes no file of 5 GiB";

    hostile::withinLimits([&] { hostile::expectOutcome(path, GetParam().outcome); });
}

INSTANTIATE_TEST_SUITE_P(Hole, HostileSparseFile, testing::ValuesIn(sparseRows()),
                         [](const testing::TestParamInfo<SparseRow>& row) {
                             return row.param.name;
                         });

TEST_P(HostileClaim, OfAHeaderIsSilenceInEachFrame)
{
    if (!hostile::isMeasured()) GTEST_SKIP() << "takes minutes in a slow build";
    const wave::TempFolder folder;
    const std::string path = writeClaim(folder, GetParam());

    hostile::withinLimits(claimLimits, [&] {
        VXLandmarkExtract extractor{VXExtractParams()};
        const std::unique_ptr<VXFile> file(extractor.run(path, 1));

        ASSERT_NE(nullptr, file);
        EXPECT_TRUE(file->getLandmarkMap().empty());
        EXPECT_EQ(GetParam().frames, extractor.frames->size());
        hostile::expectUsable(extractor);
    });
}

TEST_P(HostileClaim, BeyondTheMemoryThrowsBadAlloc)
{
    if (!hostile::refusesMemory()) GTEST_SKIP() << "nothing limits the memory here";
    const wave::TempFolder folder;
    const std::string path = writeClaim(folder, GetParam());

    hostile::withinLimits([&] {
        VXLandmarkExtract extractor{VXExtractParams()};

        EXPECT_THROW(delete extractor.run(path, 1), std::bad_alloc);

        // Lets go of the frames that memory sufficed for.
        const std::unique_ptr<VXFile> nothing(extractor.run(nullptr, 1));
        hostile::expectUsable(extractor);
    });
}

INSTANTIATE_TEST_SUITE_P(Header, HostileClaim,
                         testing::ValuesIn(std::vector<ClaimRow>{{"Of8Bits", 8, 16777216},
                                                                 {"Of16Bits", 16, 8388608},
                                                                 {"Of32Bits", 32, 4194304}}),
                         [](const testing::TestParamInfo<ClaimRow>& row) {
                             return row.param.name;
                         });

TEST(HostileSourceClaim, OfASourceIsSilenceInEachFrame)
{
    if (!hostile::isMeasured()) GTEST_SKIP() << "takes minutes in a slow build";

    hostile::withinLimits(claimLimits, [] {
        signals::SignalInput source(signals::silence(0), 0xFFFFFFFFu);
        VXLandmarkExtract extractor{VXExtractParams()};
        const std::unique_ptr<VXFile> file(extractor.run(&source, 1));

        EXPECT_TRUE(file->getLandmarkMap().empty());
        // 4294967295 / 256 = 16777215.996, so 16777215 + 2 - 1 frames.
        EXPECT_EQ(16777216u, extractor.frames->size());
        hostile::expectUsable(extractor);
    });
}

TEST(HostileSourceClaim, OfASourceBeyondTheMemoryThrowsBadAlloc)
{
    if (!hostile::refusesMemory()) GTEST_SKIP() << "nothing limits the memory here";

    hostile::withinLimits([] {
        signals::SignalInput source(signals::silence(0), 0xFFFFFFFFu);
        VXLandmarkExtract extractor{VXExtractParams()};

        EXPECT_THROW(delete extractor.run(&source, 1), std::bad_alloc);

        // Lets go of the frames that memory sufficed for.
        const std::unique_ptr<VXFile> nothing(extractor.run(nullptr, 1));
        hostile::expectUsable(extractor);
    });
}

// Hop 1 makes a frame of every sample: 4294967295 + 512 - 1 do not fit 32 bits.
TEST(HostileSourceClaim, OfMoreFramesThan32BitsThrowsLengthError)
{
    hostile::withinLimits([] {
        VXExtractParams params;
        params.setHopSize(1);
        signals::SignalInput source(signals::silence(0), 0xFFFFFFFFu);
        VXLandmarkExtract extractor(params);

        EXPECT_THROW(delete extractor.run(&source, 1), std::length_error);

        extractor.params.setHopSize(256);
        hostile::expectUsable(extractor);
    });
}
