#include "collectors/port/port_settings.h"
#include "collectors/port/port_status.h"
#include "stores/sql.h"
#include "support/build.h"

#include <set>

struct PortRows : BUILDER_TEST {
    // A front port that is fanned out, one that is down, a LAG member, a sub-port in use and one that is not; a LAG.
    void SetUp() override
    {
        state.units.emplace_back().model = "TK830-T02";
        VS_PORT_T &root1 = portAdd(1, 1, 0, 1);
        root1.attached = false;
        root1.hwProfile = "4x25G";
        root1.autoNeg = 7;
        root1.physicalMode = "Unknow";
        VS_PORT_T &down = portAdd(2, 1, 0, 2);
        down.physicalMode = "100 Half";
        down.adminUp = false;
        down.autoNeg = 1;
        down.stpEnabled = false;
        down.description = "Stage left";
        down.pvid = 10;
        VS_PORT_T &member = portAdd(3, 1, 0, 3);
        member.linkUp = true;
        member.fec = "CL91";
        member.hwProfile = "1x100G";
        member.flowControl = 1;
        member.stormControl = true;
        member.stpEdge = member.stpTcnGuard = member.stpBpduFilter = true;
        member.stpState = 1;
        portAdd(18, 1, 0, 18).linkUp = true;
        portAdd(80, 1, 0, 80).attached = false;
        VS_LAG_T &lag = state.lags.emplace_back();
        lag.ifNum = 201;
        lag.name = "ch1";
        lag.linkUp = true;
        lag.description = "Rack B";
        lag.adminUp = false;
        lag.members = {3};
        vlanInfoTableMake();
        sqlRun(PATH_VLANINFO_DB, "insert into vlanInfo values(10, 7, 'Pixels', 'Video', '#000000')");
        // A name that the platform does not know: listed, but without a row.
        vsTextSet("show interfaces status all", vsShowText("show interfaces status all") +
                                                    "lag 9                              Up      "
                                                    "                                     \n");
    }
    static std::string status()
    {
        return documentOf(getPortStatusListFast);
    }
    static std::string settings()
    {
        return documentOf(getPortsSettings);
    }
};

static const char *const statusRows[][2] = {
    {"1/0/1", R"("portStr":"1/0/1","unit":1,"adminState":1,"frameSize":9198,"description":"",)"
              R"("profileTemplate":"Default","profileName":"Default","linkState":2,"physicalMode":"Unknow",)"
              R"("physicalStatus":"","portCapability":11,"mediaType":"Copper","stpMode":"Enable",)"
              R"("stpEdgeMode":"Disable","stpTcnGuard":"Disable","stpFwdState":"Disable",)"
              R"("stpBPDUFilterMode":"Disable","freeze":true,"fecMode":"Disable",)"
              R"("broadcastStormControl":"Disable","flowControl":"Disable","autonegotiation":"Unknow",)"
              R"("expandableOption":["4x25G","1x100G"],"portMode":"4x25G")"},
    {"1/0/3", R"("portStr":"1/0/3","unit":1,"adminState":1,"frameSize":9198,"description":"",)"
              R"("profileTemplate":"Default","profileName":"Default","linkState":0,"physicalMode":"Auto",)"
              R"("physicalStatus":"1000 Full","portCapability":11,"mediaType":"Copper","stpMode":"Enable",)"
              R"("stpEdgeMode":"Enable","stpTcnGuard":"Enable","stpFwdState":"Discarding",)"
              R"("stpBPDUFilterMode":"Enable","freeze":true,"fecMode":"CL91","broadcastStormControl":"Enable",)"
              R"("speed":"Auto","duplexMode":"Auto","flowControl":"Symmetric","autonegotiation":"Enable",)"
              R"("expandableOption":["4x25G","1x100G"],"portMode":"1x100G")"},
};
// What differs by kind of interface; the keys of a row are those of the status without the live ones.
static const char *const settingsRows[][2] = {
    {"1/0/3", R"("portStr":"1/0/3","unit":1,"adminState":1,"frameSize":9198,"description":"",)"
              R"("profileTemplate":"Default","profileName":"Default","portCapability":11,"stpMode":"Enable",)"
              R"("stpEdgeMode":"Enable","stpTcnGuard":"Enable","stpBPDUFilterMode":"Enable","fecMode":"CL91",)"
              R"("broadcastStormControl":"Enable","speed":"Auto","duplexMode":"Auto","flowControl":"Symmetric",)"
              R"("autonegotiation":"Enable","expandableOption":["4x25G","1x100G"],"portMode":"1x100G",)"
              R"("rootPortNum":-1)"},
    {"lag 1", R"("portStr":"lag 1","unit":0,"adminState":2,"frameSize":9198,"description":"Rack B",)"
              R"("profileTemplate":"Default","profileName":"Default","portCapability":0,"stpMode":"Enable",)"
              R"("stpEdgeMode":"Disable","stpTcnGuard":"Disable","stpBPDUFilterMode":"Disable","fecMode":"",)"
              R"("broadcastStormControl":"","speed":"","duplexMode":"","flowControl":"","autonegotiation":"",)"
              R"("rootPortNum":-1}],"indexPage":0,"pageSize":5,"total":5})"},
};

