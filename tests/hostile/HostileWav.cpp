#include <array>
#include <cstdint>
#include <functional>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Clean.h"
#include "Limits.h"
#include "Outcome.h"
#include "Rows.h"
#include "Wave.h"

// WAV files that are broken, strange or lies. What is wrong with each is told by its bytes; the
// outcome is derived from the field that they stand in.

namespace
{

using hostile::asTwin;
using hostile::badFormat;
using hostile::clean;
using hostile::noChannels;
using hostile::noData;
using hostile::noFormat;
using hostile::noRiff;
using hostile::noWave;
using hostile::noWidth;
using hostile::ofOtherRate;
using hostile::Outcome;
using hostile::refused;
using hostile::silent;
using hostile::tooLong;
using wave::Bytes;

constexpr std::size_t headerBytes = 44;

struct Row {
    std::string name;
    std::function<Bytes()> make;
    Outcome outcome;
};

std::ostream& operator<<(std::ostream& stream, const Row& row)
{
    return stream << row.name;
}

std::string nameOf(const testing::TestParamInfo<Row>& row)
{
    return row.param.name;
}

class HostileWav : public testing::TestWithParam<Row>
{
};

// Files that take their time, which are opened once and not once for each way.
class HostileLongWav : public testing::TestWithParam<Row>
{
};

std::string numbered(const std::string& name, std::size_t number)
{
    std::ostringstream text;
    text << name << std::setw(2) << std::setfill('0') << number;
    return text.str();
}

// Cut files.

Bytes cutAfter(const Bytes& bytes, std::size_t length)
{
    return Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length));
}

Outcome outcomeOfCut(std::size_t length)
{
    if (length < 4) return refused(noRiff);
    if (length < 12) return refused(noWave);
    if (length < 16) return refused(noFormat);
    // The tag is 1 or, where it is missing, 0, and passes at any width.
    if (length < 40) return refused(noData);
    // The size of the data is 0x3E80; what is missing of it is 0.
    if (length == 40) return silent(0);
    if (length == 41) return silent(0x80 / 2);
    // The claim stands. Eight samples at most and silence behind them.
    return asTwin(hostile::cleanCount);
}

std::vector<Row> cutRows()
{
    constexpr std::size_t longest = 60;
    std::vector<Row> rows;
    for (std::size_t length = 0; length <= longest; ++length) {
        rows.push_back({numbered("CutAfterByte", length),
                        [length] { return cutAfter(hostile::cleanFile(), length); },
                        outcomeOfCut(length)});
    }
    return rows;
}

Bytes floatFile()
{
    return wave::file(wave::format(3, 1, 32), wave::samplesFloat(hostile::cleanSamples()));
}

std::vector<Row> cutFloatRows()
{
    // The tag stands in bytes 20 and 21 and the width in bytes 34 and 35: with the tag and without
    // the width, the format is refused before the data is looked for.
    const auto cut = [](std::size_t length) {
        return [length] { return cutAfter(floatFile(), length); };
    };
    return {
        {"FloatFileCutBeforeItsTag", cut(20), refused(noData)},
        {"FloatFileCutInItsTag", cut(21), refused(badFormat)},
        {"FloatFileCutAfterItsTag", cut(22), refused(badFormat)},
        {"FloatFileCutBeforeItsWidth", cut(34), refused(badFormat)},
        {"FloatFileCutInItsWidth", cut(35), refused(noData)},
        {"FloatFileCutInItsSecondSample", cut(headerBytes + 6), asTwin(hostile::cleanCount)},
    };
}

// Single bytes of the header.

constexpr std::array<unsigned char, 5> sweptValues = {0x00, 0x01, 0x7F, 0x80, 0xFF};
using Swept = std::array<Outcome, sweptValues.size()>;

struct ByteRow {
    std::string name;
    std::size_t place;
    // One for each of the values.
    Swept outcomes;
};

std::ostream& operator<<(std::ostream& stream, const ByteRow& row)
{
    return stream << row.name;
}

class HostileHeaderByte : public testing::TestWithParam<ByteRow>
{
};

Swept all(const Outcome& outcome)
{
    return {outcome, outcome, outcome, outcome, outcome};
}

