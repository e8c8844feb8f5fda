#include "collectors/port/port_statistics.h"
#include "support/alloc.h"
#include "support/build.h"
#include "support/root.h"

#include "control.h"
#include "model.h"

#include <gtest/gtest.h>

// Interface numbers are hundreds and the clock stands at 15 s: there the virtual switch's rates are exactly the set
// ones.
class PortStatistics : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(vsLoadText("{}"), "");
        vsClockSet(15);
        VS_STATE_T &state = vsState();
        state = VS_STATE_T();
        state.units.emplace_back();
        portAdd(100, 0, 1, 7);
        portAdd(200, 2, 3, 10);
        VS_LAG_T lag;
        lag.ifNum = 300;
        lag.linkUp = true;
        lag.inRate = 4000000;
        lag.members = {200};
        state.lags.push_back(lag);
        lag.ifNum = 400;
        lag.number = 2;
        lag.members = {};
        state.lags.push_back(lag);
    }
    void TearDown() override
    {
        vsUnload();
    }
    static void portAdd(uint32_t ifNum, uint32_t slot, uint32_t number, uint32_t speed)
    {
        VS_PORT_T port;
        port.ifNum = ifNum;
        port.slot = slot;
        port.port = number;
        port.linkUp = true;
        port.speed = speed;
        port.inRate = 250000000;
        port.outRate = 1000000;
        port.inErrors = 12;
        port.inDrops = 7;
        port.outErrors = 5;
        port.outDrops = 3;
        vsState().ports.push_back(port);
    }
    // Row of an interface in the inbound list, as compact text; "" when there is none.
    static std::string inboundRow(uint32_t ifNum)
    {
        OWNED_JSON document(cJSON_Parse(buildText(portStatsInboundGet).text.c_str()));
        const cJSON *row;
        cJSON_ArrayForEach(row, cJSON_GetObjectItem(document.get(), "rows"))
        {
            if (cJSON_GetNumberValue(cJSON_GetObjectItem(row, "port")) == ifNum)
                return OWNED_TEXT(cJSON_PrintUnformatted(row)).get();
        }
        return "";
    }
    TEST_ROOT_T root;
};

static const char downRow[] = R"({"port":100,"portNum":100,"portName":"1/0/1","displayPort":"1","unit":1,)"
                              R"("inOctets":0,"inUcastPkts":0,"inMcastPkts":0,"inBcastPkts":0,"rxError":0,)"
                              R"("inDropPkts":0,"inTotalPkts":0,"inBitRate":"0.0","bandwidthDownload":"0.0",)"
                              R"("rxBwUtil%":0,"percetUtilizationReceived":0})";

TEST_F(PortStatistics, InboundListsPortsThenLagsWithMembers)
{
    BUILT_T built = buildText(portStatsInboundGet);
    EXPECT_EQ(built.result, 0);
    EXPECT_EQ(built.text,
              R"({"rows":[{"port":100,"portNum":100,"portName":"1/0/1","displayPort":"1","unit":1,)"
              R"("inOctets":112968750000,"inUcastPkts":84726562,"inMcastPkts":54366210,"inBcastPkts":2118164,)"
              R"("rxError":12,"inDropPkts":7,"inTotalPkts":141210936,"inBitRate":"250.0",)"
              R"("bandwidthDownload":"250.0","rxBwUtil%":25,"percetUtilizationReceived":25},)"
              R"({"port":200,"portNum":200,"portName":"1/2/3","displayPort":"2/3","unit":1,)"
              R"("inOctets":112968750000,"inUcastPkts":84726562,"inMcastPkts":54366210,"inBcastPkts":2118164,)"
              R"("rxError":12,"inDropPkts":7,"inTotalPkts":141210936,"inBitRate":"250.0",)"
              R"("bandwidthDownload":"250.0","rxBwUtil%":2,"percetUtilizationReceived":2},)"
              R"({"port":300,"portNum":300,"portName":"lag 1","displayPort":"lag 1","unit":1,)"
              R"("inOctets":1807500000,"inUcastPkts":1355625,"inMcastPkts":869859,"inBcastPkts":33890,)"
              R"("rxError":0,"inDropPkts":0,"inTotalPkts":2259374,"inBitRate":"4.0",)"
              R"("bandwidthDownload":"4.0","rxBwUtil%":0,"percetUtilizationReceived":0}],"total":3})");
}

TEST_F(PortStatistics, OutboundHasItsOwnCountersAndKeys)
{
    vsState().ports.resize(1);
    vsState().lags.clear();
    vsState().ports[0].outRate = 1960000000; // above the link speed
    EXPECT_EQ(buildText(portStatsOutboundGet).text,
              R"({"rows":[{"port":100,"portNum":100,"portName":"1/0/1","displayPort":"1","unit":1,)"
              R"("outOctets":885675000000,"outUcastPkts":664256250,"outMcastPkts":426231093,)"
              R"("outBcastPkts":16606406,"txError":5,"outDropPkts":3,"outTotalPkts":1107093749,)"
              R"("outBitRate":"1960.0","bandwidthUpload":"1960.0","txBwUtil%":196,)"
              R"("percetUtilizationTransmitted":196}],"total":1})");
}

TEST_F(PortStatistics, DownPortShowsZeroesWhateverItsCountersSay)
{
    vsState().ports[0].down.lasts = 600;
    uint64_t octets = 0;
    CLIENT_HANDLE_T handle = {};
    ASSERT_EQ(rpcclt_openapiStatGet(&handle, 1, 100, &octets), 0);
    ASSERT_NE(octets, 0u);
    EXPECT_EQ(inboundRow(100), downRow);
}

