// Every path under a root: nothing is cut, nothing collides, and the scratch folder moves output files only.
#include "runtime/paths.h"

#include <cstring>
#include <gtest/gtest.h>
#include <set>
#include <string>

static const std::string LONGEST_ROOT = "/tmp/eighteen_chars";

TEST(Paths, LongestNumberedOutputPathFitsItsBuffer)
{
    ASSERT_EQ(LONGEST_ROOT.size(), PATH_ROOT_MAX + 1);
    std::string root = LONGEST_ROOT.substr(0, PATH_ROOT_MAX);
    ASSERT_EQ(PathsInit(root.c_str(), nullptr), 0);
    std::set<std::string> seen;
    for (int id = 0; id < PATH_COUNT; id++) {
        std::string path = PathGet(static_cast<PATH_ID>(id));
        char numbered[PATH_OUTPUT_SIZE] = "";
        PathNumbered(static_cast<PATH_ID>(id), 2147483647, numbered, sizeof(numbered));
        EXPECT_EQ(numbered, path + "2147483647");
        EXPECT_EQ(path.find(root + "/"), 0u) << path;
        EXPECT_TRUE(seen.insert(path).second) << path;
    }
}

TEST(Paths, RefusedRootOrScratchFolderChangesNothing)
{
    ASSERT_EQ(PathsInit("/tmp/r", nullptr), 0);
    EXPECT_EQ(PathsInit(LONGEST_ROOT.c_str(), nullptr), -1);
    EXPECT_EQ(PathsInit(nullptr, std::string(60, 's').c_str()), -1);
    EXPECT_STREQ(PathGet(PATH_LOG), "/tmp/r/tmp/tk830.log");
    EXPECT_STREQ(PathGet(PATH_COUNT), "");
}

TEST(Paths, ScratchFolderMovesOutputFilesOnly)
{
    ASSERT_EQ(PathsInit("/tmp/r", "/tmp/r/scratch"), 0);
    EXPECT_STREQ(PathGet(PATH_SHOW_OPTICS), "/tmp/r/scratch/fo_all.txt");
    EXPECT_STREQ(PathGet(PATH_BOOTVAR_LOCK), "/tmp/r/tmp/bootvarGet.lock");
    char cut[8] = "";
    PathNumbered(PATH_SHOW_ACL, 7, cut, sizeof(cut));
    EXPECT_STREQ(cut, "/tmp/r/");
    ASSERT_EQ(PathsInit("", nullptr), 0);
    EXPECT_STREQ(PathGet(PATH_REST_DB), "/tmp/restapi_db");
}
