#ifndef PROPERTY_BINS_H
#define PROPERTY_BINS_H

#include <cstddef>

#include "plain/Histograms.h"

namespace property
{

// What is read of a bin: its votes, and the landmarks of least and of greatest position. Of equal
// positions that of the later vote counts.

inline std::size_t votes(const std::vector<plain::Vote>& bin)
{
    return bin.size();
}

inline plain::Vote least(const std::vector<plain::Vote>& bin)
{
    plain::Vote found = bin.front();
    for (const plain::Vote vote : bin) {
        if (vote->offset <= found->offset) found = vote;
    }
    return found;
}

inline plain::Vote greatest(const std::vector<plain::Vote>& bin)
{
    plain::Vote found = bin.front();
    for (const plain::Vote vote : bin) {
        if (vote->offset >= found->offset) found = vote;
    }
    return found;
}

} // namespace property

#endif
