#include "Report.h"

#include <gmock/gmock.h>

namespace
{

using vxlsync::Group;
using vxlsync::Member;
using vxlsync::Report;

Member member(std::size_t index, double offset)
{
    Member one;
    one.index = index;
    one.offsetSeconds = offset;
    return one;
}

TEST(Report, OrdersMembersByOffsetAndEqualOnesByTheCommandLine)
{
    Report report;
    report.groups.push_back({0, {member(3, 0.0), member(1, 2.0), member(2, 0.0)}, {}});

    vxlsync::arrange(report);

    const std::vector<Member>& members = report.groups[0].members;
    EXPECT_EQ(members[0].index, 2u);
    EXPECT_EQ(members[1].index, 3u);
    EXPECT_EQ(members[2].index, 1u);
}

TEST(Report, OrdersGroupsByTheirFirstFile)
{
    Report report;
    report.groups.push_back({2, {member(2, 0.0), member(4, 1.0)}, {}});
    report.groups.push_back({3, {member(3, 0.0), member(1, 1.0)}, {}});

    vxlsync::arrange(report);

    EXPECT_EQ(report.groups[0].reference, 3u);
    EXPECT_EQ(report.groups[1].reference, 2u);
}

TEST(Report, OrdersLoneRecordingsByTheCommandLine)
{
    Report report;
    report.alone.push_back({5, "b", "b.wav", 1.0, ""});
    report.alone.push_back({2, "a", "a.wav", 1.0, ""});

    vxlsync::arrange(report);

    EXPECT_EQ(report.alone[0].index, 2u);
}

TEST(Report, HasNoEmptyGroups)
{
    Report report;
    report.groups.push_back({});

    vxlsync::arrange(report);

    EXPECT_TRUE(report.groups.empty());
}

} // namespace
