#include <algorithm>
#include <control.h>
#include <gtest/gtest.h>
#include <model.h>

// Scenario texts that load, and the one line with which each mistake is refused.

namespace {

struct REFUSAL_T {
    const char *json;
    const char *error; // from the line number on; one that ends in "..." names the beginning
};

const REFUSAL_T REFUSALS[] = {
    {"", "1: JSON: expected a JSON text: The document is empty"},
    {"{\n \"units\": {\n", "3: JSON: expected a JSON text: Missing a name for object member"},
    {"{} x", "1: JSON: expected a JSON text: The document root must not be followed by other values"},
    {"[]", "1: scenario: expected an object"},
    {"{\n\"colour\": 1}", "2: colour: not a key here; expected one of description, epoch, ..."},
    {"{\"epoch\": \"2026-13-01 08:00\"}", "1: epoch: expected a time like ..."},
    {"{\"system\": {\n\"name\": 7}}", "2: name: expected a text"},
    {"{\"system\": {\"dot1x\": 1}}", "1: dot1x: expected true or false"},
    {"{\"system\": {\"mac\": \"00:11:22:33:44\"}}", "1: mac: expected a MAC address like ..."},
    {"{\"system\": {\"serviceAddress\": \"10.0.0\"}}", "1: serviceAddress: expected an IPv4 address like ..."},
    {"{\"system\": {\"consoleSeverity\": 8}}", "1: consoleSeverity: expected a number from 0 to 7"},
    {"{\"system\": {\"consoleSeverity\": 1.5}}", "1: consoleSeverity: expected a number from 0 to 7"},
    {"{\"system\": {\"managementVlan\": 9}}", "1: managementVlan: expected the ID of a VLAN that exists"},
    {"{\"vlans\": {\"4095\": {}}}", "1: 4095: expected a number from 1 to 4094 as key"},
    {"{\"vlans\": {\"2\": {}, \n\"2\": {}}}", "2: 2: expected once, given twice"},
    {"{\"vlans\": {\"2\": {\"address\": \"10.0.0.1/33\"}}}",
     "1: address: expected an IPv4 address like \"10.0.0.1/24\""},
    {"{\"vlans\": {\"2\": {\"profile\": {\"type\": \"Audio\"}}}}", "1: profile: expected \"vlanType\" in it"},
    {"{\"units\": {\"1\": {}}}", "1: 1: expected \"model\" in it"},
    {"{\"units\": {\"9\": {\"model\": \"TK830-T16\"}}}", "1: 9: expected a number from 1 to 8 as key"},
    {"{\"units\": {\"1\": {\n\"model\": \"TK830-T99\"}}}",
     "2: model: expected a model that is known like \"TK830-T16\""},
    {"{\"units\": {\"1\": {\"model\": \"QMD-K5\"}}}", "1: model: expected a model that is known like \"TK830-T16\""},
    {"{\"units\": {\"1\": {\"model\": \"TK830-T03\", \"slots\": {\"1\": {\"model\": \"TK830-T16\"}}}}}",
     "1: model: expected the model of a card like ..."},
    {"{\"expand\": {\"model\": \"TK\"}}", "1: model: expected a model that is known like \"TK830-T16\""},
};

// Mistakes in the sections that build on a 12-port unit with a VLAN and a LAG.
const char BASE[] = "{\"units\": {\"1\": {\"model\": \"TK620-R01\"}}, \"vlans\": {\"10\": {}}, ";
const REFUSAL_T REFUSALS_BASED[] = {
    {"\"ports\": {\"1/0/13\": {}}}", "1: 1/0/13: expected ports that exist like ..."},
    {"\"ports\": {\"1/0/1-\": {}}}", "1: 1/0/1-: expected ports that exist like ..."},
    {"\"ports\": {\"1/0/1,\": {}}}", "1: 1/0/1,: expected ports that exist like ..."},
    {"\"ports\": {\"1/0/1\": {},\n \"1/0/1\": {}}}", "2: 1/0/1: expected once, given twice"},
    {"\"ports\": {\"1/0/1-3,1/0/2\": {}}}", "1: 1/0/1-3,1/0/2: expected each port once, given twice"},
    {"\"ports\": {\"1/0/1\": {\n\"sped\": 7}}}", "2: sped: not a key here; expected one of fanout, ..."},
    {"\"ports\": {\"1/0/1\": {\"speed\": \"3G\"}}}", "1: speed: expected \"auto\", \"10M\", ..."},
    {"\"ports\": {\"1/0/1\": {\"pvid\": 11}}}", "1: pvid: expected the ID of a VLAN that exists"},
    {"\"ports\": {\"1/0/1\": {\"tagged\": [10,\n11]}}}", "2: tagged[2]: expected the ID of a VLAN that exists"},
    {"\"ports\": {\"1/0/1\": {\"tagged\": [\"2-\"]}}}",
     "1: tagged[1]: expected the ID of a VLAN that exists, or a range like \"10-19\""},
    {"\"ports\": {\"1/0/1\": {\"fanout\": \"4x25G\"}}}", "1: fanout: expected a fan-out mode of this model ..."},
    {"\"ports\": {\"1/0/1\": {\"down\": {\"lasts\": 9, \"every\": 5}}}}",
     "1: down: expected \"lasts\" of at least 1 ..."},
    {"\"lags\": {\"1\": {\"members\": [\"1/0/1\",\n \"1/0/13\"]}}}",
     "2: members[2]: expected ports that exist like ..."},
    {"\"lags\": {\"1\": {\"members\": [\"1/0/1\"]},\n\"2\": {\"members\": [\"1/0/1\"]}}}",
     "2: members[1]: expected 1/0/1 as a LAG member once, given twice"},
    {"\"lags\": {\"1\": {\"phantoms\": [12]}}}", "1: phantoms[1]: expected an interface number that no port has"},
    {"\"fdb\": [{\"mac\": \"00:10:7F:00:00:01\", \"port\": \"lag 1\"}]}",
     "1: port: expected a port or LAG that exists like \"1/0/5\" or \"lag 2\""},
    {"\"fdb\": [{\"mac\": \"00:10:7F:00:00:01\"}]}", "1: fdb[1]: expected \"port\" in it"},
    {"\"fdb\": [{\"mac\": \"00:10:7F:00:00:01\", \"port\": \"1/0/1\"},\n{\"mac\": \"00:10:7f:00:00:01\", \"port\": "
     "\"1/0/2\"}]}",
     "2: fdb[2]: expected 00:10:7F:00:00:01 in VLAN 1 once, given twice"},
    {"\"faults\": [{\"call\": \"openapiIfNamGet\"}]}", "1: call: expected the name of a client call, or \"*\""},
    {"\"faults\": [{\"key\": 1}]}", "1: faults[1]: expected either \"call\" or \"command\" in it"},
    {"\"faults\": [{\"call\": \"*\", \"do\": \"cut\"}]}", "1: do: expected \"fail\" for a call"},
    {"\"latency\": [{\"command\": \"show vlan\"}]}", "1: latency[1]: expected \"microseconds\" in it"},
    {"\"texts\": {\"show vlan\":\n {\"file\": \"/nowhere/x.txt\"}}}",
     "2: file: expected a file that can be read, not \"/nowhere/x.txt\""},
    {"\"texts\": {\"show vlan\": 7}}", "1: show vlan: expected a text, a list of lines, or {\"file\": name}"},
};

void expectRefused(const std::string &json, const std::string &error)
{
    SCOPED_TRACE(json);
    std::string got = vsLoadText(json, "s.json");
    std::string want = "s.json:" + error;
    if (want.size() > 3 && want.compare(want.size() - 3, 3, "...") == 0) {
        want.resize(want.size() - 3);
        EXPECT_EQ(got.substr(0, want.size()), want);
    } else {
        EXPECT_EQ(got, want);
    }
    EXPECT_EQ(got.find('\n'), std::string::npos);
}

} // namespace

