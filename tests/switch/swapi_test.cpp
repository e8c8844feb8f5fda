#include "switch/swapi.h"

#include "fixture.h"
#include "runtime/paths.h"
#include "runtime/result.h"
#include "support/alloc.h"

#include <cstdlib>
#include <filesystem>

using SWAPI = SWITCH_TEST;

namespace {
template <typename... VALUES> std::string shown(int result, VALUES... values)
{
    std::string text = std::to_string(result);
    ((text += " " + std::to_string(values)), ...);
    return text;
}

std::string shownText(int result, const char *value)
{
    return std::to_string(result) + " " + value;
}

// One wrapper whose number starts as 77.
template <int (*WRAPPER)(CLIENT_HANDLE_T *, uint32_t, uint32_t *)> std::string ofOne(CLIENT_HANDLE_T *handle)
{
    uint32_t value = 77;
    int result = WRAPPER(handle, 1, &value);
    return shown(result, value);
}
template <int (*WRAPPER)(CLIENT_HANDLE_T *, uint32_t *)> std::string ofAll(CLIENT_HANDLE_T *handle)
{
    uint32_t value = 77;
    int result = WRAPPER(handle, &value);
    return shown(result, value);
}
template <int (*WRAPPER)(CLIENT_HANDLE_T *, char *)> std::string textOfAll(CLIENT_HANDLE_T *handle)
{
    char text[256] = "kept";
    int result = WRAPPER(handle, text);
    return shownText(result, text);
}

std::string vlanTen(CLIENT_HANDLE_T *handle)
{
    char *name = nullptr;
    int result = vlanNameGet(handle, 10, &name);
    std::string text = shownText(result, name == nullptr ? "null" : name);
    free(name);
    return text;
}

std::string addressAndMac(CLIENT_HANDLE_T *handle, char separator)
{
    char ip[16] = "kept";
    char mac[18] = "kept";
    int result = servicePortAddressAndMacGet(handle, ip, mac, separator);
    return std::to_string(result) + " " + ip + " " + mac;
}

std::string modesOf(CLIENT_HANDLE_T *handle, uint32_t length = 5)
{
    uint32_t modes[5] = {7, 7, 7, 7, 7};
    int result = swPortsModeGet(handle, modes, length);
    return shown(result, modes[0], modes[1], modes[2], modes[3], modes[4]);
}

// A platform call that fails with -5, what the wrapper then gives (result and output), and its line.
struct FAILURE_T {
    const char *call;
    std::string (*use)(CLIENT_HANDLE_T *handle);
    const char *given;
    const char *line;
};

const FAILURE_T FAILURES[] = {
    {"openapiIfFirstGet", ofOne<swapiIfFirstGet>, "-5 77",
     "swapiIfFirstGet: Bad return code trying to get first physical interface. result = -5\n"},
    {"openapiIfFirstGet", [](CLIENT_HANDLE_T *handle) { return std::to_string(ifCountGet(handle, 0)); }, "0",
     "swapiIfFirstGet: Bad return code trying to get first physical interface. result = -5\n"},
    {"openapiIfTypeGet", ofOne<swapiIfTypeGet>, "10000 77",
     "swapiIfTypeGet: Bad return code trying to get interface type. interface=1 result = -5\n"},
    {"rpcclt_openapiHashIntfUnitSlotPortGet",
     [](CLIENT_HANDLE_T *handle) {
         openclt_usp_t usp = {9, 9, 9};
         int result = ifUnitSlotPortGet(handle, 1, &usp);
         return shown(result, usp.unit, usp.slot, usp.port);
     },
     "10000 0 0 0", ""},
    {"openapiIfSpeedGet", ofOne<ifSpeedGet>, "10000 77",
     "ifSpeedGet: Bad return code trying to get speed of physical interface. (result = -5)\n"},
    {"openapiIfMaxFrameSizeGet", ofOne<ifMaxFrameSizeGet>, "10000 9198",
     "ifMaxFrameSizeGet: Bad return code trying to get max frame size of physical interface. (result = -5)\n"},
    {"rpcclt_openapiIfEthernetHeaderSizeGet", ofOne<ifMaxFrameSizeGet>, "10000 9216",
     "ifMaxFrameSizeGet: Bad return code trying to get max frame size of physical interface. (result = -5)\n"},
    {"openapiIfNameGet",
     [](CLIENT_HANDLE_T *handle) {
         char name[20] = "kept";
         int result = ifNameGet(handle, 1, name, sizeof name);
         return shownText(result, name);
     },
     "-5 ", ""},
    {"rpcclt_openapiUnitMgrStackMemberGetNext", ofAll<unitCountGet>, "0 0", ""},
    {"rpcclt_openapiSystemNameMaxSizeGet", textOfAll<systemNameGet>, "10000 kept", ""},
    {"rpcclt_openapiSystemNameGet", textOfAll<systemNameGet>, "10000 kept", ""},
    {"rpcclt_openapiSystemRegMachineModelGet", textOfAll<machineModelGet>, "10000 kept", ""},
    {"rpcclt_openapiBootCodeVersion", textOfAll<bootCodeVersionGet>, "10000 kept", ""},
    {"rpcclt_openapiServicePortIPv4AddrGet", [](CLIENT_HANDLE_T *handle) { return addressAndMac(handle, ':'); },
     "10000 kept kept", ""},
    {"rpcclt_openapiSystemMacAddrGet", [](CLIENT_HANDLE_T *handle) { return addressAndMac(handle, ':'); },
     "10000 0.0.0.0 kept", ""},
    {"rpcclt_openapiBoxsFanControlModeGet", ofAll<fanModeGet>, "10000 0", ""},
    {"rpcclt_openapiUnitMgrPreconfigModelIdGet",
     [](CLIENT_HANDLE_T *handle) {
         char model[256] = "kept";
         int result = stackUnitMgrPreconfigModelIdGet(handle, 1, model);
         return shownText(result, model);
     },
     "10000 ",
     "stackUnitMgrPreconfigModelIdGet: Bad return code trying to get the unit's pre-configured model identifier. "
     "(result = -5)\n"},
    {"rpcclt_openapiBoxsSfpTypeGet", ofOne<boxsSfpTypeGet>, "10000 0",
     "boxsSfpTypeGet: Bad return code trying to get boxs sfp type. interface=1 result = -5\n"},
    {"rpcclt_openapiDot1qSwPortModeGet", ofOne<dot1qSwPortAutoTrunkStatusGet>, "-5 0",
     "dot1qSwPortAutoTrunkStatusGet: Could not get DOT1Q Port Mode. Mode = 0, Error = -5\n"},
    {"rpcclt_openapiVlanNameLenGet", vlanTen, "10000 null",
     "vlanNameGet: Bad return code trying to get VLAN Name Length. (result = -5)\n"},
    {"rpcclt_openapiVlanNameGet", vlanTen, "10000 null",
     "vlanNameGet: Bad return code trying to get VLAN 10 name. (result = -5)\n"},
    {"openapiVlanIfPvidGet", ofOne<swapiVlanIfPvidGet>, "10000 77",
     "swapiVlanIfPvidGet: Bad return code trying to get PVID. (result = -5)\n"},
    {"rpcclt_openapiDot1qSwPortTaggedVlanListGet",
     [](CLIENT_HANDLE_T *handle) {
         openclt_vlan_list_t list;
         list.count = 77;
         int result = swapiDot1qSwPortTaggedVlanListGet(handle, 1, &list);
         return shown(result, list.count);
     },
     "10000 0",
     "swapiDot1qSwPortTaggedVlanListGet: Bad return code trying to get rhe tagged vlan list. (result = -5)\n"},
    {"rpcclt_openapiPoeIsSupported", ofAll<poeIsSupported>, "0 0",
     "poeIsSupported: Bad return code trying to check if PoE is supported on this platform. (result = -5)\n"
     "(ERROR) poeIsSupported: Bad return code trying to check if PoE is supported on this platform. (result = -5)\n"},
    {"rpcclt_openapiPoeIsValidInterface",
     [](CLIENT_HANDLE_T *handle) { return std::to_string(poeIsValidInterface(handle, 1, 1)); }, "0", ""},
    {"rpcclt_openapiPoePseMainConsumptionPowerGet", ofOne<poePseMainConsumptionPowerGet>, "10000 0",
     "poePseMainConsumptionPowerGet: Bad return code trying to get PoE power consumed for unit 1. (result = -5)\n"},
    {"rpcclt_openapiPoePseTotalAvailablePowerGet", ofOne<poePseTotalAvailablePowerGet>, "10000 0",
     "poePseTotalAvailablePowerGet: Bad return code trying to get PoE total available power for unit 1. (result = -5)"
     "\n"},
    {"rpcclt_openapiPoePseThresholdPowerGet", ofOne<poePseThresholdPowerGet>, "0 77",
     "poePseThresholdPowerGet: Bad return code trying to get PoE threshold power for unit 1. (result = -5)\n"},
    {"rpcclt_openapiLagNameGet",
     [](CLIENT_HANDLE_T *handle) {
         char name[16] = "kept";
         int result = swapiLagNameGet(handle, 101, name, sizeof name);
         return shownText(result, name);
     },
     "10000 kept",
     "swapiLagNameGet: Bad return code trying to get the name for the LAG interface=101. (result = -5)\n"},
    {"rpcclt_openapiLagStaticModeGet", ofOne<swapiLagStaticModeGet>, "10000 77",
     "swapiLagStaticModeGet: Bad return code trying to the static mode for the LAG interface=1. (result = -5)\n"},
    {"rpcclt_openapiLagLoadBalanceModeGet", ofOne<swapiLagLoadBalanceModeGet>, "10000 77",
     "swapiLagLoadBalanceModeGet: Bad return code trying to get the hashmode for the LAG interface=1. (result = -5)\n"},
    {"rpcclt_openapiLagMaxMemberCountGet", ofAll<lagMaxMemberCountGet>, "10000 0",
     "lagMaxMemberCountGet: Bad return code trying to get the maximum member count of a LAG. (result = -5)\n"},
    {"rpcclt_openapiAuthMgrPortControlModeGet", ofOne<swapiDot1xPortControlModeGet>, "-5 77",
     "swapiDot1xPortControlModeGet: Bad return code trying to get port(1) control mode (result = -5)\n"},
    {"rpcclt_openapiAuthMgrPortStatusGet", ofOne<swapiDot1xPortStatusGet>, "-5 77",
     "swapiDot1xPortStatusGet: Bad return code trying to get port(1) dot1x status (result = -5)\n"},
    {"rpcclt_openapiDot1SMSTInstancePriorityGet",
     [](CLIENT_HANDLE_T *handle) {
         uint16_t priority = 77;
         int result = swapiDot1SMSTInstancePriorityGet(handle, 0, &priority);
         return shown(result, priority);
     },
     "-5 77",
     "swapiDot1SMSTInstancePriorityGet: Bad return code trying to get Spanning Tree Instance Priority. (result = "
     "-5)\n"},
};

const std::string TRUNK_RULE = "--------- ---------------------------- -----\n";
//  0         1         2         3         4
//  01234567890123456789012345678901234567890123
const std::string TRUNK_TABLE = "Interface Mode                         Trunk\n" + TRUNK_RULE +
                                "1/0/1     Auto                         No\n"
                                "1/0/2     Trunk                        Yes\n"
                                "1/0/3     Trunk                        (Yes)\n";
} // namespace

