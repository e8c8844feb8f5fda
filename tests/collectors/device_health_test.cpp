#include "collectors/system/device_health.h"
#include "support/build.h"
#include "support/root.h"

#include "control.h"

#include <filesystem>
#include <gtest/gtest.h>

static const char environmentText[] = R"(
Temp (C)....................................... 45
Fan Control Mode............................... Quiet

Temperature Sensors:
Unit   Sensor   Description        Temp (C)   State          Max_Temp (C)
----   ------   ----------------   --------   ------------   ------------
1      1        MAC                45         Normal         52
1      2        PHY Row 1 near f   41         critical       47
2      1        MAC                -5         FAULT          12

Fans:
Unit   Fan   Description   Type    Speed   Duty level   State
----   ---   -----------   -----   -----   ----------   -----------
1      1     FAN-1         Fixed   5200    40%          Operational
1      2     FAN-2         Fixed   0       0%           Not Present
2      1     FAN-1         Fixed   80      5            Failed
2      2     FAN-2         Fixed   80      5            Spinning

Power Modules:
Unit   Power supply   Description   Type    State
)";

static const char cpuText[] = R"(
Memory and Process CPU Utilization Info of Unit:1

Memory Utilization Report
status     KBytes
------ ----------
free     1
alloc    3

CPU Utilization:
PID      Name                    5 Secs     60 Secs    300 Secs
1        (init)                  0.10%      0.10%      0.10%
Total CPU Utilization           7.24%      6.91%      7.03%

Memory and Process CPU Utilization Info of Unit:2
free     1372810
alloc    1001204
Total CPU Utilization           12.5%      6.91%      7.03%
)";

class DeviceHealth : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(vsLoadText("{}"), "");
        vsTextSet("show environment", environmentText);
        vsTextSet("show process cpu all", cpuText);
    }
    void TearDown() override
    {
        vsUnload();
    }
    static std::string document()
    {
        BUILT_T built = buildText(deviceHealthGet);
        EXPECT_EQ(built.result, 0);
        return compact(built.text);
    }
    // One array of the document, as compact text.
    static std::string part(const char *key)
    {
        OWNED_JSON tree(cJSON_Parse(document().c_str()));
        return OWNED_TEXT(cJSON_PrintUnformatted(cJSON_GetObjectItem(tree.get(), key))).get();
    }
    static std::string sensors(const std::string &rows)
    {
        return "Temperature Sensors:\n---- ------\n" + rows + "\n";
    }
    static std::string fans(const std::string &rows)
    {
        return "Temperature Sensors:\n----\n\nFans:\n---- ---\n" + rows + "\n";
    }
    bool filesLeft() const
    {
        return !std::filesystem::is_empty(root.dir + "/mnt/application/kelo/tmp");
    }
    TEST_ROOT_T root;
};

static const char fullFan[] = R"([{"unit":1,"details":[{"id":1,"desc":"FAN-1","speed":5200,"dutyLevel":40,"state":0},)"
                              R"({"id":2,"desc":"FAN-2","speed":0,"dutyLevel":0,"state":2}]},)"
                              R"({"unit":2,"details":[{"id":1,"desc":"FAN-1","speed":80,"dutyLevel":5,"state":1},)"
                              R"({"id":2,"desc":"FAN-2","speed":80,"dutyLevel":5,"state":3}]}])";
static const char fullSensor[] = R"([{"unit":1,"details":[{"id":1,"desc":"MAC","temp":45,"maxTemp":52,"state":2},)"
                                 R"({"id":2,"desc":"PHY Row 1 near f","temp":41,"maxTemp":47,"state":4}]},)"
                                 R"({"unit":2,"details":[{"id":1,"desc":"MAC","temp":-5,"maxTemp":12,"state":0}]}])";
static const char fullCpu[] = R"([{"unit":1,"usage":"7.24%"},{"unit":2,"usage":"12.5%"}])";
static const char fullMemory[] = R"([{"unit":1,"usage":"75.00%"},{"unit":2,"usage":"42.17%"}])";

static std::string whole(const char *fan, const char *sensor, const char *cpu, const char *memory)
{
    return std::string(R"({"fan":)") + fan + R"(,"sensor":)" + sensor + R"(,"cpu":)" + cpu + R"(,"memory":)" + memory +
           "}";
}

