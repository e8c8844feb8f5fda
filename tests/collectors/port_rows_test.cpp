#include "collectors/port/swcfg_ports_settings.h"
#include "collectors/port/swcfg_ports_status.h"
#include "stores/sql.h"
#include "support/build.h"

struct PortRows : BUILDER_TEST {
    // A front port that is fanned out, one that is down, a LAG member, a sub-port in use and one that is not; a LAG.
    void SetUp() override
    {
        state.units.emplace_back().model = "TK830-T02";
        portAdd(1, 1, 0, 1).attached = false;
        VS_PORT_T &down = portAdd(2, 1, 0, 2);
        down.adminUp = false;
        down.autoNeg = 1;
        down.stpEnabled = false;
        down.description = "Stage left";
        down.pvid = 10;
        VS_PORT_T &member = portAdd(3, 1, 0, 3);
        member.linkUp = true;
        member.stormControl = true;
        member.stpEdge = member.stpTcnGuard = member.stpBpduFilter = true;
        member.stpState = 1;
        portAdd(18, 1, 0, 18).linkUp = true;
        portAdd(80, 1, 0, 80).attached = false;
        VS_LAG_T &lag = state.lags.emplace_back();
        lag.ifNum = 201;
        lag.name = "ch1";
        lag.linkUp = true;
        lag.members = {3};
        vlanInfoTableMake();
        sqlRun(PATH_VLANINFO_DB, "insert into vlanInfo values(10, 7, 'Pixels', 'Video', '#000000')");
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

// The row of an interface, up to the next one.
static std::string rowOf(const std::string &document, const std::string &name)
{
    size_t at = document.find(R"("portStr":")" + name + "\"");
    return at == std::string::npos ? "" : document.substr(at, document.find("},", at) - at);
}

// Without its command a column shows its default; without the table of all interfaces there is no row.
TEST_F(PortRows, StatusKeepsTheDefaultsOfATableThatIsMissing)
{
    const char *const cases[][4] = {
        {"show interfaces description all", "1/0/2", R"("description":"Stage left")", R"("description":"")"},
        {"show port all", "1/0/2", R"("adminState":0)", R"("adminState":1)"},
        {"show port advertise", "1/0/3", R"("autonegotiation":"Enable")", R"("autonegotiation":"Disable")"},
        {"show storm-control all", "1/0/3", R"(StormControl":"Enable")", R"(StormControl":"Disable")"},
        {"show vlan port all", "1/0/2", R"("profileName":"Pixels")", R"("profileName":"Default")"},
        {"show spanning-tree interface all", "1/0/3", R"("stpTcnGuard":"Enable")", R"("stpTcnGuard":"Disable")"},
        {"show spanning-tree mst port summary 0 all", "1/0/18", R"(State":"Forwding")", R"(State":"Disable")"},
    };
    for (const auto &[command, name, had, shows] : cases) {
        EXPECT_TRUE(has(rowOf(status(), name), had)) << command;
        for (VS_FAULT_KIND kind : {VS_FAIL, VS_NO_FILE, VS_EMPTY}) {
            vsFaultAdd({command, "", 0, kind});
            EXPECT_TRUE(has(rowOf(status(), name), shows)) << command << " " << kind;
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
        {"show interfaces description all", "1/0/2 " + far + "\n1/0/3 y\n", "1/0/2",
         R"("description":")" + far.substr(0, 127) + "\""},
        {"show interfaces description all", "1/0/2 " + far + "\n1/0/3 y\n", "1/0/3", R"("description":"y")"},
        {"show port all", "lag 1            Disable   \n", "lag 1", R"("adminState":1)"},
        {"show port advertise", "1/0/2      Copper  Enabled Disabled\n", "1/0/2", R"("autonegotiation":"Enable")"},
        {"show port advertise", "1/0/2      Enabled\n", "1/0/2", R"("autonegotiation":"Disable")"}, // 18 characters
        {"show storm-control all", "1/0/2 Enable\n", "1/0/2", R"("broadcastStormControl":"Disable")"},
        {"show vlan port all", "lag 1     10        Admit All\n", "lag 1", R"("profileName":"Pixels")"},
        // the text behind the last dot; an unknown interface deselects
        {spanning, "Interface:  1/0/2 \nPort Mode.....   Enabled\n", "1/0/2", R"("stpMode":"Enable")"},
        {spanning, "Interface: 1/0/2\nInterface: 1/0/9\nTCN Guard.... True\n", "1/0/2", R"("stpTcnGuard":"Disable")"},
        {spanning, "TCN Guard.... True\nInterface: 1/0/2\nTCN Guard True\n", "1/0/2", R"("stpTcnGuard":"Disable")"},
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
    const std::string spanning = "Spanning Tree ";
    const std::tuple<const char *, const char *, std::string> cases[] = {
        {"rpcclt_openapiDot1SIntfModeGet", R"("stpMode":"Disable")", spanning + "Mode"},
        {"rpcclt_openapiDot1SIntfEdgePortModeGet", R"("stpEdgeMode":"Disable")",
         spanning + "Interface Edge Port Mode."},
        {"rpcclt_openapiDot1SPortRestrictedTcnGet", R"("stpTcnGuard":"Disable")",
         spanning + "Restricted TCN parameterfor an interface."},
        {"rpcclt_openapiDot1SIntfBPDUFilterModeGet", R"("stpBPDUFilterMode":"Disable")",
         spanning + "Interface BPDU Filter Mode."},
        {"openapiIfAutoNegGet", R"("autonegotiation":"Disable")", "auto-negotiation mode of physical interface."},
        {"rpcclt_openapiStormControlIntfModeGet", R"("broadcastStormControl":"Disable")",
         "storm control mode on an interface."},
    };
    vsTextsClear();
    for (const auto &[call, shows, logs] : cases) {
        vsFaultAdd({call, "3"});
        EXPECT_TRUE(has(rowOf(settings(), "1/0/3"), shows)) << call;
        EXPECT_TRUE(has(logText(), "Bad return code trying to get " + logs + " (port = 3 result = -1)\n")) << logText();
        vsFaultsClear();
    }
    vsFaultAdd({"rpcclt_openapiLagMaxMemberCountGet"});
    for (BUILDER_TEXT_T builder : {getPortsSettings, getPortStatusListFast})
        EXPECT_EQ(buildText(builder).result, 10000);
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
}

// A read that finds the database locked gives the default and is made again for the next row; a build waits only once.
TEST_F(PortRows, LockedProfileDatabaseIsAskedAgainWithoutWaiting)
{
    vsState().ports[2].pvid = 10;
    for (auto document : {status, settings}) {
        SQL_LOCKED_T lock(PATH_VLANINFO_DB);
        auto release = [](void *context, const char *name, const char *key, bool) {
            if (std::string(name) + key == "openapiIfMaxFrameSizeGet2") // asked for once the row has its profile
                static_cast<OWNED_DB *>(context)->reset();
        };
        vsObserverSet(release, &lock.holder);
        const std::string rows = document();
        vsObserverSet(nullptr, nullptr);
        EXPECT_EQ(lock.waited, 3000000);
        EXPECT_TRUE(has(rowOf(rows, "1/0/2"), R"("profileName":"Default")")) << rows;
        EXPECT_TRUE(has(rowOf(rows, "1/0/3"), R"("profileName":"Pixels")")) << rows;
    }
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
        {"TK620-R02", "", 0, 2, "Other model: Unit 1, intfCount=12, phyInfSum=12\n"},
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
}
