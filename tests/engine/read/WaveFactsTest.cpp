#include <string>

#include <gtest/gtest.h>

#include "Broadcast.h"
#include "Reading.h"
#include "Wave.h"
#include "read/WaveFacts.h"

// What recorders write beside the sound of a WAV file.
namespace
{

using vxlsync::FileFacts;
using wave::Bytes;

Bytes remarks(const Bytes& entries)
{
    Bytes content;
    wave::appendText(content, "INFO");
    wave::append(content, entries);
    return wave::chunk("LIST", content);
}

Bytes remark(const std::string& id, const std::string& text)
{
    return wave::chunk(id, broadcast::field(text, text.size() + text.size() % 2));
}

class WaveFacts : public testing::Test
{
protected:
    // Of a file with these chunks before its sound and behind it.
    FileFacts factsOf(const Bytes& before, const Bytes& behind = {}) const
    {
        Bytes bytes = wave::riffStart();
        wave::append(bytes, wave::formatChunk(wave::Format()));
        wave::append(bytes, before);
        wave::append(bytes, wave::chunk("data", wave::samples16({1, 2, 3})));
        wave::append(bytes, behind);
        return factsOfFile(bytes);
    }

    FileFacts factsOfFile(const Bytes& bytes) const
    {
        return reading::readWith(vxlsync::readWave, folder.write("a.wav", bytes)).findings.facts;
    }

    const wave::TempFolder folder;
};

TEST_F(WaveFacts, ARecorderSaysItsNameAndWhenItBegan)
{
    const FileFacts facts = factsOf(broadcast::chunk("2026-06-01", "10:00:37", 36037));

    EXPECT_EQ(facts.originator, "camera a");
    EXPECT_EQ(facts.originatorReference, "reference 7");
    EXPECT_EQ(vxlsync::textOf(facts.created.value()), "2026-06-01T10:00:37");
    EXPECT_EQ(facts.timeReference, 36037.0);
    EXPECT_EQ(facts.started.value().seconds, 36037.0);
    EXPECT_EQ(facts.timecode, "");
}

TEST_F(WaveFacts, WhatStandsBehindTheSoundCountsToo)
{
    EXPECT_EQ(factsOf({}, broadcast::chunk("2026-06-01", "10:00:37", 36037)).originator,
              "camera a");
}

TEST_F(WaveFacts, ClocksThatNobodySetSayNothing)
{
    const FileFacts facts = factsOf(broadcast::chunk("0000-00-00", "00:00:00", 0));

    EXPECT_FALSE(facts.created);
    EXPECT_FALSE(facts.started);
    EXPECT_EQ(facts.originator, "camera a");
}

TEST_F(WaveFacts, AChunkThatIsTooShortSaysNothing)
{
    Bytes shorter = wave::chunk("bext", Bytes(345, 'x'));
    shorter.push_back(0);
    EXPECT_EQ(factsOf(shorter).originator, "");

    // Claims to be whole, and the file ends in it.
    Bytes chunk = broadcast::chunk("2026-06-01", "10:00:37", 36037);
    chunk.resize(chunk.size() - 1);
    EXPECT_EQ(factsOf({}, chunk).originator, "");
}

TEST_F(WaveFacts, RemarksNameTheProgramAndTheDate)
{
    Bytes entries = remark("ISFT", "Recorder 2.1");
    wave::append(entries, remark("INAM", "a song"));
    wave::append(entries, remark("ICRD", "2026-06-01 10:00:37"));
    const FileFacts facts = factsOf(remarks(entries));

    EXPECT_EQ(facts.encoder, "Recorder 2.1");
    EXPECT_EQ(vxlsync::textOf(facts.created.value()), "2026-06-01T10:00:37");
}

TEST_F(WaveFacts, TheDateOfBroadcastersGoesBeforeThatOfRemarks)
{
    Bytes chunks = broadcast::chunk("2026-06-01", "10:00:37", 36037);
    wave::append(chunks, remarks(remark("ICRD", "2026-06-02 11:00:00")));

    EXPECT_EQ(vxlsync::textOf(factsOf(chunks).created.value()), "2026-06-01T10:00:37");
}

TEST_F(WaveFacts, ListsOfAnotherKindAreNoRemarks)
{
    Bytes content;
    wave::appendText(content, "adtl");
    wave::append(content, remark("ISFT", "Recorder 2.1"));

    EXPECT_EQ(factsOf(wave::chunk("LIST", content)).encoder, "");
}

TEST_F(WaveFacts, ARemarkThatClaimsToBeEndlessIsCut)
{
    Bytes entries;
    wave::appendText(entries, "ISFT");
    wave::append32(entries, 0xFFFFFFFF);
    wave::append(entries, Bytes(5000, 'x'));

    EXPECT_EQ(factsOf(remarks(entries)).encoder, std::string(128, 'x'));
}

TEST_F(WaveFacts, AListThatTheFileDoesNotHoldEndsWithIt)
{
    Bytes list;
    wave::appendText(list, "LIST");
    wave::append32(list, 10000);
    wave::appendText(list, "INFO");
    wave::append(list, remark("ISFT", "Recorder 2.1"));

    EXPECT_EQ(factsOf({}, list).encoder, "Recorder 2.1");
}

TEST_F(WaveFacts, NothingIsLookedForBehindASoundWithoutAnEnd)
{
    Bytes bytes = wave::riffStart();
    wave::append(bytes, wave::formatChunk(wave::Format()));
    wave::appendText(bytes, "data");
    Bytes open = bytes;
    wave::append32(open, 0);
    wave::append(open, broadcast::chunk("2026-06-01", "10:00:37", 36037));
    EXPECT_EQ(factsOfFile(open).originator, "");
    EXPECT_FALSE(factsOfFile(open).fileSeconds);

    wave::append32(bytes, 0x7FFFFFFF);
    wave::append(bytes, broadcast::chunk("2026-06-01", "10:00:37", 36037));
    EXPECT_EQ(factsOfFile(bytes).originator, "");
}

TEST_F(WaveFacts, TellWhatWasReadOfTheFile)
{
    const std::string path =
        folder.write("stereo.wav", wave::file(wave::format(1, 2, 16), wave::samples16({1, 2})));
    vxlsync::Options options;
    const auto channelOf = [&] {
        return reading::readWith(vxlsync::readWave, path, options).findings.facts.channel;
    };
    EXPECT_EQ(channelOf(), 1);
    options.channel = vxlsync::Channel::mix;
    EXPECT_EQ(channelOf(), 0);
    options.channel = vxlsync::Channel::numbered;
    options.channelNumber = 2;
    EXPECT_EQ(channelOf(), 2);

    const FileFacts facts = reading::readWith(vxlsync::readWave, path).findings.facts;
    EXPECT_EQ(facts.stream, 1);
    // One frame of 8,000 a second.
    EXPECT_EQ(facts.fileSeconds, 1.0 / 8000);
}

} // namespace
