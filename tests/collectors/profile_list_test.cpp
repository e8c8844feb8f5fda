#include "collectors/feature/profile_list.h"
#include "stores/sql.h"
#include "support/build.h"

// VLANs 1, 10, 20, 30 and 4000; rows for some, and for VLANs that are not there; ports 1 and 2, LAG 50, empty LAG 51.
struct ProfileList : BUILDER_TEST {

    void SetUp() override
    {
        state.ports.resize(2);
        state.ports[0].ifNum = 1;
        state.ports[0].tagged = {10, 4000};
        state.ports[1].ifNum = 2;
        state.ports[1].pvid = 10;
        state.lags.resize(2);
        state.lags[0].ifNum = 50;
        state.lags[0].tagged = {10};
        state.lags[0].pvid = 20;
        state.lags[0].members = {1};
        state.lags[1].ifNum = 51;
        for (uint32_t id : {1, 10, 20, 30, 4000})
            state.vlans.emplace_back().id = id;
        state.vlans[1].routed = true;
        state.vlans[1].address = 0xC0A80A01;
        state.vlans[1].prefixLength = 20;
        state.vlans[2].isStatic = false;
        std::string rows = "(5,1,'x','Data','#5'),(10,3,'It''s 100%','Dante Audio','#123456789'),(20,7,NULL,NULL,NULL)";
        for (int id = 100; id < 200; id++) // the array of rows grows
            rows += ",(" + std::to_string(id) + ",1,'','','')";
        rowsSet(rows + ",(4000,2,'Desk','Allen & Heath gigaACEGX','#30')");
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
        BUILT_T built = buildText(profileListExGet);
        EXPECT_EQ(built.result, 0);
        return built.text;
    }
};

static const char none[] = R"("ip":"","ipMask":"")";
static const char routed[] = R"("ip":"192.168.10.1","ipMask":"255.255.240.0")";
static const char full[] =
    R"([{"vlanId":1,"vlanType":1,"static":true,"name":"VLAN1","profileType":"Default","color":"#000000",)"
    R"("ip":"","ipMask":"","routing":true,"tagged":[],"untagged":[1],"assignedPort":[]},)"
    R"({"vlanId":10,"vlanType":3,"static":true,"name":"It's 100%","profileType":"Dante Audio","color":"#123456",)"
    R"("ip":"192.168.10.1","ipMask":"255.255.240.0","routing":true,"tagged":[1,50],"untagged":[2],)"
    R"("assignedPort":[{"p":1},2]},)"
    R"({"vlanId":20,"vlanType":7,"static":false,"name":"","profileType":"Kramer AV","color":"",)"
    R"("ip":"","ipMask":"","routing":true,"tagged":[],"untagged":[50],"assignedPort":[]},)"
    R"({"vlanId":30,"vlanType":1,"static":true,"name":"VLAN30","profileType":"Data","color":"#000000",)"
    R"("ip":"","ipMask":"","routing":true,"tagged":[],"untagged":[],"assignedPort":[]},)"
    R"({"vlanId":4000,"vlanType":2,"static":true,"name":"Desk","profileType":"Allen & Heath gigaACEGX",)"
    R"("color":"#30","ip":"","ipMask":"","routing":false,"tagged":[1],"untagged":[],"assignedPort":[]}])";

// The full document with some parts in others' places: from, to, from, to ...
static std::string changed(const std::vector<std::string> &parts)
{
    std::string text = full;
    for (size_t i = 0; i + 1 < parts.size(); i += 2) {
        size_t at = text.find(parts[i]);
        EXPECT_NE(at, std::string::npos) << parts[i];
        text.replace(at, parts[i].size(), parts[i + 1]);
    }
    return text;
}

TEST_F(ProfileList, JoinsVlansWithProfilesPortsRoutesAndExports)
{
    EXPECT_EQ(document(), full);
    EXPECT_EQ(logText(), "");
    logLevelSet('7');
    EXPECT_EQ(document(), full);
    EXPECT_EQ(logText(), "(DEBUG) profileListExGet: profileListExGet: vlanInfo=0 ms, portBuckets=0 ms, vlanWalk=0 ms, "
                         "total=0 ms\n");
}

TEST_F(ProfileList, FailedReadLeavesOutItsItem)
{
    const std::pair<VS_FAULT_T, std::string> cases[] = {
        {{"openapiIfFirstGet", "0"},
         changed({R"("untagged":[1])", R"("untagged":[])", "[1,50]", "[50]", "[2]", "[]", R"("tagged":[1])",
                  R"("tagged":[])"})},
        {{"openapiIfFirstGet", "2"}, changed({"[1,50]", "[1]", "[50]", "[]"})},
        {{"rpcclt_openapiLagMaxMemberCountGet", ""}, changed({"[1,50]", "[1]", "[50]", "[]"})},
        {{"rpcclt_openapiLagMembersGet", "50"}, changed({"[1,50]", "[1]", "[50]", "[]"})},
        {{"rpcclt_openapiDot1qSwPortTaggedVlanListGet", "1"},
         changed({"[1,50]", "[50]", R"("tagged":[1])", R"("tagged":[])"})},
        {{"openapiVlanIfPvidGet", "50"}, changed({"[50]", "[]"})},
        {{"rpcclt_openapiRtrIntfIpAddrGet", ""}, changed({routed, none})},
        {{"rpcclt_openapiRtrIntfVlanIdGet", ""}, changed({routed, none})},
        {{"rpcclt_openapiRtrIntfNextGet", ""}, changed({routed, none})},
        {{"openapiVlanNextGet", ""}, "[]"},
    };
    for (const auto &[fault, expected] : cases) {
        vsFaultAdd(fault);
        EXPECT_EQ(document(), expected) << fault.name << " " << fault.key;
        vsFaultsClear();
    }
    fileWrite(PathGet(PATH_VLANINFO_DB), "no database");
    const std::string defaults = document();
    EXPECT_NE(defaults.find(R"("name":"VLAN10","profileType":"Data","color":"#000000")"), std::string::npos);
    ASSERT_EQ(remove(PathGet(PATH_VLANINFO_DB)), 0);
    EXPECT_EQ(document(), defaults);
    EXPECT_FALSE(fileExists(PathGet(PATH_VLANINFO_DB))); // others wait for it to appear
}

TEST_F(ProfileList, AssignedPortsNeedEveryMemberOfTheExport)
{
    const char *const cases[] = {
        "",
        "[]",
        "{",
        R"({"profileConfig":{"vlans":{"vlanId":10,"ports":{"assignedPort":[1]}}}})",
        R"({"profileConfig":{"vlans":[7,{"vlanId":10},{"vlanId":10,"ports":{"assignedPort":[1]}}]}})",
        R"({"profileConfig":{"vlans":[{"vlanId":10,"ports":{"assignedPort":{}}}]}})"};
    for (const char *text : cases) {
        exportSet("Dante_Audio", text);
        EXPECT_EQ(document(), changed({R"([{"p":1},2])", "[]"})) << text;
    }
    // types that have none, and one that names no file of the folder
    const std::string any = R"({"profileConfig":{"vlans":[{"vlanId":10,"ports":{"assignedPort":[1]}}]}})";
    for (const char *type : {"Default", "../kelo_ex/x"}) {
        exportSet(type, any);
        exportSet("x", any);
        rowsSet("(10,3,'','" + std::string(type) + "','')");
        EXPECT_EQ(document().find("\"assignedPort\":[1]"), std::string::npos) << type;
    }
}
