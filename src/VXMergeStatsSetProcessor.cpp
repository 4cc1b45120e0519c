#include "VXMergeStatsSetProcessor.h"

#include <algorithm>

#include "VXClusterInternal.h"
#include "VXClusterSyncParams.h"
#include "VXFileSet.h"

namespace VXS
{

namespace
{

// Which files are of one group already: a forest in which each file points towards the root of its
// group.
class Ties
{
public:
    explicit Ties(const std::set<std::set<std::int64_t>>& groups)
    {
        for (const auto& group : groups) {
            for (const std::int64_t id : group)
                parents[id] = *group.begin();
        }
    }

    // Answers true if the two ids were apart, or if one of them is of no group.
    bool tie(std::int64_t firstID, std::int64_t secondID)
    {
        if (parents.count(firstID) == 0 || parents.count(secondID) == 0) return true;
        const std::int64_t firstRoot = rootOf(firstID);
        const std::int64_t secondRoot = rootOf(secondID);
        parents[secondRoot] = firstRoot;
        return firstRoot != secondRoot;
    }

private:
    std::int64_t rootOf(std::int64_t id)
    {
        while (parents[id] != id) {
            parents[id] = parents[parents[id]];
            id = parents[id];
        }
        return id;
    }

    std::map<std::int64_t, std::int64_t> parents;
};

std::pair<std::int64_t, std::int64_t> ordered(std::int64_t left, std::int64_t right)
{
    return {std::min(left, right), std::max(left, right)};
}

} // namespace

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
    // The first group is taken out before the second is looked for, so that two ids of one group
    // put it back as it was. Groups move as they are, so that none is lost for want of memory.
    Group merged = takeGroupOf(firstID);
    Group smaller = takeGroupOf(secondID);
    if (merged.empty()) merged.swap(smaller);
    if (merged.empty()) {
        fileClusters.emplace();
        return;
    }
    if (!smaller.empty()) {
        if (merged.value().size() < smaller.value().size()) merged.swap(smaller);
        merged.value().merge(smaller.value());
    }
    fileClusters.insert(std::move(merged));
}

VXMerger::Group VXMerger::takeGroupOf(std::int64_t fileID)
{
    const auto group = std::find_if(fileClusters.begin(), fileClusters.end(),
                                    [fileID](const auto& ids) { return ids.count(fileID) != 0; });
    return group == fileClusters.end() ? Group() : fileClusters.extract(group);
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
    Ties ties(merger.fileClusters);
    for (auto& entry : stats) {
        VXMergeStats* record = entry.second;
        if (record == nullptr || !isAccepted(*record)) continue;
        record->merged = true;
        // In a large event nearly every accepted pair is of one group already, and looking for it
        // each time would cost more than all the rest.
        if (ties.tie(record->fileA, record->fileB)) {
            merger.mergeClusters(record->fileA, record->fileB);
        }
    }
}

VXMergeStatsSetProcessor::Links
VXMergeStatsSetProcessor::collectLinks(const std::set<std::int64_t>& cluster,
                                       VXMergeStatsSet& stats)
{
    Links links;
    for (auto i = cluster.begin(); i != cluster.end(); ++i) {
        auto entry = stats.lower_bound(Pair(*i, *i));
        for (auto j = std::next(i); j != cluster.end(); ++j) {
            const Pair pair(*i, *j);
            while (entry != stats.end() && entry->first < pair)
                ++entry;
            if (entry == stats.end() || entry->first != pair) {
                // Whoever walks the set later finds every pair of the cluster in it.
                entry = stats.emplace_hint(entry, pair, nullptr);
            }
            const VXMergeStats* record = entry->second;
            // A refused pair is no link, also where other pairs tie its two files together.
            if (record == nullptr || !record->merged) continue;
            links.set(pair, record->peakCount, record->bestOffset);
        }
    }
    return links;
}

void VXMergeStatsSetProcessor::Links::set(const Pair& pair, float peak, float offset)
{
    Link& link = links[pair];
    forget(pair, link);
    link = {peak, offset, true};
    remember(pair, link);
}

bool VXMergeStatsSetProcessor::Links::select(Pair& selected) const
{
    if (byStrength.empty() || offsets == 0) return false;
    selected = byStrength.rbegin()->second;
    return true;
}

// Each file that is left stands at 0 in its sub-cluster, so that a link's offset is the distance
// between two zeros and needs no correction for what was merged before.
void VXMergeStatsSetProcessor::Links::apply(const Pair& selected, VXClusterInternal& cluster)
{
    const std::int64_t survivor = selected.first;
    const std::int64_t absorbed = selected.second;
    const float distance = links[selected].offset;
    cluster.merge(survivor, absorbed, distance);
    erase(selected);

    const std::set<std::int64_t> partners = std::move(partnersOf[absorbed]);
    for (const std::int64_t partner : partners) {
        const Pair pair = ordered(absorbed, partner);
        const Link link = links[pair];
        erase(pair);
        // From the position of the absorbed file to that of the survivor.
        float offset = partner > absorbed ? link.offset + distance : link.offset - distance;
        // The offset of a pair is the position of its second file minus that of its first.
        const bool isTurned = (partner > absorbed) != (partner > survivor);
        if (isTurned) offset = -offset;
        offer(ordered(survivor, partner), link.peak, offset);
    }
    partnersOf.erase(absorbed);
}

// Of two links to one file the stronger stays; at equal strength the one already there.
void VXMergeStatsSetProcessor::Links::offer(const Pair& pair, float peak, float offset)
{
    const auto added = links.emplace(pair, Link());
    if (added.second) remember(pair, Link());
    if (peak > added.first->second.peak) set(pair, peak, offset);
}

void VXMergeStatsSetProcessor::Links::remember(const Pair& pair, const Link& link)
{
    // What cannot be compared, or is below none, is never the strongest.
    if (link.peak >= 0.0f) byStrength.insert({link.peak, pair});
    if (link.hasOffset) ++offsets;
    partnersOf[pair.first].insert(pair.second);
    partnersOf[pair.second].insert(pair.first);
}

void VXMergeStatsSetProcessor::Links::forget(const Pair& pair, const Link& link)
{
    if (link.peak >= 0.0f) byStrength.erase({link.peak, pair});
    if (link.hasOffset) --offsets;
}

void VXMergeStatsSetProcessor::Links::erase(const Pair& pair)
{
    forget(pair, links[pair]);
    partnersOf[pair.first].erase(pair.second);
    partnersOf[pair.second].erase(pair.first);
    links.erase(pair);
}

// Together the steps build a maximum spanning tree over the links, by the number of their votes.
void VXMergeStatsSetProcessor::layOut(const std::set<std::int64_t>& fileIDs, VXMergeStatsSet& stats,
                                      VXClusterInternal& cluster)
{
    cluster.init(fileIDs);
    Links links = collectLinks(fileIDs, stats);
    std::size_t remainingFiles = fileIDs.size();
    Pair selected;
    while (remainingFiles > 1 && links.select(selected)) {
        links.apply(selected, cluster);
        --remainingFiles;
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
            // No open task: the set of files has the names, and VXClusterSync::run puts them in. A
            // member that shows this word has been through no naming.
            member->name = "TODO";
            // A member tells an id by its low 32 bits: a wider one comes out cut, and of two that
            // agree in that half the lower one stays, since members are told apart by it.
            member->fileID = static_cast<std::int32_t>(static_cast<std::uint32_t>(entry.first));
            member->offsetSeconds = entry.second / audioFramesPerSecond;
            if (members->insert(member.get()).second) member.release();
        }
    }
}

} // namespace VXS
