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
        VS_UNIT_T unit;
        unit.poeSupported = true;
        state.units.push_back(unit);
        vsTextSet("show ip management", "IPv4 Management Interface.......................... 20\r\n");
    }
};

// Each source that fails leaves its own field at the default; the address and the MAC are one source.
TEST_F(SystemInfo, FailedSourceGivesItsDefault)
{
    struct {
        const char *call;
        const char *document;
    } cases[] = {
        {"rpcclt_openapiSystemNameGet",
         R"({"name":"","mac":"AA:BB:CC:00:11:22","keloVer":"2.2.16.19","poe":true,"STP":32768,"fanMode":1,"mgmtVlan":20})"},
        {"rpcclt_openapiServicePortIPv4AddrGet",
         R"({"name":"sw-1","mac":"","keloVer":"2.2.16.19","poe":true,"STP":32768,"fanMode":1,"mgmtVlan":20})"},
        {"rpcclt_openapiPoeIsSupported",
         R"({"name":"sw-1","mac":"AA:BB:CC:00:11:22","keloVer":"2.2.16.19","poe":false,"STP":32768,"fanMode":1,"mgmtVlan":20})"},
        {"rpcclt_openapiDot1SMSTInstancePriorityGet",
         R"({"name":"sw-1","mac":"AA:BB:CC:00:11:22","keloVer":"2.2.16.19","poe":true,"STP":0,"fanMode":1,"mgmtVlan":20})"},
        {"rpcclt_openapiBoxsFanControlModeGet",
         R"({"name":"sw-1","mac":"AA:BB:CC:00:11:22","keloVer":"2.2.16.19","poe":true,"STP":32768,"fanMode":0,"mgmtVlan":20})"},
        {"show ip management",
         R"({"name":"sw-1","mac":"AA:BB:CC:00:11:22","keloVer":"2.2.16.19","poe":true,"STP":32768,"fanMode":1,"mgmtVlan":1})"},
        {"*", R"({"name":"","mac":"","keloVer":"2.2.16.19","poe":false,"STP":0,"fanMode":0,"mgmtVlan":1})"},
    };
    for (const auto &one : cases) {
        vsFaultAdd({one.call});
        BUILT_T built = buildText(systemInfoGet);
        vsFaultsClear();
        EXPECT_EQ(built.result, 0) << one.call;
        EXPECT_EQ(compact(built.text), one.document) << one.call;
    }
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

TEST_F(SystemInfo, NoMemoryGivesNoDocument)
{
    expectNoDocumentWithoutMemory(systemInfoGet, 10002);
}
