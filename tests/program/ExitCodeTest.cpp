#include "ExitCode.h"

#include <gmock/gmock.h>

#include "Results.h"

namespace
{

using vxlsync::Result;
using vxlsync::host::ExitCode;
using vxlsync::host::exitCodeOf;

TEST(ExitCode, PutsAnUnreadableFileBeforeEverythingElse)
{
    Result result = results::everything();
    EXPECT_EQ(exitCodeOf(result), ExitCode::unreadableFile);

    result.groups.clear();
    EXPECT_EQ(exitCodeOf(result), ExitCode::unreadableFile);
}

TEST(ExitCode, TellsAGroupFromNone)
{
    Result result = results::everything();
    result.failed.clear();
    EXPECT_EQ(exitCodeOf(result), ExitCode::grouped);

    result.groups.clear();
    EXPECT_EQ(exitCodeOf(result), ExitCode::nothingMatched);
}

} // namespace
