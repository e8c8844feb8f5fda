// Client calls of the virtual switch: walks, texts, numbers, missing facts and faults, each as a table over many calls.
#include <control.h>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <openclt.h>

namespace {

openclt_handle_t client;

struct TEXT_T {
    char bytes[64] = "";
    openclt_buffer_t buffer = {sizeof bytes, bytes};
    explicit TEXT_T(const char *text = "")
    {
        strncpy(bytes, text, sizeof bytes - 1);
    }
};

// Two units, of which the second comes after 100 seconds; three ports and one LAG.
const char SCENARIO[] = R"({
"epoch": "2026-03-01 08:15:02",
"system": {"utcOffset": -210},
"vlans": {"20": {"name": "Audio", "address": "10.0.0.1/24"}, "30": {"routed": true}},
"units": {"1": {"model": "TK830-T16", "portCount": 2}, "2": {"model": "TK830-T16", "portCount": 1, "present": {"from": 100}}},
"ports": {"1/0/1": {"linkUp": true, "poe": {"valid": true}},
  "1/0/2": {"linkUp": true, "optic": {"type": 2, "compliance": "10GBase-SR"}}, "2/0/1": {"linkUp": true}},
"lags": {"1": {"members": ["1/0/1", "1/0/2"], "phantoms": [700]}},
"fdb": [{"mac": "02:00:00:00:00:09", "port": "1/0/1"}, {"mac": "02:00:00:00:00:02", "port": "1/0/2", "vlan": 20},
  {"mac": "02:00:00:00:00:01", "port": "1/0/2", "vlan": 20, "present": {"from": 100}}],
"arp": [{"address": "192.168.0.1", "mac": "02:00:00:00:00:01"}, {"address": "10.0.0.1", "mac": "02:00:00:00:00:09"}],
"lldp": [{"port": "1/0/1", "chassisId": "a", "index": 7}, {"port": "1/0/1", "chassisId": "b", "index": 4},
  {"port": "1/0/2", "chassisId": "c"}],
"groups": [{"port": "1/0/1", "vlan": 20, "address": "239.1.1.1"}, {"port": "lag 1", "vlan": 20, "address": "239.1.1.1"},
  {"port": "1/0/2", "vlan": 30, "address": "239.129.130.3"}],
"timeRanges": [{"name": "night"}, {"name": "day"}],
"log": ["first\n", "second"]})";

class ClientCalls : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(vsLoadText(SCENARIO), "");
        vsClockSet(10);
    }
    void TearDown() override
    {
        vsUnload();
        vsClockRun();
    }
};

constexpr uint32_t NONE = 0xdead; // an out-argument as it was
struct NUMBER_T {
    int (*call)(openclt_handle_t *, uint32_t, uint32_t *);
    std::vector<std::pair<uint32_t, uint32_t>> answers; // by key
};
const NUMBER_T NUMBERS[] = {
    {openapiIfTypeGet, {{1, 0}, {4, 2}, {0, NONE}}},
    {openapiIfLinkStateGet, {{4, 0}, {3, 2}}},
    {openapiIfSpeedGet, {{1, 7}, {3, 1}}},
    {openapiIfOprStateGet, {{1, 1}, {3, 2}}},
    {rpcclt_openapiIfStatusGet, {{3, 0}, {39, NONE}}},
    {rpcclt_openapiBoxsSfpTypeGet, {{1, 0}, {2, 2}, {4, NONE}}},
    {rpcclt_openapiPoePsePortAdminEnableGet, {{1, 1}, {2, NONE}}},
    {rpcclt_openapiPoePseTotalAvailablePowerGet, {{1, 720}, {2, NONE}}},
    {rpcclt_openapiLagStaticModeGet, {{4, 0}, {1, NONE}}},
    {rpcclt_openapiRtrIntfVlanIdGet, {{1, NONE}}},
    {rpcclt_openapiSwPortMonitorModeGet, {{1, NONE}}},
    {rpcclt_openapiLinuxptpDomainVlanGet, {{127, NONE}}},
};

