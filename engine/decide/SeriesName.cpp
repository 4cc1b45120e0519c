#include "decide/SeriesName.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace vxlsync
{

namespace
{

// Four digits are the least that devices count with; more than nine are a date or a sum.
constexpr std::size_t leastDigits = 4;
constexpr std::size_t mostDigits = 9;

bool isDigit(char letter)
{
    return letter >= '0' && letter <= '9';
}

bool isCapital(char letter)
{
    return letter >= 'A' && letter <= 'Z';
}

// Capitals, digits and the two signs that stand between them.
bool isDevicePrefix(const std::string& prefix)
{
    const bool hasLetter = std::any_of(prefix.begin(), prefix.end(), isCapital);
    return hasLetter && std::all_of(prefix.begin(), prefix.end(), [](char letter) {
               return isCapital(letter) || isDigit(letter) || letter == '_' || letter == '-';
           });
}

std::string smallLetters(std::string text)
{
    for (char& letter : text) {
        if (isCapital(letter)) letter = static_cast<char>(letter - 'A' + 'a');
    }
    return text;
}

// Two letters, two digits that count the chapters of a take, and four that count the takes.
bool hasChapter(const std::string& prefix, std::size_t digits)
{
    constexpr std::size_t letters = 2;
    constexpr std::size_t chapterAndTake = 6;
    return prefix.size() == letters && digits == chapterAndTake;
}

// Films with nothing but five digits for a name.
bool isCardFilm(const std::string& prefix, std::size_t digits, const std::string& ending)
{
    constexpr std::size_t cardDigits = 5;
    return prefix.empty() && digits == cardDigits && (ending == ".mts" || ending == ".m2ts");
}

} // namespace

bool SeriesName::isFollowedBy(const SeriesName& other) const
{
    if (!isOfSeries(other)) return false;
    if (number == other.number) return other.chapter == chapter + 1;
    return other.number == number + 1 && chapter == 0 && other.chapter == 0;
}

std::string folderOf(const std::string& path)
{
    return std::filesystem::path(path).lexically_normal().parent_path().string();
}

std::optional<SeriesName> seriesNameOf(const std::string& path)
{
    const std::filesystem::path whole(path);
    const std::string stem = whole.stem().string();
    const auto behind = std::find_if_not(stem.rbegin(), stem.rend(), isDigit);
    const auto digits = static_cast<std::size_t>(behind - stem.rbegin());
    if (digits < leastDigits || digits > mostDigits) return std::nullopt;

    SeriesName name;
    name.folder = folderOf(path);
    name.prefix = stem.substr(0, stem.size() - digits);
    name.ending = smallLetters(whole.extension().string());
    if (!isDevicePrefix(name.prefix) && !isCardFilm(name.prefix, digits, name.ending))
        return std::nullopt;
    name.number = std::strtol(stem.c_str() + name.prefix.size(), nullptr, 10);
    if (hasChapter(name.prefix, digits)) {
        constexpr long takes = 10000;
        name.chapter = static_cast<int>(name.number / takes);
        name.number %= takes;
    }
    return name;
}

} // namespace vxlsync
