#include "Report.h"

#include <algorithm>

namespace vxlsync
{

namespace
{

bool startsEarlier(const Member& left, const Member& right)
{
    if (left.offsetSeconds != right.offsetSeconds) return left.offsetSeconds < right.offsetSeconds;
    return left.index < right.index;
}

std::size_t firstIndex(const Group& group)
{
    std::size_t first = group.members.front().index;
    for (const Member& member : group.members)
        first = std::min(first, member.index);
    return first;
}

} // namespace

void arrange(Report& report)
{
    report.groups.erase(std::remove_if(report.groups.begin(), report.groups.end(),
                                       [](const Group& group) { return group.members.empty(); }),
                        report.groups.end());
    for (Group& group : report.groups)
        std::sort(group.members.begin(), group.members.end(), startsEarlier);
    std::sort(
        report.groups.begin(), report.groups.end(),
        [](const Group& left, const Group& right) { return firstIndex(left) < firstIndex(right); });
    std::sort(report.alone.begin(), report.alone.end(),
              [](const LoneRecording& left, const LoneRecording& right) {
                  return left.index < right.index;
              });
}

} // namespace vxlsync