TEST_F(DeviceHealth, ShowsFansSensorsCpuAndMemoryOfEachUnit)
{
    EXPECT_EQ(document(), whole(fullFan, fullSensor, fullCpu, fullMemory));
    EXPECT_FALSE(filesLeft());
}

TEST_F(DeviceHealth, CommandThatFailsLeavesItsArraysEmpty)
{
    const std::string noEnvironment = whole("[]", "[]", fullCpu, fullMemory);
    const std::string noCpu = whole(fullFan, fullSensor, "[]", "[]");
    struct {
        const char *command;
        VS_FAULT_KIND kind;
        std::string document;
    } cases[] = {
        {"show environment", VS_FAIL, noEnvironment},
        {"show environment", VS_NO_FILE, noEnvironment},
        {"show environment", VS_EMPTY, noEnvironment},
        {"show process cpu all", VS_FAIL, noCpu},
        {"show process cpu all", VS_NO_FILE, noCpu},
        {"show process cpu all", VS_EMPTY, noCpu},
        {"show environment", VS_CRLF, whole(fullFan, fullSensor, fullCpu, fullMemory)},
        {"show process cpu all", VS_CRLF, whole(fullFan, fullSensor, fullCpu, fullMemory)},
    };
    for (const auto &one : cases) {
        VS_FAULT_T fault;
        fault.name = one.command;
        fault.kind = one.kind;
        vsFaultAdd(fault);
        EXPECT_EQ(document(), one.document) << one.command << " " << one.kind;
        vsFaultsClear();
        EXPECT_FALSE(filesLeft()) << one.command << " " << one.kind;
    }
}

TEST_F(DeviceHealth, ReadersTellWhyTheyFailed)
{
    CLIENT_HANDLE_T handle = {};
    FAN_TABLE_T fanTable;
    SENSOR_TABLE_T sensorTable;
    USAGE_TABLE_T usage;
    uint32_t mode = 9;
    VS_FAULT_T missing;
    missing.kind = VS_NO_FILE;
    for (const char *command : {"show environment", "show process cpu all"}) {
        missing.name = command;
        vsFaultAdd(missing);
    }
    EXPECT_EQ(environmentGet(&handle, &fanTable, &sensorTable, &mode), 10016);
    EXPECT_EQ(mode, 0u);
    EXPECT_EQ(cpuMemoryUsageGet(&handle, &usage), 10016);
    EXPECT_NE(logText().find("(ERROR) environmentGet: can not open file:" + root.dir), std::string::npos) << logText();
    vsFaultsClear();
    vsFaultAdd({"show environment"});
    vsFaultAdd({"show process cpu all"});
    EXPECT_EQ(environmentGet(&handle, &fanTable, &sensorTable, &mode), 10000);
    EXPECT_EQ(cpuMemoryUsageGet(&handle, &usage), 10000);
}

TEST_F(DeviceHealth, FanControlModeIsReadFromItsLine)
{
    struct {
        const char *text;
        uint32_t mode;
    } cases[] = {
        {"Fan Control Mode........ Cool\n", 3}, {"Fan Control Mode........ Quiet\n", 2},
        {"Fan Control Mode........ Off\n", 1},  {"Fan Control Mode........ Auto\n", 0},
        {" Fan Control Mode....... Cool\n", 0}, {"Fan Control Mode........ Off\nFan Control Mode........ Cool\n", 1},
    };
    CLIENT_HANDLE_T handle = {};
    FAN_TABLE_T fanTable;
    SENSOR_TABLE_T sensorTable;
    for (const auto &one : cases) {
        uint32_t mode = 9;
        vsTextSet("show environment", one.text);
        EXPECT_EQ(environmentGet(&handle, &fanTable, &sensorTable, &mode), 0);
        EXPECT_EQ(mode, one.mode) << one.text;
    }
}

