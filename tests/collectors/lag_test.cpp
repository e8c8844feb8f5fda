#include "collectors/feature/lag.h"
#include "support/build.h"
#include "support/root.h"

#include "control.h"
#include "model.h"

#include <gtest/gtest.h>

// Ports 10 (1/0/1), 20 (1/2/3) and 30 (2/0/5); LAG 100 has two of them and a phantom, LAG 101 nothing.
class Lag : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(vsLoadText("{}"), "");
        VS_STATE_T &state = vsState();
        state = VS_STATE_T();
        portAdd(10, 1, 0, 1);
        portAdd(20, 1, 2, 3);
        portAdd(30, 2, 0, 5);
        VS_LAG_T lag;
        lag.ifNum = 100;
        lag.name = "uplink-to-core-room";
        lag.staticMode = true;
        lag.pvid = 20;
        lag.switchMode = 3;
        lag.hashMode = 6;
        lag.members = {30, 10};
        lag.phantoms = {31};
        lag.tagged = {10, 20};
        state.lags.push_back(lag);
        lag = VS_LAG_T();
        lag.ifNum = 101;
        lag.number = 2;
        lag.name = "ch2";
        state.lags.push_back(lag);
    }
    void TearDown() override
    {
        vsFaultsClear();
        vsUnload();
    }
    static void portAdd(uint32_t ifNum, uint32_t unit, uint32_t slot, uint32_t number)
    {
        VS_PORT_T port;
        port.ifNum = ifNum;
        port.unit = unit;
        port.slot = slot;
        port.port = number;
        vsState().ports.push_back(port);
    }
    static std::string failing(BUILDER_TEXT_T builder, const char *call, const char *key = "")
    {
        VS_FAULT_T fault;
        fault.name = call;
        fault.key = key;
        vsFaultAdd(fault);
        BUILT_T built = buildText(builder);
        vsFaultsClear();
        return std::to_string(built.result) + " " + built.text;
    }
    TEST_ROOT_T root;
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

TEST_F(Lag, ListsShowEveryLagAndLeaveOutPhantomMembers)
{
    logLevelSet('7');
    BUILT_T full = buildText(getLagInfoList);
    EXPECT_EQ(full.result, 0);
    EXPECT_EQ(full.text, fullList);
    EXPECT_NE(logText().find("(DEBUG) lagMembersJsonArrayGet: Skipping phantom LAG member ifIndex 31 (max PHY=30)"),
              std::string::npos);
    EXPECT_EQ(vsCallCount("openapiIfFirstGet"), 2u); // the ports are walked once, not once per LAG

    BUILT_T light = buildText(getLagInfoListEx);
    EXPECT_EQ(light.result, 0);
    EXPECT_EQ(light.text, lightList);
    EXPECT_EQ(vsCallCount("openapiIfFirstGet"), 4u);
}

TEST_F(Lag, WithoutPortsNoMemberIsTakenForAPhantom)
{
    vsState().ports.clear();
    EXPECT_NE(buildText(getLagInfoList).text.find(R"("members":[30,10,31],"memberName":["0/0/0","0/0/0","0/0/0"])"),
              std::string::npos);
    EXPECT_NE(buildText(getLagInfoListEx).text.find(R"("members":[30,10,31])"), std::string::npos);
}

TEST_F(Lag, SwitchWithoutLagHasNoFullListAndAnEmptyLightOne)
{
    vsState().lags.clear();
    BUILT_T full = buildText(getLagInfoList);
    EXPECT_EQ(full.result, 10000);
    EXPECT_EQ(full.text, "");
    EXPECT_NE(logText().find("(ERROR) getLagInfoList: Bad return code trying to get first LAG interface. "
                             "(result = -26)"),
              std::string::npos);
    BUILT_T light = buildText(getLagInfoListEx);
    EXPECT_EQ(light.result, 0);
    EXPECT_EQ(light.text, "[]");
    EXPECT_NE(logText().find("(INFO) getLagInfoListEx: getLagInfoListEx: no LAG interfaces (rc=-26)"),
              std::string::npos);
}

TEST_F(Lag, FullListShowsThirtyTwoMembersAndTheLightOneAll)
{
    VS_STATE_T &state = vsState();
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

    CLIENT_HANDLE_T handle = {};
    LAG_INFO_T lag;
    getLagInfo(&handle, 100, &lag);
    EXPECT_EQ(lag.memberCount, 40u);
    EXPECT_EQ(lag.members[31], 32u);
}

TEST_F(Lag, MembersOfWhatIsNoLagCannotBeRead)
{
    CLIENT_HANDLE_T handle = {};
    OWNED_JSON members(cJSON_CreateArray());
    jsonBuildBegin();
    EXPECT_EQ(lagMembersJsonArrayGet(&handle, 10, members.get()), 10000);
    EXPECT_EQ(lagMembersJsonArrayGet(&handle, 55, members.get()), 10000);
    EXPECT_EQ(cJSON_GetArraySize(members.get()), 0);
    EXPECT_EQ(lagMembersJsonArrayGet(&handle, 100, members.get()), 0);
    EXPECT_EQ(cJSON_GetArraySize(members.get()), 2);
}