// The row of an interface, up to the next one.
static std::string rowOf(const std::string &document, const std::string &name)
{
    size_t at = document.find(R"("portStr":")" + name + "\"");
    return at == std::string::npos ? "" : document.substr(at, document.find("},", at) - at);
}

TEST_F(PortRows, StatusAndSettingsOfPortsMembersAndLags)
{
    vsCallsReset();
    std::string document = status();
    for (const auto &[name, row] : statusRows)
        EXPECT_EQ(rowOf(document, name), row);
    EXPECT_TRUE(has(document, R"(],"indexPage":1,"pageSize":5,"total":5})"));
    EXPECT_EQ(logText(), "");
    for (const char *command : {"show slot", "show port all", "show vlan port all", "show spanning-tree interface all"})
        EXPECT_EQ(vsCallCount(command), 1u) << command;
    EXPECT_FALSE(filesLeft());

    vsTextsClear(); // every listed interface is known
    logLevelSet('7');
    document = settings();
    for (const auto &[name, row] : settingsRows)
        EXPECT_EQ(rowOf(document, name), row);
    EXPECT_TRUE(has(rowOf(document, "1/0/18"), R"("rootPortNum":1)"));
    EXPECT_TRUE(has(logText(), "getPortStatusList: Other model: Unit 1, intfCount=16, phyInfSum=16"));
    EXPECT_TRUE(has(logText(), "getPortStatusList: PHY interface count: phyInfSum=5"));
}

// Without its command a column shows its default.
TEST_F(PortRows, StatusKeepsTheDefaultsOfATableThatIsMissing)
{
    const char *const cases[][4] = {
        {"show interfaces description all", "1/0/2", R"("description":"Stage left")", R"("description":"")"},
        {"show port all", "1/0/2", R"("adminState":0)", R"("adminState":1)"},
        {"show port advertise", "1/0/3", R"("autonegotiation":"Enable")", R"("autonegotiation":"Disable")"},
        {"show storm-control all", "1/0/3", R"("broadcastStormControl":"Enable")",
         R"("broadcastStormControl":"Disable")"},
        {"show vlan port all", "1/0/2", R"("profileName":"Pixels")", R"("profileName":"Default")"},
        {"show spanning-tree interface all", "1/0/3", R"("stpTcnGuard":"Enable")", R"("stpTcnGuard":"Disable")"},
        {"show spanning-tree mst port summary 0 all", "1/0/18", R"("stpFwdState":"Forwding")",
         R"("stpFwdState":"Disable")"},
        {"show interface fec", "1/0/3", R"("fecMode":"CL91")", R"("fecMode":"")"},
        {"show interfaces hardware profile", "1/0/3", R"("portMode":"1x100G")", R"("portMode":"")"},
    };
    const std::string clean = status();
    for (const auto &[command, name, had, shows] : cases) {
        EXPECT_TRUE(has(rowOf(clean, name), had)) << command;
        for (VS_FAULT_KIND kind : {VS_FAIL, VS_NO_FILE, VS_EMPTY, VS_CRLF}) {
            vsFaultAdd({command, "", 0, kind});
            EXPECT_TRUE(has(rowOf(status(), name), kind == VS_CRLF ? had : shows)) << command << " " << kind;
            vsFaultsClear();
        }
    }
    vsFaultAdd({"show interfaces status all"});
    EXPECT_EQ(status(), R"({"rows":[],"indexPage":1,"pageSize":0,"total":0})");
}

