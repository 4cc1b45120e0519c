#include "Report.h"

#include <gmock/gmock.h>

#include "ExitCode.h"

namespace
{

using testing::ElementsAre;
using vxlsync::ExitCode;
using vxlsync::Group;
using vxlsync::makeReport;
using vxlsync::Report;

vxlsync::Member member(std::int64_t id, float offsetSeconds)
{
    return {id, "name" + std::to_string(id), "path" + std::to_string(id), offsetSeconds};
}

std::vector<std::string> pathsOf(const Group& group)
{
    std::vector<std::string> paths;
    for (const auto& found : group)
        paths.push_back(found.path);
    return paths;
}

TEST(Report, OrdersMembersByOffset)
{
    const Group cluster{member(1, 3.2f), member(2, 0.0f), member(3, 1.6f)};

    const Report report = makeReport({cluster}, {});

    ASSERT_EQ(report.groups.size(), 1u);
    EXPECT_THAT(pathsOf(report.groups[0]), ElementsAre("path2", "path3", "path1"));
}

TEST(Report, OrdersMembersOfOneOffsetByTheCommandLine)
{
    const Group cluster{member(3, 0.0f), member(1, 0.0f), member(2, 0.0f)};

    const Report report = makeReport({cluster}, {});

    ASSERT_EQ(report.groups.size(), 1u);
    EXPECT_THAT(pathsOf(report.groups[0]), ElementsAre("path1", "path2", "path3"));
}

TEST(Report, OrdersGroupsByTheirFirstFileOnTheCommandLine)
{
    const Group second{member(2, 0.0f), member(3, 0.5f)};
    // File 1 begins last in its group and decides all the same.
    const Group first{member(4, 0.0f), member(1, 9.0f)};

    const Report report = makeReport({second, first}, {});

    ASSERT_EQ(report.groups.size(), 2u);
    EXPECT_THAT(pathsOf(report.groups[0]), ElementsAre("path4", "path1"));
    EXPECT_THAT(pathsOf(report.groups[1]), ElementsAre("path2", "path3"));
}

TEST(Report, OrdersPathsAsGivenAndNotByTheirLetters)
{
    const Group later{{2, "a", "a.wav", 0.0f}, {4, "b", "b.wav", 0.0f}};
    const Group earlier{{1, "z", "z.wav", 0.0f}, {3, "y", "y.wav", 0.0f}};

    const Report report = makeReport({later, earlier}, {});

    ASSERT_EQ(report.groups.size(), 2u);
    EXPECT_THAT(pathsOf(report.groups[0]), ElementsAre("z.wav", "y.wav"));
}

TEST(Report, ListsRecordingsOfNoGroupAloneInOrder)
{
    const Report report = makeReport({{member(7, 0.0f)}, {member(2, 0.0f)}}, {});

    EXPECT_TRUE(report.groups.empty());
    ASSERT_EQ(report.alone.size(), 2u);
    EXPECT_EQ(report.alone[0].path, "path2");
    EXPECT_EQ(report.alone[1].name, "name7");
}

TEST(Report, PassesOverAClusterWithoutMembers)
{
    const Report report = makeReport({Group(), {member(1, 0.0f)}}, {});

    EXPECT_TRUE(report.groups.empty());
    EXPECT_EQ(report.alone.size(), 1u);
}

TEST(Report, KeepsFailuresInTheirOrder)
{
    const Report report = makeReport({}, {{"z.wav", "does not exist"}, {"a.wav", "is empty"}});

    ASSERT_EQ(report.failed.size(), 2u);
    EXPECT_EQ(report.failed[0].path, "z.wav");
    EXPECT_EQ(report.failed[1].reason, "is empty");
}

TEST(ExitCode, IsZeroWhenEveryFileIsInAGroup)
{
    EXPECT_EQ(exitCodeOf(makeReport({{member(1, 0.0f), member(2, 0.0f)}}, {})), ExitCode::grouped);
}

TEST(ExitCode, IsZeroWhenAGroupStandsBesideALoneRecording)
{
    const Report report = makeReport({{member(1, 0.0f), member(2, 0.0f)}, {member(3, 0.0f)}}, {});

    EXPECT_EQ(exitCodeOf(report), ExitCode::grouped);
}

TEST(ExitCode, TellsThatNothingMatched)
{
    EXPECT_EQ(exitCodeOf(makeReport({{member(1, 0.0f)}}, {})), ExitCode::nothingMatched);
}

TEST(ExitCode, TellsOfAnUnreadableFileBesideAGroup)
{
    const Report report = makeReport({{member(1, 0.0f), member(2, 0.0f)}}, {{"x.wav", "broken"}});

    EXPECT_EQ(exitCodeOf(report), ExitCode::unreadableFile);
}

TEST(ExitCode, PutsAnUnreadableFileBeforeNoMatch)
{
    EXPECT_EQ(exitCodeOf(makeReport({{member(1, 0.0f)}}, {{"x.wav", "broken"}})),
              ExitCode::unreadableFile);
}

TEST(ExitCode, HasTheNumbersOfTheHelpText)
{
    EXPECT_EQ(static_cast<int>(ExitCode::grouped), 0);
    EXPECT_EQ(static_cast<int>(ExitCode::internalError), 1);
    EXPECT_EQ(static_cast<int>(ExitCode::usage), 2);
    EXPECT_EQ(static_cast<int>(ExitCode::unreadableFile), 3);
    EXPECT_EQ(static_cast<int>(ExitCode::nothingMatched), 4);
}

} // namespace
