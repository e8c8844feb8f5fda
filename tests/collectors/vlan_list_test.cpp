#include "collectors/feature/vlan_list.h"
#include "runtime/clock.h"
#include "stores/sql.h"
#include "stores/vlan_info.h"
#include "support/build.h"
#include "switch/columns.h"

struct VlanList : BUILDER_TEST {
    // Two ports, a LAG with one of them and one without members.
    void SetUp() override
    {
        ASSERT_EQ(vsLoadText(R"({
            "vlans": {"1": {}, "10": {"name": "Dante", "address": "10.10.0.1/24"}, "20": {"name": "Guest"}},
            "units": {"1": {"model": "TK620-R01", "portCount": 2}},
            "ports": {"1/0/1": {"pvid": 10, "tagged": [20]}, "1/0/2": {"tagged": [20, 10]}},
            "lags": {"1": {}, "2": {"members": ["1/0/2"], "pvid": 20, "tagged": [10]}}})"),
                  "");
        vsState().ports[0].tagged.push_back(99); // no VLAN of the switch
        vlanInfoTableMake();
        sqlRun(PATH_VLANINFO_DB, "insert into vlanInfo values(10, 2, 'Stage', 'Audio Dante', '#43A0471')");
    }
    static std::string document()
    {
        return documentOf(switchConfigVlanList);
    }
};

static const char clean[] =
    R"([{"vlanId":1,"name":"Default","color":"#000000","profileType":"Default","profileName":"Default","vlanType":1,)"
    R"("assignedUntagPort":[2],"assignedtagPort":[],"assignedUnTagLag":[],"assignedTagLag":[],"management":true,)"
    R"("dynamicallyPort":[],"isStatic":true,"ipConfig":1,"ipAddr":"N/A","ipMask":"N/A"},)"
    R"({"vlanId":10,"name":"Stage","color":"#43A047","profileType":"Audio Dante","profileName":"Stage","vlanType":2,)"
    R"("assignedUntagPort":[1],"assignedtagPort":[2],"assignedUnTagLag":[],"assignedTagLag":[2],"management":false,)"
    R"("dynamicallyPort":[],"isStatic":true,"ipConfig":3,"ipAddr":"10.10.0.1","ipMask":"255.255.255.0"},)"
    R"({"vlanId":20,"name":"Guest","color":"#000000","profileType":"Default","profileName":"Guest","vlanType":1,)"
    R"("assignedUntagPort":[],"assignedtagPort":[1,2],"assignedUnTagLag":[2],"assignedTagLag":[],"management":false,)"
    R"("dynamicallyPort":[],"isStatic":true,"ipConfig":1,"ipAddr":"N/A","ipMask":"N/A"}])";

// Where one fact cannot be had, its default stands and everything else is as it was.
TEST_F(VlanList, FailureLeavesTheDefault)
{
    const std::vector<std::string> noAddress = {R"(3,"ipAddr":"10.10.0.1","ipMask":"255.255.255.0")",
                                                R"(1,"ipAddr":"N/A","ipMask":"N/A")"};
    const std::vector<std::string> noLag = {R"(dTagLag":[2])", R"(dTagLag":[])", R"(UnTagLag":[2])", R"(UnTagLag":[])"};
    expectFailures(document, clean,
                   {
                       {{"show ip management"}, {}}, // VLAN 1
                       {{"show ip interface brief"}, noAddress},
                       {{"show ip interface brief", "", 0, VS_NO_FILE}, noAddress},
                       {{"rpcclt_openapiVlanNameGet", "20"}, {"Guest", "VLAN20", "Guest", "VLAN20"}},
                       {{"openapiVlanIfPvidGet", "1"}, {R"(UntagPort":[1])", R"(UntagPort":[])"}},
                       {{"rpcclt_openapiDot1qSwPortTaggedVlanListGet", "1"}, {"[1,2]", "[2]"}},
                       {{"rpcclt_openapiLagMembersGet"}, noLag},
                       {{"rpcclt_openapiLagMaxMemberCountGet"}, noLag},
                   });
    VLAN_INFO_ENTRY_T row = {}; // written on the way
    EXPECT_EQ(vlanInfoSelectById(1, &row.vlanType, row.profileName, row.profileType, row.color), 1);
    EXPECT_EQ(row.profileName + std::string(row.profileType) + row.color, "DefaultDefault#000000");
}

TEST_F(VlanList, NoVlansWithoutTheClockOrTheFirstLag)
{
    const std::string noClock =
        "(ERROR) vlanListBaseInfoGetEX: Bad return code trying to get clock1 priority (result = ";
    for (const char *text :
         {"Local Clock Priority1.... 246\n", "Local Clock Priority2.... 248\n Local Clock Priority1... 1\n",
          "Local Clock Priority1 246 x\nLocal Clock Priority2 248\n",
          "Local Clock Priority1 4294967296\nLocal Clock Priority2 248\n",
          "Local Clock Priority1 0000000000000246\nLocal Clock Priority2 248\n"}) {
        logClear();
        vsTextSet("show dot1as summary", text);
        EXPECT_EQ(document(), "[]") << text;
        EXPECT_EQ(logText(), noClock + "10000)\n");
    }
    vsTextSet("show dot1as summary", "Local Clock Priority1 000000004294967\r\nLocal Clock Priority2 4294967295 \t");
    EXPECT_EQ(document(), clean);

    vsFaultAdd({"show dot1as summary", "", 0, VS_NO_FILE});
    EXPECT_EQ(document(), "[]");
    EXPECT_TRUE(has(logText(), noClock + "10016)\n"));
    vsFaultsClear();
    vsFaultAdd({"openapiIfFirstGet", "2"});
    EXPECT_EQ(document(), "[]");
    EXPECT_TRUE(has(logText(), "(ERROR) switchConfigVlanList: Call vlanListAllInfoCreate return error\n"));
}

