#include "Clusters.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "Comparison.h"
#include "Harness.h"
#include "support/Bits.h"

namespace fuzz
{

namespace
{

std::uint32_t orderedBits(float number)
{
    constexpr std::uint32_t notANumber = 0x7FC00000u;
    if (std::isnan(number)) return notANumber;
    std::uint32_t bits;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

// The links of one group that are left, by the ids of their recordings, lower id first.
struct Tables {
    std::map<Pair, float> peaks;
    std::map<Pair, float> offsets;
};

bool names(const Pair& pair, std::int64_t id)
{
    return pair.first == id || pair.second == id;
}

Tables linksOf(const std::set<std::int64_t>& group, const std::map<Pair, PairRecord>& records)
{
    Tables tables;
    for (const auto& [pair, record] : records) {
        if (!record.isAccepted) continue;
        if (group.count(pair.first) == 0 || group.count(pair.second) == 0) continue;
        if (pair.first >= pair.second) continue;
        tables.peaks[pair] = record.peakCount;
        tables.offsets[pair] = record.bestOffset;
    }
    return tables;
}

// The strongest link, of equal ones the last.
bool select(const Tables& tables, Pair& selected)
{
    bool isFound = false;
    float best = 0.0f;
    for (const auto& [pair, peak] : tables.peaks) {
        if (!(peak >= best)) continue;
        best = peak;
        selected = pair;
        isFound = true;
    }
    return isFound;
}

// Tells every link of the absorbed recording against the survivor.
void absorb(Tables& tables, std::int64_t survivor, std::int64_t absorbed, float distance)
{
    for (const auto& [pair, peak] : tables.peaks) {
        if (pair.first == absorbed) tables.offsets[pair] += distance;
        if (pair.second == absorbed) tables.offsets[pair] -= distance;
    }
    for (const auto& [pair, peak] : tables.peaks) {
        if (!names(pair, absorbed)) continue;
        const std::int64_t partner = pair.first == absorbed ? pair.second : pair.first;
        float offset = tables.offsets[pair];
        if (pair.first == absorbed && survivor > partner) offset = -offset;
        if (pair.second == absorbed && partner > survivor) offset = -offset;
        const Pair moved = std::minmax(survivor, partner);
        if (!(peak > tables.peaks[moved])) continue;
        tables.peaks[moved] = peak;
        tables.offsets[moved] = offset;
    }
    for (auto entry = tables.peaks.begin(); entry != tables.peaks.end();) {
        if (!names(entry->first, absorbed)) {
            ++entry;
            continue;
        }
        tables.offsets.erase(entry->first);
        entry = tables.peaks.erase(entry);
    }
}

} // namespace

bool Clusters::isAccepted(const PairRecord& record) const
{
    const float leastLength = framesPerSecond * 3.0f;
    const float percentMatch =
        record.percentMatchB > record.percentMatchA ? record.percentMatchB : record.percentMatchA;
    const float deviations = 10.0f * record.stdDevCount;
    const bool isRefused = leastLength > record.templateMatchLength || 5.0f > record.peakCount ||
                           record.templateMatchLength > record.overlapLength ||
                           0.0f > record.overlapLength || leastLength > record.overlapLength ||
                           0.0025f > percentMatch ||
                           record.meanCount + deviations > record.peakCount;
    return !isRefused;
}

std::set<std::set<std::int64_t>> Clusters::groups(const std::set<std::int64_t>& ids,
                                                  const std::map<Pair, PairRecord>& records) const
{
    std::set<std::set<std::int64_t>> groups;
    for (const std::int64_t id : ids)
        groups.insert({id});
    const auto take = [&groups](std::int64_t id) {
        std::set<std::int64_t> taken;
        for (auto group = groups.begin(); group != groups.end(); ++group) {
            if (group->count(id) == 0) continue;
            taken = *group;
            groups.erase(group);
            break;
        }
        return taken;
    };
    for (const auto& [pair, record] : records) {
        if (!record.isAccepted || pair.first == pair.second) continue;
        std::set<std::int64_t> merged = take(pair.first);
        const std::set<std::int64_t> second = take(pair.second);
        merged.insert(second.begin(), second.end());
        groups.insert(merged);
    }
    return groups;
}

std::map<std::int64_t, float> Clusters::offsets(const std::set<std::int64_t>& group,
                                                const std::map<Pair, PairRecord>& records) const
{
    // Each recording's zero, and where it stands from there.
    std::map<std::int64_t, std::map<std::int64_t, float>> byZero;
    for (const std::int64_t id : group)
        byZero[id][id] = 0.0f;
    Tables tables = linksOf(group, records);
    Pair selected;
    for (std::size_t left = group.size(); left > 1; --left) {
        if (tables.offsets.empty() || !select(tables, selected)) break;
        const auto [survivor, absorbed] = selected;
        const float distance = tables.offsets[selected];
        for (const auto& [id, offset] : byZero[absorbed])
            byZero[survivor][id] = offset + distance;
        byZero.erase(absorbed);
        tables.peaks.erase(selected);
        tables.offsets.erase(selected);
        absorb(tables, survivor, absorbed, distance);
    }

    std::map<std::int64_t, float> result;
    for (const auto& [zero, members] : byZero) {
        float least = std::numeric_limits<float>::infinity();
        for (const auto& [id, offset] : members) {
            if (offset <= least) least = offset;
        }
        for (const auto& [id, offset] : members)
            result[id] = offset - least;
    }
    return result;
}

std::vector<Cluster> Clusters::run(const std::set<std::int64_t>& ids,
                                   std::map<Pair, PairRecord>& records) const
{
    for (auto& [pair, record] : records)
        record.isAccepted = isAccepted(record);
    std::vector<Cluster> clusters;
    for (const auto& group : groups(ids, records)) {
        Cluster cluster;
        for (const auto& [id, offset] : offsets(group, records)) {
            // Ids come out with 32 bits, and of two that are equal then the first stays.
            const auto cut = static_cast<std::int32_t>(static_cast<std::uint32_t>(id));
            cluster.insert({cut, offset / framesPerSecond});
        }
        clusters.push_back(cluster);
    }
    return clusters;
}

std::vector<Cluster> clustersOf(const VXS::VXClusterResult& result)
{
    std::vector<Cluster> clusters;
    for (const VXS::VXClusterMembers* members : result) {
        clusters.emplace_back();
        for (const VXS::VXClusterMember* member : *members)
            clusters.back()[member->fileID] = member->offsetSeconds;
    }
    return clusters;
}

void requireSameClusters(const VXS::VXClusterResult& library, const std::vector<Cluster>& twin)
{
    // The library's stand in no order. Two clusters may show the same ids once these are cut, so
    // that the seconds count too, by their bits, which order also what is not a number.
    const auto isBefore = [](const Cluster& left, const Cluster& right) {
        return std::lexicographical_compare(
            left.begin(), left.end(), right.begin(), right.end(), [](const auto& a, const auto& b) {
                if (a.first != b.first) return a.first < b.first;
                return orderedBits(a.second) < orderedBits(b.second);
            });
    };
    std::vector<Cluster> clusters = clustersOf(library);
    std::vector<Cluster> expected = twin;
    std::sort(clusters.begin(), clusters.end(), isBefore);
    std::sort(expected.begin(), expected.end(), isBefore);
    require(clusters.size() == expected.size(), "as many clusters as the twin");
    for (std::size_t i = 0; i < clusters.size(); ++i) {
        require(clusters[i].size() == expected[i].size(), "as many members as the twin");
        auto member = clusters[i].begin();
        for (const auto& [id, seconds] : expected[i]) {
            require(member->first == id, "the twin's members");
            require(support::sameBits(member->second, seconds), "the twin's seconds");
            ++member;
        }
    }
}

} // namespace fuzz