TEST(Scenario, MistakesAreNamedByLineAndKeyAndLeaveTheStateAlone)
{
    ASSERT_EQ(vsLoadText("{\"system\": {\"name\": \"before\"}}"), "");
    for (const REFUSAL_T &row : REFUSALS)
        expectRefused(row.json, row.error);
    for (const REFUSAL_T &row : REFUSALS_BASED)
        expectRefused(std::string(BASE) + row.json, row.error);
    expectRefused("{\"log\": " + std::string(100000, '['), "1: log: expected less nesting");
    EXPECT_EQ(vsState().system.name, "before");
}

TEST(Scenario, LaterPortEntriesOverrideEarlierOnes)
{
    ASSERT_EQ(vsLoadText(std::string(BASE) + R"("ports": {
        "1/0/1-12": {"linkUp": true, "pvid": 10, "inRate": 5e6},
        "1/0/2,1/0/4-5": {"pvid": 1, "speed": "100M", "poe": {"power": 1500}}}})"),
              "");
    EXPECT_EQ(vsState().ports[0].pvid, 10u);
    EXPECT_EQ(vsState().ports[1].pvid, 1u);
    EXPECT_EQ(vsState().ports[3].inRate, 5000000u);
    EXPECT_EQ(vsState().ports[4].speed, 3u);
    EXPECT_TRUE(vsState().ports[4].poe.valid);
    EXPECT_TRUE(vsState().units[0].poeSupported);
}