// Texts that no switch of ours prints, each with what a row shows then.
TEST_F(PortRows, StatusTakesLinesByTheirColumns)
{
    const std::string far(600, 'x'), spanning = "show spanning-tree interface all";
    const std::string summary = "show spanning-tree mst port summary 0 all";
    const struct {
        std::string command, text, name, shows;
    } cases[] = {
        {"show interfaces description all", "\n 1/0/2 two  words \n1/0/3\n", "1/0/2", R"("description":"two  words ")"},
        {"show interfaces description all", "1/0/2 first\n1/0/2\n", "1/0/2", R"("description":"")"},
        {"show interfaces description all", "lag 1      Core\t \n1/0/2 x\n", "lag 1", R"("description":"Core")"},
        {"show interfaces description all", "1/0/2 " + far + "\n1/0/3 y\n", "1/0/2",
         R"("description":")" + far.substr(0, 127) + "\""},
        {"show interfaces description all", "1/0/2 " + far + "\n1/0/3 y\n", "1/0/3", R"("description":"y")"},
        {"show port all", "1/0/2            Enabled    Auto\n", "1/0/2", R"("adminState":1)"},
        {"show port all", "1/0/2            Disable\n1/0/2            Enable\n", "1/0/2", R"("adminState":1)"},
        {"show port all", "lag 1            Disable   \n", "lag 1", R"("adminState":1)"},
        {"show port advertise", "1/0/2      Copper  Enabled Disabled\n", "1/0/2", R"("autonegotiation":"Enable")"},
        {"show port advertise", "1/0/3      Copper  Disabled\n", "1/0/3", R"("autonegotiation":"Disable")"},
        {"show port advertise", "1/0/2      Enabled\n", "1/0/2", R"("autonegotiation":"Disable")"}, // 18 characters
        {"show storm-control all", "1/0/2      Enable  5%\n", "1/0/2", R"("broadcastStormControl":"Enable")"},
        {"show storm-control all", "1/0/2 Enable\n", "1/0/2", R"("broadcastStormControl":"Disable")"},
        {"show vlan port all", "lag 1     10        Admit All\n", "lag 1", R"("profileName":"Pixels")"},
        // the text behind the last dot; an unknown interface deselects
        {spanning, "Interface:  1/0/2 \nPort Mode.....   Enabled\n", "1/0/2", R"("stpMode":"Enable")"},
        {spanning, "Interface: 1/0/2\nTCN Guard.... TRUE\n", "1/0/2", R"("stpTcnGuard":"Enable")"},
        {spanning, "Interface: lag 1\nBPDU Filter Mode.. Enabled\n", "lag 1", R"("stpBPDUFilterMode":"Enable")"},
        {spanning, "Interface: 1/0/2\nInterface: 1/0/9\nTCN Guard.... True\n", "1/0/2", R"("stpTcnGuard":"Disable")"},
        {spanning, "TCN Guard.... True\nInterface: 1/0/2\nTCN Guard True\n", "1/0/2", R"("stpTcnGuard":"Disable")"},
        {summary, "1/0/3     Disabled\n", "1/0/3", R"("stpMode":"Disable")"},
        {summary, "1/0/3     Maybe           Listening Learning\n", "1/0/3", R"("stpFwdState":"Learning")"},
        {summary, "1/0/3     Enabled         Blocking\n", "1/0/3", R"("stpFwdState":"Discarding")"},
        {summary, "1/0/3     Enabled  Forwarding\n", "1/0/3", R"("stpFwdState":"Disable")"},
    };
    for (const auto &one : cases) {
        if (one.command == spanning)
            vsTextSet(summary, ""); // which would have the last word
        vsTextSet(one.command, one.text);
        EXPECT_TRUE(has(rowOf(status(), one.name), one.shows)) << one.text << rowOf(status(), one.name);
        vsTextsClear();
    }
}

