#include "collectors/port/swcfg_port.h"
#include "stores/sql.h"
#include "support/build.h"

using namespace std::string_literals;

// Unit 1 fans out its port 17 into 21 and 22; unit 2 is a chassis whose card in slot 1 fans out both its ports.
struct PortTable : BUILDER_TEST {
    void SetUp() override
    {
        vsClockSet(0);
        unitAdd("TK830-T04");
        for (uint32_t port : {1U, 2U, 17U, 21U, 22U})
            portAdd(port, 1, 0, port);
        unitAdd("TK700-S13").slots.push_back({1, "QMD-K1", ""});
        for (uint32_t port = 1; port <= 8; port++)
            portAdd(100 + port, 2, 1, port).attached = port <= 5;
        for (VS_PORT_T &port : state.ports)
            port.linkUp = true;
        for (uint32_t id : {1U, 10U, 20U})
            state.vlans.emplace_back().id = id;
        state.lags.emplace_back().ifNum = 500;
        state.system.dot1x = true;
        VS_PORT_T &first = port(1);
        first.pvid = 10;
        first.tagged = {1, 20};
        first.stackCapable = "Yes";
        first.inRate = 250000000;
        first.poe.valid = true;
        first.poe.power = 3900;
        port(17).attached = false;
        port(22).attached = false;
        vlanInfoTableMake();
    }
    static VS_UNIT_T &unitAdd(const char *model)
    {
        VS_UNIT_T &unit = vsState().units.emplace_back();
        unit.unit = static_cast<uint32_t>(vsState().units.size());
        unit.model = model;
        return unit;
    }
    static VS_PORT_T &port(uint32_t ifNum)
    {
        auto &ports = vsState().ports;
        return *std::find_if(ports.begin(), ports.end(), [=](const VS_PORT_T &one) { return one.ifNum == ifNum; });
    }
    static std::string document()
    {
        return documentOf(fillPhyInfStatusFastEX);
    }
    // One object of a port in a document, from "pvid" (or "rootPortNum" when it is a sub-port's) to its end.
    static std::string object(const std::string &text, uint32_t ifNum)
    {
        size_t at = text.find("\"portNum\":" + std::to_string(ifNum) + ",");
        if (at == std::string::npos)
            return "";
        at = text.rfind('{', at);
        return text.substr(at, text.find('}', at) + 1 - at);
    }
    // Where the ports stand: "unit/slot model: portNum,type,capability ... | portNum<root,type,capability ...", one
    // slot a line.
    static std::string places()
    {
        OWNED_JSON root(cJSON_Parse(document().c_str()));
        std::string text;
        const cJSON *unit, *slot, *port;
        auto number = [](const cJSON *item, const char *key) {
            return std::to_string(cJSON_GetObjectItem(item, key)->valueint);
        };
        cJSON_ArrayForEach(unit, cJSON_GetObjectItem(root.get(), "unit"))
        {
            cJSON_ArrayForEach(slot, cJSON_GetObjectItem(unit, "slot"))
            {
                text += number(unit, "id") + "/" + number(slot, "id") + " " +
                        cJSON_GetObjectItem(slot, "model")->valuestring + ":";
                cJSON_ArrayForEach(port, cJSON_GetObjectItem(slot, "port")) text +=
                    " " + number(port, "portNum") + "," + number(port, "moduleType") + "," +
                    number(port, "portCapability");
                text += " |";
                cJSON_ArrayForEach(port, cJSON_GetObjectItem(slot, "fanout")) text +=
                    " " + number(port, "portNum") + "<" + number(port, "rootPortNum") + "," +
                    number(port, "moduleType") + "," + number(port, "portCapability");
                text += "\n";
            }
        }
        return text;
    }
};

