#include "collectors/system/device_health.h"
#include "support/build.h"

static const std::string unit = "Memory and Process CPU Utilization Info of Unit:";
static const std::string total = "Total CPU Utilization           7.24%    6.91%    7.03%\n";
static const std::string memory = "free     1\nalloc    3\n";
static const std::string sensorTable = "Temperature Sensors:\n----\n1 1 MAC              45 Normal 52\n";
static const std::string fanTable = "Fans:\n----\n1 1 F Fixed 1 1 Operational\n";

// One array of the document, as compact text.
static std::string part(const char *key)
{
    OWNED_JSON tree(cJSON_Parse(documentOf(deviceHealthGet).c_str()));
    return OWNED_TEXT(cJSON_PrintUnformatted(cJSON_GetObjectItem(tree.get(), key))).get();
}

// The arrays of sensors or fans of unit 1 that has one of them, from behind its name.
static std::string sensor(const std::string &values, int unitNumber = 1)
{
    return R"([{"unit":)" + std::to_string(unitNumber) + R"(,"details":[{"id":1,"desc":"MAC","temp":45,"maxTemp":52,)" +
           R"("state":)" + values + "}]}]";
}

static std::string fan(const std::string &values)
{
    return R"([{"unit":1,"details":[{"id":1,"desc":"FAN-1",)" + values + "}]}]";
}

using DeviceHealth = BUILDER_TEST;

TEST_F(DeviceHealth, ReadersGiveTheFanControlModeAndTellWhyTheyFailed)
{
    FAN_TABLE_T fans;
    SENSOR_TABLE_T sensors;
    USAGE_TABLE_T usage;
    uint32_t mode = 9;
    for (const auto &[kind, result] : {std::pair(VS_FAIL, 10000), {VS_NO_FILE, 10016}}) {
        for (const char *command : {"show environment", "show process cpu all"})
            vsFaultAdd({command, "", 0, kind});
        EXPECT_EQ(environmentGet(&handle, &fans, &sensors, &mode), result);
        EXPECT_EQ(mode, 0u);
        EXPECT_EQ(cpuMemoryUsageGet(&handle, &usage), result);
        vsFaultsClear();
    }
    EXPECT_TRUE(has(logText(), "(ERROR) environmentGet: can not open file:" + root.dir)) << logText();
    const std::pair<const char *, uint32_t> cases[] = {
        {"Fan Control Mode........ Cool\n", 3},
        {"Fan Control Mode........ Quiet\n", 2},
        {"Fan Control Mode........ Off\n", 1},
        {"Fan Control Mode........ Auto\n", 0},
        {"Fan Control Mode........ Off\nFan Control Mode........ Cool\n", 1},
    };
    for (const auto &[text, expected] : cases) {
        vsTextSet("show environment", text);
        EXPECT_EQ(environmentGet(&handle, &fans, &sensors, &mode), 0);
        EXPECT_EQ(mode, expected) << text;
    }
}

TEST_F(DeviceHealth, SensorRowsAreTakenOrLeft)
{
    const std::string head = "Temperature Sensors:\n---- ------\n", mac = "1 1 MAC              45 ";
    const std::string second = R"(},{"id":2,"desc":"PHY Row 1 near f","temp":-5,"maxTemp":60,"state":4)";
    expectShown(
        "show environment", [] { return part("sensor"); },
        {
            // what is out of range is passed over, and the next row counts
            {head + "9 1 MAC              45 Normal 52\n" + mac + "nonE 52\n", sensor("0")},
            {head + "1 22 MAC             45 Normal 52\n1 0 MAC              45 Normal 52\n" + mac + "low 52\n",
             sensor("1")},
            {head + "-1 1 MAC             45 Normal 52\n8 1 MAC              45 Warning 52\n", sensor("3", 8)},
            // a row without its last number ends the table
            {head + mac + "NotPresent 52\n1 2 CPU              45 Normal\n1 3 PHY              45 Normal 52\n",
             sensor("6")},
            {head + mac + "NotOperational 52\n1 2 CPU\n", sensor("7")},
            // a state as long as a line is one word all the same
            {head + mac + "Shutdown" + std::string(900, 'x') + " 52\n1 2 PHY Row 1 near f -5 critical 60\r\n",
             sensor("5" + second)},
            {head + "1 2 CPU              45 Normal 52\n", "[]"}, // a unit without its first sensor is not shown
            {sensorTable + fanTable, sensor("2")},
            {fanTable + "\n" + sensorTable, sensor("2")},
            {"Temperature Sensors:\n" + mac + "Normal 52\n", "[]"}, // no rule
        });
}

