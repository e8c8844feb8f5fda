#include "collectors/port/port_settings.h"
#include "collectors/port/port_status.h"
#include "runtime/paths.h"
#include "stores/sql.h"
#include "support/build.h"
#include "support/root.h"

#include "control.h"
#include "model.h"

#include <gtest/gtest.h>
#include <set>

class PortRows : public ::testing::Test {
protected:
    // A front port that is fanned out, one that is down, a LAG member, a sub-port in use and one that is not; a LAG.
    void SetUp() override
    {
        ASSERT_EQ(vsLoadText("{}"), "");
        VS_STATE_T &state = vsState();
        state = VS_STATE_T();
        state.units.emplace_back().model = "TK830-T02";
        VS_PORT_T &root1 = portAdd(1, 0, 1);
        root1.attached = false;
        root1.hwProfile = "4x25G";
        root1.autoNeg = 7;
        root1.physicalMode = "Unknow";
        VS_PORT_T &down = portAdd(2, 0, 2);
        down.physicalMode = "100 Half";
        down.adminUp = false;
        down.autoNeg = 1;
        down.stpEnabled = false;
        down.description = "Stage left";
        down.pvid = 10;
        VS_PORT_T &member = portAdd(3, 0, 3);
        member.linkUp = true;
        member.fec = "CL91";
        member.hwProfile = "1x100G";
        member.flowControl = 1;
        member.stormControl = true;
        member.stpEdge = member.stpTcnGuard = member.stpBpduFilter = true;
        member.stpState = 1;
        portAdd(18, 0, 18).linkUp = true;
        portAdd(80, 0, 80).attached = false;
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
    void TearDown() override
    {
        vsUnload();
    }
    static VS_PORT_T &portAdd(uint32_t ifNum, uint32_t slot, uint32_t number)
    {
        VS_PORT_T &port = vsState().ports.emplace_back();
        port.ifNum = ifNum;
        port.slot = slot;
        port.port = number;
        return port;
    }
    static std::string status()
    {
        BUILT_T built = buildText(getPortStatusListFast);
        EXPECT_EQ(built.result, 0);
        return compact(built.text);
    }
    static std::string settings()
    {
        BUILT_T built = buildText(getPortsSettings);
        EXPECT_EQ(built.result, 0);
        return compact(built.text);
    }
    TEST_ROOT_T root;
};

static const char statusClean[] =
    R"({"rows":[{"port":"1","portNum":1,"portStr":"1/0/1","unit":1,"adminState":1,"frameSize":9198,)"
    R"("description":"","profileTemplate":"Default","profileName":"Default","linkState":2,"physicalMode":"Unknow",)"
    R"("physicalStatus":"","portCapability":11,"mediaType":"Copper","stpMode":"Enable","stpEdgeMode":"Disable",)"
    R"("stpTcnGuard":"Disable","stpFwdState":"Disable","stpBPDUFilterMode":"Disable","freeze":true,)"
    R"("fecMode":"Disable","broadcastStormControl":"Disable","flowControl":"Disable","autonegotiation":"Unknow",)"
    R"("expandableOption":["4x25G","1x100G"],"portMode":"4x25G"},)"
    R"({"port":"2","portNum":2,"portStr":"1/0/2","unit":1,"adminState":0,"frameSize":9198,)"
    R"("description":"Stage left","profileTemplate":"Kramer AV: Video","profileName":"Pixels","linkState":1,)"
    R"("physicalMode":"100 Half","physicalStatus":"","portCapability":11,"mediaType":"Copper","stpMode":"Disable",)"
    R"("stpEdgeMode":"Disable","stpTcnGuard":"Disable","stpFwdState":"Disable","stpBPDUFilterMode":"Disable",)"
    R"("freeze":false,"fecMode":"Disable","broadcastStormControl":"Disable","speed":"100","duplexMode":"Half",)"
    R"("flowControl":"Disable","autonegotiation":"Disable","expandableOption":["4x25G","1x100G"],"portMode":""},)"
    R"({"port":"3","portNum":3,"portStr":"1/0/3","unit":1,"adminState":1,"frameSize":9198,"description":"",)"
    R"("profileTemplate":"Default","profileName":"Default","linkState":0,"physicalMode":"Auto",)"
    R"("physicalStatus":"1000 Full","portCapability":11,"mediaType":"Copper","stpMode":"Enable",)"
    R"("stpEdgeMode":"Enable","stpTcnGuard":"Enable","stpFwdState":"Discarding","stpBPDUFilterMode":"Enable",)"
    R"("freeze":true,"fecMode":"CL91","broadcastStormControl":"Enable","speed":"Auto","duplexMode":"Auto",)"
    R"("flowControl":"Symmetric","autonegotiation":"Enable","expandableOption":["4x25G","1x100G"],)"
    R"("portMode":"1x100G"},)"
    R"({"port":"18","portNum":18,"portStr":"1/0/18","unit":1,"adminState":1,"frameSize":9198,"description":"",)"
    R"("profileTemplate":"Default","profileName":"Default","linkState":0,"physicalMode":"Auto",)"
    R"("physicalStatus":"1000 Full","portCapability":8,"mediaType":"Copper","stpMode":"Enable",)"
    R"("stpEdgeMode":"Disable","stpTcnGuard":"Disable","stpFwdState":"Forwding","stpBPDUFilterMode":"Disable",)"
    R"("freeze":false,"fecMode":"Disable","broadcastStormControl":"Disable","speed":"Auto","duplexMode":"Auto",)"
    R"("flowControl":"Disable","autonegotiation":"Enable"},)"
    R"({"port":"lag1","portNum":201,"portStr":"lag 1","unit":0,"adminState":1,"frameSize":9198,)"
    R"("description":"Rack B","profileTemplate":"Default","profileName":"Default","linkState":1,"physicalMode":"",)"
    R"("physicalStatus":"","portCapability":0,"mediaType":"","stpMode":"Enable","stpEdgeMode":"Disable",)"
    R"("stpTcnGuard":"Disable","stpFwdState":"Disable","stpBPDUFilterMode":"Disable","freeze":false,"fecMode":"",)"
    R"("broadcastStormControl":"","speed":"","duplexMode":"","flowControl":"","autonegotiation":""}],)"
    R"("indexPage":1,"pageSize":5,"total":5})";

// What differs by kind of interface; the keys of a row are those of the status without the live ones.
static const char settingsSubPort[] =
    R"("portStr":"1/0/18","unit":1,"adminState":1,"frameSize":9198,"description":"","profileTemplate":"Default",)"
    R"("profileName":"Default","portCapability":8,"stpMode":"Enable","stpEdgeMode":"Disable",)"
    R"("stpTcnGuard":"Disable","stpBPDUFilterMode":"Disable","fecMode":"Disable","broadcastStormControl":"Disable",)"
    R"("speed":"Auto","duplexMode":"Auto","flowControl":"Disable","autonegotiation":"Enable","rootPortNum":1)";
static const char settingsMember[] =
    R"("portStr":"1/0/3","unit":1,"adminState":1,"frameSize":9198,"description":"","profileTemplate":"Default",)"
    R"("profileName":"Default","portCapability":11,"stpMode":"Enable","stpEdgeMode":"Enable","stpTcnGuard":"Enable",)"
    R"("stpBPDUFilterMode":"Enable","fecMode":"CL91","broadcastStormControl":"Enable","speed":"Auto",)"
    R"("duplexMode":"Auto","flowControl":"Symmetric","autonegotiation":"Enable",)"
    R"("expandableOption":["4x25G","1x100G"],"portMode":"1x100G","rootPortNum":-1)";
static const char settingsLag[] =
    R"("portStr":"lag 1","unit":0,"adminState":2,"frameSize":9198,"description":"Rack B",)"
    R"("profileTemplate":"Default","profileName":"Default","portCapability":0,"stpMode":"Enable",)"
    R"("stpEdgeMode":"Disable","stpTcnGuard":"Disable","stpBPDUFilterMode":"Disable","fecMode":"",)"
    R"("broadcastStormControl":"","speed":"","duplexMode":"","flowControl":"","autonegotiation":"",)"
    R"("rootPortNum":-1}],"indexPage":0,"pageSize":5,"total":5})";

// The row of an interface, up to the next one.
static std::string rowOf(const std::string &document, const std::string &name)
{
    size_t at = document.find(R"("portStr":")" + name + "\"");
    return at == std::string::npos ? "" : document.substr(at, document.find("},", at) - at);
}