TEST_F(SWAPI, EveryFailureGivesItsDefaultAndItsLine)
{
    for (const FAILURE_T &failure : FAILURES) {
        vsFaultsClear();
        failCall(failure.call, -5);
        logClear();
        EXPECT_EQ(failure.use(&handle), failure.given) << failure.call;
        EXPECT_EQ(logText(), *failure.line == '\0' ? "" : std::string("(ERROR) ") + failure.line) << failure.call;
    }
}

TEST_F(SWAPI, DisplayNames)
{
    struct ROW_T {
        const char *failing;
        uint32_t ifNum;
        const char *expected;
    };
    static const ROW_T rows[] = {
        {nullptr, 2, "0 1/0/2"},
        {nullptr, 101, "0 lag 1"},
        {nullptr, 102, "0 lag 2"},
        {nullptr, 50, "10000 kept"},
        {"openapiIfFirstGet", 101, "10000 kept"},
        {"rpcclt_openapiHashIntfUnitSlotPortGet", 2, "10000 kept"},
    };
    for (const ROW_T &row : rows) {
        vsFaultsClear();
        if (row.failing != nullptr)
            failCall(row.failing, -5);
        char text[12] = "kept";
        int result = ifDisplayNameGet(&handle, row.ifNum, text);
        EXPECT_EQ(shownText(result, text), row.expected) << row.ifNum;
    }
    char cut[4];
    vsFaultsClear();
    EXPECT_EQ(ifNameGet(&handle, 102, cut, sizeof cut), 0);
    EXPECT_STREQ(cut, "lag");
    EXPECT_EQ(logText(), "");
}

