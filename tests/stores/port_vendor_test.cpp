#include "stores/port_vendor.h"

#include "sql.h"
#include "support/build.h"
#include "support/root.h"

#include <control.h>
#include <model.h>

#include <algorithm>

using namespace std::string_literals;

namespace {
constexpr uint32_t AUTO_TRUNK = 3;

// Three ports that are up, in VLANs 10, 20 and 30.
struct PortVendor : testing::Test {
    PortVendor()
    {
        EXPECT_EQ(vsLoadText("{}"), "");
        VS_STATE_T &state = vsState();
        state = VS_STATE_T();
        state.units.resize(1);
        for (uint32_t i = 1; i <= 3; i++) {
            VS_PORT_T port;
            port.ifNum = i;
            port.port = i;
            port.linkUp = true;
            port.pvid = 10 * i;
            state.ports.push_back(port);
        }
        vlanInfoTableMake();
        logClear();
    }
    ~PortVendor() override
    {
        vsUnload();
    }
    static void profile(int id, int vlanType, const std::string &profileType)
    {
        sqlRun(PATH_VLANINFO_DB, "replace into vlanInfo values(" + std::to_string(id) + ", " +
                                     std::to_string(vlanType) + ", 'name', " + profileType + ", '#000000')");
    }
    static void learn(uint32_t ifNum, const std::string &mac)
    {
        VS_FDB_T row;
        row.mac = mac;
        row.ifNum = ifNum;
        vsState().fdb.push_back(row);
        std::sort(vsState().fdb.begin(), vsState().fdb.end(),
                  [](const VS_FDB_T &a, const VS_FDB_T &b) { return a.mac < b.mac; });
    }
    static void hear(uint32_t ifNum, const std::string &chassisId, const std::string &description)
    {
        VS_LLDP_T row;
        row.ifNum = ifNum;
        row.index = static_cast<uint32_t>(vsState().lldp.size()) + 1;
        row.chassisId = chassisId;
        row.systemDescription = description;
        vsState().lldp.push_back(row);
    }
    // Vendor keys of the ports, joined by commas.
    static std::string detected()
    {
        BUILT_T built = buildText(portVendorDetectBuild);
        EXPECT_EQ(built.result, 0);
        OWNED_JSON root(cJSON_Parse(built.text.c_str()));
        const cJSON *rows = cJSON_GetObjectItem(root.get(), "rows");
        std::string keys;
        for (int i = 0; i < cJSON_GetArraySize(rows); i++)
            keys += (i == 0 ? "" : ",") +
                    std::string(cJSON_GetStringValue(cJSON_GetObjectItem(cJSON_GetArrayItem(rows, i), "detect")));
        return keys;
    }
    TEST_ROOT_T root;
};
} // namespace

TEST_F(PortVendor, VendorIsDetectedByItsOwnMethods)
{
    struct {
        const char *what, *profileType;
        int vlanType;
        const char *mac, *chassisId, *description, *key;
    } cases[] = {
        {"learned", "Kramer AV", 1, "00:02:BC:00:00:01", "", "", "kramer"},
        {"another vendor's", "Kramer AV", 1, "00:10:7F:00:00:01", "", "", ""},
        {"not by LLDP", "Kramer AV", 1, "", "00:1D:56:00:00:01", "Kramer", ""},
        {"type 9 whatever the name", "BluOS AV", 9, "00:1D:56:00:00:01", "", "", "kramer"},
        {"only by chassis", "NUCLEUS Converged AV Network", 1, "00:02:C5:00:00:01", "", "", ""},
        {"by chassis", "NUCLEUS Converged AV Network", 1, "", "00:02:c5:00:00:01", "", "NUCLEUS"},
        {"learned or by chassis", "G&D KVM-over-IP", 1, "00:00:00:00:00:01", "00:0F:F4:00:00:01", "", "GandD"},
        {"short chassis id", "NUCLEUS Converged AV Network", 1, "", "00:02:C", "", ""},
        {"by description", "AUDAC Audio and Control Network", 1, "", "x", "The new AUDAC box", "audac"},
        {"no method", "Audio Video AVB MILAN with Dante PTPv1 PTPv2 or AES67", 1, "00:1D:56:00:00:01",
         "00:1D:56:00:00:01", "biamp", ""},
        {"part of a name", "Kramer", 1, "00:1D:56:00:00:01", "", "", ""},
    };
    for (const auto &row : cases) {
        profile(20, row.vlanType, "'"s + row.profileType + "'");
        vsState().fdb.clear();
        vsState().lldp.clear();
        learn(3, "00:1D:56:00:00:09"); // its VLAN has no profile
        if (row.mac[0] != '\0')
            learn(2, row.mac);
        hear(2, "first", "and without a match");
        hear(2, row.chassisId, row.description);
        EXPECT_EQ(detected(), ","s + row.key + ",") << row.what;
    }
}