TEST_F(PortStatistics, UtilisationFollowsTheSpeedCode)
{
    struct {
        uint32_t speed;
        uint64_t rate;
        int utilisation;
    } cases[] = {
        {0, 250000000, 0},     {1, 250000000, 0},      {2, 50000000, 50},      {3, 50000000, 50},
        {4, 5000000, 50},      {5, 5000000, 50},       {6, 50000000, 50},      {7, 999000000, 99},
        {8, 1250000000, 50},   {9, 2500000000, 50},    {10, 99000000, 0},      {11, 10000000000, 50},
        {12, 12500000000, 50}, {13, 20000000000, 50},  {14, 25000000000, 50},  {15, 50000000000, 50},
        {16, 50000000000, 0},  {17, 100000000000, 50}, {18, 200000000000, 50}, {19, 50000000000, 0},
    };
    for (const auto &one : cases) {
        vsState().ports[0].speed = one.speed;
        vsState().ports[0].inRate = one.rate;
        std::string row = inboundRow(100);
        std::string expected = R"("rxBwUtil%":)" + std::to_string(one.utilisation) + ",";
        EXPECT_NE(row.find(expected), std::string::npos) << "speed code " << one.speed << "\n" << row;
    }
}

// Each read that fails leaves its default, and the rest of the row as it was.
TEST_F(PortStatistics, FailedReadGivesItsDefault)
{
    struct {
        const char *call;
        uint32_t nth; // statistics are read in the order of the row, the rate last
        const char *had, *has;
    } cases[] = {
        {"openapiIfNameGet", 0, R"("portName":"1/0/1")", R"("portName":"")"},
        {"rpcclt_openapiHashIntfUnitSlotPortGet", 0, R"("displayPort":"1","unit":1)", R"("displayPort":"0","unit":0)"},
        {"rpcclt_openapiStatGet", 1, R"("inOctets":112968750000)", R"("inOctets":0)"},
        {"rpcclt_openapiStatGet", 7, R"("inTotalPkts":141210936)", R"("inTotalPkts":0)"},
        {"rpcclt_openapiStatGet", 8,
         R"("inBitRate":"250.0","bandwidthDownload":"250.0","rxBwUtil%":25,"percetUtilizationReceived":25)",
         R"("inBitRate":"0.0","bandwidthDownload":"0.0","rxBwUtil%":0,"percetUtilizationReceived":0)"},
        {"openapiIfSpeedGet", 0, R"("rxBwUtil%":25,"percetUtilizationReceived":25)",
         R"("rxBwUtil%":0,"percetUtilizationReceived":0)"},
    };
    const std::string clean = inboundRow(100);
    for (const auto &one : cases) {
        std::string expected = clean;
        size_t at = expected.find(one.had);
        ASSERT_NE(at, std::string::npos) << one.had;
        expected.replace(at, strlen(one.had), one.has);
        vsFaultAdd({one.call, "100", one.nth});
        EXPECT_EQ(inboundRow(100), expected) << one.call << " " << one.nth;
        vsFaultsClear();
    }
    vsFaultAdd({"openapiIfLinkStateGet", "100"});
    EXPECT_EQ(inboundRow(100), downRow);
}

TEST_F(PortStatistics, WalksEndWhereThePlatformFails)
{
    struct {
        VS_FAULT_T fault;
        const char *ports; // numbers of the rows that are left
    } cases[] = {
        {{"openapiIfFirstGet", "0"}, "300 "},
        {{"openapiIfFirstGet", "2"}, "100 200 "},
        {{"openapiIfNextGet", "100"}, "100 300 "},
        {{"rpcclt_openapiLagMaxMemberCountGet", ""}, "100 200 "},
        {{"rpcclt_openapiLagMembersGet", "300"}, "100 200 "},
    };
    for (const auto &one : cases) {
        vsFaultAdd(one.fault);
        std::string rows;
        for (uint32_t ifNum : {100, 200, 300, 400})
            rows += inboundRow(ifNum).empty() ? "" : std::to_string(ifNum) + " ";
        EXPECT_EQ(rows, one.ports) << one.fault.name;
        vsFaultsClear();
    }
    vsFaultAdd({"*"});
    EXPECT_EQ(buildText(portStatsInboundGet).text, R"({"rows":[],"total":0})");
    vsFaultsClear();
}

TEST_F(PortStatistics, MissingArgumentIsRefused)
{
    CLIENT_HANDLE_T handle = {};
    char *text = nullptr;
    EXPECT_EQ(portStatsInboundGet(nullptr, &text), 10003);
    EXPECT_EQ(portStatsInboundGet(&handle, nullptr), 10003);
    EXPECT_EQ(portStatsOutboundGet(nullptr, &text), 10003);
    EXPECT_EQ(portStatsOutboundGet(&handle, nullptr), 10003);
}

// Without memory there is no document, and never one that lacks a key. Only the buffer of LAG members may be missed:
// the LAGs are left out then.
TEST_F(PortStatistics, NoMemoryGivesNoDocument)
{
    expectNoDocumentWithoutMemory(portStatsInboundGet, 10000);
    EXPECT_NE(logText().find("(ERROR) pioBuildList: pioBuildList: print failed\n"), std::string::npos);
    allocFailAt(0, ALLOC_OWN);
    BUILT_T built = buildText(portStatsInboundGet);
    EXPECT_TRUE(allocFailStop());
    EXPECT_NE(built.text.find(R"("total":2})"), std::string::npos) << built.text;
}