TEST_F(SWAPI, PlatformCodesBecomeTheDocuments)
{
    static const uint32_t fans[][2] = {{0, 0}, {1, 0}, {2, 3}, {3, 1}, {4, 2}, {5, 0}};
    for (const auto &row : fans) {
        vsState().system.fanMode = row[0];
        EXPECT_EQ(ofAll<fanModeGet>(&handle), shown(0, row[1])) << row[0];
    }
    static const uint32_t statuses[][2] = {{0, 3}, {1, 1}, {2, 2}, {3, 3}, {9, 3}};
    for (const auto &row : statuses) {
        vsState().ports[0].dot1xStatus = row[0];
        EXPECT_EQ(ofOne<swapiDot1xPortStatusGet>(&handle), shown(0, row[1])) << row[0];
    }
    static const uint32_t trunks[][2] = {{0, 0}, {2, 0}, {3, 1}, {4, 0}};
    for (const auto &row : trunks) {
        vsState().ports[0].switchMode = row[0];
        EXPECT_EQ(ofOne<dot1qSwPortAutoTrunkStatusGet>(&handle), shown(0, row[1])) << row[0];
    }
    static const uint32_t frames[][3] = {{9216, 0, 9198}, {1518, 0, 1500}, {0, 10000, 9198}, {5, 10000, 9198}};
    for (const auto &row : frames) {
        vsState().ports[0].frameSize = row[0];
        EXPECT_EQ(ofOne<ifMaxFrameSizeGet>(&handle), shown(static_cast<int>(row[1]), row[2])) << row[0];
    }
    EXPECT_EQ(logText(), "");
}

