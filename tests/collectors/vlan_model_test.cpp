#include "collectors/feature/vlan_model.h"
#include "stores/sql.h"
#include "support/build.h"

struct VlanModel : BUILDER_TEST {
    void SetUp() override
    {
        state.lags.emplace_back().ifNum = 50; // a switch without LAGs has no list
        vlanInfoTableMake();
        jsonBuildBegin();
    }
    // The profile map as text: "id type flags mask variant profile", one a line.
    std::string profiles()
    {
        OWNED_VLAN_PROFILES list;
        EXPECT_EQ(vlanListProfileCreateFastEX(&handle, &list), 0);
        std::string text;
        for (uint32_t i = 0; list != nullptr && i < list->count; i++) {
            const VLAN_PROFILE_T *vlan = list->ids[i];
            char numbers[64];
            snprintf(numbers, sizeof(numbers), "%u %u %#x %#x %u ", vlan->vlanId, vlan->vlanType, vlan->profileFlags,
                     vlan->profileFlagMask, vlan->profileVariant);
            text += numbers + std::string(vlan->profileType) + "\n";
        }
        return text;
    }
};

TEST_F(VlanModel, FullListKeepsItsRows)
{
    std::string many;
    for (int i = 0; i < 5000; i++)
        many += "9 " + std::string(80, 'n') + " Static\n";
    vsTextSet("show vlan", many);
    OWNED_VLAN_LIST list;
    EXPECT_EQ(vlanListAllInfoGetFastEX(&handle, &list), 0);
    EXPECT_EQ(list->count, VLAN_SLOTS);
    EXPECT_EQ(list->ids[4095]->name, std::string(63, 'n'));
    EXPECT_EQ(vlanSlotsFind(list.get(), 1), nullptr); // an index entry of 0 is slot 0's
    EXPECT_EQ(vlanSlotsFind(list.get(), 4097), nullptr);
}

// The 33rd type gets no flags; VLANs of the types before it still do.
TEST_F(VlanModel, ProfileMapTakesFlagsFromTemplatesOfThirtyTwoTypes)
{
    const std::string milan = "Audio Video AVB MILAN", dante = milan + " with Dante PTPv1 PTPv2 or AES67";
    const char *const templates[][3] = {
        {"On", R"({"PTP":true,"PTP-BC":true,"AVB":true,"flowControl":true,"Sonos":true})", "0x2207 0x2006 0 "},
        {"Off 2", R"({"PTP":false,"PTP-BC":0,"AVB":"true","flowControl":false,"Sonos":null})", "0 0x4 0 "},
        {"Array", R"(["PTP",true])", "0 0 0 "},
        {"Broken", R"({"PTP":true)", "0 0 0 "},
        {"Missing", "", "0 0 0 "},
        {"../profileTemplate/On", "", "0 0 0 "}, // names no file of the folder
        {milan.c_str(), R"({"AVB":true})", "0x2 0x2 32 "},
        {dante.c_str(), "{}", "0 0 64 "}};
    std::string text, expected, sql;
    auto add = [&](int id, std::string type, const std::string &content, const std::string &flags) {
        text += std::to_string(id) + " name Static\n";
        sql += "insert into vlanInfo values(" + std::to_string(id) + ", 5, 'n', '" + type + "', '');";
        expected += std::to_string(id) + " 5 " + flags + type + "\n";
        std::replace(type.begin(), type.end(), ' ', '_');
        if (content != "")
            fileWrite(PathGet(PATH_TEMPLATE_DIR) + type, content);
    };
    for (int id = 1; id <= 8; id++)
        add(id, templates[id - 1][0], templates[id - 1][1], templates[id - 1][2]);
    for (int id = 9; id <= 34; id++)
        add(id, "T " + std::to_string(id == 34 ? 9 : id), R"({"PTP":true})", id == 33 ? "0 0 0 " : "0x1 0 0 ");
    sqlRun(PATH_VLANINFO_DB, sql);
    vsTextSet("show vlan", text + "35 name Static\n");
    EXPECT_EQ(profiles(), expected + "35 0 0 0 0 \n"); // in no database
}
