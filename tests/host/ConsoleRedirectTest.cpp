#include "ConsoleRedirect.h"

#include <iostream>
#include <stdexcept>

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using vxlsync::ConsoleRedirect;

class Lines
{
public:
    ConsoleRedirect::LineSink sink()
    {
        return [this](const std::string& line) { all.push_back(line); };
    }

    std::vector<std::string> all;
};

TEST(ConsoleRedirect, HandsOnWhatIsWrittenLineByLine)
{
    Lines lines;
    const ConsoleRedirect redirect(lines.sink());

    std::cout << "one " << 1 << "\n\ntwo" << std::endl;

    EXPECT_THAT(lines.all, ElementsAre("one 1", "", "two"));
}

TEST(ConsoleRedirect, HandsOnAnUnfinishedLineAtItsEnd)
{
    Lines lines;
    {
        const ConsoleRedirect redirect(lines.sink());
        std::cout << "cut";
        ASSERT_TRUE(lines.all.empty());
    }

    EXPECT_THAT(lines.all, ElementsAre("cut"));
}

TEST(ConsoleRedirect, GivesTheStreamBackWhenAnExceptionPasses)
{
    std::streambuf* const before = std::cout.rdbuf();
    Lines lines;

    try {
        const ConsoleRedirect redirect(lines.sink());
        throw std::runtime_error("passes");
    } catch (const std::runtime_error&) {
        SUCCEED();
    }

    EXPECT_EQ(std::cout.rdbuf(), before);
}

TEST(ConsoleRedirect, GivesAnOuterRedirectItsLinesBack)
{
    Lines outer;
    Lines inner;
    const ConsoleRedirect outerRedirect(outer.sink());
    {
        const ConsoleRedirect innerRedirect(inner.sink());
        std::cout << "inside\n";
    }

    std::cout << "outside\n";

    EXPECT_THAT(inner.all, ElementsAre("inside"));
    EXPECT_THAT(outer.all, ElementsAre("outside"));
}

} // namespace