TEST_F(PortVendor, FirstVendorOfAnOuiCounts)
{
    for (const auto &row : {std::pair("00:10:7f:00:00:00", "crestron"),
                            {"C2:00:00", "jap"},
                            {"70:b3:D5:1", "birddog"},
                            {"00:10:7", ""},
                            {"00:10:70:00:00:00", ""},
                            {"", ""}}) {
        const VENDOR_RECORD_T *vendor = ouiVendorRecordGet(row.first);
        EXPECT_STREQ(vendor == nullptr ? "" : vendor->key, row.second) << row.first;
    }
}

TEST_F(PortVendor, DownAndTrunkPortsAreNotExamined)
{
    for (int id : {10, 20, 30})
        profile(id, 7, "'any'");
    for (uint32_t ifNum = 1; ifNum <= 3; ifNum++)
        learn(ifNum, "00:1D:56:00:00:0" + std::to_string(ifNum));
    EXPECT_EQ(detected(), "kramer,kramer,kramer");
    vsState().ports[0].linkUp = false;
    vsState().ports[1].switchMode = AUTO_TRUNK;
    EXPECT_EQ(detected(), ",,kramer");
}

TEST_F(PortVendor, FailureOfOneCallLosesNoOtherPort)
{
    profile(1, 1, "'BluOS AV'");
    for (int id : {10, 20, 30})
        profile(id, 1, "'AVoIP Lightware AV network'");
    for (uint32_t ifNum = 1; ifNum <= 3; ifNum++) {
        hear(ifNum, "A8:D2:36:00:00:01", "");
        learn(ifNum, "90:56:82:00:00:0" + std::to_string(ifNum));
    }
    struct {
        const char *call, *key;
        uint32_t nth;
        const char *keys;
    } cases[] = {
        {"openapiVlanIfPvidGet", "2", 0, "lightware,bluos,lightware"}, // VLAN 1 then
        {"rpcclt_openapiLldpMgmtStrLenGet", "", 2, "lightware,,lightware"},
    };
    for (const auto &row : cases) {
        VS_FAULT_T fault;
        fault.name = row.call;
        fault.key = row.key;
        fault.nth = row.nth;
        vsFaultAdd(fault);
        EXPECT_EQ(detected(), row.keys) << row.call;
        vsFaultsClear();
        vsCallsReset();
    }
}

TEST_F(PortVendor, ProfileMapTakesEveryRowWithAVlan)
{
    sqlRun(PATH_VLANINFO_DB, "with recursive n(i) as (select -1 union all select i + 1 from n where i < 100) "
                             "insert into vlanInfo select i, i + 1000, 'name', 'type' || i, '' from n");
    profile(3, 1, "NULL");
    profile(4, 1, "'" + std::string(300, 't') + "'");
    VLAN_PROFILE_MAP_T map;
    loadVlanProfileMap(&map);
    loadVlanProfileMap(&map); // starts over
    ASSERT_EQ(map.count, 100U);
    for (uint32_t i = 0; i < map.count; i++) {
        const PROFILE_MAP_ROW_T &row = map.rows[i];
        EXPECT_EQ(row.profileType, row.id == 3   ? ""
                                   : row.id == 4 ? std::string(255, 't')
                                                 : "type" + std::to_string(row.id));
        EXPECT_EQ(row.vlanType, row.id == 3 || row.id == 4 ? 1 : row.id + 1000);
    }
}

TEST_F(PortVendor, ProfilesThatCannotBeReadLeaveEveryPortWithout)
{
    learn(1, "00:1D:56:00:00:01");
    sqlRun(PATH_VLANINFO_DB, "drop table vlanInfo");
    EXPECT_EQ(detected(), ",,");
    EXPECT_EQ(logText(), "(ERROR) loadVlanProfileMap: port_vendor_detect: vlanInfo prepare failed: no such table: "
                         "vlanInfo\n");
    logClear();
    ASSERT_EQ(remove(PathGet(PATH_VLANINFO_DB)), 0);
    EXPECT_EQ(detected(), ",,");
    EXPECT_EQ(logText(), "(ERROR) loadVlanProfileMap: port_vendor_detect: cannot open "s + PathGet(PATH_VLANINFO_DB) +
                             ": unable to open database file\n");
    EXPECT_FALSE(fileExists(PathGet(PATH_VLANINFO_DB)));
}