// Interface numbers run on over units, slots and ports; LAGs follow, each at its own number.
TEST(Scenario, InterfacesAreNumberedByUnitSlotAndPort)
{
    ASSERT_EQ(vsLoadText(R"({"units": {
        "2": {"model": "TK620-R01", "portCount": 2},
        "1": {"model": "TK830-T03", "slots": {"2": {"model": "QMD-K1"}, "1": {"model": "QMD-K5"}}}},
        "lags": {"3": {}, "1": {"members": ["2/0/1-2"]}}})"),
              "");
    const VS_STATE_T &state = vsState();
    ASSERT_EQ(state.ports.size(), 16u + 4 + 8 + 2);
    EXPECT_EQ(vsPortName(state.ports[15]), "1/0/16");
    EXPECT_EQ(vsPortName(state.ports[16]), "1/1/1");
    EXPECT_EQ(vsPortName(state.ports[20]), "1/2/1");
    EXPECT_EQ(vsPortAt(state, 2, 0, 2), &state.ports[29]);
    EXPECT_EQ(vsPortAt(state, 2, 0, 3), nullptr);
    EXPECT_EQ(state.lags[0].ifNum, 31u);
    EXPECT_EQ(state.lags[1].ifNum, 33u);
    EXPECT_EQ(vsLag(state, 32), nullptr);
    EXPECT_EQ(vsInterface(state, 33), &state.lags[1]);
}

struct FANOUT_CASE_T {
    const char *model, *port, *mode;
    std::vector<uint32_t> attached; // of the front port and its sub-ports
    uint32_t front;
};

class Fanout : public testing::TestWithParam<FANOUT_CASE_T> {};

TEST_P(Fanout, DetachesTheFrontPortAndAttachesTheSubPortsOfTheMode)
{
    const FANOUT_CASE_T &c = GetParam();
    std::string ports = *c.mode != '\0' ? std::string("{\"") + c.port + "\": {\"fanout\": \"" + c.mode + "\"}}" : "{}";
    std::string units =
        std::string(c.model).substr(0, 3) == "QMD"
            ? "{\"model\": \"TK830-T03\", \"slots\": {\"1\": {\"model\": \"" + std::string(c.model) + "\"}}}"
            : "{\"model\": \"" + std::string(c.model) + "\"}";
    ASSERT_EQ(vsLoadText("{\"units\": {\"1\": " + units + "}, \"ports\": " + ports + "}"), "");
    std::vector<uint32_t> attached;
    for (const VS_PORT_T &port : vsState().ports)
        if (port.slot == (units.find("slots") != std::string::npos ? 1u : 0u) && port.attached &&
            (port.port == c.front || port.rootPort == c.front))
            attached.push_back(port.port);
    EXPECT_EQ(attached, c.attached);
}

