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
    {"{\n\"description\": \"Lumi\xe8re\"}", "2: JSON: expected a JSON text: Invalid encoding in string"},
    {"{\n\"colour\": 1}", "2: colour: not a key here; expected one of description, epoch, ..."},
    {"{\"epoch\": \"2026-13-01 08:00\"}", "1: epoch: expected a time like ..."},
    {"{\"system\": {\n\"name\": 7}}", "2: name: expected a text"},
    {"{\"system\": {\"mac\": \"00:11:22:33:44\"}}", "1: mac: expected a MAC address like ..."},
    {"{\"system\": {\"serviceAddress\": \"10.0.0\"}}", "1: serviceAddress: expected an IPv4 address like ..."},
    {"{\"system\": {\"consoleSeverity\": 8}}", "1: consoleSeverity: expected a number from 0 to 7"},
    {"{\"system\": {\"managementVlan\": 9}}", "1: managementVlan: expected the ID of a VLAN that exists"},
    {"{\"vlans\": {\"4095\": {}}}", "1: 4095: expected a number from 1 to 4094 as key"},
    {"{\"vlans\": {\"2\": {}, \n\"2\": {}}}", "2: 2: expected once, given twice"},
    {"{\"vlans\": {\"2\": {\"address\": \"10.0.0.1/33\"}}}",
     "1: address: expected an IPv4 address like \"10.0.0.1/24\""},
    {"{\"vlans\": {\"2\": {\"profile\": {\"type\": \"Audio\"}}}}", "1: profile: expected \"vlanType\" in it"},
    {"{\"units\": {\"1\": {\n\"model\": \"TK830-T99\"}}}",
     "2: model: expected a model that is known like \"TK830-T16\""},
    {"{\"units\": {\"1\": {\"model\": \"QMD-K5\"}}}", "1: model: expected a model that is known like \"TK830-T16\""},
    {"{\"units\": {\"1\": {\"model\": \"TK830-T03\", \"slots\": {\"1\": {\"model\": \"TK830-T16\"}}}}}",
     "1: model: expected the model of a card like ..."},
};