static bool has(const std::string &text, const std::string &piece)
{
    return text.find(piece) != std::string::npos;
}

TEST_F(PortRows, StatusShowsSettingsAndStateOfAllInterfaces)
{
    vsCallsReset();
    EXPECT_EQ(status(), statusClean);
    EXPECT_EQ(logText(), "");
    for (const char *command : {"show slot", "show port all", "show vlan port all", "show spanning-tree interface all"})
        EXPECT_EQ(vsCallCount(command), 1u) << command;
    for (PATH_ID file : {PATH_SHOW_DESCRIPTIONS, PATH_SHOW_PORT_ALL, PATH_SHOW_STP_SUMMARY})
        EXPECT_FALSE(fileExists(PathGet(file)));
}

TEST_F(PortRows, SettingsLeaveOutTheStateAndNameTheFrontPort)
{
    vsTextsClear(); // every listed interface is known
    logLevelSet('7');
    const std::string document = settings();
    EXPECT_EQ(rowOf(document, "1/0/3"), settingsMember);
    EXPECT_EQ(rowOf(document, "1/0/18"), settingsSubPort);
    EXPECT_EQ(rowOf(document, "lag 1"), settingsLag);
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
    for (const auto &[command, name, had, shows] : cases) {
        EXPECT_TRUE(has(rowOf(statusClean, name), had)) << command;
        for (VS_FAULT_KIND kind : {VS_FAIL, VS_NO_FILE, VS_EMPTY}) {
            vsFaultAdd({command, "", 0, kind});
            EXPECT_TRUE(has(rowOf(status(), name), shows)) << command << " " << kind;
            vsFaultsClear();
        }
        vsFaultAdd({command, "", 0, VS_CRLF});
        EXPECT_EQ(status(), statusClean) << command;
        vsFaultsClear();
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
    const char *const spanning = "Bad return code trying to get Spanning Tree ";
    const struct {
        const char *call, *key;
        bool status; // which document
        std::string name, shows, logs;
    } cases[] = {
        {"rpcclt_openapiIfDescrGet", "2", false, "1/0/2", R"("description":"")",
         "Bad return code trying to get description of  physical interface. (result = -1)\n"},
        {"openapiIfAdminStateGet", "2", false, "1/0/2", R"("adminState":1)",
         "port:2 - port admin state error (rc = -1)\n"},
        {"openapiVlanIfPvidGet", "2", false, "1/0/2", R"("profileName":"Default")", ""},
        {"rpcclt_openapiDot1SIntfModeGet", "3", false, "1/0/3", R"("stpMode":"Disable")",
         spanning + std::string("Mode (port = 3 result = -1)\n")},
        {"rpcclt_openapiDot1SIntfEdgePortModeGet", "3", false, "1/0/3", R"("stpEdgeMode":"Disable")",
         spanning + std::string("Interface Edge Port Mode. (port = 3 result = -1)\n")},
        {"rpcclt_openapiDot1SPortRestrictedTcnGet", "3", false, "1/0/3", R"("stpTcnGuard":"Disable")",
         spanning + std::string("Restricted TCN parameterfor an interface. (port = 3 result = -1)\n")},
        {"rpcclt_openapiDot1SIntfPortFwdStateGet", "", false, "1/0/3", "",
         spanning + std::string("Port Forwarding State. (port = 3 result = -1)\n")},
        {"rpcclt_openapiDot1SIntfBPDUFilterModeGet", "3", false, "1/0/3", R"("stpBPDUFilterMode":"Disable")",
         spanning + std::string("Interface BPDU Filter Mode. (port = 3 result = -1)\n")},
        {"openapiIfAutoNegGet", "3", false, "1/0/3", R"("autonegotiation":"Disable")",
         "Bad return code trying to get auto-negotiation mode of physical interface. (port = 3 result = -1)\n"},
        {"rpcclt_openapiStormControlIntfModeGet", "3", false, "1/0/3", R"("broadcastStormControl":"Disable")",
         "Bad return code trying to get storm control mode on an interface. (port = 3 result = -1)\n"},
        {"rpcclt_openapiIfNumGet", "1/0/3", false, "1/0/3", "(none)",
         "Bad return code trying to get port num by port name. (result = -1)\n"},
        {"rpcclt_openapiIfNumGet", "1/0/3", true, "1/0/3", "(none)", ""},
        {"rpcclt_openapiDot1SIntfEdgePortModeGet", "3", true, "1/0/3", R"("stpEdgeMode":"Disable")", ""},
        {"openapiIfAutoNegGet", "1", true, "1/0/1", R"("autonegotiation":"Disable")", ""},
        {"rpcclt_openapiFlowControlIfModeGet", "3", true, "1/0/3", R"("flowControl":"Disable")", ""},
    };
    vsTextsClear();
    for (const auto &one : cases) {
        vsFaultAdd({one.call, one.key});
        logClear();
        std::string row = rowOf(one.status ? status() : settings(), one.name);
        if (one.shows == "(none)")
            EXPECT_EQ(row, "") << one.call;
        else
            EXPECT_TRUE(has(row, one.shows) && row != "") << one.call << row;
        EXPECT_EQ(has(logText(), "getPortStatusList: Bad") || has(logText(), "getPortStatusList: port:"),
                  one.logs != "")
            << logText();
        EXPECT_TRUE(has(logText(), one.logs)) << logText();
        vsFaultsClear();
    }
    vsFaultAdd({"rpcclt_openapiLagMaxMemberCountGet"});
    EXPECT_EQ(buildText(getPortStatusListFast).result, 10000);
    EXPECT_EQ(buildText(getPortsSettings).result, 10000);
}

// The template of an empty profile type; one of the vendor's types; a database that is not there.
TEST_F(PortRows, ProfilesFollowTheirDatabase)
{
    const char *const cases[][3] = {
        {"5, 'Crew', ''", R"("profileTemplate":"","profileName":"Crew")",
         R"("profileTemplate":"Data","profileName":"Crew")"},
        {"9, 'Matrix', 'Data'", R"("profileTemplate":"Kramer AV: Data","profileName":"Matrix")", nullptr},
    };
    for (const auto &one : cases) {
        sqlRun(PATH_VLANINFO_DB, std::string("replace into vlanInfo values(10, ") + one[0] + ", '')");
        EXPECT_TRUE(has(rowOf(status(), "1/0/2"), one[1])) << status();
        EXPECT_TRUE(has(rowOf(settings(), "1/0/2"), one[2] == nullptr ? one[1] : one[2])) << settings();
    }
    // Asked once for each VLAN, not for each row: 10 and 1.
    fileWrite(PathGet(PATH_VLANINFO_DB), "no database");
    logClear();
    EXPECT_TRUE(has(rowOf(settings(), "1/0/2"), R"("profileTemplate":"Default","profileName":"Default")"));
    std::string log = logText();
    size_t asked = 0;
    for (size_t at = 0; (at = log.find("vlanInfoSelectById: ", at)) != std::string::npos; at++)
        asked++;
    EXPECT_EQ(asked, 2u) << log;
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
        portAdd(number, 0, number).attached = false;
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

// No allocation that fails leaves half a document; those of the LAG members and of the profiles may be missed.
TEST_F(PortRows, WithoutMemoryThereIsNoDocument)
{
    EXPECT_EQ(getPortStatusListFast(nullptr, nullptr), 10003);
    EXPECT_EQ(getPortsSettings(nullptr, nullptr), 10003);
    for (BUILDER_TEXT_T builder : {getPortStatusListFast, getPortsSettings}) {
        const std::string clean = compact(buildText(builder).text);
        std::set<int> results;
        logClear();
        for (unsigned source : {ALLOC_CJSON, ALLOC_OWN}) {
            bool reached = true;
            for (int n = 0; reached; n++) {
                allocFailAt(n, source);
                BUILT_T built = buildText(builder);
                reached = allocFailStop();
                results.insert(built.result);
                EXPECT_EQ(built.text == "", built.result != 0) << n;
                EXPECT_TRUE(built.result != 0 || source == ALLOC_OWN || compact(built.text) == clean) << n;
            }
        }
        EXPECT_EQ(results, (std::set<int>{-7, 0, 10000, 10002}));
        for (const char *line :
             {"Failed to allocate memory for pf (5 entries)\n", "Failed to allocate memory for pi (6 entries)\n"})
            EXPECT_EQ(has(logText(), std::string("getPortStatusList: getPortStatusList: ") + line),
                      builder == getPortsSettings)
                << logText();
        EXPECT_TRUE(has(logText(), ": Failed to allocate memory\n")) << logText();
        EXPECT_TRUE(has(logText(), "jsonToStr: Response error")) << logText();
    }
}