INSTANTIATE_TEST_SUITE_P(Models, Fanout,
                         testing::Values(FANOUT_CASE_T{"TK830-T02", "1/0/2", "", {2}, 2},
                                         FANOUT_CASE_T{"TK830-T02", "1/0/2", "4x25G", {21, 22, 23, 24}, 2},
                                         FANOUT_CASE_T{"TK830-T02", "1/0/2", "1x100G", {2}, 2},
                                         FANOUT_CASE_T{"TK830-T04", "1/0/17", "2x50G", {37, 38}, 17},
                                         FANOUT_CASE_T{"TK910-U01", "1/0/32", "4x10G", {349, 350, 351, 352}, 32},
                                         FANOUT_CASE_T{"QMD-K1", "1/1/5", "", {5}, 5},
                                         FANOUT_CASE_T{"QMD-K1", "1/1/5", "4x10G", {5, 6, 7, 8}, 5}));

TEST(Scenario, ExpandsToTheSameLargeSwitchFromTheSameSeed)
{
    const char json[] =
        R"({"expand": {"seed": 7, "units": 8, "model": "TK830-T16", "linked": 90, "vlans": 511, "lags": 64,
        "lagMembers": 4, "addresses": 16384, "arp": 400, "neighbours": 300, "groups": 200, "subscribers": 3, "logEntries": 50},
        "units": {"2": {"model": "TK620-R01"}}, "vlans": {"2": {"name": "Mine"}}})";
    ASSERT_EQ(vsLoadText(json), "");
    VS_STATE_T first = vsState();
    EXPECT_EQ(first.ports.size(), 7u * 52 + 12);
    EXPECT_EQ(first.vlans.size(), 512u);
    EXPECT_EQ(first.vlans[1].name, "Mine");
    EXPECT_EQ(first.lags.size(), 64u);
    EXPECT_EQ(first.lags[63].members.size(), 4u);
    EXPECT_EQ(first.fdb.size(), 16384u);
    EXPECT_EQ(first.arp.size(), 400u);
    EXPECT_EQ(first.lldp.size(), 300u);
    EXPECT_EQ(first.groups.size(), 200u);
    EXPECT_EQ(first.log.size(), 50u);
    for (size_t i = 1; i < first.fdb.size(); i++)
        ASSERT_LT(std::make_pair(first.fdb[i - 1].vlan, first.fdb[i - 1].mac),
                  std::make_pair(first.fdb[i].vlan, first.fdb[i].mac));
    for (const VS_FDB_T &row : first.fdb) // what is learned through a member of a LAG belongs to the LAG
        for (const VS_LAG_T &lag : first.lags)
            ASSERT_EQ(std::count(lag.members.begin(), lag.members.end(), row.ifNum), 0);
    ASSERT_EQ(vsLoadText(json), "");
    EXPECT_EQ(vsState().fdb[9999].mac, first.fdb[9999].mac);
    EXPECT_EQ(vsState().ports[300].inRate, first.ports[300].inRate);
    EXPECT_EQ(vsState().groups[150].ifNum, first.groups[150].ifNum);
}

TEST(Scenario, ExpandLeavesStackPortsAlone)
{
    ASSERT_EQ(vsLoadText(R"({"expand": {"units": 1, "model": "TK830-T16", "lags": 2, "addresses": 500},
        "units": {"1": {"model": "TK830-T16", "stackPorts": [{"port": 52}]}}})"),
              "");
    EXPECT_EQ(vsState().lags[0].members, (std::vector<uint32_t>{50, 51}));
    for (const VS_FDB_T &row : vsState().fdb)
        ASSERT_NE(row.ifNum, 52u);
}

TEST(Scenario, TaggedRangesHoldTheVlansThatExist)
{
    ASSERT_EQ(vsLoadText(R"({"vlans": {"10": {}, "20": {}, "30": {}}, "units": {"1": {"model": "TK620-R01"}},
        "ports": {"1/0/1": {"tagged": ["11-29", 10, "20-4094"]}}})"),
              "");
    EXPECT_EQ(vsPort(vsState(), 1)->tagged, (std::vector<uint16_t>{10, 20, 30}));
}

TEST(Scenario, ShippedOnesLoad)
{
    for (const char *name : {"studio-52", "two-port", "chassis-t03", "fanout-t02", "stack-3", "large-8"})
        EXPECT_EQ(vsLoadFile(std::string(DEVMGR_SOURCE_DIR "/platform/virtual/scenarios/") + name + ".json"), "");
}
