#include "collectors/feature/image_info.h"
#include "support/build.h"
#include "switch/fixture.h"

using ImageInfo = SWITCH_TEST;

TEST_F(ImageInfo, RunningImageIsCutToItsColumn)
{
    vsTextSet("show bootvar", std::string(14, '\n') + " 1  a1  b1  8.4.50-and-more-than-fits  d1\n 2  a  b  c  d\n");
    EXPECT_TRUE(has(compact(buildBuffer(getImageInfo, 4096).text), R"(,"runningImage":"8.4.50-and-more-t"})"));
}

TEST_F(ImageInfo, TooLongThereIsNoText)
{
    VS_SYSTEM_T &system = vsState().system;
    system.activeImage = system.backupImage = system.backupLabel = std::string(250, 'x');
    system.activeLabel = std::string(1023 - buildBuffer(getImageInfo, 4096).text.size(), 'y');
    EXPECT_EQ(buildBuffer(getImageInfo, 4096).text.size(), 1023u);
    system.activeLabel += "y";
    BUILT_T built = buildBuffer(getImageInfo, 4096);
    EXPECT_EQ(std::to_string(built.result) + built.text, "10000");
    EXPECT_EQ(logText(), "(ERROR) getImageInfo: Response JSON too large: 1024 bytes (max 1024)\n");
}
