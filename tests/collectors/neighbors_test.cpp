#include "collectors/port/neighbor_ex.h"
#include "collectors/port/neighbor_ex_rows.h"
#include "restcache/store.h"
#include "stores/sql.h"
#include "support/build.h"

struct Neighbors : BUILDER_TEST {
    void SetUp() override
    {
        state.units.emplace_back();
        portAdd(3, 0, 3);
        portAdd(7, 2, 9);
        portAdd(8, 0, 8)->switchMode = 3;
        portAdd(9, 0, 9)->linkUp = false;
        portAdd(896, 0, 10);
        ouiTableMake();
        sqlRun(PATH_OUI_DB, "insert into oui values('02:00:00','Pixel \"Works\"')");
        ASSERT_EQ(restapi_db_operation(REST_DB_CREATE, nullptr, nullptr), 0);
    }
    static VS_PORT_T *portAdd(uint32_t ifNum, uint32_t slot, uint32_t number)
    {
        VS_PORT_T &port = BUILDER_TEST::portAdd(ifNum, 1, slot, number);
        port.linkUp = true;
        port.pvid = 20;
        return &port;
    }
    // The only LLDP device of the switch.
    static void deviceSet(uint32_t ifNum, uint32_t chassisSubtype, const std::string &chassisId, uint32_t portSubtype,
                          const std::string &portId, const std::string &name)
    {
        vsState().lldp.clear();
        VS_LLDP_T &device = vsState().lldp.emplace_back();
        device.ifNum = ifNum;
        device.chassisSubtype = chassisSubtype;
        device.chassisId = chassisId;
        device.portSubtype = portSubtype;
        device.portId = portId;
        device.systemName = name;
    }
    // Rows of the only record.
    static std::string rows()
    {
        CLIENT_HANDLE_T client = {};
        EXPECT_EQ(neighborListExChunkedPush(&client), 0);
        std::string text = cacheRead("neighbor_ex/0");
        EXPECT_NE(compact(text), "(not JSON)") << text;
        size_t head = strlen(R"({"lldpRemoteDevice":{"rows":[)");
        size_t end = text.find(R"(],"chunkIndex":0,"isLastChunk":true},"resp":{)");
        return end == std::string::npos ? "?" : text.substr(head, end - head);
    }
};

static std::string repeat(const std::string &text, int count)
{
    return count == 0 ? "" : text + repeat(text, count - 1);
}

static const std::string tableHead = "VLAN ID  MAC Address         Interface  IfIndex  Status\n"
                                     "-------  ------------------  ---------  -------  -----------\n";

// Texts of hostile devices have quotes, controls and invalid UTF-8; they are cut at 255 and 511 between characters.
TEST_F(Neighbors, WhatAnLldpDeviceSays)
{
    const std::string mac = "02:00:00:00:00:0C", vendor = R"(Pixel \"Works\")", long254(254, 'x');
    const std::string quotes(255, '"'), lines = std::string(127, '\n') + "\xc3\xa9";
    auto row = [](const std::string &name, const std::string &address, const std::string &portId) {
        return R"({"port":"3","portNum":3,"portName":"1/0/3","unit":1,"vlanId":20,"hostName":")" + name +
               R"(","hostIpAddress":"","hostMacAddress":")" + address + R"(","remotePortId":")" + portId +
               R"(","source":"lldp"})";
    };
    struct {
        uint32_t chassisSubtype, portSubtype;
        std::string chassisId, portId, name, fault, row;
    } cases[] = {
        {4, 3, mac, "p", "", "none", row(vendor, mac, "p")},
        {5, 3, "x", mac, "", "none", row(vendor, mac, mac)},
        {7, 5, mac, mac, "", "none", row("", "", mac)},
        {4, 5, mac, "", "n", "openapiLldpIntfRemoteDeviceSystemNameGet", row(vendor, mac, "")},
        {4, 5, "\"\\\n\x01", "\"\t\xff", "\"},{\b\x1f\xc3", "none",
         row("\\\"},{\\b\xef\xbf\xbd", "\\\"\\\\\\n", "\\\"\\t\xef\xbf\xbd")},
        {7, 5, "", quotes, long254 + "\"", "none", row(long254, "", repeat("\\\"", 255))},
        {7, 5, "", "p", lines, "none", row(repeat("\\n", 127), "", "p")},
    };
    for (const auto &one : cases) {
        deviceSet(3, one.chassisSubtype, one.chassisId, one.portSubtype, one.portId, one.name);
        vsFaultAdd({one.fault});
        EXPECT_EQ(rows(), one.row) << one.chassisId << one.fault;
        vsFaultsClear();
    }
}

TEST_F(Neighbors, LearnedAddressesThatGiveNoRow)
{
    const std::pair<const char *, bool> cases[] = {
        {"1 02:00:00:00:00:01 1/0/3 3 Learned", true},  {"1 02:00:00:00:00:01 1/0/9 9 Learned", true}, // down by now
        {"1 02:00:00:00:00:01 1/0/3 3 Static", false},  {"1 02:00:00:00:00:01 1/0/10 896 Learned", false},
        {"1 02:00:00:00:00:01 1/0/3 4 Learned", false}, // no such port
        {"1 02:00:00:00:00:01 1/0/8 8 Learned", false}, // auto-trunk
        {"1 02:00:00:00:00:0a 1/0/3 3 Learned", false}, // has an LLDP row, in whatever case
    };
    for (const auto &[line, shown] : cases) {
        deviceSet(7, 4, "02:00:00:00:00:0A", 5, "eth0", "stage box");
        vsTextSet("show mac-addr-table", tableHead + line + "\n");
        EXPECT_EQ(has(rows(), R"("source":"arp")"), shown) << line;
    }
    vsState().lldp.clear();
    vsTextSet("show mac-addr-table", ""); // the walk of the forwarding database takes its place
    vsState().fdb = {{"02:00:00:00:00:01", 5, 3, true, {}}, {"02:00:00:00:00:02", 5, 3, false, {}}};
    EXPECT_EQ(rows(), R"({"port":"3","portNum":3,"portName":"1/0/3","unit":1,"hostName":"Pixel \"Works\"","vlanId":5,)"
                      R"("hostIpAddress":"","hostMacAddress":"02:00:00:00:00:01","remotePortId":"","source":"arp"})");
}

TEST_F(Neighbors, RowOfMoreThan2559BytesIsLeftOut)
{
    NEIGHBOR_IF_T interface = {};
    char text[NEIGHBOR_ROW_SIZE];
    for (NEIGHBOR_ROW_FORM form : {NEIGHBOR_ROW_LLDP, NEIGHBOR_ROW_FDB}) {
        size_t empty = neighborRowPrint(form, {&interface, 1, 1, "", "", "", ""}, text);
        std::string fits(2559 - empty, 'x');
        EXPECT_EQ(neighborRowPrint(form, {&interface, 1, 1, "", fits.c_str(), "", ""}, text), 2559u);
        EXPECT_EQ(neighborRowPrint(form, {&interface, 1, 1, "", (fits + "x").c_str(), "", ""}, text), 0u);
        EXPECT_EQ(neighborRowPrint(form, {&interface, 1, 1, "", std::string(9000, '"').c_str(), "", ""}, text), 0u);
    }
}
