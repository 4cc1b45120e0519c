#ifndef PROPERTY_JOB_H
#define PROPERTY_JOB_H

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "Random.h"
#include "VXClusterSync.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXHistogram.h"
#include "VXLandmark.h"
#include "plain/Histograms.h"
#include "plain/Recording.h"

namespace property
{

// The same recordings for the library and for the twin.
class Job
{
public:
    void addFile(std::int64_t id);
    // An id whose entry holds no file.
    void addNothing(std::int64_t id);
    void addLandmark(std::int64_t id, std::int32_t offset, std::uint32_t key);
    // A file that landmarks may name, but which is not in the set.
    void addOutsider(std::int64_t id);
    // A landmark that lies in the list of one file and names another, or none, as its own.
    void addStray(std::int64_t id, std::int32_t offset, std::uint32_t key,
                  std::optional<std::int64_t> owner);
    void countUp();

    // Requires: every landmark has been added.
    std::map<const VXS::VXLandmark*, const plain::Landmark*> twins();

    // The twin's histogram as the library's, with the ends of every bin.
    VXS::VXHistogram histogramOf(const plain::Histogram& histogram);

    VXS::VXFileSet fileSet;
    plain::RecordingSet recordings;

private:
    std::vector<std::unique_ptr<plain::Recording>> owned;
    std::map<std::int64_t, std::unique_ptr<VXS::VXFile>> outsiders;
};

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
