#include "model/DateTime.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace vxlsync
{

namespace
{

// Clocks that nobody set count from 1904, 1970 or 1980; recorders with files came later.
constexpr int firstYear = 1990;
constexpr int lastYear = 2199;
constexpr int minuteSeconds = 60;
constexpr int hourSeconds = 3600;
constexpr int daySeconds = 86400;

bool isLeap(int year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int daysOfYear(int year)
{
    return isLeap(year) ? 366 : 365;
}

int daysOfMonth(int year, int month)
{
    constexpr std::array<int, 12> days{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeap(year) ? 29 : days[static_cast<std::size_t>(month - 1)];
}

int daysBefore(int year, int month)
{
    int days = 0;
    for (int past = 1970; past < year; ++past)
        days += daysOfYear(past);
    for (int past = 1; past < month; ++past)
        days += daysOfMonth(year, past);
    return days;
}

// Walks over a text that holds numbers of a fixed width.
class Digits
{
public:
    explicit Digits(const std::string& newText) : text(newText) {}

    // The number in the next `count` digits, or -1 if they are none.
    int number(int count)
    {
        int value = 0;
        for (int i = 0; i < count; ++i) {
            const char letter = next();
            if (letter < '0' || letter > '9') return -1;
            value = 10 * value + (letter - '0');
        }
        return value;
    }
    // The next character, or 0 behind the last.
    char next() { return at < text.size() ? text[at++] : '\0'; }
    char coming() const { return at < text.size() ? text[at] : '\0'; }
    // The number of all digits that follow, as a fraction of one.
    double fraction()
    {
        double value = 0.0;
        for (double unit = 0.1; coming() >= '0' && coming() <= '9'; unit /= 10.0)
            value += unit * (next() - '0');
        return value;
    }

private:
    const std::string& text;
    std::size_t at = 0;
};

// Nothing if no zone follows. An hour may stand without minutes, and a colon between them.
std::optional<int> zoneOf(Digits& digits)
{
    const char sign = digits.next();
    if (sign == 'Z') return 0;
    if (sign != '+' && sign != '-') return std::nullopt;
    const int hours = digits.number(2);
    if (digits.coming() == ':') digits.next();
    const int minutes = digits.coming() == '\0' ? 0 : digits.number(2);
    constexpr int farthestHours = 15;
    if (hours < 0 || hours > farthestHours || minutes < 0 || minutes > 59) return std::nullopt;
    const int ahead = 60 * hours + minutes;
    return sign == '+' ? ahead : -ahead;
}

bool isOf(int number, int least, int greatest)
{
    return number >= least && number <= greatest;
}

} // namespace

std::optional<DateTime> parseDateTime(const std::string& text)
{
    Digits digits(text);
    const int year = digits.number(4);
    std::array<int, 5> parts{};
    for (int& part : parts) {
        digits.next();
        part = digits.number(2);
    }
    const auto [month, day, hour, minute, second] = parts;
    if (!isOf(year, firstYear, lastYear) || !isOf(month, 1, 12) ||
        !isOf(day, 1, daysOfMonth(year, month)) || !isOf(hour, 0, 23) || !isOf(minute, 0, 59) ||
        !isOf(second, 0, 60))
        return std::nullopt;

    DateTime time;
    const std::int64_t days = daysBefore(year, month) + day - 1;
    time.seconds = static_cast<double>(days * daySeconds + hour * hourSeconds +
                                       minute * minuteSeconds + second);
    if (digits.coming() == '.') {
        digits.next();
        time.seconds += digits.fraction();
    }
    time.zoneMinutes = zoneOf(digits);
    time.seconds -= time.zoneMinutes.value_or(0) * minuteSeconds;
    return time;
}

std::string textOf(const DateTime& time)
{
    const int zone = time.zoneMinutes.value_or(0);
    const auto shown = static_cast<std::int64_t>(std::floor(time.seconds)) + zone * minuteSeconds;
    int days = static_cast<int>(shown / daySeconds);
    const int seconds = static_cast<int>(shown % daySeconds);
    int year = 1970;
    for (; days >= daysOfYear(year); ++year)
        days -= daysOfYear(year);
    int month = 1;
    for (; days >= daysOfMonth(year, month); ++month)
        days -= daysOfMonth(year, month);

    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d", year, month, days + 1,
                  seconds / hourSeconds, seconds / minuteSeconds % 60, seconds % minuteSeconds);
    std::string result = text.data();
    if (!time.zoneMinutes) return result;
    if (zone == 0) return result + 'Z';
    std::snprintf(text.data(), text.size(), "%c%02d:%02d", zone < 0 ? '-' : '+',
                  std::abs(zone) / 60, std::abs(zone) % 60);
    return result + text.data();
}

} // namespace vxlsync
