#include "collectors/feature/poe.h"
#include "support/build.h"

// Two units; ports 10 (1/0/5, feeds a camera on a schedule), 20 (1/1/5, switched off) and 30 (2/0/1, no PoE).
struct Poe : BUILDER_TEST {
    void SetUp() override
    {
        state.units.resize(2);
        state.units[0].poeSupported = true;
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
        {"openapiPoePsePortAdminEnableGet", R"("enable":true,"poeIsValid":3)", R"("enable":false,"poeIsValid":1)",
         "openapiPoePsePortAdminEnableGet"},
        {"openapiPoePsePortDetectionModeGet", R"("detectionType":5)", R"("detectionType":0)", "mode of port detection"},
        {"openapiPoePsePortTimerScheduleNameGet", R"("cameras")", R"("None")", ""},
        {"openapiHashIntfUnitSlotPortGet", R"("unit":1,"portNum":10,"port":"5")", R"("unit":0,"portNum":10,"port":"0")",
         ""},
    };
    std::vector<FAILURE_T> failures = {{{"openapiPoeIsValidInterface", "10"}, {fullPort + ",", ""}}};
    for (const auto &[call, from, to, what] : cases) {
        std::string line =
            std::string("(ERROR) getPortPoeInfo: Bad return code trying to get ") + what + ". (result = -5)\n";
        failures.push_back({{call, "10", 0, VS_FAIL, -5}, {from, to}, *what == '\0' ? "" : line});
    }
    const std::string clean = "[" + fullPort + "," + offPort + "]";
    expectFailures([] { return documentOf(getPortsPoeJson); }, clean, failures);
    state.ports[0].poe.schedule = std::string(31, 'n'); // fits its field; one more and the platform refuses
    EXPECT_EQ(documentOf(getPortsPoeJson), changed(clean, {"cameras", state.ports[0].poe.schedule}));
    state.ports[0].poe.schedule += "n";
    EXPECT_EQ(documentOf(getPortsPoeJson), changed(clean, {"cameras", "None"}));
}
