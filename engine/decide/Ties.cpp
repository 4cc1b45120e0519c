#include "decide/Ties.h"

#include <algorithm>
#include <numeric>
#include <set>

namespace vxlsync
{

namespace
{

// Two members, by their places among the members.
struct Tie {
    std::size_t first = 0;
    std::size_t second = 0;
    double weight = 0.0;
};

std::size_t placeOf(std::size_t recording, const std::vector<std::size_t>& members)
{
    return static_cast<std::size_t>(std::lower_bound(members.begin(), members.end(), recording) -
                                    members.begin());
}

// All that holds between the members, the heaviest first.
std::vector<Tie> tiesOf(const std::vector<std::size_t>& members, const Arrangement& arrangement)
{
    std::vector<Tie> ties;
    for (const std::size_t member : members) {
        for (const std::size_t index : arrangement.linksOf(member)) {
            const Link& link = arrangement.known().links[index];
            if (link.first != member || !arrangement.holds(index)) continue;
            ties.push_back(
                {placeOf(member, members), placeOf(link.second, members), weightOf(link)});
        }
    }
    std::stable_sort(ties.begin(), ties.end(),
                     [](const Tie& left, const Tie& right) { return left.weight > right.weight; });
    return ties;
}

// Members that are tied together, found while ties are added.
class Pieces
{
public:
    explicit Pieces(std::size_t count) : parents(count), pieces(count)
    {
        std::iota(parents.begin(), parents.end(), std::size_t{0});
    }

    // False if the two were tied before.
    bool tie(const Tie& tie)
    {
        const std::size_t first = rootOf(tie.first);
        const std::size_t second = rootOf(tie.second);
        if (first == second) return false;
        parents[first] = second;
        --pieces;
        return true;
    }
    std::size_t count() const { return pieces; }
    std::size_t rootOf(std::size_t place)
    {
        while (parents[place] != place)
            place = parents[place] = parents[parents[place]];
        return place;
    }

private:
    std::vector<std::size_t> parents;
    std::size_t pieces;
};

bool isTiedWithout(std::size_t place, std::size_t count, const std::vector<Tie>& ties)
{
    Pieces pieces(count);
    for (const Tie& tie : ties) {
        if (tie.first != place && tie.second != place) pieces.tie(tie);
    }
    // The one that is left out is a piece of its own.
    return pieces.count() == 2;
}

std::vector<Tie> treeOf(const std::vector<Tie>& ties, std::size_t count)
{
    Pieces pieces(count);
    std::vector<Tie> tree;
    for (const Tie& tie : ties) {
        if (pieces.tie(tie)) tree.push_back(tie);
    }
    return tree;
}

// The members on the smaller side of the tie, or on the first's where both are as many.
std::vector<std::size_t> smallerSide(std::size_t cut, const std::vector<Tie>& tree,
                                     const std::vector<std::size_t>& members)
{
    Pieces pieces(members.size());
    for (std::size_t i = 0; i < tree.size(); ++i) {
        if (i != cut) pieces.tie(tree[i]);
    }
    std::vector<std::size_t> first;
    std::vector<std::size_t> second;
    for (std::size_t place = 0; place < members.size(); ++place) {
        const std::size_t root = pieces.rootOf(place);
        if (root == pieces.rootOf(tree[cut].first)) first.push_back(members[place]);
        if (root == pieces.rootOf(tree[cut].second)) second.push_back(members[place]);
    }
    return second.size() < first.size() ? second : first;
}

} // namespace

std::vector<std::vector<std::size_t>> partsOf(std::size_t group, const Arrangement& arrangement)
{
    const std::vector<std::size_t>& members = arrangement.groups().membersOf(group);
    if (members.size() < 2) return {};
    const std::vector<Tie> ties = tiesOf(members, arrangement);
    std::set<std::vector<std::size_t>> parts;
    for (std::size_t place = 0; place < members.size(); ++place) {
        if (isTiedWithout(place, members.size(), ties)) parts.insert({members[place]});
    }
    const std::vector<Tie> tree = treeOf(ties, members.size());
    for (std::size_t cut = 0; cut < tree.size(); ++cut)
        parts.insert(smallerSide(cut, tree, members));
    return {parts.begin(), parts.end()};
}

} // namespace vxlsync
