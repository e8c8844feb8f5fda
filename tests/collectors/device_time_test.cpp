#include "collectors/system/device_time.h"
#include "support/build.h"

#include <sys/stat.h>

struct DeviceTime : BUILDER_TEST {
    void SetUp() override
    {
        vsTextSet("show clock detail", "08:15:02 (UTC+1:00) Mar 01 2026\nSummer Time............ Recurring (EU)\n");
        fileWrite(PathGet(PATH_CLOCK_CONFIG), R"({"switchConfig":{"clock":{"timezone":"Europe/Berlin"}}})");
    }
    // What the platform says now, through the very calls: the virtual switch decides on the texts.
    std::string clockText()
    {
        char text[DATE_TIME_SIZE] = "";
        EXPECT_EQ(getDateTime(&handle, text), 0);
        return text;
    }
    std::string zoneText()
    {
        char text[TIMEZONE_SIZE] = "";
        EXPECT_EQ(getTimezone(&handle, text), 0);
        return text;
    }
    static std::string document()
    {
        BUILT_T built = buildBuffer(getDeviceTime, 1024);
        EXPECT_EQ(built.result, 0);
        return built.text;
    }
};

TEST_F(DeviceTime, HasItsOwnSpacing)
{
    vsClockSet(100);
    ASSERT_FALSE(clockText().empty());
    ASSERT_FALSE(zoneText().empty());
    EXPECT_EQ(document(), R"({"time": ")" + clockText() + R"(","timezone": "Europe/Berlin", "UTC": ")" + zoneText() +
                              R"(", "DST": {"rule":1}})");
}

TEST_F(DeviceTime, WhatCannotBeReadIsEmpty)
{
    fileWrite(PathGet(PATH_CLOCK_CONFIG), "not JSON");
    vsFaultAdd({"*", "", 0, VS_FAIL, -5});
    EXPECT_EQ(document(), R"({"time": "","timezone": "", "UTC": "", "DST": {"rule":0}})");
    EXPECT_EQ(logText(), "(ERROR) getDateTime: Bad return code trying to get datetime. (result = -5)\n"
                         "(ERROR) getTimezone: Bad return code trying to get timezone. (result = -5)\n"
                         "(ERROR) cliShowExecuteToFile: Execute show cmd faile, result:-5\n");
}

TEST_F(DeviceTime, ConfiguredZoneIsReadFromItsPath)
{
    const std::string longName(70, 'z');
    struct {
        std::string file;
        int result;
        std::string zone;
    } cases[] = {
        {R"({"other":1,"switchConfig":{"x":[],"clock":{"timezone":"Asia/Tokyo"}}})", 0, "Asia/Tokyo"},
        {R"({"SWITCHconfig":{"Clock":{"TimeZone":"Asia/Tokyo"}}})", 0, "Asia/Tokyo"},
        {R"({"switchConfig":{"clock":{"timezone":")" + longName + R"("}}})", 0, longName.substr(0, 63)},
        {R"({"switchConfig":{"clock":{"timezone":5}}})", 0, ""},
        {R"({"switchConfig":{"clock":{"timezone":null}}})", 0, ""},
        {R"({"switchConfig":{"clock":{}}})", 0, ""},
        {R"({"switchConfig":"clock"})", 0, ""},
        {R"({"switchConfig":{"clock")", -1, ""},
        {"", -1, ""},
    };
    for (const auto &one : cases) {
        char zone[CONFIGURED_TIMEZONE_SIZE] = "before";
        fileWrite(PathGet(PATH_CLOCK_CONFIG), one.file);
        EXPECT_EQ(configuredTimezoneGet(zone), one.result) << one.file;
        EXPECT_EQ(zone, one.zone) << one.file;
        EXPECT_EQ(fileRead(PathGet(PATH_CLOCK_CONFIG)), one.file); // another program's file
    }
}

TEST_F(DeviceTime, ZoneTextCannotBreakTheDocument)
{
    fileWrite(PathGet(PATH_CLOCK_CONFIG), R"({"switchConfig":{"clock":{"timezone":"a\"b\\c\n\u0001"}}})");
    EXPECT_NE(document().find(R"("timezone": "a\"b\\c\n\u0001",)"), std::string::npos) << document();
    std::string worst;
    for (int i = 0; i < 63; i++)
        worst += "\\u0001";
    fileWrite(PathGet(PATH_CLOCK_CONFIG), R"({"switchConfig":{"clock":{"timezone":")" + worst + R"("}}})");
    EXPECT_NE(document().find("\"" + worst + "\""), std::string::npos) << document();
    EXPECT_NE(compact(document()), "(not JSON)");
}

TEST_F(DeviceTime, MissingConfigurationIsCreated)
{
    char zone[CONFIGURED_TIMEZONE_SIZE] = "before";
    remove(PathGet(PATH_CLOCK_CONFIG));
    EXPECT_EQ(configuredTimezoneGet(zone), 0);
    EXPECT_STREQ(zone, "");
    EXPECT_EQ(fileRead(PathGet(PATH_CLOCK_CONFIG)), "{\"switchConfig\":{\"clock\":{\"timezone\":\"\"}}}\n");
}

TEST_F(DeviceTime, ConfigurationThatCannotBeCreatedGivesEmptyText)
{
    char zone[CONFIGURED_TIMEZONE_SIZE] = "before";
    remove(PathGet(PATH_CLOCK_CONFIG));
    ASSERT_EQ(remove((root.dir + "/mnt/fastpath").c_str()), 0);
    EXPECT_EQ(configuredTimezoneGet(zone), -1);
    EXPECT_STREQ(zone, "");
}

TEST_F(DeviceTime, FirstRuleInTheListingCounts)
{
    struct {
        const char *text;
        int rule;
    } cases[] = {
        {"a (EU)\nb (USA)\n", 1}, {"a (USA)\nb (EU)\n", 2}, {"(eu)\nEU\n", 0}, {"", 0}, {"x\r\ny (USA)\r\n", 2},
    };
    for (const auto &one : cases) {
        int rule = 9;
        vsTextSet("show clock detail", one.text);
        EXPECT_EQ(getSummerTime(&handle, &rule), 0);
        EXPECT_EQ(rule, one.rule) << one.text;
        EXPECT_EQ(fileRead(PathGet(PATH_SHOW_CLOCK_DETAIL)), one.text); // stays in place
    }
}

TEST_F(DeviceTime, SummerTimeTellsWhyItFailed)
{
    int rule = 9;
    vsFaultAdd({"show clock detail"});
    EXPECT_EQ(getSummerTime(&handle, &rule), 10000);
    EXPECT_EQ(rule, 0);
    vsFaultsClear();
    logClear();
    vsFaultAdd({"show clock detail", "", 0, VS_NO_FILE});
    EXPECT_EQ(getSummerTime(&handle, &rule), 10016);
    EXPECT_EQ(logText(),
              "(ERROR) getSummerTime: can not open file:" + std::string(PathGet(PATH_SHOW_CLOCK_DETAIL)) + "\n");
}
