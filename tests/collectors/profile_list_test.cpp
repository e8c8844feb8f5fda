#include "collectors/feature/profile_list_ex.h"
#include "stores/sql.h"
#include "support/build.h"

// VLANs 10, 20 and 30; rows for the first two, and for VLANs that are not there; port 1, LAG 50.
struct ProfileList : BUILDER_TEST {

    void SetUp() override
    {
        VS_PORT_T &port = portAdd(1, 1, 0, 1);
        port.tagged = {10};
        port.pvid = 20;
        VS_LAG_T &lag = state.lags.emplace_back();
        lag.ifNum = 50;
        lag.tagged = {10};
        lag.pvid = 20;
        lag.members = {1};
        for (uint32_t id : {10, 20, 30})
            state.vlans.emplace_back().id = id;
        state.vlans[0].routed = true;
        state.vlans[0].address = 0xC0A80A01;
        state.vlans[0].prefixLength = 20;
        std::string rows = "(10,3,'It''s 100%','Dante Audio','#123456789'),(20,7,NULL,NULL,NULL)";
        for (int id = 100; id < 200; id++) // the array of rows grows
            rows += ",(" + std::to_string(id) + ",1,'','','')";
        rowsSet(rows);
        exportSet("Dante_Audio", R"({"profileConfig":{"vlans":[{"vlanId":"10"},{"vlanId":11},)"
                                 R"({"vlanId":10,"ports":{"assignedPort":[{"p":1},2]}},{"vlanId":10}]}})");
    }
    static void rowsSet(const std::string &rows)
    {
        sqlRun(PATH_VLANINFO_DB, "drop table if exists vlanInfo");
        vlanInfoTableMake();
        sqlRun(PATH_VLANINFO_DB, "insert into vlanInfo values" + rows);
    }
    static void exportSet(const std::string &name, const std::string &text)
    {
        fileWrite(PathGet(PATH_EXPORT_DIR) + name, text);
    }
    static std::string document()
    {
        return documentOf(profileListExGet);
    }
};

static const char full[] =
    R"([{"vlanId":10,"vlanType":3,"static":true,"name":"It's 100%","profileType":"Dante Audio","color":"#123456",)"
    R"("ip":"192.168.10.1","ipMask":"255.255.240.0","routing":true,"tagged":[1,50],"untagged":[],)"
    R"("assignedPort":[{"p":1},2]},)"
    R"({"vlanId":20,"vlanType":7,"static":true,"name":"","profileType":"Kramer AV","color":"",)"
    R"("ip":"","ipMask":"","routing":true,"tagged":[],"untagged":[1,50],"assignedPort":[]},)"
    R"({"vlanId":30,"vlanType":1,"static":true,"name":"VLAN30","profileType":"Data","color":"#000000",)"
    R"("ip":"","ipMask":"","routing":true,"tagged":[],"untagged":[],"assignedPort":[]}])";

TEST_F(ProfileList, FailedReadLeavesOutItsItem)
{
    const std::vector<std::string> noPort = {"[1,50]", "[50]", "[1,50]", "[50]"},
                                   noLag = {"[1,50]", "[1]", "[1,50]", "[1]"};
    const std::vector<std::string> noRoute = {R"("192.168.10.1","ipMask":"255.255.240.0")", R"("","ipMask":"")"};
    expectFailures(document, full,
                   {{{"none"}, {}, ""},
                    {{"openapiIfFirstGet", "0"}, noPort},
                    {{"openapiIfFirstGet", "2"}, noLag},
                    {{"rpcclt_openapiLagMaxMemberCountGet"}, noLag},
                    {{"rpcclt_openapiLagMembersGet", "50"}, noLag},
                    {{"rpcclt_openapiDot1qSwPortTaggedVlanListGet", "1"}, {"[1,50]", "[50]"}},
                    {{"openapiVlanIfPvidGet", "50"}, {R"(untagged":[1,50])", R"(untagged":[1])"}},
                    {{"rpcclt_openapiRtrIntfIpAddrGet"}, noRoute},
                    {{"rpcclt_openapiRtrIntfVlanIdGet"}, noRoute},
                    {{"rpcclt_openapiRtrIntfNextGet"}, noRoute},
                    {{"openapiVlanNextGet"}, {full, "[]"}}});
    fileWrite(PathGet(PATH_VLANINFO_DB), "no database");
    const std::string defaults = document();
    EXPECT_TRUE(has(defaults, R"("name":"VLAN10","profileType":"Data","color":"#000000")"));
    ASSERT_EQ(remove(PathGet(PATH_VLANINFO_DB)), 0);
    EXPECT_EQ(document(), defaults);
    EXPECT_FALSE(fileExists(PathGet(PATH_VLANINFO_DB))); // others wait for it to appear
}

TEST_F(ProfileList, AssignedPortsNeedEveryMemberOfTheExport)
{
    for (const char *vlans : {"{", R"({"vlanId":10,"ports":{"assignedPort":[1]}}}})",
                              R"([7,{"vlanId":10},{"vlanId":10,"ports":{"assignedPort":[1]}}]}})",
                              R"([{"vlanId":10,"ports":{"assignedPort":{}}}]}})"}) {
        exportSet("Dante_Audio", R"({"profileConfig":{"vlans":)" + std::string(vlans));
        EXPECT_EQ(document(), changed(full, {R"([{"p":1},2])", "[]"})) << vlans;
    }
    // types that have none, and one that names no file of the folder
    const std::string any = R"({"profileConfig":{"vlans":[{"vlanId":10,"ports":{"assignedPort":[1]}}]}})";
    for (const auto &[type, found] : {std::pair("Other", true), {"Default", false}, {"../kelo_ex/x", false}}) {
        exportSet(type, any);
        exportSet("x", any);
        rowsSet("(10,3,'','" + std::string(type) + "','')");
        EXPECT_EQ(has(document(), "\"assignedPort\":[1]"), found) << type;
    }
}
