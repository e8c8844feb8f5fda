#include "collectors/feature/image_info.h"
#include "support/build.h"
#include "switch/fixture.h"

using ImageInfo = SWITCH_TEST;

TEST_F(ImageInfo, WhatCannotBeReadIsEmpty)
{
    const std::string names = R"({"activeImage":"8.4.50","backupImage":"8.4.49",)";
    const std::string labels = R"("activeLabel":"now \"50\"","backupLabel":"old")";
    const std::string noNames = R"({"activeImage":"","backupImage":"",)",
                      noLabels = R"("activeLabel":"","backupLabel":"")";
    const std::string running = R"(,"runningImage":"8.4.50-and-more-t"})"; // cut to its column
    struct {
        VS_FAULT_T fault;
        std::string document;
    } cases[] = {
        {{"nothing"}, names + labels + running},
        {{"rpcclt_openapiUnitMgrNumberGet"}, names + labels + running},
        {{"rpcclt_openapiUnitMgrStackMemberGetNext"}, names + labels + running},
        {{"rpcclt_openapiImageFileNameMaxLengthGet"}, noNames + noLabels + running},
        {{"rpcclt_openapiImageNamesGet"}, noNames + labels + running},
        {{"rpcclt_openapiImageLabelsGet"}, names + noLabels + running},
        {{"show bootvar"}, names + labels + "}"},
        {{"show bootvar", "", 0, VS_EMPTY}, names + labels + "}"},
    };
    VS_SYSTEM_T &system = vsState().system;
    system.activeImage = "8.4.50";
    system.backupImage = "8.4.49";
    system.activeLabel = "now \"50\"";
    system.backupLabel = "old";
    vsTextSet("show bootvar", std::string(14, '\n') + " 1  a1  b1  8.4.50-and-more-than-fits  d1\n 2  a  b  c  d\n");
    for (const auto &one : cases) {
        vsFaultAdd(one.fault);
        BUILT_T built = buildBuffer(getImageInfo, 4096);
        EXPECT_EQ(built.result, 0);
        EXPECT_EQ(compact(built.text), one.document) << one.fault.name;
        vsFaultsClear();
    }
}

TEST_F(ImageInfo, TooLongOrWithoutMemoryThereIsNoText)
{
    VS_SYSTEM_T &system = vsState().system;
    system.activeImage = system.backupImage = system.backupLabel = std::string(250, 'x');
    system.activeLabel = std::string(1023 - buildBuffer(getImageInfo, 4096).text.size(), 'y');
    EXPECT_EQ(buildBuffer(getImageInfo, 4096).text.size(), 1023u);
    struct {
        int nth;
        unsigned source;
        const char *result;
        const char *line;
    } cases[] = {
        {0, ALLOC_OWN, "10002", "Failed to allocate memory for image names\n"},
        {1, ALLOC_OWN, "10002", "Failed to allocate memory for output\n"},
        {0, ALLOC_CJSON, "10002", "Failed to create root JSON object\n"},
        {1, ALLOC_CJSON, "10000", "package response str error\n"},
        {-1, ALLOC_CJSON, "10000", "Response JSON too large: 1024 bytes (max 1024)\n"},
    };
    for (const auto &one : cases) {
        logClear();
        system.activeLabel += one.nth < 0 ? "y" : "";
        allocFailAt(one.nth, one.source);
        BUILT_T built = buildBuffer(getImageInfo, 4096);
        EXPECT_EQ(allocFailStop(), one.nth >= 0) << one.line;
        EXPECT_EQ(std::to_string(built.result) + built.text, one.result) << one.line;
        EXPECT_EQ(logText(), std::string("(ERROR) getImageInfo: ") + one.line);
    }
}
