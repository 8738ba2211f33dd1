#include <Velor.Base/PlatformOperations.h>

#include <gtest/gtest.h>

namespace {

const PlatformOperations& table = platformOperations();

TEST(PlatformOperations, CrashFileNeedsAPathThatConvertsAndNothingMore)
{
    EXPECT_FALSE(table.registerCrashFile("")) << "empty path registered";
    EXPECT_TRUE(table.registerCrashFile("no/such/folder/file.log")) << "the system's refusal looked at";
}

} // namespace
