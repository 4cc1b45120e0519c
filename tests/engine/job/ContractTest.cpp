#include "job/Contract.h"

#include <cmath>
#include <limits>
#include <stdexcept>

#include <gmock/gmock.h>

namespace
{

using testing::HasSubstr;
using vxlsync::Options;
using vxlsync::requireUsable;
using vxlsync::Source;

Source file(const std::string& path)
{
    Source source;
    source.path = path;
    return source;
}

Source samplesAt(int rate)
{
    Source source;
    source.samples.assign(10, 0.5f);
    source.sampleRate = rate;
    return source;
}

// What is said of the sources and options; empty if they are taken.
std::string complaintOf(const std::vector<Source>& sources, const Options& options = {})
{
    try {
        requireUsable(sources, options);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return std::string();
}

TEST(Contract, TakesFilesAndSamplesWithoutAnyOption)
{
    EXPECT_EQ(complaintOf({}), "");
    EXPECT_EQ(complaintOf({file("a.wav"), samplesAt(48000)}), "");
}

TEST(Contract, TakesSampleRatesWithinTheirBoundsOnly)
{
    EXPECT_EQ(complaintOf({samplesAt(2000)}), "");
    EXPECT_EQ(complaintOf({samplesAt(768000)}), "");
    EXPECT_EQ(complaintOf({file("a"), samplesAt(1999)}),
              "source 1: sample rate 1999, expected 2000 to 768000");
    EXPECT_EQ(complaintOf({samplesAt(768001)}),
              "source 0: sample rate 768001, expected 2000 to 768000");
}

TEST(Contract, RefusesASourceThatIsBothFileAndSamples)
{
    Source both = samplesAt(8000);
    both.path = "a.wav";

    EXPECT_EQ(complaintOf({both}), "source 0: has a path and samples, expected one of them");
}

TEST(Contract, TakesKnownStartsWithinAHundredDaysOnly)
{
    Source source = file("a.wav");
    for (const double start : {8640000.0, -8640000.0, 0.0}) {
        source.knownStartSeconds = start;
        EXPECT_EQ(complaintOf({source}), "") << start;
    }
    for (const double start :
         {8640000.5, -8640000.5, 1e308, std::nan(""), std::numeric_limits<double>::infinity()}) {
        source.knownStartSeconds = start;
        EXPECT_THAT(complaintOf({source}), HasSubstr("expected within a hundred days of 0"))
            << start;
    }
}

TEST(Contract, RefusesNegativeStreams)
{
    Options options;
    options.stream = -1;

    EXPECT_THAT(complaintOf({}, options), HasSubstr("stream -1"));
}

TEST(Contract, NumbersChannelsFromOne)
{
    Options options;
    options.channelNumber = 0;
    EXPECT_EQ(complaintOf({}, options), "");

    options.channel = vxlsync::Channel::numbered;
    EXPECT_THAT(complaintOf({}, options), HasSubstr("channel 0"));

    options.channelNumber = 1;
    EXPECT_EQ(complaintOf({}, options), "");
}

TEST(Contract, NumbersStreamsAndChannelsOfASourceTheSameWay)
{
    Source source = file("a.wav");
    source.channelNumber = 0;
    EXPECT_EQ(complaintOf({source}), "");

    source.channel = vxlsync::Channel::numbered;
    EXPECT_THAT(complaintOf({source}), HasSubstr("source 0: channel 0, expected 1 and up"));

    source.channelNumber = 1;
    EXPECT_EQ(complaintOf({source}), "");

    source.stream = -1;
    EXPECT_THAT(complaintOf({source}),
                HasSubstr("source 0: stream -1, expected 1 and up, or 0 for any"));
}

TEST(Contract, RefusesMemoryThatIsTooLittleForAnything)
{
    Options options;
    options.memoryBytes = vxlsync::leastMemoryBytes;
    EXPECT_EQ(complaintOf({}, options), "");

    --options.memoryBytes;
    EXPECT_THAT(complaintOf({}, options), HasSubstr("memory of 134217727 bytes"));
}

TEST(Contract, RefusesToKeepApartWhatIsNotThere)
{
    const std::vector<Source> two{file("a"), file("b")};
    Options options;
    options.apart = {{0, 1}};
    EXPECT_EQ(complaintOf(two, options), "");

    options.apart = {{0, 2}};
    EXPECT_EQ(complaintOf(two, options), "apart: there is no source 2 among 2");
    options.apart = {{2, 0}};
    EXPECT_EQ(complaintOf(two, options), "apart: there is no source 2 among 2");
    options.apart = {{1, 1}};
    EXPECT_EQ(complaintOf(two, options), "apart: source 1 from itself");
}

TEST(Contract, RefusesAReferenceThatIsNotThere)
{
    Options options;
    options.reference = 0;
    EXPECT_EQ(complaintOf({file("a")}, options), "");
    EXPECT_EQ(complaintOf({}, options), "reference: there is no source 0 among 0");
}

} // namespace
