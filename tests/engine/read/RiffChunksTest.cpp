#include "read/RiffChunks.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "Wave.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using vxlsync::InputFile;
using vxlsync::RiffChunk;

// As "name at+bytes".
std::string textOf(const RiffChunk& chunk)
{
    return std::string(chunk.name.data(), chunk.name.size()) + ' ' + std::to_string(chunk.at) +
           '+' + std::to_string(chunk.bytes);
}

std::vector<std::string> allOf(vxlsync::RiffChunks chunks)
{
    std::vector<std::string> texts;
    while (const std::optional<RiffChunk> chunk = chunks.next())
        texts.push_back(textOf(*chunk));
    return texts;
}

wave::Bytes head(const std::string& name, std::uint32_t bytes)
{
    wave::Bytes result;
    wave::appendText(result, name);
    wave::append32(result, bytes);
    return result;
}

class RiffChunks : public testing::Test
{
protected:
    std::string write(const wave::Bytes& bytes) const { return folder.write("a", bytes); }

    const wave::TempFolder folder;
};

TEST_F(RiffChunks, StandBehindEachOtherAtEvenPlaces)
{
    wave::Bytes bytes = wave::chunk("odd ", {1, 2, 3});
    bytes.push_back(0);
    wave::append(bytes, wave::chunk("none", {}));
    wave::append(bytes, wave::chunk("even", {1, 2}));
    const InputFile file(write(bytes));

    // 8 + 3 and one to even; 8 more; 8 more.
    EXPECT_THAT(allOf({file, 0, file.size()}), ElementsAre("odd  8+3", "none 20+0", "even 28+2"));
}

TEST_F(RiffChunks, AreThoseWhoseHeadsLieBetweenTheTwoPlaces)
{
    wave::Bytes bytes(10);
    wave::append(bytes, wave::chunk("head", {1, 2}));
    wave::append(bytes, wave::chunk("next", {3, 4}));
    const InputFile file(write(bytes));

    EXPECT_THAT(allOf({file, 10, 28}), ElementsAre("head 18+2", "next 28+2"));
    EXPECT_THAT(allOf({file, 10, 27}), ElementsAre("head 18+2"));
    EXPECT_THAT(allOf({file, 20, 30}), ElementsAre("next 28+2"));
    EXPECT_THAT(allOf({file, 10, 10}), IsEmpty());
    EXPECT_THAT(allOf({file, 10, 0}), IsEmpty());
}

// The claim is handed on as it is: who reads the content sees where the file ends.
TEST_F(RiffChunks, MayClaimMoreThanThereIs)
{
    for (const std::uint32_t claim : {9u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        wave::Bytes bytes = head("long", claim);
        wave::append(bytes, wave::chunk("next", {}));
        const InputFile file(write(bytes));

        EXPECT_THAT(allOf({file, 0, file.size()}), ElementsAre("long 8+" + std::to_string(claim)));
    }
}

TEST_F(RiffChunks, EndWhereTheFileDoes)
{
    wave::Bytes bytes = head("last", 0);
    wave::appendText(bytes, "cut");
    const InputFile file(write(bytes));

    EXPECT_THAT(allOf({file, 0, 1000}), ElementsAre("last 8+0"));
    EXPECT_THAT(allOf({file, 500, 1000}), IsEmpty());
    EXPECT_THAT(allOf({file, -1, 1000}), IsEmpty());
}

TEST_F(RiffChunks, OfAFileOfZerosAreAThousand)
{
    const InputFile file(write(wave::Bytes(8 * 1002)));

    EXPECT_EQ(allOf({file, 0, file.size()}).size(), 1000u);
    EXPECT_EQ(allOf({file, 8 * 3, file.size()}).size(), 999u);
}

TEST_F(RiffChunks, AreNoMoreOnceTheyHaveEnded)
{
    const InputFile file(write(wave::Bytes(8 * 1002)));
    vxlsync::RiffChunks chunks(file, 0, file.size());
    while (chunks.next()) {
    }

    EXPECT_FALSE(chunks.next());
}

TEST(RiffChunk, IsKnownByAllFourLettersOfItsName)
{
    RiffChunk chunk;
    chunk.name = {'f', 'm', 't', ' '};

    EXPECT_TRUE(chunk.is("fmt "));
    EXPECT_FALSE(chunk.is("fmt_"));
    EXPECT_FALSE(chunk.is("Fmt "));
}

} // namespace