// A byte that is 0 in the clean file.
Swept unlessZero(const Outcome& outcome)
{
    return {clean(), outcome, outcome, outcome, outcome};
}

void addBytes(std::vector<ByteRow>& rows, const std::string& name, std::size_t first,
              std::size_t count, const Swept& outcomes)
{
    for (std::size_t place = first; place < first + count; ++place)
        rows.push_back({numbered("Byte", place) + name, place, outcomes});
}

std::vector<ByteRow> byteRows()
{
    std::vector<ByteRow> rows;
    addBytes(rows, "OfRiffId", 0, 4, all(refused(noRiff)));
    addBytes(rows, "OfRiffSize", 4, 4, all(clean()));
    addBytes(rows, "OfWaveId", 8, 4, all(refused(noWave)));
    // A stranger of 16 bytes, and the data chunk another one up to the end.
    addBytes(rows, "OfFormatId", 12, 4, all(refused(noFormat)));
    // Less than 16 skips nearly 4 GiB ahead, more skips into the samples.
    addBytes(rows, "OfFormatSize", 16, 1, all(refused(noData)));
    addBytes(rows, "OfFormatSize", 17, 3, unlessZero(refused(noData)));
    // At 16 bits every tag passes.
    addBytes(rows, "OfTag", 20, 2, all(clean()));
    // 8000 samples by 127, 128 and 255 channels; by 257 and 32513.
    addBytes(rows, "OfChannels", 22, 1,
             {refused(noChannels), clean(), silent(62), silent(62), silent(31)});
    addBytes(rows, "OfChannels", 23, 1,
             {clean(), silent(31), silent(0), refused(noChannels), refused(noChannels)});
    // 8000 is 0x1F40.
    addBytes(rows, "OfRate", 24, 2, all(ofOtherRate()));
    addBytes(rows, "OfRate", 26, 2, unlessZero(ofOtherRate()));
    addBytes(rows, "OfByteRate", 28, 4, all(clean()));
    addBytes(rows, "OfBlockAlign", 32, 2, all(clean()));
    // 16000 bytes by 127 / 8 = 15, 128 / 8 = 16 and 255 / 8 = 31, widths that nothing is read at.
    addBytes(rows, "OfWidth", 34, 1,
             {refused(noWidth), refused(noWidth), silent(1066), silent(1000), silent(516)});
    // By 0x110 / 8 = 34 and 0x7F10 / 8 = 4066; the negative ones divide as unsigned.
    addBytes(rows, "OfWidth", 35, 1, {clean(), silent(470), silent(3), silent(0), silent(0)});
    addBytes(rows, "OfDataId", 36, 4, all(refused(noData)));
    // 16000 is 0x3E80: 0x3E00 / 2, 0x3E01 / 2, 0x3E7F / 2 and 0x3EFF / 2.
    addBytes(rows, "OfDataSize", 40, 1,
             {asTwin(7936), asTwin(7936), asTwin(7999), clean(), asTwin(8063)});
    // 0x0080 / 2, 0x0180 / 2, 0x7F80 / 2, 0x8080 / 2 and 0xFF80 / 2.
    addBytes(rows, "OfDataSize", 41, 1,
             {silent(64), silent(192), asTwin(16320), asTwin(16448), asTwin(32704)});
    // 0x013E80 / 2, 0x7F3E80 / 2, 0x803E80 / 2 and 0xFF3E80 / 2.
    addBytes(rows, "OfDataSize", 42, 1,
             {clean(), asTwin(40768), tooLong(4169536), tooLong(4202304), tooLong(8363840)});
    // 0x01003E80 / 2, 0x7F003E80 / 2, 0x80003E80 / 2 and 0xFF003E80 / 2.
    addBytes(
        rows, "OfDataSize", 43, 1,
        {clean(), tooLong(8396608), tooLong(1065361216), tooLong(1073749824), tooLong(2139103040)});
    return rows;
}

// Whole fields.

Bytes withField(std::size_t place, std::size_t width, std::uint32_t value)
{
    Bytes bytes = hostile::cleanFile();
    for (std::size_t i = 0; i < width; ++i)
        bytes[place + i] = static_cast<unsigned char>(value >> (8 * i) & 0xFFu);
    return bytes;
}