TEST_F(VlanList, ProfileOfVlan1BeyondAFullListIsNotReplaced)
{
    sqlRun(PATH_VLANINFO_DB, "with recursive n(i) as (select 5000 union all select i - 1 from n where i > 900) "
                             "insert into vlanInfo select i, 1, '', '', '' from n; "
                             "insert into vlanInfo values(1, 5, 'Mine', 'Data', '#111111')");
    EXPECT_TRUE(has(document(), R"("vlanId":1,"name":"Default")"));
    int32_t vlanType = 0;
    EXPECT_EQ(vlanInfoSelectById(1, &vlanType, nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(vlanType, 5);
}

// The default profile is stored only when it is certain that there is none.
TEST_F(VlanList, ProfileDatabaseThatCannotBeReadIsAskedRowByRowAndNotWritten)
{
    sqlRun(PATH_VLANINFO_DB,
           "drop table vlanInfo; create table vlanInfo(id int, vlanType int, profileName, profileType, tint);"
           "insert into vlanInfo values(10, 2, 'Stage', 'Audio Dante', '#43A047')");
    EXPECT_EQ(document(), clean);
    EXPECT_EQ(vlanInfoSelectById(1, nullptr, nullptr, nullptr, nullptr), 0);
    {
        SQL_LOCKED_T lock(PATH_VLANINFO_DB);
        EXPECT_TRUE(has(document(), R"("vlanId":10,"name":"Dante")"));
        EXPECT_EQ(lock.waited, 3000000); // once, not for each VLAN
    }

    std::filesystem::remove(PathGet(PATH_VLANINFO_DB));
    EXPECT_TRUE(has(document(), R"("vlanId":10,"name":"Dante","color":"#000000","profileType":"Default")"));
    EXPECT_FALSE(fileExists(PathGet(PATH_VLANINFO_DB)));
}

TEST_F(VlanList, RoutingLinesAreTakenOrLeft)
{
    vsTextSet("show ip interface brief", "Interface  State IP Address      IP Mask         TOS Method\n"
                                         "vlan 1     Up    192.168.111.222  255.255.255.0   0   DHCP\r\n"
                                         "vlan 2     Up    2001:db8::1234:5678 255.255.255.128x 0 Manually extra\n"
                                         "vlan 3     Up    10.0.0.3        255.0.0.0       0\n" // no method
                                         " vlan 4    Up    10.0.0.4        255.0.0.0       0   Manual\n"
                                         "vlan 0     Up    10.0.0.5        255.0.0.0       0   Manual\n"
                                         "vlan 4097  Up    10.0.0.6        255.0.0.0       0   Manual\n"
                                         "vlan 4294967297 Up 10.0.0.8      255.0.0.0       0   Manual\n"
                                         "vlan 4096  Up    10.0.0.10       255.0.0.0       0   Manual");
    std::vector<VLAN_ROUTING_T> table(VLAN_ROUTING_SIZE);
    EXPECT_EQ(vlanListRoutingInfoGet(&handle, table.data()), 0);
    std::string found;
    for (const VLAN_ROUTING_T &record : table) {
        if (record.vlanId != 0)
            found += std::to_string(record.vlanId) + " " + std::to_string(record.ipConfig) + " " + record.ipAddr + " " +
                     record.ipMask + "\n";
    }
    EXPECT_EQ(found, "1 2 192.168.111.222 255.255.255.0\n"
                     "2 1 2001:db8::1234: 255.255.255.128\n"
                     "4096 3 10.0.0.10 255.0.0.0\n");

    // without an output, the file that the command was given: each look at the clock makes another number
    static long nanoseconds;
    static const CLOCK_SOURCE_T moving = {[](struct timespec *now) { *now = {0, nanoseconds++}; }, nullptr};
    char path[PATH_OUTPUT_SIZE];
    ClockSourceSet(&moving);
    for (VS_FAULT_KIND kind : {VS_FAIL, VS_NO_FILE}) {
        logClear();
        nanoseconds = 1;
        PathNumbered(PATH_SHOW_IP_INTERFACE, randomSuffixGet(), path, sizeof(path));
        nanoseconds = 1;
        vsFaultAdd({"show ip interface brief", "", 0, kind});
        EXPECT_EQ(vlanListRoutingInfoGet(&handle, table.data()), 10016);
        EXPECT_TRUE(has(logText(), "Can not open file:" + std::string(path) + "\n")) << path << "\n" << logText();
        vsFaultsClear();
    }
}
