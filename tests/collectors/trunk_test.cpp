#include "collectors/feature/trunk.h"
#include "support/build.h"

static const char autoLagCommand[] = "show port-channel auto all";
static const char trunkCommand[] = "show interfaces switchport trunk";

struct Trunk : BUILDER_TEST {
    static std::string built(BUILDER_TEXT_T builder)
    {
        BUILT_T built = buildText(builder);
        return std::to_string(built.result) + " " + built.text;
    }
    static std::string failing(BUILDER_TEXT_T builder, const char *command, VS_FAULT_KIND kind)
    {
        VS_FAULT_T fault;
        fault.name = command;
        fault.kind = kind;
        vsFaultAdd(fault);
        std::string text = built(builder);
        vsFaultsClear();
        return text;
    }
    // Names of the output files that are left.
    std::string filesLeft() const
    {
        std::string names;
        for (const auto &entry : std::filesystem::directory_iterator(root.dir + "/mnt/application/kelo/tmp"))
            names += entry.path().filename().string() + ";";
        return names;
    }
};

TEST_F(Trunk, AutoLagSettingsComeFromTheirColumns)
{
    const std::string hash = "Auto LAG Global Hash Mode.......................";
    const struct {
        std::string text;
        const char *document;
    } cases[] = {
        {"\nAuto LAG Admin Mode............................ Enabled\n" + hash + "3 (Source/Destination MAC)\n",
         R"({"autoMode":true,"balanceMode":2})"},
        {hash + "10\r\nAuto LAG Admin Mode............................ Disabled\r\n",
         R"({"balanceMode":9,"autoMode":false})"},
        {"Auto LAG Admin Mode\nAuto LAG Global Hash Mode: 3\n", R"({"autoMode":false})"},
        {hash + "Enhanced hashing mode\n", "{}"}, // no digits
        {hash + "\n", "{}"},
        {hash + "-2147483648\n", R"({"balanceMode":-2147483649})"},
        {" Auto LAG Admin Mode........................... Enabled\nAuto LAG Global\n", "{}"},
        {hash + "4" + std::string(1500, ' ') + "\nAuto LAG Admin Mode Enabled", R"({"balanceMode":3,"autoMode":true})"},
        {"", "{}"},
    };
    for (const auto &one : cases) {
        vsTextSet(autoLagCommand, one.text);
        EXPECT_EQ(built(getAutoLagCfg), std::string("0 ") + one.document) << one.text;
        EXPECT_EQ(filesLeft(), "");
    }
}

TEST_F(Trunk, AutoTrunkModeIsTheFirstLineOfItsLabel)
{
    const struct {
        const char *text;
        const char *document;
    } cases[] = {
        {"\nGlobal Auto-Trunk Mode: Enabled\n\nGlobal Auto-Trunk Mode: Disabled\n", R"({"autoMode":true})"},
        {"Global Auto-Trunk Mode......... Disabled\r\nGlobal Auto-Trunk Mode: Enabled\n", R"({"autoMode":false})"},
        {" Global Auto-Trunk Mode: Enabled\n", "{}"},
        {"", "{}"},
    };
    for (const auto &one : cases) {
        vsTextSet(trunkCommand, one.text);
        EXPECT_EQ(built(switchTrunkModeGet), std::string("0 ") + one.document) << one.text;
        // other programs may look at it
        EXPECT_EQ(filesLeft(), "kelo_out_show_interfaces_switchport_trunk;");
    }
}

TEST_F(Trunk, CommandThatFailsGivesItsResult)
{
    vsTextSet(autoLagCommand, "Auto LAG Admin Mode Enabled\n");
    vsTextSet(trunkCommand, "Global Auto-Trunk Mode Enabled\n");
    const std::string path = root.dir + "/mnt/application/kelo/tmp/kelo_out_show_";

    EXPECT_EQ(failing(getAutoLagCfg, autoLagCommand, VS_FAIL), "10000 ");
    EXPECT_EQ(failing(getAutoLagCfg, autoLagCommand, VS_NO_FILE), "10016 ");
    EXPECT_NE(logText().find("(ERROR) getAutoLagCfg: Can not open file:" + path + "port-channel_auto_all_"),
              std::string::npos)
        << logText();
    EXPECT_EQ(failing(getAutoLagCfg, autoLagCommand, VS_EMPTY), "0 {}");
    EXPECT_EQ(filesLeft(), "");

    // An earlier output must not be taken for this one's.
    EXPECT_EQ(built(switchTrunkModeGet), R"(0 {"autoMode":true})");
    for (VS_FAULT_KIND kind : {VS_FAIL, VS_NO_FILE}) {
        logClear();
        EXPECT_EQ(failing(switchTrunkModeGet, trunkCommand, kind), "10016 {}");
        EXPECT_NE(
            logText().find("(ERROR) switchTrunkModeGet: Can not open file:" + path + "interfaces_switchport_trunk"),
            std::string::npos)
            << logText();
    }
    EXPECT_EQ(failing(switchTrunkModeGet, trunkCommand, VS_EMPTY), "0 {}");
}

TEST_F(Trunk, ManualPortsAreCopiedFromTheFile)
{
    const std::string path = root.dir + "/tmp/manual_trunk_config";
    const struct {
        const char *file;
        const char *document;
    } cases[] = {
        {R"({"lagPort":[{"id":1,"vlans":[10,20]}],"other":1,"physicalPort":[3,4]})",
         R"({"physicalPort":[3,4],"lagPort":[{"id":1,"vlans":[10,20]}]})"},
        {R"({"PHYSICALPORT":"1-4"})", R"({"physicalPort":"1-4","lagPort":[]})"},
        {R"({"physicalPort":[3,4])", R"({"physicalPort":[],"lagPort":[]})"}, // cut short
        {"[1]", R"({"physicalPort":[],"lagPort":[]})"},
        {"", R"({"physicalPort":[],"lagPort":[]})"},
    };
    EXPECT_EQ(built(manualTrunkGet), R"(0 {"physicalPort":[],"lagPort":[]})");
    for (const auto &one : cases) {
        fileWrite(path, one.file);
        EXPECT_EQ(built(manualTrunkGet), std::string("0 ") + one.document) << one.file;
    }
}