TEST_F(PortRows, FailedCallGivesItsDefaultAndItsLogLine)
{
    const std::string bad = "Bad return code trying to get ", spanning = bad + "Spanning Tree ";
    const std::string tail = " (port = 3 result = -1)\n";
    const struct {
        const char *call, *key;
        std::string name, shows, logs;
    } cases[] = {
        {"rpcclt_openapiIfDescrGet", "2", "1/0/2", R"("description":"")",
         bad + "description of  physical interface. (result = -1)\n"},
        {"openapiIfAdminStateGet", "2", "1/0/2", R"("adminState":1)", "port:2 - port admin state error (rc = -1)\n"},
        {"openapiVlanIfPvidGet", "2", "1/0/2", R"("profileName":"Default")", ""},
        {"rpcclt_openapiDot1SIntfModeGet", "3", "1/0/3", R"("stpMode":"Disable")", spanning + "Mode" + tail},
        {"rpcclt_openapiDot1SIntfEdgePortModeGet", "3", "1/0/3", R"("stpEdgeMode":"Disable")",
         spanning + "Interface Edge Port Mode." + tail},
        {"rpcclt_openapiDot1SPortRestrictedTcnGet", "3", "1/0/3", R"("stpTcnGuard":"Disable")",
         spanning + "Restricted TCN parameterfor an interface." + tail},
        {"rpcclt_openapiDot1SIntfPortFwdStateGet", "", "1/0/3", "unit", spanning + "Port Forwarding State." + tail},
        {"rpcclt_openapiDot1SIntfBPDUFilterModeGet", "3", "1/0/3", R"("stpBPDUFilterMode":"Disable")",
         spanning + "Interface BPDU Filter Mode." + tail},
        {"openapiIfAutoNegGet", "3", "1/0/3", R"("autonegotiation":"Disable")",
         bad + "auto-negotiation mode of physical interface." + tail},
        {"rpcclt_openapiStormControlIntfModeGet", "3", "1/0/3", R"("broadcastStormControl":"Disable")",
         bad + "storm control mode on an interface." + tail},
        {"rpcclt_openapiIfNumGet", "1/0/3", "1/0/3", "", bad + "port num by port name. (result = -1)\n"},
    };
    vsTextsClear();
    for (const auto &one : cases) {
        vsFaultAdd({one.call, one.key});
        logClear();
        std::string row = rowOf(settings(), one.name);
        EXPECT_TRUE(one.shows == "" ? row == "" : has(row, one.shows)) << one.call << row;
        EXPECT_TRUE(has(logText(), one.logs)) << logText();
        vsFaultsClear();
    }
    const char *const ofStatus[][3] = {
        {"rpcclt_openapiDot1SIntfEdgePortModeGet", "1/0/3", R"("stpEdgeMode":"Disable")"},
        {"openapiIfAutoNegGet", "1/0/1", R"("autonegotiation":"Disable")"},
        {"rpcclt_openapiFlowControlIfModeGet", "1/0/3", R"("flowControl":"Disable")"}};
    for (const auto &[call, name, shows] : ofStatus) {
        vsFaultAdd({call});
        EXPECT_TRUE(has(rowOf(status(), name), shows)) << call;
        vsFaultsClear();
    }
    vsFaultAdd({"rpcclt_openapiLagMaxMemberCountGet"});
    for (BUILDER_TEXT_T builder : {getPortsSettings, getPortStatusListFast}) {
        EXPECT_EQ(buildText(builder).result, 10000);
        EXPECT_EQ(builder(nullptr, nullptr), 10003);
    }
}

