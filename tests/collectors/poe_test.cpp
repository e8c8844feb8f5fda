#include "collectors/feature/poe.h"
#include "support/build.h"
#include "support/root.h"

#include "control.h"
#include "model.h"

#include <cstring>
#include <gtest/gtest.h>
#include <vector>

// Two units; ports 10 (1/0/5, feeds a camera on a schedule), 20 (1/1/5, switched off) and 30 (2/0/1, no PoE).
class Poe : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(vsLoadText("{}"), "");
        VS_STATE_T &state = vsState();
        state = VS_STATE_T();
        for (uint32_t unit = 1; unit <= 2; unit++) {
            VS_UNIT_T row;
            row.unit = unit;
            row.poeSupported = unit == 1;
            row.poeTotal = 720;
            row.poeThreshold = 684;
            state.units.push_back(row);
        }
        VS_PORT_T port;
        port.ifNum = 10;
        port.port = 5;
        port.poe.valid = true;
        port.poe.classification = 4;
        port.poe.power = 12000;
        port.poe.voltage = 53;
        port.poe.limitMode = 6;
        port.poe.status = 3;
        port.poe.detection = 5;
        port.poe.priority = 2;
        port.poe.powerUp = 7;
        port.poe.schedule = "cameras";
        state.ports.push_back(port);
        port.ifNum = 20;
        port.slot = 1;
        port.poe = VS_POE_T();
        port.poe.valid = true;
        port.poe.enable = false;
        state.ports.push_back(port);
        port.ifNum = 30;
        port.unit = 2;
        port.poe = VS_POE_T();
        state.ports.push_back(port);
    }
    void TearDown() override
    {
        vsFaultsClear();
        vsUnload();
    }
    static void fail(const char *call, const char *key = "", int result = -1)
    {
        VS_FAULT_T fault;
        fault.name = call;
        fault.key = key;
        fault.result = result;
        vsFaultAdd(fault);
    }
    TEST_ROOT_T root;
};

static const std::string fullPort = R"({"unit":1,"portNum":10,"port":"5","enable":true,"poeIsValid":3,)"
                                    R"("powerLimitMode":6,"classification":4,"currentPower":12000,"powerLimit":30000,)"
                                    R"("status":3,"detectionType":5,"priority":2,"powerMode":7,"schedule":"cameras"})";
static const std::string offPort = R"({"unit":1,"portNum":20,"port":"1/5","enable":false,"poeIsValid":1,)"
                                   R"("powerLimitMode":2,"classification":0,"currentPower":0,"powerLimit":30000,)"
                                   R"("status":1,"detectionType":4,"priority":1,"powerMode":3,"schedule":"None"})";

TEST_F(Poe, ShowsThePortsThatCanFeedPower)
{
    BUILT_T built = buildText(getPortsPoeJson);
    EXPECT_EQ(built.result, 0);
    EXPECT_EQ(built.text, "[" + fullPort + "," + offPort + "]");

    fail("openapiPoeIsValidInterface", "10");
    EXPECT_EQ(buildText(getPortsPoeJson).text, "[" + offPort + "]");
    vsFaultsClear();
    vsState().ports.erase(vsState().ports.begin(), vsState().ports.begin() + 2);
    built = buildText(getPortsPoeJson);
    EXPECT_EQ(built.result, 0);
    EXPECT_EQ(built.text, "[]");
}

TEST_F(Poe, FailedReadLeavesItsDefaultAndSaysWhatItWas)
{
    const struct {
        const char *call;
        const char *from, *to;
        const char *what; // null: nothing is logged
    } cases[] = {
        {"openapiPoePsePortPowerClassificationsGet", R"("classification":4)", R"("classification":0)",
         "interface port terminal classification"},
        {"openapiPoePsePortSensorsGet", R"("currentPower":12000)", R"("currentPower":0)",
         "interface port terminal sensors"},
        {"openapiPoePsePortCurPowerLimitGet", R"("powerLimit":30000)", R"("powerLimit":0)",
         "max power limit for interface"},
        {"openapiPoePsePortViolationTypeGet", R"("powerLimitMode":6)", R"("powerLimitMode":0)",
         "violation type of a given interface"},
        {"openapiPoePsePortDetectionStatusGet", R"("status":3)", R"("status":0)",
         "operational status of the port detection"},
        {"openapiPoePsePortAdminEnableGet", R"("enable":true,"poeIsValid":3)", R"("enable":false,"poeIsValid":1)",
         "openapiPoePsePortAdminEnableGet"},
        {"openapiPoePsePortDetectionModeGet", R"("detectionType":5)", R"("detectionType":0)", "mode of port detection"},
        {"openapiPoePsePortCurPowerPriorityGet", R"("priority":2)", R"("priority":0)", "priority"},
        {"openapiPoePsePortPowerUpModeGet", R"("powerMode":7)", R"("powerMode":0)", "powerMode"},
        {"openapiPoePsePortTimerScheduleNameGet", R"("cameras")", R"("None")", nullptr},
        {"openapiHashIntfUnitSlotPortGet", R"("unit":1,"portNum":10,"port":"5")", R"("unit":0,"portNum":10,"port":"0")",
         nullptr},
    };
    std::string allLines;
    for (const auto &one : cases) {
        std::string expected = fullPort;
        expected.replace(expected.find(one.from), strlen(one.from), one.to);
        logClear();
        fail(one.call, "10", -5);
        EXPECT_EQ(buildText(getPortsPoeJson).text, "[" + expected + "," + offPort + "]") << one.call;
        vsFaultsClear();
        std::string line = one.what == nullptr ? ""
                                               : std::string("(ERROR) getPortPoeInfo: Bad return code trying to get ") +
                                                     one.what + ". (result = -5)\n";
        EXPECT_EQ(logText(), line) << one.call;
        allLines += line;
    }
    // all at once: in their order
    logClear();
    for (const auto &one : cases)
        if (one.what != nullptr)
            fail(one.call, "10", -5);
    (void)buildText(getPortsPoeJson);
    EXPECT_EQ(logText(), allLines);
}

