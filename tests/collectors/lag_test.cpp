#include "collectors/feature/sw_lag_cfg.h"
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

static const char lightEmpty[] = R"({"portNum":101,"groupId":2,"members":[],"changed":false}])";
static const std::string lightList = R"([{"portNum":100,"groupId":1,"name":"uplink-to-core-","staticMode":true,)"
                                     R"("vlanId":20,"autoLag":true,"balanceMode":6,"lagMode":3,"members":[30,10],)"
                                     R"("changed":true},)" +
                                     std::string(lightEmpty);

static std::string lightText()
{
    return documentOf(getLagInfoListEx);
}

TEST_F(Lag, PhantomsAreLeftOutUnlessThereAreNoPorts)
{
    const char members[] = R"("members":[30,10],"memberName":["2/0/5","1/0/1"])";
    EXPECT_TRUE(has(documentOf(getLagInfoList), members));
    EXPECT_EQ(vsCallCount("openapiIfFirstGet"), 2u); // the ports are walked once, not once per LAG
    state.ports.clear();
    EXPECT_TRUE(has(documentOf(getLagInfoList), R"("members":[30,10,31],"memberName":["0/0/0","0/0/0","0/0/0"])"));
    state.lags.clear();
    EXPECT_EQ(buildText(getLagInfoList).result, 10000);
    EXPECT_EQ(lightText(), "[]");
}

TEST_F(Lag, FailedReadLeavesItsDefault)
{
    expectFailures(lightText, lightList,
                   {{{"openapiVlanIfPvidGet", "100"}, {R"("vlanId":20)", R"("vlanId":0)"}},
                    {{"openapiLagLoadBalanceModeGet", "100"}, {R"("balanceMode":6)", R"("balanceMode":0)"}},
                    {{"openapiDot1qSwPortTaggedVlanListGet", "100"}, {R"("lagMode":3)", R"("lagMode":1)"}},
                    {{"openapiIfTypeGet", "100"}, {"[30,10]", "[]"}},
                    // every LAG has its details then, also the one without members
                    {{"openapiLagMaxMemberCountGet"},
                     {"[30,10]", "[]", lightEmpty,
                      R"({"portNum":101,"groupId":2,"name":"ch2","staticMode":false,"vlanId":1,)"
                      R"("autoLag":false,"balanceMode":3,"lagMode":1,"members":[],"changed":true}])"}}});
    // a LAG beyond the table of modes
    state.lags[1].ifNum = 70000;
    state.lags[1].switchMode = 3;
    vsTextSet("show interfaces switchport trunk", "---------\nlag 2                                  Yes\n");
    EXPECT_TRUE(has(documentOf(getLagInfoList), R"("trunkMode":true,"switchportMode":0)"));
}

TEST_F(Lag, FullListShowsThirtyTwoMembersAndTheLightOneAll)
{
    state.ports.clear();
    state.system.lagMaxMembers = 64;
    state.lags.resize(1);
    state.lags[0].members.clear();
    state.lags[0].phantoms.clear();
    for (uint32_t i = 1; i <= 40; i++) {
        portAdd(i, 1, 0, i);
        state.lags[0].members.push_back(i);
    }
    EXPECT_TRUE(has(documentOf(getLagInfoList), R"(,31,32],"memberName":[)"));
    EXPECT_TRUE(has(lightText(), ",39,40],"));
}
