#include "collectors/feature/lag.h"
#include "support/build.h"

// Ports 10 (1/0/1), 20 (1/2/3) and 30 (2/0/5); LAG 100 has two of them and a phantom, LAG 101 nothing.
struct Lag : BUILDER_TEST {
    void SetUp() override
    {
        portAdd(10, 1, 0, 1);
        portAdd(20, 1, 2, 3);
        portAdd(30, 2, 0, 5);
        state.lags.resize(2);
        VS_LAG_T &lag = state.lags[0];
        lag.ifNum = 100;
        lag.name = "uplink-to-core-room";
        lag.staticMode = true;
        lag.pvid = 20;
        lag.switchMode = 3;
        lag.hashMode = 6;
        lag.members = {30, 10};
        lag.phantoms = {31};
        lag.tagged = {10, 20};
        state.lags[1].ifNum = 101;
        state.lags[1].number = 2;
        state.lags[1].name = "ch2";
    }
};

static const char fullTail[] = R"("trunkMode":true,"switchportMode":8,"autoLag":true,"members":[30,10],)"
                               R"("memberName":["2/0/5","1/0/1"],"balanceMode":6,"lagMode":3,"changed":true})";
static const char fullEmpty[] = R"({"name":"ch2","portNum":101,"groupId":2,"staticMode":false,"vlanId":1,)"
                                R"("trunkMode":false,"switchportMode":0,"autoLag":false,"members":[],"memberName":[],)"
                                R"("balanceMode":3,"lagMode":1,"changed":false})";
static const std::string fullList = R"([{"name":"uplink-to-core-","portNum":100,"groupId":1,"staticMode":true,)"
                                    R"("vlanId":20,)" +
                                    std::string(fullTail) + "," + fullEmpty + "]";
static const char lightEmpty[] = R"({"portNum":101,"groupId":2,"members":[],"changed":false}])";
static const std::string lightList = R"([{"portNum":100,"groupId":1,"name":"uplink-to-core-","staticMode":true,)"
                                     R"("vlanId":20,"autoLag":true,"balanceMode":6,"lagMode":3,"members":[30,10],)"
                                     R"("changed":true},)" +
                                     std::string(lightEmpty);

static std::string fullText()
{
    return documentOf(getLagInfoList);
}

static std::string lightText()
{
    return documentOf(getLagInfoListEx);
}

TEST_F(Lag, PhantomsAreLeftOutUnlessThereAreNoPorts)
{
    logLevelSet('7');
    EXPECT_EQ(fullText(), fullList);
    EXPECT_TRUE(has(logText(), "(DEBUG) lagMembersJsonArrayGet: Skipping phantom LAG member ifIndex 31 (max PHY=30)"));
    EXPECT_EQ(vsCallCount("openapiIfFirstGet"), 2u); // the ports are walked once, not once per LAG
    EXPECT_EQ(lightText(), lightList);
    EXPECT_EQ(vsCallCount("openapiIfFirstGet"), 4u);
    state.ports.clear();
    EXPECT_TRUE(has(fullText(), R"("members":[30,10,31],"memberName":["0/0/0","0/0/0","0/0/0"])"));
    EXPECT_TRUE(has(lightText(), R"("members":[30,10,31])"));
    logClear();
    state.lags.clear();
    EXPECT_EQ(buildText(getLagInfoList).result, 10000);
    EXPECT_EQ(lightText(), "[]");
    EXPECT_TRUE(has(logText(), "(ERROR) getLagInfoList: Bad return code trying to get first LAG interface. "
                               "(result = -26)\n"));
    EXPECT_TRUE(has(logText(), "(INFO) getLagInfoListEx: getLagInfoListEx: no LAG interfaces (rc=-26)\n"));
}

