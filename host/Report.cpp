#include "Report.h"

#include <algorithm>
#include <utility>

namespace vxlsync
{

namespace
{

bool startsEarlier(const Member& left, const Member& right)
{
    if (left.offsetSeconds != right.offsetSeconds) return left.offsetSeconds < right.offsetSeconds;
    return left.id < right.id;
}

std::int64_t firstId(const Group& group)
{
    const auto first =
        std::min_element(group.begin(), group.end(), [](const Member& left, const Member& right) {
            return left.id < right.id;
        });
    return first->id;
}

} // namespace

Report makeReport(std::vector<Group> clusters, std::vector<Failure> failed)
{
    clusters.erase(std::remove_if(clusters.begin(), clusters.end(),
                                  [](const Group& group) { return group.empty(); }),
                   clusters.end());
    std::sort(clusters.begin(), clusters.end(),
              [](const Group& left, const Group& right) { return firstId(left) < firstId(right); });

    Report report;
    report.failed = std::move(failed);
    for (Group& group : clusters) {
        if (group.size() == 1) {
            report.alone.push_back({group.front().name, group.front().path});
            continue;
        }
        std::sort(group.begin(), group.end(), startsEarlier);
        report.groups.push_back(std::move(group));
    }
    return report;
}

} // namespace vxlsync