static const char first[] =
    R"({"pvid":10,"vlan":[1,20,10],"id":1,"portNum":1,"portName":"1/0/1","moduleType":0,"portCapability":8,)"
    R"("portMode":3,"portType":"Copper","portState":1,"stpMode":0,"autoTrunk":0,"switchportMode":0,)"
    R"("powerUsage":3900,"poeIsValid":3,"trafficUsage":140625000,"bandwidthUpload":"0.0","bandwidthDownload":"259.6",)"
    R"("percetUtilizationReceived":25,"percetUtilizationTransmitted":0,"adminState":1,"linkState":0,)"
    R"("linkSpeed":"1000 Full","stackCapable":"Yes","dot1xStatus":1,"shureLearn":false})";

static const char unit1[] = "1/0 TK830-T04: 1,0,8 2,0,8 17,0,11 | 21<17,0,8\n";
static const char unit2[] = "2/1 QMD-K1: 101,3,9 105,3,9 | 101<101,2,6 102<101,2,6 103<101,2,6 104<101,2,6\n";

TEST_F(PortTable, PlacesPortsByUnitSlotAndFanOut)
{
    const std::string both = std::string(unit1) + unit2;
    EXPECT_EQ(places(), both);
    port(106).attached = true; // the card's second port is fanned out as well
    EXPECT_EQ(places(), changed(both, {"104<101,2,6", "104<101,2,6 105<105,2,6 106<105,2,6"}));
    port(102).attached = false; // the front port is in no list of sub-ports then
    EXPECT_EQ(places(), unit1 + "2/1 QMD-K1: 101,3,9 105,3,9 | 103<101,2,6 104<101,2,6 105<105,2,6 106<105,2,6\n"s);
    vsState().ports.erase(vsState().ports.begin() + 5, vsState().ports.end());
    portAdd(102, 2, 1, 2); // no port before it
    EXPECT_EQ(places(), unit1 + "2/1 QMD-K1: | 102<101,2,6\n"s);
    vsState().units[0].model = "TK620-X99"; // unknown
    EXPECT_EQ(buildText(fillPhyInfStatusFastEX).result, 10000);
}

TEST_F(PortTable, FailedReadGivesItsDefault)
{
    const std::string status = R"("dot1xStatus":1)", unknown = R"("dot1xStatus":3)";
    expectFailures(
        [] { return object(document(), 1); }, first,
        {
            {{"openapiIfOprStateGet", "1"}, {"20,10]", "20]", R"("portState":1)", R"("portState":0)"}},
            {{"rpcclt_openapiDot1xSystemAuthControlModeGet"}, {status, unknown}},
            {{"show interface counters"},
             {R"(140625000,"bandwidthUpload":"0.0","bandwidthDownload":"259.6","percetUtilizationReceived":25)",
              R"(0,"bandwidthUpload":"","bandwidthDownload":"","percetUtilizationReceived":0)"}},
            {{"show interface 1/0/1"}, {R"(Received":25)", R"(Received":0)"}},
            {{"rpcclt_openapiPoeIsValidInterface", "1"}, {R"("poeIsValid":3)", R"("poeIsValid":2)"}},
            {{"rpcclt_openapiPoePsePortAdminEnableGet", "1"}, {R"("poeIsValid":3)", R"("poeIsValid":1)"}},
            {{"rpcclt_openapiPoePsePortSensorsGet", "1"}, {"3900", "0"}},
            {{"rpcclt_openapiHashIntfUnitSlotPortGet", "1"},
             {R"("1/0/1")", R"("0/0/0")", R"("portCapability":8)", R"("portCapability":0)", ":25", ":0"}},
        });
    for (VS_FAULT_KIND kind : {VS_FAIL, VS_NO_FILE}) {
        vsFaultAdd({"show port status all", "", 0, kind});
        logClear();
        EXPECT_EQ(document(), R"({"unit":[{"id":1,"slot":[]},{"id":2,"slot":[]}]})");
        EXPECT_TRUE(has(logText(), "(ERROR) fillPhyInfStatusFastEX: can not open "s + PathGet(PATH_SHOW_PORT_STATUS)));
        vsFaultsClear();
    }
}