// A value that cannot be read takes its default, and no other value or LAG changes.
TEST_F(Lag, FailedReadLeavesItsDefault)
{
    const std::vector<std::string> noMode = {R"("switchportMode":8)", R"("switchportMode":0)"};
    const std::vector<std::string> noMembers = {R"([30,10],"memberName":["2/0/5","1/0/1"])", R"([],"memberName":[])",
                                                "true}", "false}"};
    const std::string left = "(ERROR) getLagInfoListEx: getLagInfoListEx: lagMembersJsonArrayGet(ifNum=100) failed; "
                             "emitting LAG without members\n";
    const std::vector<FAILURE_T> both = {
        {{"openapiLagNameGet", "100"}, {R"("uplink-to-core-")", R"("")"}},
        {{"openapiLagStaticModeGet", "100"}, {R"("staticMode":true)", R"("staticMode":false)"}},
        {{"openapiVlanIfPvidGet", "100"}, {R"("vlanId":20)", R"("vlanId":0)"}},
        {{"openapiLagLoadBalanceModeGet", "100"}, {R"("balanceMode":6)", R"("balanceMode":0)"}},
        {{"openapiDot1qSwPortTaggedVlanListGet", "100"}, {R"("lagMode":3)", R"("lagMode":1)"}},
    };
    expectFailures(fullText, fullList, both);
    expectFailures(lightText, lightList, both);
    expectFailures(fullText, fullList,
                   {{{"openapiDot1qSwPortModeGet", "100"},
                     {R"("trunkMode":true)", R"("trunkMode":false)", R"("autoLag":true)", R"("autoLag":false)"}},
                    {{"openapiHashIntfUnitSlotPortGet", "30"}, {"2/0/5", "0/0/0"}},
                    {{"openapiMaxInterfaceCountGet"}, noMode},
                    {{"show interfaces switchport trunk"}, noMode},
                    {{"openapiIfTypeGet", "100"}, noMembers},
                    {{"openapiLagMembersGet", "100"}, noMembers},
                    {{"openapiLagMaxMemberCountGet"}, noMembers}});
    expectFailures(lightText, lightList,
                   {{{"openapiDot1qSwPortModeGet", "100"}, {R"("autoLag":true)", R"("autoLag":false)"}},
                    {{"openapiLagMembersGet", "100"}, {"[30,10]", "[]"}},
                    // every LAG has its details then, also the one without members
                    {{"openapiLagMaxMemberCountGet"},
                     {"[30,10]", "[]", lightEmpty,
                      R"({"portNum":101,"groupId":2,"name":"ch2","staticMode":false,"vlanId":1,)"
                      R"("autoLag":false,"balanceMode":3,"lagMode":1,"members":[],"changed":true}])"}}});
    vsFaultAdd({"openapiIfTypeGet", "100"});
    logClear();
    EXPECT_EQ(lightText(), changed(lightList, {"[30,10]", "[]"}));
    EXPECT_TRUE(has(logText(), left)) << logText();
    vsFaultsClear();
    // a LAG beyond the table of modes
    state.lags[1].ifNum = 70000;
    state.lags[1].switchMode = 3;
    vsTextSet("show interfaces switchport trunk", "---------\nlag 2                                  Yes\n");
    EXPECT_TRUE(has(fullText(), R"("trunkMode":true,"switchportMode":0)"));
    expectNoDocumentWithoutMemory(getLagInfoList, 10000);
    expectNoDocumentWithoutMemory(getLagInfoListEx, 10000);
}

TEST_F(Lag, FullListShowsThirtyTwoMembersAndTheLightOneAll)
{
    state.ports.clear();
    state.system.lagMaxMembers = 64;
    state.lags[0].members.clear();
    state.lags[0].phantoms.clear();
    for (uint32_t i = 1; i <= 40; i++) {
        portAdd(i, 1, 0, i);
        state.lags[0].members.push_back(i);
    }
    auto shown = [](BUILDER_TEXT_T builder, const char *key) {
        OWNED_JSON list(cJSON_Parse(buildText(builder).text.c_str()));
        return cJSON_GetArraySize(cJSON_GetObjectItem(cJSON_GetArrayItem(list.get(), 0), key));
    };
    EXPECT_EQ(shown(getLagInfoList, "members"), 32);
    EXPECT_EQ(shown(getLagInfoList, "memberName"), 32);
    EXPECT_EQ(shown(getLagInfoListEx, "members"), 40);

    LAG_INFO_T lag;
    getLagInfo(&handle, 100, &lag);
    EXPECT_EQ(lag.memberCount, 40u);
    EXPECT_EQ(lag.members[31], 32u);
}
