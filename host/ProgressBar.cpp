#include "ProgressBar.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "Printable.h"

namespace vxlsync::host
{

namespace
{

// Letters between the brackets where there is room, and those below which there are none.
constexpr std::size_t mostLetters = 40;
constexpr std::size_t leastLetters = 5;
// Of label, brackets, percents and seconds left with the most digits.
constexpr std::size_t columnsAround = 35;
// Share of the whole before which the time left is a guess.
constexpr double leastForecastShare = 0.05;
// Seconds left that have six digits at most; a forecast beyond helps nobody.
constexpr double greatestForecastSeconds = 999999.0;
// Lines for logs: one for each so many percent of a stage.
constexpr int plainPercentStep = 10;
// Lines for programs.
constexpr int jsonPercentStep = 1;

int percentOf(double share)
{
    const double clipped = share > 0.0 ? std::min(share, 1.0) : 0.0;
    return static_cast<int>(clipped * 100.0);
}

bool isKnown(double secondsLeft)
{
    return secondsLeft >= 0.0 && secondsLeft <= greatestForecastSeconds;
}

// With its brackets.
std::string lettersOf(int percent, std::size_t columns)
{
    const std::size_t free = columns > columnsAround ? columns - columnsAround : 0;
    const std::size_t letters = std::min(free, mostLetters);
    if (letters < leastLetters) return "";
    const std::size_t full = static_cast<std::size_t>(percent) * letters / 100;
    return "[" + std::string(full, '#') + std::string(letters - full, '.') + "]";
}

} // namespace

std::string barText(const std::string& label, double share, double secondsLeft, std::size_t columns)
{
    const int percent = percentOf(share);
    std::string text = fmt::format("{:<12}{}{:>4} %", label, lettersOf(percent, columns), percent);
    if (isKnown(secondsLeft)) text += fmt::format("  {:.0f} s left", std::ceil(secondsLeft));
    return text.substr(0, columns > 0 ? columns - 1 : 0);
}

ProgressBar::ProgressBar(std::ostream& newOut, ProgressMode newMode,
                         std::vector<std::string> newPaths, std::function<std::size_t()> newColumns)
    : out(newOut),
      mode(newMode),
      paths(std::move(newPaths)),
      columns(std::move(newColumns)),
      start(std::chrono::steady_clock::now())
{
}

ProgressBar::~ProgressBar()
{
    erase();
    out.flush();
}

void ProgressBar::show(const Progress& progress)
{
    if (mode == ProgressMode::bar) {
        drawBar(progress);
    } else if (mode == ProgressMode::plain) {
        if (isWorthALine(progress, plainPercentStep)) writePlainLine(progress);
    } else if (mode == ProgressMode::json) {
        if (isWorthALine(progress, jsonPercentStep)) writeJsonLine(progress);
    }
}

void ProgressBar::drawBar(const Progress& progress)
{
    std::string text =
        barText(nameOf(progress.stage), progress.share, secondsLeft(progress.share), columns());
    if (text == drawn) return;
    erase();
    out << text << std::flush;
    drawn = std::move(text);
}

void ProgressBar::writePlainLine(const Progress& progress)
{
    std::string line = fmt::format("{}: {} %, whole {:.0f} %", nameOf(progress.stage),
                                   percentOf(progress.stageShare), progress.share * 100.0);
    const double left = secondsLeft(progress.share);
    if (isKnown(left)) line += fmt::format(", {:.0f} s left", std::ceil(left));
    if (progress.finishedSource) line += ", done: " + printable(paths[*progress.finishedSource]);
    out << line << std::endl;
}

void ProgressBar::writeJsonLine(const Progress& progress)
{
    using Json = nlohmann::ordered_json;
    const double left = secondsLeft(progress.share);
    Json line;
    line["stage"] = nameOf(progress.stage);
    line["stageShare"] = progress.stageShare;
    line["share"] = progress.share;
    line["secondsLeft"] = nullptr;
    if (isKnown(left)) line["secondsLeft"] = left;
    if (progress.finishedSource) {
        line["file"] = paths[*progress.finishedSource];
        // Tells apart names whose bytes JSON cannot hold.
        line["fileIndex"] = *progress.finishedSource;
    }
    out << line.dump(-1, ' ', false, Json::error_handler_t::replace) << std::endl;
}

// True for a stage that begins, a file that is done, and each step of so many percent.
bool ProgressBar::isWorthALine(const Progress& progress, int percentStep)
{
    const int percent = percentOf(progress.stageShare);
    const bool isNew =
        lineStage != progress.stage || percent / percentStep != linePercent / percentStep;
    if (!isNew && !progress.finishedSource) return false;
    lineStage = progress.stage;
    linePercent = percent;
    return true;
}

void ProgressBar::erase()
{
    if (drawn.empty()) return;
    out << eraseLine;
    drawn.clear();
}

// Negative if nobody can know yet.
double ProgressBar::secondsLeft(double share) const
{
    if (share < leastForecastShare) return -1.0;
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
    return passed.count() * (1.0 - share) / share;
}

} // namespace vxlsync::host
