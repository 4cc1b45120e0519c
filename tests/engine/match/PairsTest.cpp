#include "match/Pairs.h"

#include <gtest/gtest.h>

#include "Measuring.h"
#include "Signals.h"

namespace
{

using vxlsync::Prepared;

Prepared aBit()
{
    return measuring::preparedOf(signals::noise(1, 100));
}

std::vector<std::pair<std::size_t, std::size_t>> pairsOf(const std::vector<std::string>& devices,
                                                         std::size_t silent = 99)
{
    std::vector<Prepared> recordings;
    for (std::size_t i = 0; i < devices.size(); ++i)
        recordings.push_back(i == silent ? measuring::preparedOf({}) : aBit());
    std::vector<std::pair<std::size_t, std::size_t>> pairs;
    for (const auto& pair : vxlsync::pairsToCompare(recordings, devices))
        pairs.push_back({pair.first, pair.second});
    return pairs;
}

using Pairs = std::vector<std::pair<std::size_t, std::size_t>>;

TEST(Pairs, AreAllThatThereAre)
{
    EXPECT_EQ(pairsOf({"", "", ""}), (Pairs{{0, 1}, {0, 2}, {1, 2}}));
}

TEST(Pairs, LeaveOutThoseOfOneDevice)
{
    EXPECT_EQ(pairsOf({"A", "B", "A"}), (Pairs{{0, 1}, {1, 2}}));
}

TEST(Pairs, LeaveOutSilence)
{
    EXPECT_EQ(pairsOf({"", "", ""}, 1), (Pairs{{0, 2}}));
}

} // namespace
