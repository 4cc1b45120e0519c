#include "LandmarkGroups.h"

#include <algorithm>

#include <vxl_audio/VXExtractParams.h>
#include <vxl_audio/VXFile.h>
#include <vxl_audio/VXFileSet.h>
#include <vxl_audio/VXLandmarkExtract.h>

#include "FailureReason.h"

namespace vxlsync
{

namespace
{

class SampleInput final : public VXS::VXInput
{
public:
    explicit SampleInput(const std::vector<float>& newSamples) : samples(newSamples) {}

    unsigned int getFrames() override { return static_cast<unsigned int>(samples.size()); }

    bool read_mono(VXS::array<float>& block) override
    {
        const auto wanted = static_cast<std::size_t>(std::max(block.count(), 0));
        const std::size_t count = std::min(wanted, samples.size() - position);
        const auto from = samples.begin() + static_cast<std::ptrdiff_t>(position);
        std::copy(from, from + static_cast<std::ptrdiff_t>(count), block.data);
        std::fill(block.data + count, block.data + wanted, 0.0F);
        position += count;
        return true;
    }

    bool rewind() override
    {
        position = 0;
        return true;
    }

private:
    const std::vector<float>& samples;
    std::size_t position = 0;
};

// The host frees a result level by level.
struct DeleteResult {
    void operator()(VXS::VXClusterResult* result) const
    {
        for (VXS::VXClusterMembers* members : *result) {
            for (VXS::VXClusterMember* member : *members)
                delete member;
            delete members;
        }
        delete result;
    }
};

} // namespace

void DeleteFile::operator()(VXS::VXFile* file) const
{
    delete file;
}

Landmarks extractLandmarks(const std::vector<float>& samples, std::size_t index)
{
    SampleInput input(samples);
    VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};
    return Landmarks(extractor.run(&input, static_cast<std::int64_t>(index) + 1));
}

std::vector<LandmarkGroup> groupByLandmarks(std::vector<Landmarks> landmarks,
                                            const std::vector<std::string>& names,
                                            VXS::VXProgress* progress)
{
    VXS::VXFileSet set;
    for (std::size_t i = 0; i < landmarks.size(); ++i) {
        if (!landmarks[i]) continue;
        const auto id = static_cast<std::int64_t>(i) + 1;
        set.idToName[id] = names[i];
        set.nameToId[names[i]] = id;
        set.idToPath[id] = names[i];
        set.addFile(landmarks[i].get());
        // The set owns it now; until then a failure must not free it twice.
        landmarks[i].release();
    }
    VXS::VXClusterSync sync{VXS::VXClusterSyncParams(VXS::VXExtractParams())};
    const std::unique_ptr<VXS::VXClusterResult, DeleteResult> result(sync.run(&set, progress));

    std::vector<LandmarkGroup> groups;
    if (result == nullptr) return groups;
    for (const VXS::VXClusterMembers* members : *result) {
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

NativeSound readNative(const std::string& path)
{
    const VXS::VXExtractParams params;
    VXS::VXLandmarkExtract reader(params);
    NativeSound sound;
    VXS::wavfile_t* file = reader.loadFile(path);
    if (file == nullptr) {
        sound.failure = failureReason(path, params);
        return sound;
    }
    VXS::WavInput input(file);
    constexpr int blockSize = 4096;
    VXS::array<float> block(blockSize);
    const std::size_t count = input.getFrames();
    while (sound.samples.size() < count) {
        std::fill(block.data, block.data + blockSize, 0.0F);
        input.read_mono(block);
        const std::size_t part = std::min<std::size_t>(blockSize, count - sound.samples.size());
        sound.samples.insert(sound.samples.end(), block.data, block.data + part);
    }
    return sound;
}

} // namespace vxlsync
