#include "match/SearchParted.h"

#include <algorithm>
#include <set>

#include "match/BetweenGroups.h"
#include "match/Looking.h"
#include "match/Rivals.h"
#include "match/Ties.h"

namespace vxlsync
{

namespace
{

// By recording: the place of its group among the groups.
std::vector<std::size_t> groupsByRecording(const Parted& parted, std::size_t recordings)
{
    std::vector<std::size_t> result(recordings, 0);
    for (std::size_t group = 0; group < parted.groups.size(); ++group) {
        for (const std::size_t member : parted.groups[group])
            result[member] = group;
    }
    return result;
}

LinkBook bookOf(const Links& links)
{
    LinkBook book;
    for (const Link& link : links)
        book[{link.first, link.second}].push_back(link);
    return book;
}

Links unjudged(Links links)
{
    for (Link& link : links) {
        link.verdict = Verdict::weak;
        link.isDeviceClash = false;
    }
    return links;
}

// By recording: the name of the group in which all ties hold together, those too that were not
// believed.
std::vector<std::size_t> gatheredBefore(const Links& links, Gathering gathering,
                                        std::size_t recordings)
{
    gather(bookOf(unjudged(links)), gathering);
    std::vector<std::size_t> names;
    for (std::size_t i = 0; i < recordings; ++i)
        names.push_back(gathering.groupOf(i));
    return names;
}

void layByUsedLinks(const Links& links, const std::vector<std::size_t>& groups,
                    Gathering& gathering)
{
    std::vector<const Link*> used;
    for (const Link& link : links) {
        if (link.isUsed() && groups[link.first] == groups[link.second]) used.push_back(&link);
    }
    std::stable_sort(used.begin(), used.end(), [](const Link* left, const Link* right) {
        return left->line.significance > right->line.significance;
    });
    for (const Link* link : used)
        gathering.join(link->first, link->second, link->line);
}

// Pairs of groups some members of which were in one group before.
std::vector<GroupPair> partedPairs(const std::vector<std::size_t>& before,
                                   const SearchState& search)
{
    const std::vector<std::size_t> names = search.gathering.names();
    std::vector<std::set<std::size_t>> namesBefore(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        for (const std::size_t member : search.gathering.membersOf(names[i]))
            namesBefore[i].insert(before[member]);
    }
    std::vector<GroupPair> pairs;
    for (std::size_t i = 0; i < names.size(); ++i) {
        for (std::size_t j = i + 1; j < names.size(); ++j) {
            const bool wereOne =
                std::any_of(namesBefore[i].begin(), namesBefore[i].end(),
                            [&](std::size_t name) { return namesBefore[j].count(name) > 0; });
            const GroupPair pair{names[i], names[j]};
            if (wereOne && maySearchBetween(pair, search)) pairs.push_back(pair);
        }
    }
    return pairs;
}

} // namespace

Links searchParted(const std::vector<Prepared>& recordings, const std::vector<std::string>& devices,
                   const std::vector<LandmarkOffset>& landmarks, const Parted& parted,
                   double beginShare, double endShare, Run& run)
{
    SearchState search(recordings, devices, landmarks, run);
    const std::vector<std::size_t> before =
        gatheredBefore(parted.links, search.gathering, recordings.size());
    layByUsedLinks(parted.links, groupsByRecording(parted, recordings.size()), search.gathering);
    search.book = bookOf(parted.links);
    const std::vector<GroupPair> pairs = partedPairs(before, search);
    if (pairs.empty()) return unjudged(parted.links);
    searchBetween(pairs, beginShare, endShare, search);
    lookForRivals(endShare, endShare, search);
    return unjudged(linksIn(search.book));
}

} // namespace vxlsync