TEST_F(Poe, ScheduleNameFitsItsField)
{
    const std::string longest(31, 'n');
    vsState().ports[0].poe.schedule = longest;
    EXPECT_NE(buildText(getPortsPoeJson).text.find("\"" + longest + "\""), std::string::npos);
    vsState().ports[0].poe.schedule = longest + "n"; // the platform refuses
    EXPECT_EQ(buildText(getPortsPoeJson).text.find("nnn"), std::string::npos);
}

TEST_F(Poe, ShowsThePowerOfEachUnit)
{
    const std::string first = R"({"unit":1,"consumedPower":12,"totalPowerAvailable":720,"thresholdPower":684})";
    const std::string second = R"({"unit":2,"consumedPower":0,"totalPowerAvailable":0,"thresholdPower":0})";
    BUILT_T built = buildText(gePoeInfoJson);
    EXPECT_EQ(built.result, 0);
    EXPECT_EQ(built.text, "[" + first + "," + second + "]");

    for (const char *call : {"openapiPoePseMainConsumptionPowerGet", "openapiPoePseTotalAvailablePowerGet",
                             "openapiPoePseThresholdPowerGet"})
        fail(call, "1");
    EXPECT_EQ(buildText(gePoeInfoJson).text,
              R"([{"unit":1,"consumedPower":0,"totalPowerAvailable":0,"thresholdPower":0},)" + second + "]");
    vsState().units.clear();
    built = buildText(gePoeInfoJson);
    EXPECT_EQ(built.result, 0);
    EXPECT_EQ(built.text, "[]");
}

// A row for which there is no memory is left out and logged; any other loss leaves no document.
TEST_F(Poe, NoMemoryLosesARowOrTheDocument)
{
    const struct {
        BUILDER_TEXT_T builder;
        std::vector<std::string> rows;
        std::vector<std::string> lines;
        const char *arrayLine;
    } cases[] = {
        {getPortsPoeJson,
         {fullPort, offPort},
         {"getPortsPoeJson: Failed to create jnode for port 10\n",
          "getPortsPoeJson: Failed to create jnode for port 20\n"},
         "getPortsPoeJson: Failed to create cJSON array\n"},
        {gePoeInfoJson,
         {R"({"unit":1,"consumedPower":12,"totalPowerAvailable":720,"thresholdPower":684})",
          R"({"unit":2,"consumedPower":0,"totalPowerAvailable":0,"thresholdPower":0})"},
         {"gePoeInfoJson: Failed to create jnode for unit 1\n", "gePoeInfoJson: Failed to create jnode for unit 2\n"},
         "gePoeInfoJson: Failed to create cJSON array\n"},
    };
    for (const auto &one : cases) {
        bool reached = true;
        size_t lost = 0; // rows left out so far
        for (int n = 0; reached; n++) {
            logClear();
            allocFailAt(n, ALLOC_CJSON);
            BUILT_T built = buildText(one.builder);
            reached = allocFailStop();
            if (!reached) {
                EXPECT_EQ(built.text, "[" + one.rows[0] + "," + one.rows[1] + "]");
            } else if (built.result == 0) {
                ASSERT_LT(lost, 2u) << n;
                EXPECT_EQ(built.text, "[" + one.rows[1 - lost] + "]") << n;
                EXPECT_NE(logText().find(one.lines[lost]), std::string::npos) << logText();
                lost++;
            } else {
                EXPECT_EQ(built.result, 10000) << n;
                EXPECT_EQ(built.text, "") << n;
                EXPECT_EQ(logText().find(one.arrayLine) != std::string::npos, n == 0) << n << logText();
            }
        }
        EXPECT_EQ(lost, 2u);
    }
}
