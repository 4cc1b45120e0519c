#include "Output.h"

#include <algorithm>
#include <ostream>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace vxlsync
{

namespace
{

using Json = nlohmann::ordered_json;

// Columns that the text takes on a terminal, as far as each character takes one: the bytes that
// continue a UTF-8 character do not count.
std::size_t widthOf(const std::string& text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char letter) {
        return (static_cast<unsigned char>(letter) & 0xC0U) != 0x80U;
    }));
}

std::string counted(std::size_t count, const std::string& what)
{
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::string padded(const std::string& name, std::size_t width)
{
    const std::string shown = printable(name);
    return shown + std::string(width - widthOf(shown), ' ');
}

template <typename Recordings>
std::size_t nameWidthOf(const Recordings& recordings)
{
    std::size_t width = 0;
    for (const auto& recording : recordings)
        width = std::max(width, widthOf(printable(recording.name)));
    return width;
}

void writeGroup(const Group& group, std::ostream& out)
{
    const std::size_t width = nameWidthOf(group.members);
    for (const Member& member : group.members) {
        out << fmt::format("{:14.4f} s  +-{:7.4f} s", member.offsetSeconds,
                           member.offsetUncertaintySeconds);
        if (member.index == group.reference)
            out << "       reference";
        else
            out << fmt::format("  {:+10.2f} ppm", member.driftPpm);
        out << "  " << padded(member.name, width) << "  " << printable(member.path) << '\n';
        for (const std::string& note : member.notes)
            out << "                    " << note << '\n';
    }
}

Json linkJson(const ReportedLink& link)
{
    Json jumps = Json::array();
    for (const Jump& jump : link.jumps)
        jumps.push_back(Json{{"atSeconds", jump.atSeconds}, {"sizeSeconds", jump.sizeSeconds}});
    return Json{{"first", link.firstName},
                {"second", link.secondName},
                {"method", link.method},
                {"offsetSeconds", link.offsetSeconds},
                {"offsetAtStartSeconds", link.offsetAtStartSeconds},
                {"offsetAtEndSeconds", link.offsetAtEndSeconds},
                {"uncertaintySeconds", link.uncertaintySeconds},
                {"driftPpm", link.driftPpm},
                {"driftUncertaintyPpm", link.driftUncertaintyPpm},
                {"overlapSeconds", link.overlapSeconds},
                {"peakRatio", link.peakRatio},
                {"coherence", link.coherence},
                {"agreement", link.agreement},
                {"secondBest", link.secondBest},
                {"inverted", link.inverted},
                {"jumps", std::move(jumps)},
                {"verdict", link.verdict},
                {"reason", link.reason}};
}

Json linksJson(const std::vector<ReportedLink>& links)
{
    Json list = Json::array();
    for (const ReportedLink& link : links)
        list.push_back(linkJson(link));
    return list;
}

std::string quoted(const std::string& text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string result = "\"";
    for (const char letter : text) {
        if (letter == '"') result += '"';
        result += letter;
    }
    return result + '"';
}

} // namespace

std::string printable(const std::string& text)
{
    std::string result;
    for (const char letter : text) {
        const auto code = static_cast<unsigned char>(letter);
        if (code >= 0x20U && code != 0x7FU)
            result += letter;
        else
            result += fmt::format("\\x{:02x}", static_cast<unsigned int>(code));
    }
    return result;
}

void writeText(const Report& report, std::ostream& out)
{
    if (report.groups.empty()) out << "Nothing matched.\n";
    for (std::size_t i = 0; i < report.groups.size(); ++i) {
        if (i > 0) out << '\n';
        out << "Group " << i + 1 << ": " << counted(report.groups[i].members.size(), "recording")
            << '\n';
        writeGroup(report.groups[i], out);
    }
    if (!report.alone.empty()) {
        out << "\nAlone: " << counted(report.alone.size(), "recording") << '\n';
        const std::size_t width = nameWidthOf(report.alone);
        for (const LoneRecording& one : report.alone) {
            out << "  " << padded(one.name, width) << "  " << printable(one.path) << ": "
                << one.reason << '\n';
        }
    }
    if (!report.failed.empty()) {
        out << "\nFailed: " << counted(report.failed.size(), "file") << '\n';
        for (const Failure& failure : report.failed)
            out << "  " << printable(failure.path) << ": " << printable(failure.reason) << '\n';
    }
}

void writeJson(const Report& report, std::ostream& out)
{
    Json groups = Json::array();
    for (const Group& group : report.groups) {
        Json members = Json::array();
        std::string reference;
        for (const Member& member : group.members) {
            if (member.index == group.reference) reference = member.path;
            members.push_back(Json{{"name", member.name},
                                   {"path", member.path},
                                   {"offsetSeconds", member.offsetSeconds},
                                   {"offsetUncertaintySeconds", member.offsetUncertaintySeconds},
                                   {"driftPpm", member.driftPpm},
                                   {"driftUncertaintyPpm", member.driftUncertaintyPpm},
                                   {"durationSeconds", member.durationSeconds},
                                   {"notes", member.notes}});
        }
        groups.push_back(Json{{"reference", reference},
                              {"members", std::move(members)},
                              {"links", linksJson(group.links)}});
    }
    Json alone = Json::array();
    for (const LoneRecording& one : report.alone) {
        alone.push_back(Json{{"name", one.name},
                             {"path", one.path},
                             {"durationSeconds", one.durationSeconds},
                             {"reason", one.reason}});
    }
    Json failed = Json::array();
    for (const Failure& failure : report.failed)
        failed.push_back(Json{{"path", failure.path}, {"reason", failure.reason}});

    const Json document{{"version", 2},
                        {"groups", std::move(groups)},
                        {"alone", std::move(alone)},
                        {"refusedLinks", linksJson(report.refused)},
                        {"failed", std::move(failed)}};
    constexpr int indent = 2;
    out << document.dump(indent, ' ', false, Json::error_handler_t::replace) << '\n';
}

void writeCsv(const Report& report, std::ostream& out)
{
    out << "group,name,path,offset_seconds,offset_uncertainty_seconds,drift_ppm,"
           "drift_uncertainty_ppm,duration_seconds,reason\n";
    for (std::size_t i = 0; i < report.groups.size(); ++i) {
        for (const Member& member : report.groups[i].members) {
            out << fmt::format("{},{},{},{:.6f},{:.6f},{:.3f},{:.3f},{:.3f},\n", i + 1,
                               quoted(member.name), quoted(member.path), member.offsetSeconds,
                               member.offsetUncertaintySeconds, member.driftPpm,
                               member.driftUncertaintyPpm, member.durationSeconds);
        }
    }
    for (const LoneRecording& one : report.alone) {
        out << fmt::format(",{},{},,,,,{:.3f},{}\n", quoted(one.name), quoted(one.path),
                           one.durationSeconds, quoted(one.reason));
    }
    for (const Failure& failure : report.failed)
        out << fmt::format(",,{},,,,,,{}\n", quoted(failure.path), quoted(failure.reason));
}

} // namespace vxlsync