TEST_F(SWAPI, AddressAndMacTexts)
{
    vsState().system.serviceAddress = 0xC0A80114;
    vsState().system.mac = "02:ab:0C:00:00:FF";
    struct ROW_T {
        char separator;
        const char *expected;
    };
    static const ROW_T rows[] = {{':', "0 192.168.1.20 02:AB:0C:00:00:FF"}, {'\0', "0 192.168.1.20 02AB0C0000FF"},
                                 {' ', "0 192.168.1.20 02 AB 0C 00 00 FF"}, {'~', "0 192.168.1.20 02~AB~0C~00~00~FF"},
                                 {'\n', "0 192.168.1.20 02AB0C0000FF"},     {'\x7f', "0 192.168.1.20 02AB0C0000FF"}};
    for (const ROW_T &row : rows)
        EXPECT_EQ(addressAndMac(&handle, row.separator), row.expected);
}

TEST_F(SWAPI, PoeOfASecondUnitIsEnough)
{
    EXPECT_EQ(ofAll<poeIsSupported>(&handle), "0 0");
    vsState().units[1].poeSupported = true;
    EXPECT_EQ(ofAll<poeIsSupported>(&handle), "0 1");
    vsState().units[0].poeSupported = true;
    vsState().units[1].poeSupported = false;
    EXPECT_EQ(ofAll<poeIsSupported>(&handle), "0 1");
    vsState().units.clear();
    EXPECT_EQ(ofAll<poeIsSupported>(&handle), "0 0");
}

