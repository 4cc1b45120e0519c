#include "Guard.h"

#include <new>
#include <sstream>
#include <stdexcept>

#include <gmock/gmock.h>

#include "Request.h"

namespace
{

using vxlsync::host::ExitCode;
using vxlsync::host::guarded;

TEST(Guard, PassesOnTheCodeOfTheWork)
{
    std::ostringstream err;

    EXPECT_EQ(guarded([] { return ExitCode::nothingMatched; }, err), ExitCode::nothingMatched);
    EXPECT_EQ(err.str(), "");
}

TEST(Guard, SaysWhatIsWrongWithTheCommandLine)
{
    std::ostringstream err;
    const auto refuse = []() -> ExitCode { throw vxlsync::host::UsageError("--fix: no time"); };

    EXPECT_EQ(guarded(refuse, err), ExitCode::usage);
    EXPECT_EQ(err.str(), "vxl-sync: --fix: no time\n");
}

TEST(Guard, SaysThatMemoryRanOut)
{
    std::ostringstream err;
    const auto runOut = []() -> ExitCode { throw std::bad_alloc(); };

    EXPECT_EQ(guarded(runOut, err), ExitCode::internalError);
    EXPECT_EQ(err.str(),
              "vxl-sync: memory ran out; give fewer files, a lower --memory or fewer --jobs\n");
}

TEST(Guard, ShowsAnyOtherErrorAsOurs)
{
    std::ostringstream err;
    const auto fail = []() -> ExitCode { throw std::logic_error("odd\x1b"); };

    EXPECT_EQ(guarded(fail, err), ExitCode::internalError);
    EXPECT_EQ(err.str(), "vxl-sync: internal error: odd\\x1b\n");
}

} // namespace