TEST_F(ClientCalls, NumbersOfKnownKeysAndFailuresOfOthers)
{
    for (const NUMBER_T &row : NUMBERS) {
        uint32_t value;
        for (const auto &[key, expected] : row.answers) {
            value = NONE;
            const int result = row.call(&client, key, &value);
            EXPECT_EQ(value, expected) << "row " << &row - NUMBERS << " key " << key;
            EXPECT_EQ(result != OPENCLT_OK, expected == NONE) << "row " << &row - NUMBERS << " key " << key;
        }
        EXPECT_NE(row.call(&client, 1, nullptr), OPENCLT_OK) << "row " << &row - NUMBERS;
        EXPECT_NE(row.call(nullptr, 1, &value), OPENCLT_OK) << "row " << &row - NUMBERS;
    }
    uint32_t value = NONE;
    TEXT_T acl("NET-BLOCK");
    EXPECT_EQ(rpcclt_openapiAclGet(&client, 1, &acl.buffer, &value), OPENCLT_NOT_PRESENT);
    vsUnload();
    for (const NUMBER_T &row : NUMBERS)
        EXPECT_EQ(row.call(&client, 1, &value), OPENCLT_FAIL) << "row " << &row - NUMBERS;
}

// One step of a walk from the cursor it holds; "" at the end.
using STEP_T = std::function<std::string()>;
STEP_T numberWalk(std::function<int(uint32_t, uint32_t *)> call)
{
    return [call, key = 0u]() mutable {
        return call(key, &key) == OPENCLT_OK ? std::to_string(key) : "";
    };
}

TEST_F(ClientCalls, WalksAscendAndEnd)
{
    using namespace std::placeholders;
    const std::pair<STEP_T, std::vector<std::string>> walks[] = {
        {numberWalk(std::bind(openapiIfNextGet, &client, 0, _1, _2)), {"1", "2", "3"}},
        {numberWalk(std::bind(openapiIfNextGet, &client, 2, _1, _2)), {"4"}},
        {numberWalk(std::bind(openapiVlanNextGet, &client, _1, _2)), {"1", "20", "30"}},
        {numberWalk(std::bind(rpcclt_openapiUnitMgrStackMemberGetNext, &client, _1, _2)), {"1"}},
        {numberWalk(std::bind(rpcclt_openapiLldpIntfRemoteDeviceNextGet, &client, 1, _1, _2)), {"4", "7"}},
        {numberWalk(std::bind(rpcclt_openapiRtrIntfNextGet, &client, _1, _2)), {"4116", "4126"}},
        {[mac = TEXT_T(), vlan = 0u]() mutable {
             uint32_t ifNum = 0, type = 0;
             mac.buffer = {sizeof mac.bytes, mac.bytes};
             int result = rpcclt_openapiFdbEntryNextGet(&client, &mac.buffer, &vlan, &ifNum, &type);
             return result == OPENCLT_OK ? std::to_string(vlan) + " " + mac.bytes : "";
         },
         {"1 02:00:00:00:00:09", "20 02:00:00:00:00:02"}},
        {[arp = openclt_arp_entry_t()]() mutable {
             int result = rpcclt_openapiArpEntryNextGet(&client, &arp);
             return result == OPENCLT_OK ? std::to_string(arp.address.bytes[0] * 10 + arp.mac[5]) : "";
         },
         {"109", "1921"}},
        {[group = openclt_snoop_group_t()]() mutable {
             int result = rpcclt_openapiSnoopingGroupNextGet(&client, 1, 0, &group);
             return result == OPENCLT_OK ? std::to_string(group.ifNum * 10 + group.groupMac[3]) : "";
         },
         {"11", "41", "21"}},
        {[index = 0u]() mutable {
             TEXT_T entry;
             int result = rpcclt_openapiBufferedLogEntryNextGet(&client, &index, &entry.buffer);
             return std::string(result == OPENCLT_OK ? entry.bytes : "");
         },
         {"first\n", "second"}},
    };
    for (const auto &[start, expected] : walks) {
        STEP_T step = start;
        for (const std::string &key : expected)
            EXPECT_EQ(step(), key) << "walk " << expected.size();
        EXPECT_EQ(step(), "") << "walk of " << expected.size();
    }
}