TEST_F(DeviceHealth, SensorRowsAreTakenOrLeft)
{
    const std::string end = "1      2        CPU                50         Normal         60\n";
    const std::string endRow = R"({"id":2,"desc":"CPU","temp":50,"maxTemp":60,"state":2})";
    struct {
        std::string rows;
        std::string sensor;
    } cases[] = {
        // what is out of range is passed over, and the next row counts
        {"9 1 MAC              45 Normal 52\n1 1 MAC              45 nonE 52\n",
         R"([{"unit":1,"details":[{"id":1,"desc":"MAC","temp":45,"maxTemp":52,"state":0}]}])"},
        {"1 22 MAC             45 Normal 52\n1 0 MAC              45 Normal 52\n1 1 MAC              45 low 52\n",
         R"([{"unit":1,"details":[{"id":1,"desc":"MAC","temp":45,"maxTemp":52,"state":1}]}])"},
        {"-1 1 MAC             45 Normal 52\n8 1 MAC              45 Warning 52\n",
         R"([{"unit":8,"details":[{"id":1,"desc":"MAC","temp":45,"maxTemp":52,"state":3}]}])"},
        // a row without its last number ends the table
        {"1 1 MAC              45 NotPresent 52\n1 2 CPU              45 Normal\n1 3 PHY              45 Normal 52\n",
         R"([{"unit":1,"details":[{"id":1,"desc":"MAC","temp":45,"maxTemp":52,"state":6}]}])"},
        {"1 1 MAC              45 NotOperational 52\n1 2 CPU\n",
         R"([{"unit":1,"details":[{"id":1,"desc":"MAC","temp":45,"maxTemp":52,"state":7}]}])"},
        // a state as long as a line is one word all the same
        {"1 1 MAC              45 Shutdown" + std::string(900, 'x') + " 52\n" + end,
         R"([{"unit":1,"details":[{"id":1,"desc":"MAC","temp":45,"maxTemp":52,"state":5},)" + endRow + "]}]"},
        // a unit without its first sensor is not shown
        {end, "[]"},
    };
    for (const auto &one : cases) {
        vsTextSet("show environment", sensors(one.rows));
        EXPECT_EQ(part("sensor"), one.sensor) << one.rows;
    }
}

TEST_F(DeviceHealth, FanRowsAreTakenOrLeft)
{
    struct {
        std::string rows;
        std::string fan;
    } cases[] = {
        {"1 1 F Fixed 5200 40 operational\n",
         R"([{"unit":1,"details":[{"id":1,"desc":"FAN-1","speed":5200,"dutyLevel":40,"state":3}]}])"},
        {"1 1 F Fixed N/A N/A Notoperating\n",
         R"([{"unit":1,"details":[{"id":1,"desc":"FAN-1","speed":0,"dutyLevel":0,"state":2}]}])"},
        {"1 1 F Fixed 99999999999999999999 1 Failed\n",
         R"([{"unit":1,"details":[{"id":1,"desc":"FAN-1","speed":2147483647,"dutyLevel":1,"state":1}]}])"},
        {"1 21 F Fixed 1 1 Failed\n1 1 F Fixed 1 1 Failed\n1 22 F Fixed 1 1 Failed\n99 1 F Fixed 1 1 Failed\n",
         R"([{"unit":1,"details":[{"id":1,"desc":"FAN-1","speed":1,"dutyLevel":1,"state":1}]}])"},
        {"1 1 " + std::string(700, 'f') + " " + std::string(200, 't') + " 7 8 Failed\n",
         R"([{"unit":1,"details":[{"id":1,"desc":"FAN-1","speed":7,"dutyLevel":8,"state":1}]}])"},
        {"1 2 F Fixed 1 1 Failed\n", "[]"},
        {"1 1 F Fixed 1 Failed\n", "[]"},
    };
    for (const auto &one : cases) {
        vsTextSet("show environment", fans(one.rows));
        EXPECT_EQ(part("fan"), one.fan) << one.rows;
    }
}