// One row each for 0, 1, the sign bit alone, and all bits.
void addField(std::vector<Row>& rows, const std::string& name, std::size_t place, std::size_t width,
              const std::array<Outcome, 4>& outcomes)
{
    const std::uint32_t sign = width == 2 ? 0x8000u : 0x80000000u;
    const std::array<std::uint32_t, 4> values = {0, 1, sign, sign | (sign - 1)};
    const std::array<std::string, 4> words = {"Zero", "One", "SignBit", "Maximum"};
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::uint32_t value = values[i];
        rows.push_back({name + words[i],
                        [place, width, value] { return withField(place, width, value); },
                        outcomes[i]});
    }
}

// A chunk that claims `size` and has the content, between format and data.
Bytes withStrangerOf(std::uint32_t size, std::size_t content)
{
    Bytes bytes = cutAfter(hostile::cleanFile(), 36);
    wave::appendText(bytes, "LIST");
    wave::append32(bytes, size);
    wave::append(bytes, Bytes(content, 'x'));
    wave::append(bytes, wave::chunk("data", wave::samples16(hostile::cleanSamples16())));
    return bytes;
}

std::vector<Row> fieldRows()
{
    std::vector<Row> rows;
    addField(rows, "RiffSize", 4, 4, {clean(), clean(), clean(), clean()});
    addField(rows, "FormatSize", 16, 4,
             {refused(noData), refused(noData), refused(noData), refused(noData)});
    addField(rows, "Tag", 20, 2, {clean(), clean(), clean(), clean()});
    addField(rows, "Channels", 22, 2,
             {refused(noChannels), clean(), refused(noChannels), refused(noChannels)});
    addField(rows, "Rate", 24, 4, {ofOtherRate(), ofOtherRate(), ofOtherRate(), ofOtherRate()});
    addField(rows, "ByteRate", 28, 4, {clean(), clean(), clean(), clean()});
    addField(rows, "BlockAlign", 32, 2, {clean(), clean(), clean(), clean()});
    // -32768 bits divide as unsigned, -1 bit is no byte.
    addField(rows, "Width", 34, 2,
             {refused(noWidth), refused(noWidth), silent(0), refused(noWidth)});
    // An unfinished recording has no frames; a whole sample takes 2 bytes.
    addField(rows, "DataSize", 40, 4,
             {silent(0), silent(0), tooLong(0x40000000u), tooLong(0x7FFFFFFFu)});

    rows.push_back({"StrangerSizeZero", [] { return withStrangerOf(0, 0); }, clean()});
    rows.push_back({"StrangerSizeOne", [] { return withStrangerOf(1, 1); }, clean()});
    rows.push_back(
        {"StrangerSizeSignBit", [] { return withStrangerOf(0x80000000u, 8); }, refused(noData)});
    rows.push_back(
        {"StrangerSizeMaximum", [] { return withStrangerOf(0xFFFFFFFFu, 8); }, refused(noData)});
    return rows;
}

// The order and the number of the chunks.

Bytes cleanFormat()
{
    return wave::formatChunk(wave::Format());
}

Bytes cleanData()
{
    return wave::chunk("data", wave::samples16(hostile::cleanSamples16()));
}

Bytes join(const std::vector<Bytes>& parts)
{
    Bytes bytes;
    for (const Bytes& part : parts)
        wave::append(bytes, part);
    return bytes;
}

Bytes ofChunks(const std::vector<Bytes>& chunks)
{
    Bytes bytes = wave::riffStart();
    wave::append(bytes, join(chunks));
    return bytes;
}

Bytes text(const std::string& letters)
{
    Bytes bytes;
    wave::appendText(bytes, letters);
    return bytes;
}

Bytes stranger(std::size_t size)
{
    return wave::chunk("LIST", Bytes(size, 'x'));
}

Bytes stereoFormat()
{
    wave::Format format;
    format.channels = 2;
    format.sampleRate = 44100;
    return wave::formatChunk(format);
}

Bytes manyChunks(std::size_t count, const Bytes& chunk)
{
    Bytes bytes;
    bytes.reserve(count * chunk.size());
    for (std::size_t i = 0; i < count; ++i)
        wave::append(bytes, chunk);
    return bytes;
}

