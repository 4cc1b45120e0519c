#include "ProgressBar.h"

#include <algorithm>
#include <ostream>

namespace vxlsync
{

namespace
{

constexpr std::size_t labelWidth = 12;
constexpr int barWidth = 40;
constexpr std::size_t percentWidth = 4;

std::string padded(const std::string& text, std::size_t width)
{
    return text.size() < width ? text + std::string(width - text.size(), ' ') : text;
}

} // namespace

std::string barText(const std::string& label, float fraction)
{
    const float share = fraction > 0.0f ? std::min(fraction, 1.0f) : 0.0f;
    const int percent = static_cast<int>(share * 100.0f);
    const auto full = static_cast<std::size_t>(percent * barWidth / 100);
    const std::string number = std::to_string(percent);
    return padded(label, labelWidth) + '[' + std::string(full, '#') +
           std::string(barWidth - full, '.') + ']' +
           std::string(percentWidth - number.size(), ' ') + number + " %";
}

ProgressBar::ProgressBar(std::ostream& newOut, bool newShown) : out(newOut), shown(newShown) {}

ProgressBar::~ProgressBar()
{
    erase();
    out.flush();
}

void ProgressBar::show(const std::string& label, float fraction)
{
    if (!shown) return;
    std::string text = barText(label, fraction);
    // The library reports far more often than the picture changes.
    if (text == drawn) return;
    erase();
    out << text << std::flush;
    drawn = std::move(text);
}

void ProgressBar::printLine(const std::string& line)
{
    const std::string below = drawn;
    erase();
    out << line << '\n' << below << std::flush;
    drawn = below;
}

void ProgressBar::erase()
{
    if (drawn.empty()) return;
    out << '\r' << std::string(drawn.size(), ' ') << '\r';
    drawn.clear();
}

} // namespace vxlsync
