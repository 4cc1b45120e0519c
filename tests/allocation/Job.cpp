#include "Job.h"

#include <algorithm>

#include "VXFile.h"

namespace job
{

namespace
{

// A landmark in each frame but every seventh, as a recording has frames without sound as well. The
// key is the event's own for that frame.
void addRecording(VXS::VXFileSet& fileSet, std::int64_t id, std::uint32_t event,
                  std::int32_t firstFrame, std::int32_t frames)
{
    std::vector<VXS::support::KeyAtFrame> marks;
    for (std::int32_t frame = 0; frame < frames; ++frame) {
        const std::int32_t eventFrame = firstFrame + frame;
        if (eventFrame % 7 == 0) continue;
        marks.push_back({event * 1000u + static_cast<std::uint32_t>(eventFrame), frame});
    }
    VXS::support::addFileWith(fileSet, id, marks);
    fileSet.idToName[id] = "take " + std::to_string(id);
}

} // namespace

VXS::VXExtractParams smallParams()
{
    VXS::VXExtractParams params;
    params.setFftSize(64);
    params.setHopSize(32);
    params.setMaxPairsPerPeak(2);
    params.maxPeaksPerFrame = 3;
    return params;
}

VXS::VXClusterSyncParams smallSyncParams()
{
    VXS::VXClusterSyncParams params(smallParams());
    params.minOverlapLengthInSeconds = 0.2f;
    params.minTemplateMatchLengthInSeconds = 0.2f;
    return params;
}

FileSetView viewOf(VXS::VXFileSet& fileSet)
{
    FileSetView view;
    for (const auto& entry : fileSet.getFiles()) {
        view[entry.first] = {fileSet.idToName[entry.first], fileSet.idToPath[entry.first],
                             signals::landmarksOf(*entry.second)};
    }
    return view;
}

bool isPartOf(const FileSetView& part, const FileSetView& whole)
{
    return std::all_of(part.begin(), part.end(), [&whole](const auto& entry) {
        const auto found = whole.find(entry.first);
        return found != whole.end() && found->second == entry.second;
    });
}

std::unique_ptr<VXS::VXFileSet> someFileSet()
{
    auto fileSet = std::make_unique<VXS::VXFileSet>();
    addRecording(*fileSet, 1, 1, 0, 130);
    addRecording(*fileSet, 2, 1, 10, 130);
    addRecording(*fileSet, 3, 1, 20, 130);
    addRecording(*fileSet, 4, 2, 20, 130);
    addRecording(*fileSet, 5, 2, 10, 130);
    addRecording(*fileSet, 6, 3, 0, 30);
    return fileSet;
}

std::vector<VXS::support::Cluster> clustersOfSomeFileSet()
{
    // 8000 Hz and 32 samples are 250 frames a second: 10 frames are 0.04 s, 20 are 0.08 s.
    return {{{1, 0.0f, "take 1"}, {2, 0.04f, "take 2"}, {3, 0.08f, "take 3"}},
            {{4, 0.04f, "take 4"}, {5, 0.0f, "take 5"}},
            {{6, 0.0f, "take 6"}}};
}

} // namespace job