Bytes formatOfSize(std::uint32_t size)
{
    wave::Format format;
    format.chunkSize = size;
    return wave::formatChunk(format);
}

Bytes dataClaiming(std::uint32_t size)
{
    Bytes bytes = cutAfter(hostile::cleanFile(), 40);
    wave::append32(bytes, size);
    wave::append(bytes, wave::samples16(hostile::cleanSamples16()));
    return bytes;
}

// Chunks of odd size.
std::vector<Row> padRows()
{
    const Bytes pad = {0};
    return {
        // Nothing skips a pad byte: behind it the ids are out of step up to the end of the file.
        {"OddChunkWithPadBeforeFormat",
         [=] {
             return ofChunks({stranger(3), pad, cleanFormat(), cleanData()});
         },
         refused(noFormat)},
        {"OddChunkWithoutPadBeforeFormat",
         [] {
             return ofChunks({stranger(3), cleanFormat(), cleanData()});
         },
         clean()},
        {"OddChunkWithPadBeforeData",
         [=] {
             return ofChunks({cleanFormat(), stranger(3), pad, cleanData()});
         },
         refused(noData)},
        {"OddChunkWithoutPadBeforeData",
         [] {
             return ofChunks({cleanFormat(), stranger(3), cleanData()});
         },
         clean()},
        {"OddFormatWithPad",
         [=] {
             return ofChunks({formatOfSize(17), pad, cleanData()});
         },
         refused(noData)},
        {"OddFormatWithoutPad",
         [] {
             return ofChunks({formatOfSize(17), cleanData()});
         },
         clean()},
        {"OddDataWithPad",
         [=] {
             return ofChunks(
                 {cleanFormat(), wave::chunk("data", Bytes(15999, 3)), pad, stranger(4)});
         },
         asTwin(7999)},
        {"OddDataWithoutPad",
         [] {
             return ofChunks({cleanFormat(), wave::chunk("data", Bytes(15999, 3))});
         },
         asTwin(7999)},
    };
}

// Which chunks there are, and which comes first.
std::vector<Row> orderRows()
{
    return {
        {"SecondFormatBeforeDataIsSkipped",
         [] {
             return ofChunks({cleanFormat(), stereoFormat(), cleanData()});
         },
         clean()},
        {"FirstFormatOfOtherRateCounts",
         [] {
             return ofChunks({stereoFormat(), cleanFormat(), cleanData()});
         },
         [] {
             Outcome outcome = ofOtherRate();
             outcome.frames = hostile::cleanCount / 2;
             return outcome;
         }()},
        {"SecondFormatAfterDataIsNotSeen",
         [] {
             return ofChunks({cleanFormat(), cleanData(), stereoFormat()});
         },
         clean()},
        {"FirstFormatThatIsRefusedCounts",
         [] {
             return ofChunks(
                 {wave::formatChunk(wave::format(3, 1, 24)), cleanFormat(), cleanData()});
         },
         refused(badFormat)},
        {"NoFormat", [] { return ofChunks({cleanData()}); }, refused(noFormat)},
        {"NoData",
         [] {
             return ofChunks({cleanFormat(), stranger(10)});
         },
         refused(noData)},
        {"NoChunks", [] { return wave::riffStart(); }, refused(noFormat)},
        {"DataBeforeFormatAlone",
         [] {
             return ofChunks({cleanData(), cleanFormat()});
         },
         refused(noData)},
        {"DataBeforeAndAfterFormat",
         [] {
             return ofChunks({wave::chunk("data", Bytes(50, 1)), cleanFormat(), cleanData()});
         },
         clean()},
        {"SecondDataIsNotSeen",
         [] {
             return ofChunks({cleanFormat(), cleanData(), wave::chunk("data", Bytes(9, 1))});
         },
         clean()},
        {"EmptyDataBeforeTheFullOneCounts",
         [] {
             return ofChunks({cleanFormat(), wave::chunk("data", {}), cleanData()});
         },
         silent(0)},
        {"DataIdInsideASkippedChunk",
         [] {
             return ofChunks({cleanFormat(), wave::chunk("LIST", wave::chunk("data", Bytes(6, 1))),
                              cleanData()});
         },
         clean()},
        {"FormatIdInsideASkippedChunk",
         [] {
             return ofChunks({wave::chunk("LIST", stereoFormat()), cleanFormat(), cleanData()});
         },
         clean()},
        {"DataIdAcrossTheEndOfASkippedChunk",
         [] {
             return ofChunks({cleanFormat(), wave::chunk("LIST", text("da")), cleanData()});
         },
         clean()},
        {"FormatIdInUpperCase",
         [] {
             return ofChunks({text("FMT "), cleanFormat(), cleanData()});
         },
         refused(noFormat)},
    };
}

