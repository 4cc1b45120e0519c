#ifndef PROPERTY_BINS_H
#define PROPERTY_BINS_H

#include <cstddef>

#include "VXHistogram.h"
#include "VXLandmark.h"
#include "plain/Histograms.h"

namespace property
{

// What is read of a histogram's bin: its votes, and the landmarks of least and of greatest
// position. Of equal positions that of the later vote counts.

using Bin = VXS::VXHistogram::mapped_type;

inline std::size_t votes(const Bin& bin)
{
    return bin.size();
}

inline const VXS::VXLandmark* least(const Bin& bin)
{
    const VXS::VXLandmark* found = bin.front();
    for (const VXS::VXLandmark* landmark : bin) {
        if (landmark->getOffset() <= found->getOffset()) found = landmark;
    }
    return found;
}

inline const VXS::VXLandmark* greatest(const Bin& bin)
{
    const VXS::VXLandmark* found = bin.front();
    for (const VXS::VXLandmark* landmark : bin) {
        if (landmark->getOffset() >= found->getOffset()) found = landmark;
    }
    return found;
}

// The same of the twin's bins, which keep every vote.

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
