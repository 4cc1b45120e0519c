#ifndef PROPERTY_JOB_H
#define PROPERTY_JOB_H

#include <cstdint>
#include <vector>

#include "VXClusterSync.h"
#include "VXHistogram.h"
#include "plain/Histograms.h"
#include "plain/Recording.h"
#include "twin/Job.h"

namespace property
{

using twins::Job;

// The twin's histogram as the library's, with the ends of every bin.
VXS::VXHistogram histogramOf(Job& job, const plain::Histogram& histogram);

// Keeps what it is told.
class Fractions : public VXS::VXProgress
{
public:
    void setStage(int) override {}
    void setFraction(float fraction) override { values.push_back(fraction); }

    std::vector<float> values;
};

// Runs index, votes and evaluation of both, and compares the cumulative counts, the reported
// fractions, every bin and every record.
void compareJob(Job& job, std::uint32_t maxLandmarkCount);

} // namespace property

#endif