// What lies behind the data.
std::vector<Row> tailRows()
{
    return {
        {"ChunkAfterData",
         [] {
             return ofChunks({cleanFormat(), cleanData(), stranger(1000)});
         },
         clean()},
        {"OddChunkAfterData",
         [] {
             return ofChunks({cleanFormat(), cleanData(), stranger(7)});
         },
         clean()},
        {"ChunkAfterDataCutInItsId",
         [] {
             return ofChunks({cleanFormat(), cleanData(), text("LI")});
         },
         clean()},
        {"RubbishAfterData",
         [] {
             return ofChunks({cleanFormat(), cleanData(), Bytes(500, 0xAB)});
         },
         clean()},
        {"SecondFileAfterTheFirst",
         [] {
             return join({hostile::cleanFile(), hostile::cleanFile()});
         },
         clean()},
    };
}

std::vector<Row> formatSizeRows()
{
    return {
        {"FormatOf14Bytes",
         [] {
             return ofChunks({cutAfter(formatOfSize(14), 22), cleanData()});
         },
         refused(noData)},
        {"FormatOf15Bytes",
         [] {
             return ofChunks({cutAfter(formatOfSize(15), 23), cleanData()});
         },
         refused(noData)},
        {"FormatOf18Bytes",
         [] {
             return ofChunks({formatOfSize(18), cleanData()});
         },
         clean()},
        {"FormatOf40Bytes",
         [] {
             return ofChunks({formatOfSize(40), cleanData()});
         },
         clean()},
        {"FormatOf65552Bytes",
         [] {
             return ofChunks({formatOfSize(65552), cleanData()});
         },
         clean()},
        {"FormatThatClaimsTheWholeFile", [] { return withField(16, 4, 16 + 8 + 16000); },
         refused(noData)},
    };
}

std::vector<Row> chunkRows()
{
    return hostile::together<Row>({padRows(), orderRows(), tailRows(), formatSizeRows()});
}

std::vector<Row> manyChunkRows()
{
    constexpr std::size_t million = 1000000;
    const auto million0 = [] { return manyChunks(million, stranger(0)); };
    return {
        {"MillionEmptyChunksBeforeFormat",
         [=] {
             return ofChunks({million0(), cleanFormat(), cleanData()});
         },
         clean()},
        {"MillionEmptyChunksBeforeData",
         [=] {
             return ofChunks({cleanFormat(), million0(), cleanData()});
         },
         clean()},
        {"MillionEmptyChunksAfterData",
         [=] {
             return ofChunks({cleanFormat(), cleanData(), million0()});
         },
         clean()},
        {"MillionEmptyChunksAndNoFormat", [=] { return ofChunks({million0()}); },
         refused(noFormat)},
        {"MillionEmptyChunksAndNoData",
         [=] {
             return ofChunks({cleanFormat(), million0()});
         },
         refused(noData)},
        {"MillionEmptyChunksOfZeros",
         [] {
             return ofChunks({cleanFormat(), manyChunks(million, Bytes(8, 0))});
         },
         refused(noData)},
        {"HundredThousandChunksOfOneByte",
         [] {
             return ofChunks({cleanFormat(), manyChunks(million / 10, stranger(1)), cleanData()});
         },
         clean()},
    };
}

// What the file says of its samples.

Bytes ofFormat(std::uint32_t tag, std::uint32_t channels, std::uint32_t bits)
{
    return wave::file(wave::format(tag, channels, bits),
                      wave::samples16(hostile::cleanSamples16()));
}

