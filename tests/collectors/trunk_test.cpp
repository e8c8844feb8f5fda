#include "collectors/feature/sw_trunk_cfg.h"
#include "support/build.h"

static const char autoLagCommand[] = "show port-channel auto all";
static const char trunkCommand[] = "show interfaces switchport trunk";

using Trunk = BUILDER_TEST;

TEST_F(Trunk, SettingsComeFromTheirColumns)
{
    const std::string hash = "Auto LAG Global Hash Mode.......................";
    expectShown(
        autoLagCommand, [] { return documentOf(getAutoLagCfg); },
        {
            {"\nAuto LAG Admin Mode............................ Enabled\n" + hash + "3 (Source/Destination MAC)\n",
             R"({"autoMode":true,"balanceMode":2})"},
            {hash + "10\r\nAuto LAG Admin Mode............................ Disabled\r\n",
             R"({"balanceMode":9,"autoMode":false})"},
            {"Auto LAG Admin Mode\nAuto LAG Global Hash Mode: 3\n", R"({"autoMode":false})"},
            {hash + "Enhanced hashing mode\n", "{}"}, // no digits
            {hash + "-2147483648\n", R"({"balanceMode":-2147483649})"},
            {" Auto LAG Admin Mode........................... Enabled\nAuto LAG Global\n", "{}"},
        });
    EXPECT_FALSE(filesLeft());
    expectShown(
        trunkCommand, [] { return documentOf(switchTrunkModeGet); },
        {
            {"\nGlobal Auto-Trunk Mode: Enabled\n\nGlobal Auto-Trunk Mode: Disabled\n", R"({"autoMode":true})"},
            {"Global Auto-Trunk Mode......... Disabled\r\nGlobal Auto-Trunk Mode: Enabled\n", R"({"autoMode":false})"},
            {" Global Auto-Trunk Mode: Enabled\n", "{}"},
        });
    EXPECT_TRUE(filesLeft()); // other programs may look at it
    const std::tuple<BUILDER_TEXT_T, const char *, VS_FAULT_KIND, const char *> failures[] = {
        {getAutoLagCfg, autoLagCommand, VS_FAIL, "10000 "},
        {getAutoLagCfg, autoLagCommand, VS_NO_FILE, "10016 "},
        {switchTrunkModeGet, trunkCommand, VS_FAIL, "10016 {}"}, // an earlier output is not taken for this one's
        {switchTrunkModeGet, trunkCommand, VS_NO_FILE, "10016 {}"},
    };
    for (const auto &[builder, command, kind, expected] : failures) {
        vsFaultAdd({command, "", 0, kind});
        BUILT_T built = buildText(builder);
        EXPECT_EQ(std::to_string(built.result) + " " + built.text, expected);
        vsFaultsClear();
    }
    EXPECT_TRUE(has(logText(), "(ERROR) switchTrunkModeGet: Can not open file:" + root.dir + "/mnt/application"))
        << logText();
}

TEST_F(Trunk, ManualPortsAreCopiedFromTheFile)
{
    const std::pair<const char *, const char *> cases[] = {
        {R"({"lagPort":[{"id":1,"vlans":[10,20]}],"other":1,"physicalPort":[3,4]})",
         R"({"physicalPort":[3,4],"lagPort":[{"id":1,"vlans":[10,20]}]})"},
        {R"({"PHYSICALPORT":"1-4"})", R"({"physicalPort":"1-4","lagPort":[]})"},
        {R"({"physicalPort":[3,4])", R"({"physicalPort":[],"lagPort":[]})"}, // cut short
    };
    for (const auto &[file, document] : cases) {
        fileWrite(root.dir + "/tmp/manual_trunk_config", file);
        EXPECT_EQ(documentOf(manualTrunkGet), document) << file;
    }
}
