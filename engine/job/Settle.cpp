#include "job/Settle.h"

#include <utility>

namespace vxlsync
{

namespace
{

// So often what a decision parts is searched again; each time there is less.
constexpr int mostSearches = 2;

} // namespace

Assembly settle(Links links, const AssembleLinks& assembleLinks, const SearchAgain& searchAgain)
{
    Assembly assembly = assembleLinks(std::move(links));
    for (int search = 0; search < mostSearches; ++search) {
        Links more = searchAgain(assembly, static_cast<double>(search) / mostSearches,
                                 static_cast<double>(search + 1) / mostSearches);
        if (more.size() == assembly.links.size()) break;
        assembly = assembleLinks(std::move(more));
    }
    return assembly;
}

} // namespace vxlsync
