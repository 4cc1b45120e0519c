#include "Output.h"

#include <algorithm>
#include <cstdio>
#include <ostream>

#include <nlohmann/json.hpp>

namespace vxlsync
{

namespace
{

// Columns that the text takes on a terminal, as far as each character takes one: the bytes that
// continue a UTF-8 character do not count.
std::size_t widthOf(const std::string& text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char letter) {
        return (static_cast<unsigned char>(letter) & 0xC0u) != 0x80u;
    }));
}

std::string counted(std::size_t count, const std::string& what)
{
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

std::string seconds(float offsetSeconds)
{
    char text[64];
    std::snprintf(text, sizeof(text), "%12.3f s", static_cast<double>(offsetSeconds));
    return text;
}

void writeRecording(const std::string& name, const std::string& path, std::size_t nameWidth,
                    std::ostream& out)
{
    const std::string shown = printable(name);
    out << "  " << shown << std::string(nameWidth - widthOf(shown), ' ') << "  " << printable(path)
        << '\n';
}

template <typename Recordings>
std::size_t nameWidthOf(const Recordings& recordings)
{
    std::size_t width = 0;
    for (const auto& recording : recordings)
        width = std::max(width, widthOf(printable(recording.name)));
    return width;
}

} // namespace

std::string printable(const std::string& text)
{
    std::string result;
    for (const char letter : text) {
        const auto code = static_cast<unsigned char>(letter);
        if (code >= 0x20u && code != 0x7Fu) {
            result += letter;
            continue;
        }
        char escaped[8];
        std::snprintf(escaped, sizeof(escaped), "\\x%02x", static_cast<unsigned int>(code));
        result += escaped;
    }
    return result;
}

void writeText(const Report& report, std::ostream& out)
{
    if (report.groups.empty()) out << "Nothing matched.\n";
    for (std::size_t i = 0; i < report.groups.size(); ++i) {
        const Group& group = report.groups[i];
        if (i > 0) out << '\n';
        out << "Group " << i + 1 << ": " << counted(group.size(), "recording") << '\n';
        for (const Member& member : group) {
            out << seconds(member.offsetSeconds);
            writeRecording(member.name, member.path, nameWidthOf(group), out);
        }
    }
    if (!report.alone.empty()) {
        out << "\nAlone: " << counted(report.alone.size(), "recording") << '\n';
        for (const Recording& recording : report.alone)
            writeRecording(recording.name, recording.path, nameWidthOf(report.alone), out);
    }
    if (!report.failed.empty()) {
        out << "\nFailed: " << counted(report.failed.size(), "file") << '\n';
        for (const Failure& failure : report.failed)
            out << "  " << printable(failure.path) << ": " << printable(failure.reason) << '\n';
    }
}

void writeJson(const Report& report, std::ostream& out)
{
    using Json = nlohmann::ordered_json;

    Json groups = Json::array();
    for (const Group& group : report.groups) {
        Json members = Json::array();
        for (const Member& member : group) {
            // The double has the very value of the float.
            members.push_back(Json{{"name", member.name},
                                   {"path", member.path},
                                   {"offsetSeconds", static_cast<double>(member.offsetSeconds)}});
        }
        groups.push_back(Json{{"members", std::move(members)}});
    }
    Json alone = Json::array();
    for (const Recording& recording : report.alone)
        alone.push_back(Json{{"name", recording.name}, {"path", recording.path}});
    Json failed = Json::array();
    for (const Failure& failure : report.failed)
        failed.push_back(Json{{"path", failure.path}, {"reason", failure.reason}});

    const Json document{{"version", 1},
                        {"groups", std::move(groups)},
                        {"alone", std::move(alone)},
                        {"failed", std::move(failed)}};
    constexpr int indent = 2;
    out << document.dump(indent, ' ', false, Json::error_handler_t::replace) << '\n';
}

} // namespace vxlsync
