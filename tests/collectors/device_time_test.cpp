#include "collectors/system/device_time.h"
#include "support/build.h"

struct DeviceTime : BUILDER_TEST {
    void SetUp() override
    {
        vsTextSet("show clock detail", "08:15:02 (UTC+1:00) Mar 01 2026\nSummer Time............ Recurring (EU)\n");
    }
    static std::string document()
    {
        BUILT_T built = buildBuffer(getDeviceTime, 1024);
        EXPECT_EQ(built.result, 0);
        return built.text;
    }
};

TEST_F(DeviceTime, WhatCannotBeReadIsEmpty)
{
    fileWrite(PathGet(PATH_CLOCK_CONFIG), "not JSON");
    vsFaultAdd({"*", "", 0, VS_FAIL, -5});
    EXPECT_EQ(document(), R"({"time": "","timezone": "", "UTC": "", "DST": {"rule":0}})");
    EXPECT_EQ(logText(), "(ERROR) getDateTime: Bad return code trying to get datetime. (result = -5)\n"
                         "(ERROR) getTimezone: Bad return code trying to get timezone. (result = -5)\n"
                         "(ERROR) platformRun: Show cmd failed: show clock detail\n"
                         "(ERROR) cliShowExecuteToFile: Execute show cmd faile, result:-5\n");
}

TEST_F(DeviceTime, ConfiguredZoneIsReadFromItsPath)
{
    const std::string longName(70, 'z');
    const std::tuple<std::string, int, std::string> cases[] = {
        {R"({"other":1,"SWITCHconfig":{"x":[],"Clock":{"TimeZone":"Asia/Tokyo"}}})", 0, "Asia/Tokyo"},
        {R"({"switchConfig":{"clock":{"timezone":")" + longName + R"("}}})", 0, longName.substr(0, 63)},
        {R"({"switchConfig":{"clock":{"timezone":5}}})", 0, ""},
        {R"({"switchConfig":{"clock":{}}})", 0, ""},
        {R"({"switchConfig":"clock"})", 0, ""},
        {R"({"switchConfig":{"clock")", -1, ""},
        {"", -1, ""},
    };
    char zone[CONFIGURED_TIMEZONE_SIZE] = "before";
    for (const auto &[file, result, expected] : cases) {
        fileWrite(PathGet(PATH_CLOCK_CONFIG), file);
        EXPECT_EQ(configuredTimezoneGet(zone), result) << file;
        EXPECT_EQ(zone, expected) << file;
        EXPECT_EQ(fileRead(PathGet(PATH_CLOCK_CONFIG)), file); // another program's file
    }
    remove(PathGet(PATH_CLOCK_CONFIG)); // a missing one is created
    EXPECT_EQ(configuredTimezoneGet(zone), 0);
    EXPECT_STREQ(zone, "");
    EXPECT_EQ(fileRead(PathGet(PATH_CLOCK_CONFIG)), "{\"switchConfig\":{\"clock\":{\"timezone\":\"\"}}}\n");
}

TEST_F(DeviceTime, ZoneTextCannotBreakTheDocument)
{
    std::string worst = "a\\\"b\\\\c\\n";
    for (int i = 0; i < 57; i++)
        worst += "\\u0001";
    fileWrite(PathGet(PATH_CLOCK_CONFIG), R"({"switchConfig":{"clock":{"timezone":")" + worst + R"("}}})");
    EXPECT_TRUE(has(document(), R"("timezone": ")" + worst + R"(", "UTC")")) << document();
    EXPECT_NE(compact(document()), "(not JSON)");
}

TEST_F(DeviceTime, FirstRuleInTheListingCounts)
{
    int rule = 9;
    for (const auto &[text, expected] : {std::pair("a (EU)\nb (USA)\n", 1),
                                         {"a (USA)\nb (EU)\n", 2},
                                         {"(eu)\nEU\n", 0},
                                         {"", 0},
                                         {"x\r\ny (USA)\r\n", 2}}) {
        vsTextSet("show clock detail", text);
        EXPECT_EQ(getSummerTime(&handle, &rule), 0);
        EXPECT_EQ(rule, expected) << text;
        EXPECT_EQ(fileRead(PathGet(PATH_SHOW_CLOCK_DETAIL)), text); // stays in place
    }
    logClear();
    vsFaultAdd({"show clock detail", "", 0, VS_NO_FILE});
    EXPECT_EQ(getSummerTime(&handle, &rule), 10016);
    EXPECT_EQ(rule, 0);
    EXPECT_EQ(logText(),
              "(ERROR) getSummerTime: can not open file:" + std::string(PathGet(PATH_SHOW_CLOCK_DETAIL)) + "\n");
}
