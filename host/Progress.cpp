#include "Progress.h"

#include <algorithm>
#include <cmath>
#include <ostream>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "Output.h"

namespace vxlsync
{

namespace
{

constexpr std::size_t barWidth = 40;
// Before this much is done, the time left is a guess.
constexpr double leastForecast = 0.05;
// Lines are for logs: one for each so many percent.
constexpr int plainStep = 10;

} // namespace

std::string barText(const std::string& label, double share, double secondsLeft)
{
    const double clipped = share > 0.0 ? std::min(share, 1.0) : 0.0;
    const int percent = static_cast<int>(clipped * 100.0);
    const std::size_t full = static_cast<std::size_t>(percent) * barWidth / 100;
    std::string text = fmt::format("{:<12}[{}{}]{:>4} %", label, std::string(full, '#'),
                                   std::string(barWidth - full, '.'), percent);
    if (secondsLeft >= 0.0) text += fmt::format("  {:.0f} s left", std::ceil(secondsLeft));
    return text;
}

Progress::Progress(std::ostream& newOut, ProgressMode newMode)
    : out(newOut), mode(newMode), start(std::chrono::steady_clock::now())
{
}

Progress::~Progress()
{
    erase();
    out.flush();
}

void Progress::stage(const std::string& newLabel, double begin, double end)
{
    const std::lock_guard<std::mutex> lock(guard);
    label = newLabel;
    stageBegin = begin;
    stageEnd = end;
    stageShare = 0.0;
    whole = std::max(whole, begin);
    toldPercent = -1;
    tell(std::string());
}

void Progress::update(double share)
{
    const std::lock_guard<std::mutex> lock(guard);
    if (!(share > stageShare)) return;
    stageShare = std::min(share, 1.0);
    whole = stageBegin + stageShare * (stageEnd - stageBegin);
    tell(std::string());
}

void Progress::finishFile(const std::string& path, double share)
{
    const std::lock_guard<std::mutex> lock(guard);
    if (share > stageShare) stageShare = std::min(share, 1.0);
    whole = stageBegin + stageShare * (stageEnd - stageBegin);
    tell(path);
}

void Progress::printLine(const std::string& line)
{
    const std::lock_guard<std::mutex> lock(guard);
    const std::string below = drawn;
    erase();
    out << line << '\n' << below << std::flush;
    drawn = below;
}

void Progress::tell(const std::string& file)
{
    if (mode == ProgressMode::none) return;
    if (mode == ProgressMode::bar) {
        std::string text = barText(label, whole, secondsLeft());
        if (text == drawn) return;
        erase();
        out << text << std::flush;
        drawn = std::move(text);
        return;
    }
    const int percent = static_cast<int>(stageShare * 100.0);
    const int step = mode == ProgressMode::plain ? plainStep : 1;
    if (file.empty() && toldPercent >= 0 && percent / step == toldPercent / step) return;
    toldPercent = percent;
    const double left = secondsLeft();
    if (mode == ProgressMode::plain) {
        std::string line = fmt::format("{}: {} %, whole {:.0f} %", label, percent, whole * 100.0);
        if (left >= 0.0) line += fmt::format(", {:.0f} s left", std::ceil(left));
        if (!file.empty()) line += ", done: " + printable(file);
        out << line << std::endl;
        return;
    }
    using Json = nlohmann::ordered_json;
    Json line{{"stage", label}, {"stageShare", stageShare}, {"share", whole}};
    line["secondsLeft"] = left >= 0.0 ? Json(left) : Json(nullptr);
    if (!file.empty()) line["file"] = file;
    out << line.dump(-1, ' ', false, Json::error_handler_t::replace) << std::endl;
}

void Progress::erase()
{
    if (drawn.empty()) return;
    out << '\r' << std::string(drawn.size(), ' ') << '\r';
    drawn.clear();
}

double Progress::secondsLeft() const
{
    if (whole < leastForecast) return -1.0;
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
    return passed.count() * (1.0 - whole) / whole;
}

} // namespace vxlsync
