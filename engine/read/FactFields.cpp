#include "read/FactFields.h"

namespace vxlsync
{

std::string factText(const std::string& bytes)
{
    // The longest name of a device has some forty letters.
    constexpr std::size_t mostBytes = 128;
    constexpr unsigned char lastControl = 0x1F;
    constexpr unsigned char deletion = 0x7F;
    std::string text;
    for (const char letter : bytes) {
        if (letter == '\0' || text.size() == mostBytes) break;
        const auto byte = static_cast<unsigned char>(letter);
        const bool isBlank = letter == ' ' && text.empty();
        if (byte > lastControl && byte != deletion && !isBlank) text += letter;
    }
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    return text;
}

void setTimeReference(std::uint64_t samples, std::int64_t rate, FileFacts& facts)
{
    const double seconds = static_cast<double>(samples) / static_cast<double>(rate);
    const DayTime day{seconds};
    // Zero is what stands there if nobody wrote it.
    if (samples == 0 || rate <= 0 || seconds >= day.daySeconds) return;
    facts.timeReference = seconds;
    facts.started = day;
}

} // namespace vxlsync