TEST_F(DeviceHealth, FanRowsAreTakenOrLeft)
{
    const std::string head = "Temperature Sensors:\n----\n\nFans:\n---- ---\n";
    const std::string one = R"("speed":1,"dutyLevel":1,"state":)";
    expectShown("show environment", [] { return part("fan"); },
                {
                    {head + "1 1 F Fixed 5200 40% operational\n", fan(R"("speed":5200,"dutyLevel":40,"state":3)")},
                    {head + "1 1 F Fixed N/A N/A Notoperating\n", fan(R"("speed":0,"dutyLevel":0,"state":2)")},
                    {head + "1 1 F Fixed 99999999999999999999 1 Not Present\n",
                     fan(R"("speed":2147483647,"dutyLevel":1,"state":2)")},
                    {head + "1 21 F Fixed 1 1 Failed\n1 1 F Fixed 1 1 Failed\n1 22 F Fixed 1 1 Failed\n"
                            "99 1 F Fixed 1 1 Failed\n",
                     fan(one + "1")},
                    {head + "1 1 " + std::string(700, 'f') + " " + std::string(200, 't') + " 7 8 Failed\r\n",
                     fan(R"("speed":7,"dutyLevel":8,"state":1)")},
                    {head + "1 1 F Fixed 1 Failed\n", "[]"},
                    // the tables stand in their order, and each has its rule
                    {sensorTable + "\n" + fanTable, fan(one + "0")},
                    {sensorTable + fanTable, "[]"}, // the title has ended the sensors
                    {fanTable + "\n" + sensorTable, "[]"},
                    {sensorTable + "\nFans:\n1 1 F Fixed 1 1 Operational\n", "[]"},
                });
}

TEST_F(DeviceHealth, ShowsTwelveFansAndTenSensorsAtMost)
{
    std::string sensors = "Temperature Sensors:\n----\n", fans = "Fans:\n----\n";
    for (int id = 1; id <= 13; id++) {
        fans += "1 " + std::to_string(id) + " F Fixed 1 1 Operational\n";
        sensors += id > 11 ? "" : "1 " + std::to_string(id) + " S                1 Normal 1\n";
    }
    vsTextSet("show environment", sensors + "\n" + fans);
    for (const auto &[key, last] : {std::pair("fan", 12), {"sensor", 10}}) {
        EXPECT_TRUE(has(part(key), R"({"id":)" + std::to_string(last) + ",")) << part(key);
        EXPECT_FALSE(has(part(key), R"({"id":)" + std::to_string(last + 1) + ",")) << part(key);
    }
}

TEST_F(DeviceHealth, UsageNeedsAllOfItsLines)
{
    const std::string good = R"([{"unit":1,"usage":"75.00%"}])";
    expectShown("show process cpu all", [] { return part("memory"); },
                {
                    {unit + "1\n" + memory + total, good},
                    {unit + "8\r\nalloc    1\r\nfree     2\r\n" + total, R"([{"unit":8,"usage":"33.33%"}])"},
                    {unit + "1\nfree     4000000000\nalloc    12000000000\n" + total, good},
                    {unit + "1\nalloc    3\n" + total, "[]"},
                    {unit + "1\nfree     1\nalloc    0\n" + total, "[]"},
                    // a unit without its own numbers does not show its predecessor's
                    {unit + "1\n" + memory + total + unit + "2\n" + total, good},
                    {unit + "9\n" + memory + total, "[]"},
                    {memory + total, "[]"},
                    {unit + "1\n" + memory + "Total CPU Utilization\n", "[]"},
                    {unit + "1\nfree\nalloc    3\n" + total, "[]"},
                });
    expectShown("show process cpu all", [] { return part("cpu"); },
                {{unit + "1\n" + memory + "Total CPU Utilization           1234567890123456789%\n",
                  R"([{"unit":1,"usage":"123456789012345"}])"}});
}
