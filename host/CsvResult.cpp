#include "CsvResult.h"

#include <ostream>
#include <string>

#include <fmt/format.h>

#include "Printable.h"

namespace vxlsync::host
{

namespace
{

// A text as one field of a table.
std::string fieldOf(const std::string& text)
{
    // What a spreadsheet computes, or skips before it looks for a formula.
    constexpr const char* formulaStarts = "=+-@\t\r\n";
    const bool isFormula = text.find_first_of(formulaStarts) == 0;
    std::string shown = (isFormula ? "'" : "") + printable(text);
    if (shown.find_first_of(",\"") == std::string::npos) return shown;
    std::string result = "\"";
    for (const char letter : shown) {
        if (letter == '"') result += '"';
        result += letter;
    }
    return result + '"';
}

} // namespace

void writeCsv(const Result& result, std::ostream& out)
{
    out << "group,name,path,offset_seconds,offset_uncertainty_seconds,drift_ppm,"
           "drift_uncertainty_ppm,duration_seconds,reason,device\n";
    for (std::size_t i = 0; i < result.groups.size(); ++i) {
        for (const Member& member : result.groups[i].members) {
            const SourceFacts& source = result.sources[member.source];
            out << fmt::format("{},{},{},{:.6f},{:.6f},{:.3f},{:.3f},{:.3f},,{}\n", i + 1,
                               fieldOf(source.name), fieldOf(source.path), member.offsetSeconds,
                               member.offsetUncertaintySeconds, member.driftPpm,
                               member.driftUncertaintyPpm, source.durationSeconds,
                               fieldOf(source.device));
        }
    }
    for (const LeftOut& alone : result.alone) {
        const SourceFacts& source = result.sources[alone.source];
        out << fmt::format(",{},{},,,,,{:.3f},{},{}\n", fieldOf(source.name), fieldOf(source.path),
                           source.durationSeconds, fieldOf(alone.reason), fieldOf(source.device));
    }
    for (const LeftOut& failed : result.failed) {
        out << fmt::format(",,{},,,,,,{},\n", fieldOf(result.sources[failed.source].path),
                           fieldOf(failed.reason));
    }
}

} // namespace vxlsync::host
