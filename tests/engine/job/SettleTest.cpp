#include "job/Settle.h"

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using vxlsync::Assembly;
using vxlsync::Links;

// Numbers of links that were decided upon, where each of the searches finds so many more.
std::vector<std::size_t> decidedUpon(const std::vector<std::size_t>& more)
{
    std::vector<std::size_t> decided;
    std::size_t searches = 0;
    const auto assembleLinks = [&](Links links) {
        decided.push_back(links.size());
        Assembly assembly;
        assembly.links = std::move(links);
        return assembly;
    };
    const auto searchAgain = [&](const Assembly& assembly, double, double) {
        return Links(assembly.links.size() + more.at(searches++));
    };
    const Assembly assembly = vxlsync::settle(Links(3), assembleLinks, searchAgain);
    EXPECT_EQ(assembly.links.size(), decided.back());
    return decided;
}

TEST(Settle, DecidesOnceWhereNothingMoreIsFound)
{
    EXPECT_THAT(decidedUpon({0}), ElementsAre(3));
}

TEST(Settle, DecidesAgainOnWhatIsFound)
{
    EXPECT_THAT(decidedUpon({2, 0}), ElementsAre(3, 5));
}

// Of a pair whose only link gives way to another there are as many as before.
TEST(Settle, DecidesAgainWhereALinkHasGivenWay)
{
    for (const auto change : {+[](vxlsync::Link& link) { link.line.offset = 5.0; },
                              +[](vxlsync::Link& link) { link.line.coherence = 0.5; },
                              +[](vxlsync::Link& link) { link.second = 1; }}) {
        int decisions = 0;
        vxlsync::settle(
            Links(1),
            [&](Links links) {
                ++decisions;
                return Assembly{{}, std::move(links), {}, {}};
            },
            [&](const Assembly& assembly, double, double) {
                Links links = assembly.links;
                change(links[0]);
                return links;
            });

        EXPECT_EQ(decisions, 2);
    }
}

TEST(Settle, GivesUpASearchThatEndsNowhere)
{
    EXPECT_THAT(decidedUpon({2, 1, 1}), ElementsAre(3, 5, 6));
}

TEST(Settle, SharesTheStageAmongItsSearches)
{
    std::vector<double> shares;
    vxlsync::settle(
        {},
        [](Links links) {
            return Assembly{{}, std::move(links), {}, {}};
        },
        [&](const Assembly& assembly, double beginShare, double endShare) {
            shares.insert(shares.end(), {beginShare, endShare});
            return Links(assembly.links.size() + 1);
        });

    EXPECT_THAT(shares, ElementsAre(0.0, 0.5, 0.5, 1.0));
}

} // namespace