std::vector<Row> formatRows()
{
    return {
        {"PcmOf24BitsIsSilence", [] { return ofFormat(1, 1, 24); }, silent(5333)},
        {"PcmOf64BitsIsSilence", [] { return ofFormat(1, 1, 64); }, silent(2000)},
        {"PcmOf12BitsIsSilence", [] { return ofFormat(1, 1, 12); }, silent(16000)},
        {"PcmOf8BitsIsTakenAsSigned", [] { return ofFormat(1, 1, 8); }, asTwin(16000)},
        {"PcmOf32BitsIsTakenAsFloats", [] { return ofFormat(1, 1, 32); }, asTwin(4000)},
        {"PcmOf7Bits", [] { return ofFormat(1, 1, 7); }, refused(noWidth)},
        {"PcmOfMinus7Bits", [] { return ofFormat(1, 1, 0xFFF9u); }, refused(noWidth)},
        {"PcmOfMinus8Bits", [] { return ofFormat(1, 1, 0xFFF8u); }, silent(0)},
        {"FloatOf24Bits", [] { return ofFormat(3, 1, 24); }, refused(badFormat)},
        {"FloatOf64Bits", [] { return ofFormat(3, 1, 64); }, refused(badFormat)},
        {"FloatOf16BitsIsTakenAsIntegers", [] { return ofFormat(3, 1, 16); }, clean()},
        {"AdpcmOf4Bits", [] { return ofFormat(2, 1, 4); }, refused(badFormat)},
        {"CompressedWithoutAWidth", [] { return ofFormat(0x55, 1, 0); }, refused(badFormat)},
        {"GreatestPositiveTagOf24Bits", [] { return ofFormat(0x7FFF, 1, 24); }, refused(badFormat)},
        {"ExtensibleOf24BitsIsSilence", [] { return ofFormat(0xFFFE, 1, 24); }, silent(5333)},
        {"ExtensibleOf0Bits", [] { return ofFormat(0xFFFE, 1, 0); }, refused(noWidth)},
        {"WidthAndChannelsOf0", [] { return ofFormat(1, 0, 0); }, refused(noWidth)},
        {"FormatIsRefusedBeforeItsChannels", [] { return ofFormat(3, 0, 24); }, refused(badFormat)},
        {"Stereo", [] { return ofFormat(1, 2, 16); }, asTwin(4000)},
        {"SeventeenChannels", [] { return ofFormat(1, 17, 16); }, silent(470)},
        {"MostChannels", [] { return ofFormat(1, 32767, 16); }, silent(0)},
        {"MostChannelsOf32Bits", [] { return ofFormat(3, 32767, 32); }, silent(0)},
        {"DataOneSampleShort", [] { return dataClaiming(15998); }, asTwin(7999)},
        {"DataOneByteLong", [] { return dataClaiming(16001); }, clean()},
        {"DataOneSampleLong", [] { return dataClaiming(16002); }, asTwin(8001)},
        {"DataTwiceAsLong", [] { return dataClaiming(32000); }, asTwin(16000)},
        {"DataUnfinished", [] { return dataClaiming(0); }, silent(0)},
        {"DataOf2GiBLessAByte", [] { return dataClaiming(0x7FFFFFFFu); }, tooLong(0x3FFFFFFFu)},
        {"DataOf4GiBLessAByte", [] { return dataClaiming(0xFFFFFFFFu); }, tooLong(0x7FFFFFFFu)},
    };
}

// Files of another kind.

Bytes withStart(const std::string& id)
{
    Bytes bytes = hostile::cleanFile();
    for (std::size_t i = 0; i < id.size(); ++i)
        bytes[i] = static_cast<unsigned char>(id[i]);
    return bytes;
}

Bytes rf64File()
{
    Bytes sizes;
    wave::append32(sizes, 16000 + 72);
    wave::append32(sizes, 0);
    wave::append32(sizes, 16000);
    wave::append32(sizes, 0);
    wave::append(sizes, Bytes(12, 0));
    return join({text("RF64"), Bytes(4, 0xFF), text("WAVE"), wave::chunk("ds64", sizes),
                 cleanFormat(), text("data"), Bytes(4, 0xFF),
                 wave::samples16(hostile::cleanSamples16())});
}

