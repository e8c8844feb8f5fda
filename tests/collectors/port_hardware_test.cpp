#include "collectors/port/port_hardware.h"
#include "support/build.h"

// A modular unit: two ports of its own and two on a card.
struct PortHardware : BUILDER_TEST {
    void SetUp() override
    {
        state.units.emplace_back();
        state.units[0].slots.push_back({3, "QMD-K8", ""});
        for (uint32_t i = 0; i < 4; i++) {
            VS_PORT_T port;
            port.ifNum = i + 1;
            port.slot = i < 2 ? 0 : 3;
            port.port = i + 1;
            port.optic.type = i == 0 ? 0 : 2;
            port.optic.present = i != 0;
            state.ports.push_back(port);
        }
        state.ports[3].optic.type = 5;
        state.ports[1].stackCapable = "Yes";
    }
    static std::string document()
    {
        BUILT_T built = buildText(portHardwareInfoBuild);
        EXPECT_EQ(built.result, 0);
        return built.text;
    }
};

static std::string rows(const std::string &modules, const char *const stack[4])
{
    std::string text;
    for (int i = 0; i < 4; i++)
        text += (i == 0 ? "" : ",") + std::string(R"({"portNum":)") + std::to_string(i + 1) + R"(,"moduleType":)" +
                modules[i] + R"(,"stackCapable":")" + stack[i] + R"("})";
    return R"({"rows":[)" + text + "]}";
}
static const char *const secondStacks[] = {"No", "Yes", "No", "No"};
static const char *const noneStacks[] = {"No", "No", "No", "No"};

TEST_F(PortHardware, ModuleTypeFollowsMediaThenCard)
{
    EXPECT_EQ(document(), rows("0214", secondStacks));
    EXPECT_FALSE(fileExists(PathGet(PATH_SHOW_PORT_ALL_HW)));
    vsState().units[0].slots[0].model = "QMD-K1";
    EXPECT_EQ(document(), rows("0224", secondStacks));
    vsState().units[0].slots[0].model = "QMD-K6";

    struct {
        VS_FAULT_T fault;
        std::string modules;
        const char *const *stack;
    } cases[] = {
        {{"rpcclt_openapiBoxsSfpTypeGet", "3"}, "0204", secondStacks},
        {{"rpcclt_openapiHashIntfUnitSlotPortGet", "3"}, "0224", secondStacks},
        {{"rpcclt_openapiCardTypeGet"}, "0224", secondStacks},
        {{"rpcclt_openapiCardSupportedCardModelIdGet"}, "0224", secondStacks},
        {{"show port all"}, "0214", noneStacks}, // and nothing is left of the build before
        {{"show port all", "", 0, VS_NO_FILE}, "0214", noneStacks},
    };
    for (const auto &one : cases) {
        vsFaultAdd(one.fault);
        EXPECT_EQ(document(), rows(one.modules, one.stack)) << one.fault.name;
        vsFaultsClear();
    }
    vsFaultAdd({"openapiIfFirstGet"});
    EXPECT_EQ(document(), R"({"rows":[]})");
    vsFaultsClear();
    EXPECT_EQ(portHardwareInfoBuild(&handle, nullptr), 10003);
    expectNoDocumentWithoutMemory(portHardwareInfoBuild, -7);
}

TEST_F(PortHardware, ShownRowsAreTakenOrLeft)
{
    const std::string rule = "--------- ------\n";
    auto row = [](const std::string &name, const std::string &stack) {
        return name + std::string(79 - name.size(), ' ') + stack;
    };
    struct {
        std::string text;
        const char *first; // stack text of port 1
    } cases[] = {
        {rule + row("1/0/1", "Yes      Disable\n"), "Yes"},
        {rule + row("1/0/1", " 1234567890 Disable\n"), "1234567"},
        {rule + row("1/0/1", "Perhaps\n"), "Perhaps"}, // 87 characters with the line end
        {rule + row("1/0/1", "Perhaps"), "No"},
        {rule + row("1/0/1", "         Disable\n"), "No"},
        {rule + row("lag 1", "Yes      Disable\n") + row("1/0", "Yes      Disable\n"), "No"},
        {rule + row("x", "Yes      Disable\n") + row("1/0/1", "Yes      Disable\r\n"), "Yes"},
        {"-----\n" + row("1/0/1", "Yes      Disable\n"), "No"}, // no rule
        {"", "No"},
    };
    for (const auto &one : cases) {
        vsTextSet("show port all", one.text);
        const char *stack[] = {one.first, "No", "No", "No"};
        EXPECT_EQ(document(), rows("0214", stack)) << one.text;
    }

    vsState().ports[3].ifNum = 768;
    vsTextSet("show port all", rule + row("1/3/4", "Yes      Disable\n"));
    EXPECT_NE(document().find(R"("portNum":768,"moduleType":4,"stackCapable":"Yes")"), std::string::npos);
    vsState().ports[3].ifNum = 769;
    EXPECT_NE(document().find(R"("portNum":769,"moduleType":4,"stackCapable":"No")"), std::string::npos);
}
