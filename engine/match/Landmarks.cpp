#include "match/Landmarks.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include <vxl_audio/VXClusterSync.h>
#include <vxl_audio/VXExtractParams.h>
#include <vxl_audio/VXFile.h>
#include <vxl_audio/VXFileSet.h>
#include <vxl_audio/VXLandmarkExtract.h>

#include "running/Parallel.h"

namespace vxlsync
{

namespace
{

// Hands the library a recording's samples and ends the extraction if the job is to end.
class SampleInput final : public VXS::VXInput
{
public:
    SampleInput(const SampleStore<float>& newSamples, const Interrupt& newInterrupt)
        : samples(newSamples), interrupt(newInterrupt)
    {
    }

    unsigned int getFrames() override { return static_cast<unsigned int>(samples.size()); }

    bool read_mono(VXS::array<float>& block) override
    {
        interrupt.check();
        const auto wanted = static_cast<std::size_t>(block.count());
        const std::size_t count = std::min(wanted, samples.size() - position);
        samples.copy(position, count, block.data);
        std::fill(block.data + count, block.data + wanted, 0.0f);
        position += count;
        return true;
    }

    bool rewind() override
    {
        position = 0;
        return true;
    }

private:
    const SampleStore<float>& samples;
    const Interrupt& interrupt;
    std::size_t position = 0;
};

// Ends the grouping if the job is to end.
class Watch final : public VXS::VXProgress
{
public:
    explicit Watch(const Interrupt& newInterrupt) : interrupt(newInterrupt) {}

    void setStage(int) override { interrupt.check(); }
    void setFraction(float) override { interrupt.check(); }

private:
    const Interrupt& interrupt;
};

// A result is freed level by level.
struct DeleteResult {
    void operator()(VXS::VXClusterResult* result) const
    {
        const std::unique_ptr<VXS::VXClusterResult> owned(result);
        for (VXS::VXClusterMembers* members : *result) {
            const std::unique_ptr<VXS::VXClusterMembers> ownedMembers(members);
            for (VXS::VXClusterMember* member : *members)
                std::default_delete<VXS::VXClusterMember>()(member);
        }
    }
};

using LandmarkFile = std::unique_ptr<VXS::VXFile>;

// The library counts its files from 1.
std::int64_t idOf(std::size_t index)
{
    return static_cast<std::int64_t>(index) + 1;
}

// Null for a recording without samples.
std::vector<LandmarkFile> extractAll(const std::vector<Recording>& recordings, Run& run)
{
    std::vector<LandmarkFile> files(recordings.size());
    runParallel(recordings.size(), run.threads, [&](std::size_t index, std::size_t) {
        const SampleStore<float>& samples = recordings[index].samples;
        if (samples.size() > 0) {
            SampleInput input(samples, run.interrupt);
            VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};
            files[index].reset(extractor.run(&input, idOf(index)));
        }
        run.meter.step();
    });
    return files;
}

void giveTo(VXS::VXFileSet& set, LandmarkFile file)
{
    const std::int64_t id = file->getFileID();
    const std::string name = std::to_string(id);
    set.idToName[id] = name;
    set.nameToId[name] = id;
    set.idToPath[id] = name;
    set.addFile(file.get());
    // The set owns it now; until then a failure must not free it twice.
    file.release();
}

std::vector<LandmarkGroup> groupsOf(const VXS::VXClusterResult& result)
{
    std::vector<LandmarkGroup> groups;
    for (const VXS::VXClusterMembers* members : result) {
        if (members->size() < 2) continue;
        LandmarkGroup group;
        for (const VXS::VXClusterMember* member : *members) {
            group.members.push_back(static_cast<std::size_t>(member->fileID - 1));
            group.starts.push_back(static_cast<double>(member->offsetSeconds));
        }
        groups.push_back(group);
    }
    // The result is ordered by address.
    std::sort(groups.begin(), groups.end(),
              [](const LandmarkGroup& left, const LandmarkGroup& right) {
                  return left.members.front() < right.members.front();
              });
    return groups;
}

} // namespace

std::vector<LandmarkGroup> groupByLandmarks(const std::vector<Recording>& recordings, Run& run)
{
    // Grouping is the last step.
    run.meter.begin(Stage::landmarks, recordings.size() + 1);
    VXS::VXFileSet set;
    for (LandmarkFile& file : extractAll(recordings, run)) {
        if (file) giveTo(set, std::move(file));
    }
    VXS::VXClusterSync sync{VXS::VXClusterSyncParams(VXS::VXExtractParams())};
    Watch watch(run.interrupt);
    // Null would be the answer to no set only.
    const std::unique_ptr<VXS::VXClusterResult, DeleteResult> result(sync.run(&set, &watch));
    run.meter.step();
    return groupsOf(*result);
}

std::vector<LandmarkOffset> offsetsOf(const std::vector<LandmarkGroup>& groups)
{
    std::vector<LandmarkOffset> offsets;
    for (const LandmarkGroup& group : groups) {
        for (std::size_t i = 0; i < group.members.size(); ++i) {
            for (std::size_t j = i + 1; j < group.members.size(); ++j) {
                offsets.push_back(
                    {group.members[i], group.members[j], group.starts[j] - group.starts[i]});
            }
        }
    }
    return offsets;
}

} // namespace vxlsync
