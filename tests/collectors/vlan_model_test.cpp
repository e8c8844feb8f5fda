#include "collectors/feature/vlan_model.h"
#include "stores/sql.h"
#include "stores/vlan_info.h"
#include "support/build.h"

struct VlanModel : BUILDER_TEST {
    void SetUp() override
    {
        state.lags.emplace_back().ifNum = 50; // a switch without LAGs has no list
        vlanInfoTableMake();
        jsonBuildBegin();
    }
    // The fast list as text: "id static management type name/profile/color", one a line.
    std::string fast(int result = 0)
    {
        OWNED_VLAN_LIST list;
        EXPECT_EQ(vlanListAllInfoGetFastEX(&handle, &list), result);
        std::string text;
        for (uint32_t i = 0; list != nullptr && i < list->count; i++) {
            const VLAN_INFO_T *vlan = list->ids[i];
            EXPECT_EQ(vlanSlotsFind(list.get(), vlan->vlanId), vlan);
            for (uint32_t number : {vlan->vlanId, vlan->isStatic + 0u, vlan->management + 0u, vlan->vlanType + 0u})
                text += std::to_string(number) + " ";
            text += std::string(vlan->name) + "/" + vlan->profileType + "/" + vlan->color + "\n";
        }
        return text;
    }
    // The profile map as text: "id type flags mask variant profile", one a line.
    std::string profiles(int result = 0)
    {
        OWNED_VLAN_PROFILES list;
        EXPECT_EQ(vlanListProfileCreateFastEX(&handle, &list), result);
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

TEST_F(VlanModel, FastListNeedsTheShownTableAndTheLags)
{
    const std::string shown = "1 1 1 1 default/Default/#000000\n10 0 0 2 It's 100%/Audio Dante/#43A047\n";
    vsTextSet("show vlan", "1 default Default\n10 Dante Dynamic\n");
    sqlRun(PATH_VLANINFO_DB, "insert into vlanInfo values(10, 2, 'It''s 100%', 'Audio Dante', '#43A047')");
    const std::tuple<VS_FAULT_T, int, int> cases[] = {{{"show dot1as summary"}, 0, 0}, // not every switch has the clock
                                                      {{"openapiVlanNextGet"}, 0, 0},
                                                      {{"openapiIfFirstGet", "2"}, 10000, 0},
                                                      {{"show vlan"}, 10000, 10000},
                                                      {{"show vlan", "", 0, VS_NO_FILE}, 10000, 10000}};
    for (const auto &[fault, result, profilesResult] : cases) {
        vsFaultAdd(fault);
        EXPECT_EQ(fast(result), result == 0 ? shown : "") << fault.name;
        EXPECT_EQ(profiles(profilesResult) == "", profilesResult != 0) << fault.name;
        vsFaultsClear();
    }
    EXPECT_EQ(vlanInfoSelectById(1, nullptr, nullptr, nullptr, nullptr), 0); // nothing is written
}

TEST_F(VlanModel, ShownRowsAreTakenOrLeft)
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

    vsTextSet("show vlan", "VLAN ID VLAN Name                        VLAN Type\n"
                           "------- -------------------------------- ----------\n"
                           "1       default                          Default\n"
                           " \t2     A B                             Static\r\n"
                           "3       Dynamic                          Static\n"
                           "4       Quiet                            Other\n" // no type
                           "5 Static\n"
                           "0       zero                             Static\n"
                           "4097    high                             Static\n"
                           "4294967298 wraps                         Static\n"
                           "x6      name                             Static\n"
                           "7x      Static\n"
                           "8Default\n"
                           "4096    last                             Dynamic");
    EXPECT_EQ(fast(), "1 1 1 1 default/Default/#000000\n2 1 0 1 A/Default/#000000\n3 0 0 1 Dynamic/Default/#000000\n"
                      "5 1 0 1 Static/Default/#000000\n7 1 0 1 x/Default/#000000\n8 1 0 1 Default/Default/#000000\n"
                      "4096 0 0 1 last/Default/#000000\n");
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