TEST_F(PortRows, ProfilesFollowTheirDatabase)
{
    const char *const cases[][3] = {
        {"5, 'Crew', ''", R"("profileTemplate":"","profileName":"Crew")",
         R"("profileTemplate":"Data","profileName":"Crew")"},
        {"9, 'Matrix', 'Data'", R"("profileTemplate":"Kramer AV: Data","profileName":"Matrix")",
         R"("profileTemplate":"Kramer AV: Data","profileName":"Matrix")"},
    };
    for (const auto &[values, ofStatus, ofSettings] : cases) {
        sqlRun(PATH_VLANINFO_DB, std::string("replace into vlanInfo values(10, ") + values + ", '')");
        EXPECT_TRUE(has(rowOf(status(), "1/0/2"), ofStatus)) << status();
        EXPECT_TRUE(has(rowOf(settings(), "1/0/2"), ofSettings)) << settings();
    }
    // Asked once for each VLAN, not for each row: 10 and 1.
    fileWrite(PathGet(PATH_VLANINFO_DB), "no database");
    logClear();
    EXPECT_TRUE(has(rowOf(settings(), "1/0/2"), R"("profileTemplate":"Default","profileName":"Default")"));
    std::string once = changed(changed(logText(), {"vlanInfoSelectById: ", ""}), {"vlanInfoSelectById: ", ""});
    EXPECT_FALSE(has(once, "vlanInfoSelectById: ")) << once;
}

// A detached port gets a row while its number is within the unit's front ports, modules included.
TEST_F(PortRows, ModulesCountAsFrontPorts)
{
    const std::string head = "Slot   Status State Power Model Inserted\n------ \n";
    const struct {
        const char *model, *slots;
        int result;
        size_t rows; // of the detached ports 1, 4, 20, 21 and 24
        const char *logs;
    } cases[] = {
        {"TK700-S13", "1/1 Full Enable Enable QMD-K1 QMD-K1/x No No\n1/2 Full Enable Enable QMD-K2 QMD-K2/x No No\n", 0,
         2, ""},
        {"TK700-S13", "1/1 Full Enable Enable QMD-XX QMD-XX/x No No\n", 10000, 0, ""},
        {"TK830-T03", "1/0 Empty Enable Enable x/y No No\n1/6 Full Enable Enable QMD-K8 QMD-K8/x No No\n", 0, 3,
         "Total phyInfSum after slot 6: 20 (using actual count)\n"},
        {"TK830-T03", "1/12 Full Enable Enable QMD-XX QMD-XX/x No No\n", 10000, 0,
         "Failed to get actual port count for model QMD-XX\n"},
        {"TK620-R02", "", 0, 2, "Other model: Unit 1, intfCount=12, phyInfSum=12\n"},
        {"TK-UNKNOWN", "", 10000, 0, ""},
    };
    vsTextsClear();
    logLevelSet('7');
    vsState().ports.clear();
    for (uint32_t number : {1, 4, 20, 21, 24})
        portAdd(number, 1, 0, number).attached = false;
    for (const auto &one : cases) {
        vsState().units[0].model = one.model;
        vsTextSet("show slot", head + one.slots);
        logClear();
        for (BUILDER_TEXT_T builder : {getPortsSettings, getPortStatusListFast}) {
            BUILT_T built = buildText(builder);
            EXPECT_EQ(built.result, one.result) << one.model << one.slots;
            size_t rows = 0;
            for (const char *name : {"1/0/1", "1/0/4", "1/0/20", "1/0/21", "1/0/24"})
                rows += rowOf(compact(built.text), name) != "";
            EXPECT_EQ(rows, one.rows) << one.model << one.slots;
        }
        EXPECT_TRUE(has(logText(), one.logs)) << logText();
    }
    // In a chassis with expansion modules only a port with a QSFP can be fanned out.
    vsState().units[0].model = "TK700-S13";
    vsTextSet("show slot", head + cases[0].slots);
    EXPECT_FALSE(has(status(), "expandableOption"));
    vsState().ports[0].optic.present = true;
    vsState().ports[0].optic.type = 3;
    EXPECT_TRUE(has(rowOf(status(), "1/0/1"), R"("expandableOption":["4x10G","1x40G"],"portMode":"")"));
}