// Mistakes in the sections that build on a 12-port unit with a VLAN and a LAG.
const char BASE[] = "{\"units\": {\"1\": {\"model\": \"TK620-R01\"}}, \"vlans\": {\"10\": {}}, ";
const REFUSAL_T REFUSALS_BASED[] = {
    {"\"ports\": {\"1/0/13\": {}}}", "1: 1/0/13: expected ports that exist like ..."},
    {"\"ports\": {\"1/0/1,\": {}}}", "1: 1/0/1,: expected ports that exist like ..."},
    {"\"ports\": {\"1/0/1\": {},\n \"1/0/1\": {}}}", "2: 1/0/1: expected once, given twice"},
    {"\"ports\": {\"1/0/1-3,1/0/2\": {}}}", "1: 1/0/1-3,1/0/2: expected each port once, given twice"},
    {"\"ports\": {\"1/0/1\": {\"speed\": \"3G\"}}}", "1: speed: expected \"auto\", \"10M\", ..."},
    {"\"ports\": {\"1/0/1\": {\"tagged\": [10,\n11]}}}", "2: tagged[2]: expected the ID of a VLAN that exists"},
    {"\"ports\": {\"1/0/1\": {\"tagged\": [\"2-\"]}}}",
     "1: tagged[1]: expected the ID of a VLAN that exists, or a range like \"10-19\""},
    {"\"ports\": {\"1/0/1\": {\"fanout\": \"4x25G\"}}}", "1: fanout: expected a fan-out mode of this model ..."},
    {"\"ports\": {\"1/0/1\": {\"down\": {\"lasts\": 9, \"every\": 5}}}}",
     "1: down: expected \"lasts\" of at least 1 ..."},
    {"\"lags\": {\"1\": {\"members\": [\"1/0/1\"]},\n\"2\": {\"members\": [\"1/0/1\"]}}}",
     "2: members[1]: expected 1/0/1 as a LAG member once, given twice"},
    {"\"lags\": {\"1\": {\"phantoms\": [12]}}}", "1: phantoms[1]: expected an interface number that no port has"},
    {"\"fdb\": [{\"mac\": \"00:10:7F:00:00:01\", \"port\": \"lag 1\"}]}",
     "1: port: expected a port or LAG that exists like \"1/0/5\" or \"lag 2\""},
    {"\"fdb\": [{\"mac\": \"00:10:7F:00:00:01\", \"port\": \"1/0/1\"},\n{\"mac\": \"00:10:7f:00:00:01\", \"port\": "
     "\"1/0/2\"}]}",
     "2: fdb[2]: expected 00:10:7F:00:00:01 in VLAN 1 once, given twice"},
    {"\"faults\": [{\"key\": 1}]}", "1: faults[1]: expected either \"call\" or \"command\" in it"},
    {"\"ports\": {\"1/0/1\": {\"poe\": {\"status\": \"on\"}}}}", "1: status: expected \"idle\", \"searching\", ..."},
    {"\"faults\": [{\"command\": \"show vlans\"}]}",
     "1: command: expected a show command that is rendered, or stands in \"texts\""},
    {"\"latency\": [{\"command\": \"show interface *\", \"microseconds\": 1}]}",
     "1: command: expected a show command that is rendered, or stands in \"texts\""},
    {"\"faults\": [{\"call\": \"*\", \"do\": \"cut\"}]}", "1: do: expected \"fail\" for a call"},
    {"\"faults\": [{\"command\": \"show vlan\", \"value\": 1}]}", "1: value: expected a \"call\" beside it, ..."},
    {"\"texts\": {\"show vlan\":\n {\"file\": \"/nowhere/x.txt\"}}}",
     "2: file: expected a file that can be read, not \"/nowhere/x.txt\""},
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
        "1/0/1-11": {"linkUp": true, "pvid": 10, "inRate": 5e6},
        "1/0/2,1/0/4-5,1/0/12": {"pvid": 1, "speed": "100M", "poe": {"power": 1500, "status": "delivering"}}}})"),
              "");
    EXPECT_EQ(vsState().ports[0].pvid, 10u);
    EXPECT_EQ(vsState().ports[1].pvid, 1u);
    EXPECT_EQ(vsState().ports[3].inRate, 5000000u);
    EXPECT_EQ(vsState().ports[4].speed, 3u);
    EXPECT_TRUE(vsState().ports[4].poe.valid);
    EXPECT_TRUE(vsState().units[0].poeSupported);
    EXPECT_EQ(vsPoeConsumption(vsState(), 1, 0), 4u); // 1.5 W of the three with a link
}

TEST(Scenario, SectionsReferToEachOther)
{
    ASSERT_EQ(vsLoadText(std::string(BASE) + R"("lags": {"2": {"members": ["1/0/4"]}},
        "fdb": [{"mac": "00:10:7F:00:00:01", "port": "1/0/4"}, {"mac": "00:10:7F:00:00:02", "port": "1/0/4", "learned": false}],
        "faults": [{"command": "show fortune"}, {"command": "show interface 1/0/1"}], "texts": {"show fortune": "a"}})"),
              "");
    EXPECT_EQ(vsState().fdb[0].ifNum, vsState().lags[0].ifNum); // what is learned through a member is the LAG's
    EXPECT_EQ(vsState().fdb[1].ifNum, 4u);
}

TEST(Scenario, TaggedRangesHoldTheVlansThatExist)
{
    ASSERT_EQ(vsLoadText(R"({"vlans": {"10": {}, "20": {}, "30": {}}, "units": {"1": {"model": "TK620-R01"}},
        "ports": {"1/0/1": {"tagged": ["11-29", 10, "20-4094"]}}})"),
              "");
    EXPECT_EQ(vsPort(vsState(), 1)->tagged, (std::vector<uint16_t>{10, 20, 30}));
}
