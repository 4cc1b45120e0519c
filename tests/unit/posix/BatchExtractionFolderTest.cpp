#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "Console.h"
#include "VXFileSet.h"
#include "VXLandmarkExtract.h"
#include "Wave.h"

namespace
{

// Stands in another folder for as long as it lives.
class StandIn
{
public:
    explicit StandIn(const std::string& folder) : former(std::filesystem::current_path())
    {
        std::filesystem::current_path(folder);
    }
    ~StandIn() { std::filesystem::current_path(former); }
    StandIn(const StandIn&) = delete;
    StandIn& operator=(const StandIn&) = delete;

private:
    std::filesystem::path former;
};

} // namespace

TEST(BatchExtractionNames, PathWithoutAFolderIsNamedByAllBeforeItsLastDot)
{
    const Console console;
    const wave::TempFolder folder;
    folder.write("take.2.wav", wave::file16({1, 2, 3}));
    const StandIn place(folder.path);
    VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};

    const std::unique_ptr<VXS::VXFileSet> fileSet(extractor.runAll({"take.2.wav"}));

    EXPECT_EQ((std::map<std::int64_t, std::string>{{1, "take.2"}}), fileSet->idToName);
}
