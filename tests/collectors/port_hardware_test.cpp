#include "collectors/port/port_hardware_info.h"
#include "support/build.h"

// A modular unit: a copper port of its own and two optical ones on a card.
struct PortHardware : BUILDER_TEST {
    void SetUp() override
    {
        state.units.emplace_back().slots.push_back({3, "QMD-K8", ""});
        for (uint32_t i = 1; i <= 3; i++) {
            VS_PORT_T &port = portAdd(i, 1, i == 1 ? 0 : 3, i);
            port.optic.type = i == 1 ? 0 : i == 2 ? 2 : 5;
            port.optic.present = i != 1;
        }
        state.ports[0].stackCapable = "Yes";
    }
    static std::string document()
    {
        return documentOf(portHardwareInfoBuild);
    }
};

static std::string rows(const std::string &modules, const std::string &stack)
{
    return R"({"rows":[{"portNum":1,"moduleType":)" + modules.substr(0, 1) + R"(,"stackCapable":")" + stack +
           R"("},{"portNum":2,"moduleType":)" + modules.substr(1, 1) +
           R"(,"stackCapable":"No"},{"portNum":3,"moduleType":)" + modules.substr(2) + R"(,"stackCapable":"No"}]})";
}

TEST_F(PortHardware, ModuleTypeFollowsMediaThenCard)
{
    EXPECT_EQ(document(), rows("014", "Yes"));
    vsState().units[0].slots[0].model = "QMD-K1";
    EXPECT_EQ(document(), rows("024", "Yes"));
    vsState().units[0].slots[0].model = "QMD-K6";
    const std::tuple<VS_FAULT_T, const char *, const char *> cases[] = {
        {{"rpcclt_openapiBoxsSfpTypeGet", "2"}, "004", "Yes"},
        {{"rpcclt_openapiHashIntfUnitSlotPortGet", "2"}, "024", "Yes"},
        {{"rpcclt_openapiCardTypeGet"}, "024", "Yes"},
        {{"rpcclt_openapiCardSupportedCardModelIdGet"}, "024", "Yes"},
        {{"show port all"}, "014", "No"}, // and nothing is left of the build before
        {{"show port all", "", 0, VS_NO_FILE}, "014", "No"},
    };
    for (const auto &[fault, modules, stack] : cases) {
        vsFaultAdd(fault);
        EXPECT_EQ(document(), rows(modules, stack)) << fault.name;
        vsFaultsClear();
    }
}

TEST_F(PortHardware, ShownRowsAreTakenOrLeft)
{
    const std::string rule = "--------- ------\n";
    auto row = [](const std::string &name, const std::string &stack) {
        return name + std::string(79 - name.size(), ' ') + stack;
    };
    expectShown("show port all", document,
                {
                    {rule + row("1/0/1", " 1234567890 Disable\n"), rows("014", "1234567")},
                    {rule + row("1/0/1", "Perhaps\n"), rows("014", "Perhaps")}, // 87 characters with the line end
                    {rule + row("1/0/1", "Perhaps"), rows("014", "No")},
                    {rule + row("1/0/1", "         Disable\n"), rows("014", "No")},
                    {rule + row("lag 1", "Yes      x\n") + row("1/0", "Yes      x\n"), rows("014", "No")},
                    {rule + row("x", "Yes      x\n") + row("1/0/1", "Yes      x\r\n"), rows("014", "Yes")},
                    {"-----\n" + row("1/0/1", "Yes      x\n"), rows("014", "No")}, // no rule
                });
    vsTextSet("show port all", rule + row("1/3/3", "Yes      Disable\n"));
    for (const auto &[ifNum, stack] : {std::pair(768, "Yes"), {769, "No"}}) {
        vsState().ports[2].ifNum = static_cast<uint32_t>(ifNum);
        EXPECT_TRUE(has(document(), ":" + std::to_string(ifNum) + R"(,"moduleType":4,"stackCapable":")" + stack));
    }
}