static std::string replaced(std::string text, const std::string &from, const std::string &to)
{
    size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

// A value that cannot be read takes its default, and no other value or LAG changes.
TEST_F(Lag, FailedReadLeavesItsDefault)
{
    const struct {
        const char *call;
        const char *from, *to;
        const char *lightFrom, *lightTo; // null: as before
    } cases[] = {
        {"openapiLagNameGet", R"("uplink-to-core-")", R"("")", R"("uplink-to-core-")", R"("")"},
        {"openapiLagStaticModeGet", R"("staticMode":true)", R"("staticMode":false)", R"("staticMode":true)",
         R"("staticMode":false)"},
        {"openapiVlanIfPvidGet", R"("vlanId":20)", R"("vlanId":0)", R"("vlanId":20)", R"("vlanId":0)"},
        {"openapiLagLoadBalanceModeGet", R"("balanceMode":6)", R"("balanceMode":0)", R"("balanceMode":6)",
         R"("balanceMode":0)"},
        {"openapiDot1qSwPortTaggedVlanListGet", R"("lagMode":3)", R"("lagMode":1)", R"("lagMode":3)", R"("lagMode":1)"},
        {"openapiDot1qSwPortModeGet", R"("trunkMode":true,"switchportMode":8,"autoLag":true)",
         R"("trunkMode":false,"switchportMode":8,"autoLag":false)", R"("autoLag":true)", R"("autoLag":false)"},
    };
    for (const auto &one : cases) {
        EXPECT_EQ(failing(getLagInfoList, one.call, "100"), "0 " + replaced(fullList, one.from, one.to)) << one.call;
        EXPECT_EQ(failing(getLagInfoListEx, one.call, "100"), "0 " + replaced(lightList, one.lightFrom, one.lightTo))
            << one.call;
    }
    EXPECT_EQ(failing(getLagInfoList, "openapiHashIntfUnitSlotPortGet", "30"),
              "0 " + replaced(fullList, "2/0/5", "0/0/0"));
}

TEST_F(Lag, UnreadMembersLeaveTheLagInBothLists)
{
    const std::string full = replaced(
        replaced(fullList, R"([30,10],"memberName":["2/0/5","1/0/1"])", R"([],"memberName":[])"), "true}", "false}");
    const std::string light = replaced(lightList, "[30,10]", "[]");
    for (const char *call : {"openapiIfTypeGet", "openapiLagMembersGet"}) {
        EXPECT_EQ(failing(getLagInfoList, call, "100"), "0 " + full) << call;
        EXPECT_EQ(failing(getLagInfoListEx, call, "100"), "0 " + light) << call;
        EXPECT_NE(
            logText().find("(ERROR) getLagInfoListEx: getLagInfoListEx: lagMembersJsonArrayGet(ifNum=100) failed; "
                           "emitting LAG without members"),
            std::string::npos)
            << call;
        logClear();
    }
    EXPECT_EQ(failing(getLagInfoList, "openapiLagMaxMemberCountGet"), "0 " + full);
    // every LAG has its details then, also the one without members
    EXPECT_EQ(failing(getLagInfoListEx, "openapiLagMaxMemberCountGet"),
              "0 " + replaced(light, lightEmpty,
                              R"({"portNum":101,"groupId":2,"name":"ch2","staticMode":false,"vlanId":1,)"
                              R"("autoLag":false,"balanceMode":3,"lagMode":1,"members":[],"changed":true}])"));
}

TEST_F(Lag, SwitchPortModeIsZeroWithoutATable)
{
    const std::string unknown = replaced(fullList, R"("switchportMode":8)", R"("switchportMode":0)");
    EXPECT_EQ(failing(getLagInfoList, "openapiMaxInterfaceCountGet"), "0 " + unknown);
    EXPECT_EQ(failing(getLagInfoList, "show interfaces switchport trunk"), "0 " + unknown);
    // a table that ends below the LAG
    vsTextSet("show interfaces switchport trunk", "---------\nlag 1                                  Yes\n");
    EXPECT_EQ(buildText(getLagInfoList).text, fullList);
    vsState().lags[1].ifNum = 70000;
    vsState().lags[1].switchMode = 3;
    vsTextSet("show interfaces switchport trunk", "---------\nlag 2                                  Yes\n");
    EXPECT_NE(buildText(getLagInfoList).text.find(R"("trunkMode":true,"switchportMode":0)"), std::string::npos);
}

TEST_F(Lag, NoMemoryForANodeGivesNoDocument)
{
    expectNoDocumentWithoutMemory(getLagInfoList, 10000);
    expectNoDocumentWithoutMemory(getLagInfoListEx, 10000);
}

// Tables for which there is no memory: modes are 0, and members are as if they could not be read.
TEST_F(Lag, NoMemoryForATableIsAFailedRead)
{
    const std::string noModes = replaced(fullList, R"("switchportMode":8)", R"("switchportMode":0)");
    const std::string noMembers = replaced(
        replaced(fullList, R"([30,10],"memberName":["2/0/5","1/0/1"])", R"([],"memberName":[])"), "true}", "false}");
    const struct {
        BUILDER_TEXT_T builder;
        int64_t n;
        std::string text;
        bool logged;
    } cases[] = {
        {getLagInfoList, 0, noModes, false},
        {getLagInfoList, 1, noMembers, true},
        {getLagInfoListEx, 0, replaced(lightList, "[30,10]", "[]"), true},
    };
    for (const auto &one : cases) {
        logClear();
        allocFailAt(one.n, ALLOC_OWN);
        BUILT_T built = buildText(one.builder);
        EXPECT_TRUE(allocFailStop());
        EXPECT_EQ(built.result, 0);
        EXPECT_EQ(built.text, one.text);
        bool logged = logText().find("(ERROR) lagMembersJsonArrayGet: Failed to allocate memory") != std::string::npos;
        EXPECT_EQ(logged, one.logged) << one.n;
    }
}