std::vector<Row> otherRows()
{
    constexpr std::size_t megabyte = std::size_t{1} << 20u;
    return {
        {"Empty", [] { return Bytes(); }, refused(noRiff)},
        {"Rifx", [] { return withStart("RIFX"); }, refused(noRiff)},
        {"Rf64", [] { return rf64File(); }, refused(noRiff)},
        {"Bw64", [] { return withStart("BW64"); }, refused(noRiff)},
        {"RiffInLowerCase", [] { return withStart("riff"); }, refused(noRiff)},
        {"Aiff",
         [] {
             return join({text("FORM"), Bytes(4, 0), text("AIFF")});
         },
         refused(noRiff)},
        {"Video",
         [] {
             return join({text("RIFF"), Bytes(4, 0), text("AVI LIST")});
         },
         refused(noWave)},
        {"WaveInLowerCase",
         [] {
             return join({text("RIFF"), Bytes(4, 0), text("wave")});
         },
         refused(noWave)},
        {"ByteOrderMarkBeforeRiff",
         [] {
             return join({{0xEF, 0xBB, 0xBF}, hostile::cleanFile()});
         },
         refused(noRiff)},
        {"TagBeforeRiff",
         [] {
             return join({text("ID3"), Bytes(7, 0), hostile::cleanFile()});
         },
         refused(noRiff)},
        {"MegabyteOfZeros", [] { return Bytes(megabyte, 0); }, refused(noRiff)},
        {"MegabyteOfOnes", [] { return Bytes(megabyte, 0xFF); }, refused(noRiff)},
        {"MegabyteOfZerosAfterWave", [] { return ofChunks({Bytes(megabyte, 0)}); },
         refused(noFormat)},
        {"MegabyteOfOnesAfterWave", [] { return ofChunks({Bytes(megabyte, 0xFF)}); },
         refused(noFormat)},
        {"FileWithinAFile", [] { return ofChunks({hostile::cleanFile()}); }, refused(noFormat)},
        // A tag of "fm" and no width that goes with it.
        {"TextOfChunkIds",
         [] { return ofChunks({text("fmt fmt fmt fmt fmt fmt data data data data")}); },
         refused(badFormat)},
    };
}

} // namespace

TEST_P(HostileWav, HasItsOutcome)
{
    const wave::TempFolder folder;

    hostile::withinLimits([&] {
        hostile::expectOutcome(folder.write("take.wav", GetParam().make()), GetParam().outcome);
    });
}

TEST_P(HostileLongWav, HasItsOutcome)
{
    const wave::TempFolder folder;

    hostile::withinLimits([&] {
        hostile::expectRunOutcome(folder.write("take.wav", GetParam().make()), GetParam().outcome);
    });
}

INSTANTIATE_TEST_SUITE_P(Chunks, HostileLongWav, testing::ValuesIn(manyChunkRows()), nameOf);

INSTANTIATE_TEST_SUITE_P(Cut, HostileWav, testing::ValuesIn(cutRows()), nameOf);
INSTANTIATE_TEST_SUITE_P(CutFloat, HostileWav, testing::ValuesIn(cutFloatRows()), nameOf);
INSTANTIATE_TEST_SUITE_P(Field, HostileWav, testing::ValuesIn(fieldRows()), nameOf);
INSTANTIATE_TEST_SUITE_P(Chunks, HostileWav, testing::ValuesIn(chunkRows()), nameOf);
INSTANTIATE_TEST_SUITE_P(Format, HostileWav, testing::ValuesIn(formatRows()), nameOf);
INSTANTIATE_TEST_SUITE_P(Other, HostileWav, testing::ValuesIn(otherRows()), nameOf);

TEST_P(HostileHeaderByte, HasItsOutcomeAtEachValue)
{
    const wave::TempFolder folder;

    for (std::size_t i = 0; i < sweptValues.size(); ++i) {
        SCOPED_TRACE("value " + std::to_string(sweptValues[i]));
        hostile::withinLimits([&] {
            hostile::expectOutcome(
                folder.write("take.wav", withField(GetParam().place, 1, sweptValues[i])),
                GetParam().outcomes[i]);
        });
    }
}

INSTANTIATE_TEST_SUITE_P(Each, HostileHeaderByte, testing::ValuesIn(byteRows()),
                         [](const testing::TestParamInfo<ByteRow>& row) { return row.param.name; });
