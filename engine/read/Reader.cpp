#include "read/Reader.h"

#include "read/Failure.h"

namespace vxlsync
{

ChannelRange channelsOf(const Options& options, int channels)
{
    if (options.channel == Channel::mix) return {0, channels, true};
    if (options.channel == Channel::left) return {};
    if (options.channelNumber > channels)
        throw ReadFailure(failures::noChannel(options.channelNumber, channels));
    return {options.channelNumber - 1, 1, false};
}

} // namespace vxlsync
