#include "OptionTexts.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>

#include <CLI/CLI.hpp>

namespace vxlsync::host
{

namespace
{

// More channels and streams than any format of today holds.
constexpr int mostChannels = 1024;
constexpr int mostStreams = 10000;

// The number that the text is, digits and nothing else.
template <typename Number>
bool readWhole(const std::string& text, Number& number)
{
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

ChannelChoice channelOf(const std::string& text)
{
    if (text == "left") return {Channel::left, 1};
    if (text == "mix") return {Channel::mix, 1};
    ChannelChoice choice{Channel::numbered, 0};
    if (!readWhole(text, choice.number) || choice.number < 1 || choice.number > mostChannels)
        throw CLI::ValidationError("--channel", "left, mix or a number from 1 to " +
                                                    std::to_string(mostChannels) + ", not " + text);
    return choice;
}

int streamOf(const std::string& text)
{
    int stream = 0;
    if (!readWhole(text, stream) || stream < 1 || stream > mostStreams)
        throw CLI::ValidationError("--stream", "a number from 1 to " + std::to_string(mostStreams) +
                                                   ", not " + text);
    return stream;
}

// Values for all files, and for those that stand before a sign; of each the last counts.
template <typename Value>
void readChoices(const std::vector<std::string>& texts, const std::string& option,
                 Value (*valueOf)(const std::string&), Value& forAll,
                 std::vector<std::pair<std::string, Value>>& forFiles)
{
    for (const std::string& text : texts) {
        const std::size_t sign = text.rfind('=');
        if (sign == 0) throw CLI::ValidationError(option, "FILE=VALUE, not " + text);
        // Without a sign, npos and 1 make 0, and the text is read from its start.
        const Value value = valueOf(text.substr(sign + 1));
        if (sign == std::string::npos)
            forAll = value;
        else
            forFiles.emplace_back(text.substr(0, sign), value);
    }
}

void readSounds(const OptionTexts& texts, Options& options)
{
    ChannelChoice channel;
    readChoices(texts.channels, "--channel", &channelOf, channel, options.channels);
    options.engine.channel = channel.channel;
    options.engine.channelNumber = channel.number;
    readChoices(texts.streams, "--stream", &streamOf, options.engine.stream, options.streams);
}

// Bits that a number is shifted by for the unit that the letter stands for; 0 for no such unit.
unsigned int shiftOf(char letter)
{
    switch (std::toupper(static_cast<unsigned char>(letter))) {
    case 'K':
        return 10;
    case 'M':
        return 20;
    case 'G':
        return 30;
    default:
        return 0;
    }
}

void readMemory(const std::string& text, vxlsync::Options& engine)
{
    const unsigned int shift = text.empty() ? 0 : shiftOf(text.back());
    const std::string digits = shift > 0 ? text.substr(0, text.size() - 1) : text;
    std::size_t number = 0;
    if (!readWhole(digits, number) || number > std::numeric_limits<std::size_t>::max() >> shift)
        throw CLI::ValidationError(
            "--memory", "a number of bytes, or one with K, M or G behind it, not " + text);
    engine.memoryBytes = number << shift;
    if (engine.memoryBytes < leastMemoryBytes)
        throw CLI::ValidationError(
            "--memory", "at least " + std::to_string(leastMemoryBytes >> 20U) + "M, not " + text);
}

void readKnownStarts(const std::vector<std::string>& texts, Options& options)
{
    for (const std::string& text : texts) {
        const std::size_t sign = text.rfind('=');
        // Without a sign, npos and 1 make 0, and the text is read from its start.
        const std::string number = text.substr(sign + 1);
        char* end = nullptr;
        const double seconds = std::strtod(number.c_str(), &end);
        if (sign == std::string::npos || sign == 0 || end == number.c_str() || *end != '\0')
            throw CLI::ValidationError("--fix", "FILE=SECONDS, not " + text);
        // Not within is also said of what is no number.
        if (!(std::fabs(seconds) <= farthestStartSeconds))
            throw CLI::ValidationError("--fix", text.substr(0, sign) + ": " + number +
                                                    " is no time within 100 days of 0");
        options.knownStarts.emplace_back(text.substr(0, sign), seconds);
    }
}

void readApart(const std::vector<std::string>& texts, Options& options)
{
    for (const std::string& text : texts) {
        const std::size_t comma = text.find(',');
        if (comma == std::string::npos || comma == 0 || comma + 1 == text.size())
            throw CLI::ValidationError("--apart", "FILE,FILE, not " + text);
        options.apart.emplace_back(text.substr(0, comma), text.substr(comma + 1));
    }
}

// The parts of a text between commas; an empty one among them if a comma has nothing beside it.
std::vector<std::string> partsOf(const std::string& text)
{
    std::vector<std::string> parts;
    std::size_t from = 0;
    for (std::size_t comma = text.find(','); comma != std::string::npos;
         comma = text.find(',', from)) {
        parts.push_back(text.substr(from, comma - from));
        from = comma + 1;
    }
    parts.push_back(text.substr(from));
    return parts;
}

void readDevices(const std::vector<std::string>& texts, Options& options)
{
    for (const std::string& text : texts) {
        const std::size_t sign = text.find('=');
        const bool isNamed = sign != std::string::npos && sign > 0;
        std::vector<std::string> files;
        if (isNamed) files = partsOf(text.substr(sign + 1));
        if (!isNamed || std::find(files.begin(), files.end(), "") != files.end())
            throw CLI::ValidationError("--device", "NAME=FILE,..., not " + text);
        options.devices.emplace_back(text.substr(0, sign), files);
    }
}

} // namespace

void readTexts(const OptionTexts& texts, Options& options)
{
    readSounds(texts, options);
    if (texts.isMemoryGiven) readMemory(texts.memory, options.engine);
    readKnownStarts(texts.fixed, options);
    readApart(texts.apart, options);
    readDevices(texts.devices, options);
}

} // namespace vxlsync::host
