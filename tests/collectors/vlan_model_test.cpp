#include "collectors/feature/vlan_model.h"
#include "stores/sql.h"
#include "stores/vlan_info.h"
#include "support/build.h"

struct VlanModel : BUILDER_TEST {
    void SetUp() override
    {
        ASSERT_EQ(vsLoadText(R"({
            "vlans": {"1": {"name": "default"}, "10": {"name": "Dante"}, "20": {"static": false}},
            "units": {"1": {"model": "TK620-R01", "portCount": 2}},
            "ports": {"1/0/1": {"pvid": 10, "tagged": [1]}},
            "lags": {"1": {"members": ["1/0/2"], "tagged": [10]}}})"),
                  "");
        vlanInfoTableMake();
        jsonBuildBegin();
    }
    // The fast list as text: "id static management type name/profile/color tagged untagged tagLags untagLags", one a
    // line.
    std::string fast(int result = 0)
    {
        OWNED_VLAN_LIST list;
        EXPECT_EQ(vlanListAllInfoGetFastEX(&handle, &list), result);
        std::string text;
        for (uint32_t i = 0; list != nullptr && i < list->count; i++) {
            const VLAN_INFO_T *vlan = list->ids[i];
            EXPECT_EQ(vlanListFind(list.get(), vlan->vlanId), vlan);
            EXPECT_EQ(vlan->valid, 1);
            text += std::to_string(vlan->vlanId) + " " + std::to_string(vlan->isStatic) + " " +
                    std::to_string(vlan->management) + " " + std::to_string(vlan->vlanType) + " " + vlan->name + "/" +
                    vlan->profileType + "/" + vlan->color;
            for (const cJSON *array : {vlan->tagPorts, vlan->untagPorts, vlan->tagLags, vlan->untagLags})
                text += std::string(" ") + OWNED_TEXT(cJSON_PrintUnformatted(array)).get();
            text += "\n";
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
            EXPECT_EQ(vlanProfileFind(list.get(), vlan->vlanId), vlan);
            char numbers[64];
            snprintf(numbers, sizeof(numbers), "%u %u %#x %#x %u ", vlan->vlanId, vlan->vlanType, vlan->profileFlags,
                     vlan->profileFlagMask, vlan->profileVariant);
            text += numbers + std::string(vlan->profileType) + "\n";
        }
        return text;
    }
    static void templateSet(const std::string &name, const std::string &text)
    {
        fileWrite(PathGet(PATH_TEMPLATE_DIR) + name, text);
    }
};

static const char fastClean[] = "1 1 1 1 default/Default/#000000 [1] [2] [] [1]\n"
                                "10 1 0 2 It's 100%/Audio Dante/#43A047 [] [1] [1] []\n"
                                "20 0 0 1 VLAN0020/Default/#000000 [] [] [] []\n";

TEST_F(VlanModel, FastListTakesVlansFromTheShownTable)
{
    vsState().vlans[2].name = "VLAN0020";
    sqlRun(PATH_VLANINFO_DB, "insert into vlanInfo values(10, 2, 'It''s 100%', 'Audio Dante', '#43A047')");
    EXPECT_EQ(fast(), fastClean);
    EXPECT_FALSE(fileExists(PathGet(PATH_SHOW_VLAN_FAST)));
    vsFaultAdd({"show dot1as summary"}); // not every switch has the clock
    vsFaultAdd({"openapiVlanNextGet"});
    EXPECT_EQ(fast(), fastClean);
    vsFaultAdd({"openapiIfFirstGet", "2"});
    EXPECT_EQ(fast(10000), "");
    vsFaultsClear();
    for (VS_FAULT_KIND kind : {VS_FAIL, VS_NO_FILE}) {
        vsFaultAdd({"show vlan", "", 0, kind});
        EXPECT_EQ(fast(10000), "");
        EXPECT_EQ(profiles(10000), "");
        vsFaultsClear();
    }
    EXPECT_EQ(vsCallCount("rpcclt_openapiVlanNameGet"), 0u);
    EXPECT_EQ(vlanInfoSelectById(1, nullptr, nullptr, nullptr, nullptr), 0); // nothing is written
}

