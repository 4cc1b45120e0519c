#include "vxl_sync/Result.h"

#include <gmock/gmock.h>

namespace
{

using vxlsync::DeviceEvidence;
using vxlsync::Method;
using vxlsync::nameOf;
using vxlsync::Verdict;

TEST(Names, OfEvidenceAreTheWordsOfTheJson)
{
    EXPECT_STREQ(nameOf(DeviceEvidence::none), "none");
    EXPECT_STREQ(nameOf(DeviceEvidence::stated), "stated");
    EXPECT_STREQ(nameOf(DeviceEvidence::serialNumber), "serial number");
    EXPECT_STREQ(nameOf(DeviceEvidence::model), "model");
    EXPECT_STREQ(nameOf(DeviceEvidence::originator), "originator");
    EXPECT_STREQ(nameOf(DeviceEvidence::names), "names");
}

TEST(Names, OfMethodsAreTheWordsOfTheJson)
{
    EXPECT_STREQ(nameOf(Method::landmarks), "landmarks");
    EXPECT_STREQ(nameOf(Method::correlation), "correlation");
}

TEST(Names, OfVerdictsAreTheWordsOfTheJson)
{
    EXPECT_STREQ(nameOf(Verdict::accepted), "accepted");
    EXPECT_STREQ(nameOf(Verdict::confirmed), "confirmed");
    EXPECT_STREQ(nameOf(Verdict::weak), "weak");
    EXPECT_STREQ(nameOf(Verdict::ambiguous), "ambiguous");
    EXPECT_STREQ(nameOf(Verdict::contradicted), "contradicted");
    EXPECT_STREQ(nameOf(Verdict::forbidden), "forbidden");
}

} // namespace
