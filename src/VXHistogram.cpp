#include "VXHistogram.h"

namespace VXS
{

void deleteVXHistogramSet(VXHistogramSet*& histograms)
{
    if (histograms == nullptr) return;
    for (auto& entry : *histograms)
        delete entry.second;
    delete histograms;
    histograms = nullptr;
}

} // namespace VXS
