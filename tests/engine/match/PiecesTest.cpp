#include "match/Pieces.h"

#include <gtest/gtest.h>

#include "Measuring.h"
#include "Signals.h"

namespace
{

using signals::rate;
using vxlsync::Piece;
using vxlsync::Prepared;

// So many seconds of silence with a sound at each of the seconds given.
Prepared soundsAt(std::size_t seconds, const std::vector<std::size_t>& at)
{
    Prepared prepared;
    prepared.rate = rate;
    const std::vector<float> sound = signals::noise(1, 100);
    for (const std::size_t second : at) {
        prepared.samples.appendSilence(second * rate - prepared.samples.size());
        prepared.samples.append(sound.data(), sound.size());
    }
    prepared.samples.appendSilence(seconds * rate - prepared.samples.size());
    return prepared;
}

TEST(Pieces, AreOneUpToSeventeenMinutes)
{
    const std::vector<Piece> pieces = vxlsync::piecesOf(soundsAt(1048, {600}), 7);

    ASSERT_EQ(pieces.size(), 1u);
    EXPECT_EQ(pieces[0].recording, 7u);
    EXPECT_EQ(pieces[0].start, 0u);
    EXPECT_EQ(pieces[0].count, 1048u * rate);
}

TEST(Pieces, ShareTwoMinutes)
{
    const std::vector<Piece> pieces = vxlsync::piecesOf(soundsAt(1049, {600, 1048}), 0);

    ASSERT_EQ(pieces.size(), 2u);
    EXPECT_EQ(pieces[0].count, 1048u * rate);
    EXPECT_EQ(pieces[1].start, 928u * rate);
    EXPECT_EQ(pieces[1].count, 121u * rate);
}

TEST(Pieces, WithoutSoundAreLeftOut)
{
    // Pieces begin every 928 s.
    const std::vector<Piece> pieces = vxlsync::piecesOf(soundsAt(36000, {600, 30000}), 0);

    ASSERT_EQ(pieces.size(), 2u);
    EXPECT_EQ(pieces[0].start, 0u);
    EXPECT_EQ(pieces[1].start, 32u * 928u * rate);
    EXPECT_TRUE(vxlsync::piecesOf(soundsAt(36000, {}), 0).empty());
    EXPECT_TRUE(vxlsync::piecesOf(soundsAt(0, {}), 0).empty());
}

TEST(Pieces, AtTheEdgesAreTwelveSecondsLong)
{
    const Prepared recording = soundsAt(100, {});

    EXPECT_EQ(vxlsync::headOf(recording, 3).start, 0u);
    EXPECT_EQ(vxlsync::headOf(recording, 3).count, 12u * rate);
    EXPECT_EQ(vxlsync::tailOf(recording, 3).start, 88u * rate);
    EXPECT_EQ(vxlsync::tailOf(recording, 3).count, 12u * rate);
    EXPECT_EQ(vxlsync::tailOf(recording, 3).recording, 3u);
    EXPECT_EQ(vxlsync::tailOf(soundsAt(5, {}), 3).count, 5u * rate);
}

TEST(Pieces, ShareLengthsOfTransforms)
{
    EXPECT_EQ(vxlsync::lengthClass(10), 1024u);
    EXPECT_EQ(vxlsync::lengthClass(1024), 1024u);
    EXPECT_EQ(vxlsync::lengthClass(1025), 2048u);
}

} // namespace