TEST_F(SWAPI, TextsAndCounts)
{
    logLevelSet('7');
    char text[256];
    EXPECT_EQ(systemNameGet(&handle, text), 0);
    EXPECT_STREQ(text, "switch");
    EXPECT_EQ(stackUnitMgrPreconfigModelIdGet(&handle, 2, text), 0);
    EXPECT_STREQ(text, "TK830-T07");
    uint16_t priority = 0;
    EXPECT_EQ(swapiDot1SMSTInstancePriorityGet(&handle, 0, &priority), 0);
    EXPECT_EQ(vlanTen(&handle), "0 Audio");
    EXPECT_EQ(ifCountGet(&handle, 0), 3U);
    EXPECT_EQ(ifCountGet(&handle, 2), 2U);
    EXPECT_EQ(ofAll<unitCountGet>(&handle), "0 2");
    EXPECT_EQ(
        logText(),
        "(DEBUG) stackUnitMgrPreconfigModelIdGet: stackUnitMgrPreconfigModelIdGet: result = 0, model = TK830-T07\n"
        "(DEBUG) swapiDot1SMSTInstancePriorityGet: Spanning Tree Instance Priority for instance 0: 32768 \n");
}

TEST_F(SWAPI, NoMemoryForAName)
{
    allocFailAt(0, ALLOC_OWN);
    EXPECT_EQ(vlanTen(&handle), "10002 null");
    EXPECT_TRUE(allocFailStop());
    EXPECT_EQ(logText(), "(ERROR) vlanNameGet: Could not allocate memory.\n");
    char text[256] = "kept";
    allocFailAt(0, ALLOC_OWN);
    EXPECT_EQ(systemNameGet(&handle, text), RESULT_FAILED);
    EXPECT_TRUE(allocFailStop());
    EXPECT_STREQ(text, "kept");
}

TEST_F(SWAPI, TrunkPortsOfTheTable)
{
    struct ROW_T {
        const char *what;
        std::string text;
        const char *expected;
    };
    const ROW_T rows[] = {
        {"two trunks", TRUNK_TABLE, "0 0 0 8 8 0"},
        {"no rule line", TRUNK_TABLE.substr(0, 45) + TRUNK_TABLE.substr(45 + TRUNK_RULE.size()), "0 0 0 0 0 0"},
        {"rule of eight dashes", "--------\n" + TRUNK_TABLE.substr(90), "0 0 0 0 0 0"},
        {"empty", "", "0 0 0 0 0 0"},
        {"unknown port", TRUNK_RULE + "1/0/77    Trunk                        Yes\n", "0 0 0 0 0 0"},
        {"beyond the array", TRUNK_RULE + "lag 1     Trunk                        Yes\n", "0 0 0 0 0 0"},
        {"short rows", TRUNK_RULE + "1/0/2\n\n1/0/2     Trunk      Yes\n", "0 0 0 0 0 0"},
        {"CR LF and no end",
         TRUNK_RULE + "1/0/1     Trunk                        Yes\r\n"
                      "1/0/3     Trunk                        Yes",
         "0 0 8 0 8 0"},
        {"over-long row",
         TRUNK_RULE + "1/0/1     Trunk                        " + std::string(3000, 'Y') + "es\n" +
             "1/0/2     Trunk                        Yes\n",
         "0 0 0 8 0 0"},
    };
    for (const ROW_T &row : rows) {
        vsTextSet("show interfaces switchport trunk", row.text);
        EXPECT_EQ(modesOf(&handle), row.expected) << row.what;
    }
    vsTextSet("show interfaces switchport trunk", TRUNK_TABLE);
    EXPECT_EQ(modesOf(&handle, 3), "0 0 0 8 7 7"); // beyond the length nothing is touched
    EXPECT_EQ(logText(), "");
    EXPECT_TRUE(std::filesystem::is_empty(root.dir + "/mnt/application/kelo/tmp"));
}

TEST_F(SWAPI, TrunkTableThatCannotBeHad)
{
    failCall("show interfaces switchport trunk", -5);
    EXPECT_EQ(modesOf(&handle), "0 0 0 0 0 0");
    EXPECT_EQ(logText(), "(ERROR) cliShowExecuteToFile: Execute show cmd faile, result:-5\n");
    vsFaultsClear();
    logClear();
    vsTextSet("show interfaces switchport trunk", TRUNK_TABLE);
    spoilCommand("show interfaces switchport trunk", VS_NO_FILE);
    EXPECT_EQ(modesOf(&handle), "10016 0 0 0 0 0");
    std::string expected = std::string("(ERROR) swPortsModeGet: Can not open file:") + PathGet(PATH_SHOW_TRUNK);
    EXPECT_EQ(logText().compare(0, expected.size(), expected), 0) << logText();
}