TEST_F(DeviceHealth, ShowsTwelveFansAndTenSensorsAtMost)
{
    std::string sensorRows, fanRows, sensorIds, fanIds;
    for (int id = 1; id <= 13; id++)
        fanRows += "1 " + std::to_string(id) + " F Fixed 1 1 Operational\n";
    for (int id = 1; id <= 11; id++)
        sensorRows += "1 " + std::to_string(id) + " S                1 Normal 1\n";
    vsTextSet("show environment", sensors(sensorRows) + "Fans:\n----\n" + fanRows);
    OWNED_JSON tree(cJSON_Parse(document().c_str()));
    auto shown = [&tree](const char *key) {
        cJSON *unit = cJSON_GetArrayItem(cJSON_GetObjectItem(tree.get(), key), 0);
        return cJSON_GetArraySize(cJSON_GetObjectItem(unit, "details"));
    };
    EXPECT_EQ(shown("fan"), 12);
    EXPECT_EQ(shown("sensor"), 10);
}

TEST_F(DeviceHealth, SectionsMustStandInTheirOrderAndHaveTheirRules)
{
    const std::string sensorTable = "Temperature Sensors:\n----\n1 1 MAC              45 Normal 52\n";
    const std::string fanTable = "Fans:\n----\n1 1 F Fixed 1 1 Operational\n";
    const std::string sensor = R"([{"unit":1,"details":[{"id":1,"desc":"MAC","temp":45,"maxTemp":52,"state":2}]}])";
    const std::string fan = R"([{"unit":1,"details":[{"id":1,"desc":"FAN-1","speed":1,"dutyLevel":1,"state":0}]}])";
    struct {
        std::string text;
        std::string sensor, fan;
    } cases[] = {
        {sensorTable + "\n" + fanTable, sensor, fan},
        {sensorTable + fanTable, sensor, fan},                                     // no blank line between
        {fanTable + "\n" + sensorTable, sensor, "[]"},                             // the other way round
        {fanTable, "[]", "[]"},                                                    // no sensors at all
        {"Temperature Sensors:\n1 1 MAC              45 Normal 52\n", "[]", "[]"}, // no rule
        {sensorTable + "\nFans:\n1 1 F Fixed 1 1 Operational\n", sensor, "[]"},
    };
    for (const auto &one : cases) {
        vsTextSet("show environment", one.text);
        EXPECT_EQ(part("sensor"), one.sensor) << one.text;
        EXPECT_EQ(part("fan"), one.fan) << one.text;
    }
}

TEST_F(DeviceHealth, UsageNeedsAllOfItsLines)
{
    const std::string unit = "Memory and Process CPU Utilization Info of Unit:";
    const std::string total = "Total CPU Utilization           7.24%    6.91%    7.03%\n";
    struct {
        std::string text;
        std::string memory;
    } cases[] = {
        {unit + "1\nfree     1\nalloc    3\n" + total, R"([{"unit":1,"usage":"75.00%"}])"},
        {unit + "8\nalloc    1\nfree     2\n" + total, R"([{"unit":8,"usage":"33.33%"}])"},
        {unit + "1\nalloc    3\n" + total, "[]"},
        {unit + "1\nfree     1\nalloc    0\n" + total, "[]"},
        // a unit without its own numbers does not show its predecessor's
        {unit + "1\nfree     1\nalloc    3\n" + total + unit + "2\n" + total, R"([{"unit":1,"usage":"75.00%"}])"},
        {unit + "9\nfree     1\nalloc    3\n" + total, "[]"},
        {unit + "\nfree     1\nalloc    3\n" + total, "[]"},
        {"free     1\nalloc    3\n" + total, "[]"},
        {unit + "1\nfree     1\nalloc    3\nTotal CPU Utilization\n", "[]"},
        {unit + "1\nfree\nalloc    3\n" + total, "[]"},
    };
    for (const auto &one : cases) {
        vsTextSet("show process cpu all", one.text);
        EXPECT_EQ(part("memory"), one.memory) << one.text;
        EXPECT_EQ(part("cpu").size(), one.memory == "[]" ? 2 : strlen(R"([{"unit":1,"usage":"7.24%"}])")) << one.text;
    }
    vsTextSet("show process cpu all",
              unit + "1\nfree     1\nalloc    3\nTotal CPU Utilization           1234567890123456789%\n");
    EXPECT_EQ(part("cpu"), R"([{"unit":1,"usage":"123456789012345"}])");
}

TEST_F(DeviceHealth, NoMemoryGivesNoDocument)
{
    expectNoDocumentWithoutMemory(deviceHealthGet, 10002);
}
