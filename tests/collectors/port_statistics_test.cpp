#include "collectors/port/port_stats.h"
#include "support/build.h"

// Interface numbers are hundreds and the clock stands at 15 s: there the virtual switch's rates are exactly the set
// ones.
struct PortStatistics : BUILDER_TEST {
    void SetUp() override
    {
        vsClockSet(15);
        state.units.emplace_back();
        VS_PORT_T &port = portAdd(100, 1, 0, 1);
        port.speed = 7;
        port.linkUp = true;
        port.inRate = 250000000;
        port.outRate = 1000000;
        port.inErrors = 12;
        port.inDrops = 7;
        port.outErrors = 5;
        port.outDrops = 3;
    }
    // The only row of the inbound list, as compact text.
    static std::string inboundRow()
    {
        std::string text = documentOf(portStatsInboundGet);
        size_t at = text.find(R"({"port":)");
        return at == std::string::npos ? "" : text.substr(at, text.find('}', at) + 1 - at);
    }
};

static const char downRow[] = R"({"port":100,"portNum":100,"portName":"1/0/1","displayPort":"1","unit":1,)"
                              R"("inOctets":0,"inUcastPkts":0,"inMcastPkts":0,"inBcastPkts":0,"rxError":0,)"
                              R"("inDropPkts":0,"inTotalPkts":0,"inBitRate":"0.0","bandwidthDownload":"0.0",)"
                              R"("rxBwUtil%":0,"percetUtilizationReceived":0})";

TEST_F(PortStatistics, UtilisationFollowsTheSpeedCode)
{
    const std::tuple<uint32_t, uint64_t, int> cases[] = {
        {0, 250000000, 0},     {1, 250000000, 0},      {2, 50000000, 50},      {3, 50000000, 50},
        {4, 5000000, 50},      {5, 5000000, 50},       {6, 50000000, 50},      {7, 999000000, 99},
        {8, 1250000000, 50},   {9, 2500000000, 50},    {10, 99000000, 0},      {11, 10000000000, 50},
        {12, 12500000000, 50}, {13, 20000000000, 50},  {14, 25000000000, 50},  {15, 50000000000, 50},
        {16, 50000000000, 0},  {17, 100000000000, 50}, {18, 200000000000, 50}, {19, 50000000000, 0},
    };
    for (const auto &[speed, rate, utilisation] : cases) {
        state.ports[0].speed = speed;
        state.ports[0].inRate = rate;
        EXPECT_TRUE(has(inboundRow(), R"("rxBwUtil%":)" + std::to_string(utilisation) + ",")) << speed;
    }
    state.ports[0].speed = 7;
    state.ports[0].outRate = 1960000000; // above the link speed
    EXPECT_TRUE(has(documentOf(portStatsOutboundGet),
                    R"("txError":5,"outDropPkts":3,"outTotalPkts":1107093749,"outBitRate":"1960.0",)"
                    R"("bandwidthUpload":"1960.0","txBwUtil%":196,"percetUtilizationTransmitted":196}],"total":1})"));
}

// Each read that fails leaves its default, and the rest of the row as it was. Statistics are read in the order of the
// row, the rate last.
TEST_F(PortStatistics, FailedReadGivesItsDefault)
{
    const std::string clean = R"({"port":100,"portNum":100,"portName":"1/0/1","displayPort":"1","unit":1,)"
                              R"("inOctets":112968750000,"inUcastPkts":84726562,"inMcastPkts":54366210,)"
                              R"("inBcastPkts":2118164,"rxError":12,"inDropPkts":7,"inTotalPkts":141210936,)"
                              R"("inBitRate":"250.0","bandwidthDownload":"250.0","rxBwUtil%":25,)"
                              R"("percetUtilizationReceived":25})";
    const std::string rate = R"("inBitRate":"250.0","bandwidthDownload":"250.0",)";
    const std::string load = R"("rxBwUtil%":25,"percetUtilizationReceived":25)";
    const std::string noLoad = R"("rxBwUtil%":0,"percetUtilizationReceived":0)";
    expectFailures([] { return inboundRow(); }, clean,
                   {
                       {{"rpcclt_openapiStatGet", "100", 1}, {R"("inOctets":112968750000)", R"("inOctets":0)"}},
                       {{"rpcclt_openapiStatGet", "100", 7}, {R"("inTotalPkts":141210936)", R"("inTotalPkts":0)"}},
                       {{"rpcclt_openapiStatGet", "100", 8},
                        {rate + load, R"("inBitRate":"0.0","bandwidthDownload":"0.0",)" + noLoad}},
                       {{"openapiIfSpeedGet", "100"}, {load, noLoad}},
                       {{"openapiIfLinkStateGet", "100"}, {clean, downRow}},
                   });
    state.ports[0].down.lasts = 600; // whatever its counters say
    EXPECT_EQ(inboundRow(), downRow);
}