// Rows of "show port status all" below its rule line, and what becomes of port 1 and of the ports after it.
TEST_F(PortTable, StatusRowsAreReadByColumn)
{
    const std::string head = "Intf\n----    Media Type\n------- ------------------  ----\n";
    const struct {
        const char *rows, *part;
    } cases[] = {
        {"1/0/1     Twinax 40G-long X   FWD  Auto   x 10000 Fullx Up \n", R"("portType":"Twinax 40G",)"},
        {"1/0/1     Twinax 40G-long X   FWD  Auto   x 10000 Fullx Up \n", R"("linkState":0,"linkSpeed":"10000 Full",)"},
        {"1/0/1   Copper              BLK  Auto       1000 Full   Down    x\n", R"("stpMode":1,)"},
        {"1/0/1   Copper              FWD  Auto                   Detach  Up\n", R"("linkState":2,)"},
        {"1/0/1   Up now\n", R"("linkState":0,"linkSpeed":"1000SX FULL",)"},
        {"1/0/1\n1/0/99\n2/1/1\n", ""},        // an unknown port ends the table ...
        {"1/0/1\nlag 1\n2/1/1\n", ""},         // ... and so does a row that is no port's
        {"9/0/1\n0/0/1\n-1/0/1\n1/0/1\n", ""}, // no such units, nor any record
    };
    for (const auto &one : cases) {
        vsTextSet("show port status all", head + one.rows);
        std::string text = document();
        EXPECT_TRUE(has(object(text, 1), one.part)) << one.rows << object(text, 1);
        EXPECT_EQ(object(text, 101), "") << one.rows;
    }
}

// Rows of "show vlan port all" for port 1, whose own PVID is 10; and whether the port forwards.
TEST_F(PortTable, VlansAreThoseTaggedAndThePvidOfAForwardingPort)
{
    const struct {
        const char *rows;
        bool up;
        const char *has;
    } cases[] = {
        {"1/0/1     20  Admit\n", true, R"("pvid":20,"vlan":[1,20,20])"},
        {"1/0/1 \t   20  Admit\n1/0/1    4094\n", true, R"("pvid":4094,"vlan":[1,20,4094])"},
        {"1/0/1     20\n1/0/1\n1/0/1    0    \n1/0/1   4095 \n", true, R"("pvid":20,"vlan":[1,20,20])"},
        {"1/0/1    7\n", true, R"("pvid":10,"vlan":[1,20,10])"}, // too short
        {"I/0/1     7  Admit\n 1/0/1    7  Admit\n9/0/1    7  Admit\n", true, R"("pvid":10,"vlan":[1,20,10])"},
        {"1/0/1     20  Admit\n", false, R"("pvid":20,"vlan":[1,20])"},
    };
    for (const auto &one : cases) {
        vsTextSet("show vlan port all", one.rows);
        port(1).linkUp = one.up;
        EXPECT_EQ(object(document(), 1).substr(1, strlen(one.has)), one.has) << one.rows;
    }
}

TEST_F(PortTable, RatesAreCountedByUnit)
{
    auto row = [](const std::string &name, const char *rate) {
        return name + std::string(96 - name.size(), '.') + rate + "\n";
    };
    // ports may lack their unit; rows beyond the records, and what follows a table's end, are passed over
    vsTextSet("show interface counters", "Port\n------\n" + row("0/1", " 1.5 ") + row("2/1/1", "2.5") + "lag 1\n" +
                                             row("1/0/1", "7") + "------\n" + row("1/0/1", "123456789012345678901234") +
                                             "\n" + row("1/0/2", "8"));
    std::string text = document();
    const std::pair<uint32_t, const char *> cases[] = {
        {1, R"("bandwidthUpload":"12345678901234567890","bandwidthDownload":"1.5")"},
        {2, R"("bandwidthUpload":"","bandwidthDownload":"")"},
        {101, R"("bandwidthUpload":"","bandwidthDownload":"2.5")"}};
    for (const auto &[ifNum, part] : cases)
        EXPECT_TRUE(has(object(text, ifNum), part)) << ifNum;
}

