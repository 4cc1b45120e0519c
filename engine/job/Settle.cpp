#include "job/Settle.h"

#include <algorithm>
#include <utility>

namespace vxlsync
{

namespace
{

// So often what a decision parts is searched again; each time there is less.
constexpr int mostSearches = 2;

// False as well where one link has given way to another, so that there are as many.
bool areSame(const Links& left, const Links& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const Link& one, const Link& other) {
                          return one.isOfPair(other) && one.line.offset == other.line.offset &&
                                 one.line.coherence == other.line.coherence;
                      });
}

} // namespace

Assembly settle(Links links, const AssembleLinks& assembleLinks, const SearchAgain& searchAgain)
{
    Assembly assembly = assembleLinks(std::move(links));
    for (int search = 0; search < mostSearches; ++search) {
        Links more = searchAgain(assembly, static_cast<double>(search) / mostSearches,
                                 static_cast<double>(search + 1) / mostSearches);
        if (areSame(more, assembly.links)) break;
        assembly = assembleLinks(std::move(more));
    }
    return assembly;
}

} // namespace vxlsync
