#include "VXMergeStatsSetProcessor.h"

#include <algorithm>

#include "VXClusterInternal.h"
#include "VXClusterSyncParams.h"
#include "VXFileSet.h"

namespace VXS
{

void VXMerger::init(VXFileSet* fileSet)
{
    if (fileSet == nullptr) return;
    fileClusters.clear();
    for (const auto& entry : fileSet->getFiles())
        fileClusters.insert({entry.first});
}

void VXMerger::mergeClusters(std::int64_t firstID, std::int64_t secondID)
{
    if (firstID == secondID) return;
    std::set<std::int64_t> merged;
    // The first group is taken out before the second is looked for, so that two ids of one group
    // put it back as it was.
    moveGroupOf(firstID, merged);
    moveGroupOf(secondID, merged);
    fileClusters.insert(std::move(merged));
}

void VXMerger::moveGroupOf(std::int64_t fileID, std::set<std::int64_t>& merged)
{
    const auto group = std::find_if(fileClusters.begin(), fileClusters.end(),
                                    [fileID](const auto& ids) { return ids.count(fileID) != 0; });
    if (group == fileClusters.end()) return;
    merged.insert(group->begin(), group->end());
    fileClusters.erase(group);
}

void deleteVXClusterResult(VXClusterResult*& result)
{
    if (result == nullptr) return;
    for (VXClusterMembers* members : *result) {
        for (VXClusterMember* member : *members)
            delete member;
        delete members;
    }
    delete result;
    result = nullptr;
}

VXMergeStatsSetProcessor::VXMergeStatsSetProcessor(const VXClusterSyncParams& params)
    : minLandmarksPerEstimate(params.getMinLandmarksPerEstimate()),
      audioFramesPerSecond(params.getAudioFramesPerSecond()),
      minTemplateMatchLengthInSeconds(params.getMinTemplateMatchLengthInSeconds()),
      minOverlapLengthInSeconds(params.getMinOverlapLengthInSeconds()),
      minPercentMatch(params.getMinPercentMatch()),
      hopSize(params.getHopSize())
{
}

VXClusterResult* VXMergeStatsSetProcessor::run(VXFileSet* fileSet, VXMergeStatsSet* stats)
{
    if (fileSet == nullptr || stats == nullptr) return nullptr;

    VXMerger merger;
    merger.init(fileSet);
    acceptPairs(*stats, merger);

    VXClusterResultHolder result(new VXClusterResult());
    for (const auto& fileIDs : merger.fileClusters) {
        VXClusterInternal cluster;
        layOut(fileIDs, *stats, cluster);
        addToResult(cluster, *result);
    }
    return result.release();
}

// Seven tests refuse a pair. Each is a strict greater-than: a value on its limit passes, and
// not-a-number, which compares false, refuses nothing.
bool VXMergeStatsSetProcessor::isAccepted(const VXMergeStats& record) const
{
    const float minTemplateMatchLength = audioFramesPerSecond * minTemplateMatchLengthInSeconds;
    const float minOverlapLength = audioFramesPerSecond * minOverlapLengthInSeconds;
    if (minTemplateMatchLength > record.templateMatchLength) return false;
    if (static_cast<float>(minLandmarksPerEstimate) > record.peakCount) return false;
    if (record.templateMatchLength > record.overlapLength) return false;
    if (0.0f > record.overlapLength) return false;
    if (minOverlapLength > record.overlapLength) return false;

    // One good file is enough.
    const float percentMatch =
        record.percentMatchB > record.percentMatchA ? record.percentMatchB : record.percentMatchA;
    if (minPercentMatch > percentMatch) return false;

    const float tenDeviations = 10.0f * record.stdDevCount;
    return !(record.meanCount + tenDeviations > record.peakCount);
}

void VXMergeStatsSetProcessor::acceptPairs(VXMergeStatsSet& stats, VXMerger& merger) const
{
    for (auto& entry : stats) {
        VXMergeStats* record = entry.second;
        if (record == nullptr || !isAccepted(*record)) continue;
        record->merged = true;
        merger.mergeClusters(record->fileA, record->fileB);
    }
}

VXMergeStatsSetProcessor::Links
VXMergeStatsSetProcessor::collectLinks(const std::set<std::int64_t>& cluster,
                                       VXMergeStatsSet& stats)
{
    Links links;
    for (auto i = cluster.begin(); i != cluster.end(); ++i) {
        for (auto j = std::next(i); j != cluster.end(); ++j) {
            const Pair pair(*i, *j);
            // Enters null for a pair without a record: whoever walks the set later finds every pair
            // of the cluster in it.
            const VXMergeStats* record = stats[pair];
            // A refused pair is no link, also where other pairs tie its two files together.
            if (record == nullptr || !record->merged) continue;
            links.linkPeaks[pair] = record->peakCount;
            links.linkOffsets[pair] = record->bestOffset;
        }
    }
    return links;
}

// Finds the strongest link. Of equal ones the last in key order wins. Answers false if no link can
// be compared at all.
bool VXMergeStatsSetProcessor::selectLink(const Links& links, Pair& selected)
{
    bool found = false;
    float best = 0.0f;
    for (const auto& link : links.linkPeaks) {
        if (link.second >= best) {
            best = link.second;
            selected = link.first;
            found = true;
        }
    }
    return found;
}

// Moves the second file's sub-cluster onto the first file's time line and gives its links to the
// first file. Each file that is left stands at 0 in its sub-cluster, so that a link's offset is the
// distance between two zeros and needs no correction for what was merged before.
void VXMergeStatsSetProcessor::applyLink(const Pair& selected, Links& links,
                                         VXClusterInternal& cluster)
{
    const std::int64_t survivor = selected.first;
    const std::int64_t absorbed = selected.second;
    auto& linkPeaks = links.linkPeaks;
    auto& linkOffsets = links.linkOffsets;
    const float distance = linkOffsets[selected];

    cluster.merge(survivor, absorbed, distance);
    linkPeaks.erase(selected);
    linkOffsets.erase(selected);

    for (const auto& link : linkPeaks) {
        if (link.first.first == absorbed) linkOffsets[link.first] += distance;
        if (link.first.second == absorbed) linkOffsets[link.first] -= distance;
    }

    for (const auto& link : linkPeaks) {
        const Pair key = link.first;
        if (key.first != absorbed && key.second != absorbed) continue;
        float offset = linkOffsets[key];
        const std::int64_t partner = key.first == absorbed ? key.second : key.first;
        // The value under a key is the position of its second file minus that of its first.
        const bool turned = key.first == absorbed ? survivor > partner : partner > survivor;
        if (turned) offset = -offset;

        const Pair newKey(std::min(survivor, partner), std::max(survivor, partner));
        float& peak = linkPeaks[newKey];
        // Of two links to one file the stronger stays; at equal strength the one already there.
        if (link.second > peak) {
            linkOffsets[newKey] = offset;
            peak = link.second;
        }
    }

    for (auto link = linkPeaks.begin(); link != linkPeaks.end();) {
        if (link->first.first == absorbed || link->first.second == absorbed) {
            linkOffsets.erase(link->first);
            link = linkPeaks.erase(link);
        } else {
            ++link;
        }
    }
}

// Together the steps build a maximum spanning tree over the links, by the number of their votes.
void VXMergeStatsSetProcessor::layOut(const std::set<std::int64_t>& fileIDs, VXMergeStatsSet& stats,
                                      VXClusterInternal& cluster)
{
    cluster.init(fileIDs);
    Links links = collectLinks(fileIDs, stats);
    std::set<std::int64_t> remainingFiles = fileIDs;
    Pair selected;
    while (remainingFiles.size() > 1 && !links.linkPeaks.empty() && !links.linkOffsets.empty() &&
           selectLink(links, selected)) {
        applyLink(selected, links, cluster);
        remainingFiles.erase(selected.second);
    }
    cluster.normalizeOffsets();
}

void VXMergeStatsSetProcessor::addToResult(const VXClusterInternal& cluster,
                                           VXClusterResult& result) const
{
    auto holder = std::make_unique<VXClusterMembers>();
    VXClusterMembers* members = holder.get();
    result.insert(members);
    holder.release();
    for (const auto& offsets : cluster.getCluster()) {
        for (const auto& entry : offsets) {
            auto member = std::make_unique<VXClusterMember>();
            member->name = "TODO";
            // Hosts know ids of 32 bits here: a wider one comes out cut, and of two that agree in
            // their low half the lower one stays.
            member->fileID = static_cast<std::int32_t>(static_cast<std::uint32_t>(entry.first));
            member->offsetSeconds = entry.second / audioFramesPerSecond;
            if (members->insert(member.get()).second) member.release();
        }
    }
}

} // namespace VXS