TEST_F(ClientCalls, TextsFitWithTerminatorOrLeaveTheBufferAlone)
{
    TEXT_T day("day");
    using namespace std::placeholders;
    const std::pair<std::function<int(openclt_buffer_t *)>, std::string> rows[] = {
        {std::bind(openapiIfNameGet, &client, 3, _1), "2/0/1"},
        {std::bind(openapiIfNameGet, &client, 4, _1), "lag 1"},
        {std::bind(rpcclt_openapiIfDescrGet, &client, 1, _1), ""},
        {std::bind(rpcclt_openapiVlanNameGet, &client, 20, _1), "Audio"},
        {std::bind(rpcclt_openapiBoxsSfpComplianceGet, &client, 2, _1), "10GBase-SR"},
        {std::bind(rpcclt_openapiSystemRegMachineModelGet, &client, _1), "TK830-T16"},
        {std::bind(rpcclt_openapiClockGet, &client, _1), "2026:03:01 04:45:12"},
        {std::bind(rpcclt_openapiTimeZoneGet, &client, _1), "UTC-3:30"},
        {std::bind(rpcclt_openapiTimeRangeNameNextGet, &client, &day.buffer, _1), "night"},
    };
    for (const auto &[call, expected] : rows) {
        const uint32_t needed = static_cast<uint32_t>(expected.size() + 1);
        for (uint32_t capacity = 0; capacity <= needed + 1; capacity++) {
            char bytes[64];
            memset(bytes, '#', sizeof bytes);
            openclt_buffer_t buffer = {capacity, bytes};
            const bool fits = call(&buffer) == OPENCLT_OK;
            ASSERT_EQ(fits, capacity >= needed) << expected << " into " << capacity;
            EXPECT_EQ(buffer.size, fits ? needed : capacity) << expected;
            const std::string written = fits ? std::string(expected.c_str(), needed) : "";
            EXPECT_EQ(std::string(bytes, needed + 2), (written + std::string(64, '#')).substr(0, needed + 2));
        }
        openclt_buffer_t none = {64, nullptr};
        EXPECT_EQ(call(&none), OPENCLT_PARAM) << expected;
    }
    TEXT_T text;
    EXPECT_NE(rpcclt_openapiBoxsSfpComplianceGet(&client, 1, &text.buffer), OPENCLT_OK);
    EXPECT_EQ(rpcclt_openapiUnitMgrPreconfigModelIdGet(&client, 2, &text.buffer), OPENCLT_OK); // away, but configured
    text = TEXT_T();
    EXPECT_NE(rpcclt_openapiUnitMgrPreconfigModelIdGet(&client, 3, &text.buffer), OPENCLT_OK);
}

TEST_F(ClientCalls, LagMembersNeedRoomAndEndWithThoseThatDoNotExist)
{
    uint32_t members[4] = {};
    for (uint32_t room = 0; room <= 4; room++) {
        openclt_buffer_t buffer = {sizeof members, reinterpret_cast<char *>(members)};
        uint32_t count = room;
        const int result = rpcclt_openapiLagMembersGet(&client, 4, &count, &buffer, sizeof members);
        EXPECT_EQ(result == OPENCLT_OK, room >= 3) << room;
        EXPECT_EQ(count, room >= 3 ? 3 : room);
    }
    EXPECT_EQ(members[2], 700u);
    EXPECT_EQ(members[3], 0u);
}

TEST_F(ClientCalls, NamesAreFoundOnlyWhole)
{
    for (const auto &[name, expected] : std::vector<std::pair<const char *, uint32_t>>{
             {"1/0/2", 2}, {"2/0/1", 3}, {"lag 1", 4}, {"1/0/2 ", 0}, {"1/0/02", 0}, {"1/0", 0}, {"lag 2", 0}}) {
        uint32_t ifNum = 0;
        TEXT_T text(name);
        EXPECT_EQ(rpcclt_openapiIfNumGet(&client, &text.buffer, &ifNum) == OPENCLT_OK, expected != 0) << name;
        EXPECT_EQ(ifNum, expected) << name;
    }
}

TEST_F(ClientCalls, FaultsHitTheirKeyOnly)
{
    vsFaultAdd({"openapiIfSpeedGet", "2", 0, VS_FAIL, -7});
    vsFaultAdd({"rpcclt_openapiStatGet", "1", 2, VS_FAIL, -9}); // the interface is the key, not the counter
    vsFaultAdd({"openapiIfNumGet", "1/0/2", 0, VS_FAIL, -8});
    uint32_t value = 0;
    uint64_t counter = 0;
    TEXT_T hit("1/0/2"), other("1/0/1");
    EXPECT_EQ(openapiIfSpeedGet(&client, 1, &value), OPENCLT_OK);
    EXPECT_EQ(openapiIfSpeedGet(&client, 2, &value), -7);
    EXPECT_EQ(rpcclt_openapiIfNumGet(&client, &hit.buffer, &value), -8);
    EXPECT_EQ(rpcclt_openapiIfNumGet(&client, &other.buffer, &value), OPENCLT_OK);
    EXPECT_EQ(rpcclt_openapiStatGet(&client, 51, 1, &counter), OPENCLT_OK);
    EXPECT_EQ(rpcclt_openapiStatGet(&client, 1, 2, &counter), OPENCLT_OK);
    EXPECT_EQ(rpcclt_openapiStatGet(&client, 53, 1, &counter), -9);
}

} // namespace
