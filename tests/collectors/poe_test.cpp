#include "collectors/feature/swcfg_poe.h"
#include "support/build.h"

// Two units; ports 10 (1/0/5, feeds a camera on a schedule), 20 (1/1/5, switched off) and 30 (2/0/1, no PoE).
struct Poe : BUILDER_TEST {
    void SetUp() override
    {
        state.units.resize(2);
        state.units[0].poeSupported = true;
        state.units[1].unit = 2;
        VS_PORT_T &camera = portAdd(10, 1, 0, 5);
        camera.linkUp = true;
        VS_POE_T &poe = camera.poe;
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

TEST_F(Poe, FailedReadLeavesItsDefault)
{
    const std::string clean = "[" + fullPort + "," + offPort + "]";
    expectFailures([] { return documentOf(getPortsPoeJson); }, clean,
                   {{{"openapiPoeIsValidInterface", "10"}, {fullPort + ",", ""}, ""},
                    {{"openapiPoePsePortDetectionModeGet", "10"},
                     {R"("detectionType":5)", R"("detectionType":0)"},
                     "(ERROR) getPortPoeInfo: Bad return code trying to get mode of port detection. (result = -1)\n"},
                    {{"openapiPoePsePortTimerScheduleNameGet", "10"}, {R"("cameras")", R"("None")"}, ""},
                    {{"openapiHashIntfUnitSlotPortGet", "10"},
                     {R"("unit":1,"portNum":10,"port":"5")", R"("unit":0,"portNum":10,"port":"0")"},
                     ""}});
    state.ports[0].poe.schedule = std::string(31, 'n'); // fits its field; one more and the platform refuses
    EXPECT_EQ(documentOf(getPortsPoeJson), changed(clean, {"cameras", state.ports[0].poe.schedule}));
    state.ports[0].poe.schedule += "n";
    EXPECT_EQ(documentOf(getPortsPoeJson), changed(clean, {"cameras", "None"}));
}

// All of a port's readings fail, each with a result of its own: the lines come in the order of the readings.
TEST_F(Poe, FailedReadsAreToldInTheirOrder)
{
    const std::pair<const char *, const char *> reads[] = {
        {"PowerClassificationsGet", "interface port terminal classification"},
        {"SensorsGet", "interface port terminal sensors"},
        {"CurPowerLimitGet", "max power limit for interface"},
        {"ViolationTypeGet", "violation type of a given interface"},
        {"DetectionStatusGet", "operational status of the port detection"},
        {"AdminEnableGet", "openapiPoePsePortAdminEnableGet"},
        {"DetectionModeGet", "mode of port detection"},
        {"CurPowerPriorityGet", "priority"},
        {"PowerUpModeGet", "powerMode"},
    };
    std::string lines;
    int result = 0;
    for (const auto &[call, what] : reads) {
        vsFaultAdd({std::string("openapiPoePsePort") + call, "10", 0, VS_FAIL, --result});
        lines += std::string("(ERROR) getPortPoeInfo: Bad return code trying to get ") + what +
                 ". (result = " + std::to_string(result) + ")\n";
    }
    EXPECT_EQ(documentOf(getPortsPoeJson),
              R"([{"unit":1,"portNum":10,"port":"5","enable":false,"poeIsValid":1,"powerLimitMode":0,)"
              R"("classification":0,"currentPower":0,"powerLimit":0,"status":0,"detectionType":0,"priority":0,)"
              R"("powerMode":0,"schedule":"cameras"},)" +
                  offPort + "]");
    EXPECT_EQ(logText(), lines);
}

TEST_F(Poe, UnitWithoutPoeHasNoPower)
{
    state.units[0].poeTotal = 720;
    state.units[0].poeThreshold = 684;
    const std::string rest = R"({"unit":2,"consumedPower":0,"totalPowerAvailable":0,"thresholdPower":0}])";
    EXPECT_EQ(documentOf(gePoeInfoJson),
              R"([{"unit":1,"consumedPower":12,"totalPowerAvailable":720,"thresholdPower":684},)" + rest);
    EXPECT_EQ(logText(), "");
}