TEST_F(VlanModel, ShownRowsAreTakenOrLeft)
{
    vsState().ports.clear();
    vsTextSet("show vlan", "VLAN ID VLAN Name                        VLAN Type\n"
                           "------- -------------------------------- ----------\n"
                           "1       default                          Default\n"
                           " \t2     A B                             Static\r\n"
                           "3       Dynamic                          Static\n"
                           "4       Quiet                            Other\n" // no type
                           "5 Static"
                           "\n"
                           "0       zero                             Static\n"
                           "4097    high                             Static\n"
                           "4294967298 wraps                         Static\n"
                           "x6      name                             Static\n"
                           "7x      Static\n"
                           "8Default\n"
                           "4096    last                             Dynamic");
    EXPECT_EQ(fast(), "1 1 1 1 default/Default/#000000 [] [] [] [1]\n"
                      "2 1 0 1 A/Default/#000000 [] [] [] []\n"
                      "3 0 0 1 Dynamic/Default/#000000 [] [] [] []\n"
                      "5 1 0 1 Static/Default/#000000 [] [] [] []\n"
                      "7 1 0 1 x/Default/#000000 [] [] [] []\n"
                      "8 1 0 1 Default/Default/#000000 [] [] [] []\n"
                      "4096 0 0 1 last/Default/#000000 [] [] [] []\n");
    vsTextSet("show vlan", "");
    EXPECT_EQ(fast(), "");

    std::string many;
    for (int i = 0; i < 5000; i++)
        many += "9 " + std::string(80, 'n') + " Static\n";
    vsTextSet("show vlan", many);
    OWNED_VLAN_LIST list;
    EXPECT_EQ(vlanListAllInfoGetFastEX(&handle, &list), 0);
    EXPECT_EQ(list->count, VLAN_SLOTS);
    EXPECT_EQ(list->ids[4095]->name, std::string(63, 'n'));
    EXPECT_EQ(vlanListFind(list.get(), 1), nullptr); // an index entry of 0 is slot 0's
    EXPECT_EQ(vlanListFind(list.get(), 4097), nullptr);
}

TEST_F(VlanModel, ProfileMapTakesFlagsFromTemplates)
{
    templateSet("All_On", R"({"PTP":true,"PTP-BC":true,"AVB":true,"flowControl":true,"Sonos":true})");
    templateSet("All_Off", R"({"PTP":false,"PTP-BC":0,"AVB":"true","flowControl":false,"Sonos":null})");
    templateSet("Array", R"(["PTP",true])");
    templateSet("Broken", R"({"PTP":true)");
    templateSet("Audio_Video_AVB_MILAN", R"({"AVB":true})");
    struct {
        const char *type, *expected;
    } cases[] = {
        {"All On", "1 5 0x2207 0x2006 0 All On\n"},
        {"All Off", "1 5 0 0x4 0 All Off\n"},
        {"Array", "1 5 0 0 0 Array\n"},
        {"Broken", "1 5 0 0 0 Broken\n"},
        {"Missing", "1 5 0 0 0 Missing\n"},
        {"", "1 5 0 0 0 \n"},
        {"Audio Video AVB MILAN", "1 5 0x2 0x2 32 Audio Video AVB MILAN\n"},
        {"Audio Video AVB MILAN with Dante PTPv1 PTPv2 or AES67",
         "1 5 0 0 64 Audio Video AVB MILAN with Dante PTPv1 PTPv2 or AES67\n"},
    };
    vsTextSet("show vlan", "1 default Default\n");
    for (const auto &one : cases) {
        sqlRun(PATH_VLANINFO_DB, std::string("replace into vlanInfo values(1, 5, 'n', '") + one.type + "', '')");
        EXPECT_EQ(profiles(), one.expected);
    }
    sqlRun(PATH_VLANINFO_DB, "delete from vlanInfo");
    EXPECT_EQ(profiles(), "1 0 0 0 0 \n");
    EXPECT_FALSE(fileExists(PathGet(PATH_SHOW_VLAN_PROFILE)));
}

// The 33rd type gets no flags; VLANs of the types before it still do.
TEST_F(VlanModel, ProfileMapKeepsThirtyTwoTypes)
{
    std::string text, expected, sql;
    for (int i = 1; i <= 34; i++) {
        std::string id = std::to_string(i), type = "T " + std::to_string(i == 34 ? 1 : i);
        templateSet("T_" + id, R"({"PTP":true})");
        text += id + " name Static\n";
        sql += "insert into vlanInfo values(" + id + ", 1, 'n', '" + type + "', '');";
        expected += id + " 1 " + (i == 33 ? "0" : "0x1") + " 0 0 " + type + "\n";
    }
    sqlRun(PATH_VLANINFO_DB, sql);
    vsTextSet("show vlan", text);
    EXPECT_EQ(profiles(), expected);
    OWNED_VLAN_PROFILES list;
    ASSERT_EQ(vlanListProfileCreateFastEX(&handle, &list), 0);
    EXPECT_EQ(vlanProfileFind(list.get(), 33)->templatePath, PathGet(PATH_TEMPLATE_DIR) + std::string("T 33"));
}