TEST_F(PortTable, LoadAndSpeedOfAPort)
{
    PORT_LOAD_T load;
    vsTextSet("show interface 1/0/1", "Percent Utilization Received" + std::string(19, '.') +
                                          " 42\r\nPercent Utilization Transmitted\nReceived Rate(Mbps)" +
                                          std::string(28, '.') + " 1234567890123456789012345\r\n");
    EXPECT_EQ(portStatsGetFromCli(&handle, 1, &load), 0);
    EXPECT_EQ(load.receivedPercent, 42u);
    EXPECT_EQ(load.transmittedPercent, 0u);
    EXPECT_STREQ(load.receivedRate, "123456789012345678901234");
    char text[PORT_SPEED_SIZE];
    for (const auto &[code, speed] : {std::pair(1U, "autoNeg"), {5U, "10T HALF"}, {19U, "LAG"}, {20U, ""}}) {
        port(1).speed = code;
        getPortLinkSpeed(&handle, 1, text);
        EXPECT_STREQ(text, speed) << code;
    }
}

TEST_F(PortTable, DetectsTheVendorOfTheVlansProfile)
{
    const struct {
        const char *profile, *mac, *chassisId, *description, *has;
    } cases[] = {
        {"10, 1, 'n', 'crestron digitalmedia AV network'", "00:04:05:00:00:01", "", "", "crestron"},
        {"10, 1, 'n', 'Crestron DigitalMedia AV Network'", "00:0E:14:00:00:01", "00:04:05:00:00:01", "", ""},
        {"10, 1, 'n', 'HARMAN Professional AV Network'", "00:0f:d4:00:00:01", "00:60:9F:00:00:01", "", "harman audio"},
        {"10, 1, 'n', 'HARMAN Professional AV Network'", "00:0E:14:00:00:01", "00:60:9f:00:00:01", "",
         "harman control"},
        {"10, 1, 'n', 'Visionary Advanced Multi-Domain'", "", "00:0E:14:00:00:01", "", "visionary"},
        {"10, 1, 'n', 'AUDAC Audio and Control Network'", "", "x", "an Audac box", "audac"},
        {"10, 1, 'n', 'AUDAC Audio and Control Network'", "", "x", "an AUDAC box", ""},
        {"10, 6, 'n', 'Video'", "00:1D:56:00:00:01", "", "", "kramer"},
        {"10, 9, 'n', 'Video'", "00:02:BC:00:00:01", "", "", "kramer"},
        {"10, 10, 'n', 'Video'", "00:02:BC:00:00:01", "", "", ""},
        {"20, 6, 'n', 'Video'", "00:1D:56:00:00:01", "", "", ""},
        {"10, 1, 'n', 'Audio Video AVB MILAN with Dante PTPv1 PTPv2 or AES67'", "00:0C:17:00:00:01", "", "", ""},
    };
    for (const auto &one : cases) {
        sqlRun(PATH_VLANINFO_DB, "delete from vlanInfo; insert into vlanInfo values("s + one.profile + ", '')");
        state.fdb.clear();
        state.lldp.clear();
        if (*one.mac != '\0')
            state.fdb = {{"00:1D:56:00:00:09", 1, 2, true, {}}, {one.mac, 1, 1, true, {}}};
        VS_LLDP_T &row = state.lldp.emplace_back();
        row.ifNum = one.chassisId[0] != '\0' ? 1 : 2;
        row.chassisId = one.chassisId;
        row.systemDescription = one.description;
        std::string detect = one.has[0] == '\0' ? "" : R"(,"detect":")"s + one.has + "\"";
        EXPECT_EQ(object(document(), 1), changed(first, {"false}", "false" + detect + "}"})) << one.profile << one.mac;
    }
}
