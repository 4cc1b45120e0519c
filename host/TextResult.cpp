#include "TextResult.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "Printable.h"

namespace vxlsync::host
{

namespace
{

// Of a drift as it is printed below, or of what stands in its place.
constexpr std::size_t driftColumns = 16;

std::string counted(std::size_t count, const std::string& what)
{
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

constexpr double millisecondsPerSecond = 1000.0;

std::string padded(const std::string& name, std::size_t width)
{
    const std::string shown = printable(name);
    return shown + std::string(width - columnsOf(shown), ' ');
}

// Columns of the longest name among the sources of members or of those left out.
template <typename Entries>
std::size_t nameWidthOf(const Entries& entries, const Result& result)
{
    std::size_t width = 0;
    for (const auto& entry : entries)
        width = std::max(width, columnsOf(printable(result.sources[entry.source].name)));
    return width;
}

// Behind its path, where it says more than the path does: a series of names is seen in it.
std::string shownDevice(const SourceFacts& source)
{
    if (source.device.empty() || source.deviceKnownBy == DeviceEvidence::names) return "";
    return "  (" + printable(source.device) + ")";
}

void writeGroup(const Group& group, const Result& result, std::ostream& out)
{
    const std::size_t width = nameWidthOf(group.members, result);
    for (const Member& member : group.members) {
        const SourceFacts& source = result.sources[member.source];
        out << fmt::format("{:14.4f} s  +-{:7.2f} ms", member.offsetSeconds,
                           member.offsetUncertaintySeconds * millisecondsPerSecond);
        // Neither landmarks nor known starts tell how a clock runs.
        const bool isDriftUnknown = member.driftPpm == 0.0 && member.driftUncertaintyPpm == 0.0;
        if (isDriftUnknown && member.source != group.reference)
            out << std::string(driftColumns, ' ');
        else if (member.source == group.reference)
            out << "       reference";
        else
            out << fmt::format("  {:+10.2f} ppm", member.driftPpm);
        out << "  " << fmt::format("{:7}", nameOf(member.confidence)) << "  "
            << padded(source.name, width) << "  " << printable(source.path) << shownDevice(source)
            << '\n';
        for (const std::string& note : source.notes)
            out << "                    " << printable(note) << '\n';
    }
}

// Where the source stands in its group; where one begins if it is in none.
double offsetOf(std::size_t source, const Result& result)
{
    for (const Group& group : result.groups) {
        for (const Member& member : group.members) {
            if (member.source == source) return member.offsetSeconds;
        }
    }
    return 0.0;
}

// Each with the words that take it: both starts, since one alone is but a clock.
void writeCandidates(const LeftOut& alone, const Result& result, std::ostream& out)
{
    for (const CandidatePlace& candidate : alone.candidates) {
        const double other = offsetOf(candidate.with, result);
        out << fmt::format("      {:12.4f} s {} ", std::fabs(candidate.offsetSeconds),
                           candidate.offsetSeconds < 0.0 ? "before" : "after")
            << printable(result.sources[candidate.with].name)
            << fmt::format(", by {:.1f} s of evidence\n", candidate.evidenceSeconds)
            << fmt::format("                     --fix {}={:.6f} --fix {}={:.6f}\n",
                           shellWord(result.sources[candidate.with].path), other,
                           shellWord(result.sources[alone.source].path),
                           other + candidate.offsetSeconds);
    }
}

void writeAlone(const Result& result, std::ostream& out)
{
    out << "\nAlone: " << counted(result.alone.size(), "recording") << '\n';
    const std::size_t width = nameWidthOf(result.alone, result);
    for (const LeftOut& alone : result.alone) {
        const SourceFacts& source = result.sources[alone.source];
        out << "  " << padded(source.name, width) << "  " << printable(source.path)
            << shownDevice(source) << ": " << printable(alone.reason) << '\n';
        writeCandidates(alone, result, out);
        for (const std::string& note : source.notes)
            out << "      " << printable(note) << '\n';
    }
}

void writeFailed(const Result& result, std::ostream& out)
{
    out << "\nFailed: " << counted(result.failed.size(), "file") << '\n';
    for (const LeftOut& failed : result.failed) {
        out << "  " << printable(result.sources[failed.source].path) << ": "
            << printable(failed.reason) << '\n';
    }
}

} // namespace

void writeText(const Result& result, std::ostream& out)
{
    if (result.groups.empty()) out << "Nothing matched.\n";
    for (std::size_t i = 0; i < result.groups.size(); ++i) {
        const Group& group = result.groups[i];
        if (i > 0) out << '\n';
        out << "Group " << i + 1 << ": " << counted(group.members.size(), "recording") << '\n';
        writeGroup(group, result, out);
    }
    if (!result.alone.empty()) writeAlone(result, out);
    if (!result.failed.empty()) writeFailed(result, out);
}

} // namespace vxlsync::host
