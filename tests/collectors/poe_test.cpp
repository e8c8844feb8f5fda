#include "collectors/feature/poe.h"
#include "support/build.h"

// Two units; ports 10 (1/0/5, feeds a camera on a schedule), 20 (1/1/5, switched off) and 30 (2/0/1, no PoE).
struct Poe : BUILDER_TEST {
    void SetUp() override
    {
        state.units.resize(2);
        state.units[0].poeSupported = true;
        state.units[0].poeTotal = 720;
        state.units[0].poeThreshold = 684;
        state.units[1].unit = 2;
        VS_POE_T &poe = portAdd(10, 1, 0, 5).poe;
        poe.valid = true;
        poe.classification = 4;
        poe.power = 12000;
        poe.voltage = 53;
        poe.limitMode = 6;
        poe.status = 3;
        poe.detection = 5;
        poe.priority = 2;
        poe.powerUp = 7;
        poe.schedule = "cameras";
        VS_POE_T &off = portAdd(20, 1, 1, 5).poe;
        off.valid = true;
        off.enable = false;
        portAdd(30, 2, 0, 5);
    }
};

static const std::string fullPort = R"({"unit":1,"portNum":10,"port":"5","enable":true,"poeIsValid":3,)"
                                    R"("powerLimitMode":6,"classification":4,"currentPower":12000,"powerLimit":30000,)"
                                    R"("status":3,"detectionType":5,"priority":2,"powerMode":7,"schedule":"cameras"})";
static const std::string offPort = R"({"unit":1,"portNum":20,"port":"1/5","enable":false,"poeIsValid":1,)"
                                   R"("powerLimitMode":2,"classification":0,"currentPower":0,"powerLimit":30000,)"
                                   R"("status":1,"detectionType":4,"priority":1,"powerMode":3,"schedule":"None"})";

TEST_F(Poe, FailedReadLeavesItsDefaultAndSaysWhatItWas)
{
    const std::tuple<const char *, const char *, const char *, const char *> cases[] = {
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
        {"openapiPoePsePortTimerScheduleNameGet", R"("cameras")", R"("None")", ""},
        {"openapiHashIntfUnitSlotPortGet", R"("unit":1,"portNum":10,"port":"5")", R"("unit":0,"portNum":10,"port":"0")",
         ""},
    };
    std::vector<FAILURE_T> failures = {{{"openapiPoeIsValidInterface", "10"}, {fullPort + ",", ""}}};
    std::string allLines;
    for (const auto &[call, from, to, what] : cases) {
        std::string line =
            std::string("(ERROR) getPortPoeInfo: Bad return code trying to get ") + what + ". (result = -5)\n";
        failures.push_back({{call, "10", 0, VS_FAIL, -5}, {from, to}, *what == '\0' ? "" : line});
        allLines += failures.back().log;
    }
    const std::string clean = "[" + fullPort + "," + offPort + "]";
    expectFailures([] { return documentOf(getPortsPoeJson); }, clean, failures);
    // all at once: in their order
    logClear();
    for (size_t i = 1; i < failures.size(); i++)
        vsFaultAdd(failures[i].fault);
    (void)buildText(getPortsPoeJson);
    EXPECT_EQ(logText(), allLines);
    vsFaultsClear();

    state.ports[0].poe.schedule = std::string(31, 'n'); // fits its field; one more and the platform refuses
    EXPECT_EQ(documentOf(getPortsPoeJson), changed(clean, {"cameras", state.ports[0].poe.schedule}));
    state.ports[0].poe.schedule += "n";
    EXPECT_EQ(documentOf(getPortsPoeJson), changed(clean, {"cameras", "None"}));
    state.ports.clear();
    EXPECT_EQ(documentOf(getPortsPoeJson), "[]");
}

TEST_F(Poe, ShowsThePowerOfEachUnit)
{
    const std::string clean = R"([{"unit":1,"consumedPower":12,"totalPowerAvailable":720,"thresholdPower":684},)"
                              R"({"unit":2,"consumedPower":0,"totalPowerAvailable":0,"thresholdPower":0}])";
    expectFailures([] { return documentOf(gePoeInfoJson); }, clean,
                   {{{"openapiPoePseMainConsumptionPowerGet", "1"}, {":12,", ":0,"}},
                    {{"openapiPoePseTotalAvailablePowerGet", "1"}, {"720", "0"}},
                    {{"openapiPoePseThresholdPowerGet", "1"}, {"684", "0"}}});
    // a row for which there is no memory is left out and logged
    const std::tuple<BUILDER_TEXT_T, int, const char *> cases[] = {
        {getPortsPoeJson, 10000, "(ERROR) getPortsPoeJson: getPortsPoeJson: Failed to create cJSON array\n"},
        {getPortsPoeJson, 0, "(ERROR) getPortsPoeJson: getPortsPoeJson: Failed to create jnode for port 10\n"},
        {gePoeInfoJson, 10000, "(ERROR) gePoeInfoJson: gePoeInfoJson: Failed to create cJSON array\n"},
        {gePoeInfoJson, 0, "(ERROR) gePoeInfoJson: gePoeInfoJson: Failed to create jnode for unit 1\n"},
    };
    for (const auto &[builder, result, line] : cases) {
        logClear();
        allocFailAt(result == 0, ALLOC_CJSON);
        EXPECT_EQ(buildText(builder).result, result);
        EXPECT_EQ(logText().rfind(line, 0), 0u) << logText();
    }
    allocFailStop();
    state.units.clear();
    EXPECT_EQ(documentOf(gePoeInfoJson), "[]");
}
