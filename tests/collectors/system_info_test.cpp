#include "collectors/system/system_info.h"
#include "support/build.h"

struct SystemInfo : BUILDER_TEST {
    void SetUp() override
    {
        state.system.name = "sw-1";
        state.system.mac = "AA:BB:CC:00:11:22";
        state.system.serviceAddress = 0xc0a80005;
        state.system.fanMode = 3;
        state.system.bootVersion = "B1.0.0.9";
        state.units.emplace_back().poeSupported = true;
        vsTextSet("show ip management", "IPv4 Management Interface.......................... 20\r\n");
    }
};

// Each source that fails leaves its own field at the default; the address and the MAC are one source.
TEST_F(SystemInfo, FailedSourceGivesItsDefault)
{
    const std::string clean = R"({"name":"sw-1","mac":"AA:BB:CC:00:11:22","keloVer":"2.2.16.19","poe":true,)"
                              R"("STP":32768,"fanMode":1,"mgmtVlan":20})";
    const std::string none =
        R"({"name":"","mac":"","keloVer":"2.2.16.19","poe":false,"STP":0,"fanMode":0,"mgmtVlan":1})";
    expectFailures([] { return documentOf(systemInfoGet); }, clean,
                   {{{"rpcclt_openapiServicePortIPv4AddrGet"}, {"AA:BB:CC:00:11:22", ""}},
                    {{"show ip management"}, {R"("mgmtVlan":20)", R"("mgmtVlan":1)"}},
                    {{"*"}, {clean, none}}});
}

TEST_F(SystemInfo, RecordHoldsWhatStackingNeedsAndSkipsTheFanMode)
{
    SYSTEM_INFO_RECORD_T record;
    memset(&record, 0x55, sizeof(record));
    vsCallsReset();
    systemInfoRecordGet(&handle, &record, 1);
    EXPECT_STREQ(record.ip, "192.168.0.5");
    EXPECT_STREQ(record.bootVersion, "B1.0.0.9");
    EXPECT_EQ(record.fanMode, 0u);
    EXPECT_EQ(vsCallCount("rpcclt_openapiBoxsFanControlModeGet"), 0u);
}
