#include "switch/swapi.h"

#include "fixture.h"

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

// A platform call that fails with -5, what the wrapper then gives (result and output), and its line, in which ~ stands
// for "Bad return code trying to" and # for "result = -5", at the end with the line end.
struct FAILURE_T {
    const char *call;
    std::string (*use)(CLIENT_HANDLE_T *handle);
    const char *given;
    std::string line;
};

std::string lineSpelt(std::string line)
{
    for (size_t at; (at = line.find('~')) != std::string::npos;)
        line.replace(at, 1, "Bad return code trying to");
    for (size_t at; (at = line.find('#')) != std::string::npos;)
        line.replace(at, 1, "result = -5");
    return line + "\n";
}

const FAILURE_T FAILURES[] = {
    {"openapiIfFirstGet", ofOne<swapiIfFirstGet>, "-5 77", "swapiIfFirstGet: ~ get first physical interface. #"},
    {"openapiIfFirstGet", [](CLIENT_HANDLE_T *handle) { return std::to_string(ifCountGet(handle, 0)); }, "0",
     "swapiIfFirstGet: ~ get first physical interface. #"},
    {"openapiIfTypeGet", ofOne<swapiIfTypeGet>, "10000 77", "swapiIfTypeGet: ~ get interface type. interface=1 #"},
    {"openapiIfSpeedGet", ofOne<ifSpeedGet>, "10000 77", "ifSpeedGet: ~ get speed of physical interface. (#)"},
    {"openapiIfMaxFrameSizeGet", ofOne<ifMaxFrameSizeGet>, "10000 9198",
     "ifMaxFrameSizeGet: ~ get max frame size of physical interface. (#)"},
    {"rpcclt_openapiIfEthernetHeaderSizeGet", ofOne<ifMaxFrameSizeGet>, "10000 9216",
     "ifMaxFrameSizeGet: ~ get max frame size of physical interface. (#)"},
    {"rpcclt_openapiUnitMgrStackMemberGetNext", ofAll<unitCountGet>, "0 0", ""},
    {"rpcclt_openapiSystemNameGet", textOfAll<systemNameGet>, "10000 kept", ""},
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
     "10000 ", "stackUnitMgrPreconfigModelIdGet: ~ get the unit's pre-configured model identifier. (#)"},
    {"rpcclt_openapiBoxsSfpTypeGet", ofOne<boxsSfpTypeGet>, "10000 0",
     "boxsSfpTypeGet: ~ get boxs sfp type. interface=1 #"},
    {"rpcclt_openapiDot1qSwPortModeGet", ofOne<dot1qSwPortAutoTrunkStatusGet>, "-5 0",
     "dot1qSwPortAutoTrunkStatusGet: Could not get DOT1Q Port Mode. Mode = 0, Error = -5"},
    {"rpcclt_openapiVlanNameLenGet", vlanTen, "10000 null", "vlanNameGet: ~ get VLAN Name Length. (#)"},
    {"rpcclt_openapiVlanNameGet", vlanTen, "10000 null", "vlanNameGet: ~ get VLAN 10 name. (#)"},
    {"openapiVlanIfPvidGet", ofOne<swapiVlanIfPvidGet>, "10000 77", "swapiVlanIfPvidGet: ~ get PVID. (#)"},
    {"rpcclt_openapiPoeIsSupported", ofAll<poeIsSupported>, "0 0",
     "poeIsSupported: ~ check if PoE is supported on this platform. (result = -5)\n(ERROR) poeIsSupported: ~ check if "
     "PoE is supported on this platform. (#)"},
    {"rpcclt_openapiPoePseMainConsumptionPowerGet", ofOne<poePseMainConsumptionPowerGet>, "10000 0",
     "poePseMainConsumptionPowerGet: ~ get PoE power consumed for unit 1. (#)"},
    {"rpcclt_openapiPoePseTotalAvailablePowerGet", ofOne<poePseTotalAvailablePowerGet>, "10000 0",
     "poePseTotalAvailablePowerGet: ~ get PoE total available power for unit 1. (#)"},
    {"rpcclt_openapiPoePseThresholdPowerGet", ofOne<poePseThresholdPowerGet>, "0 77",
     "poePseThresholdPowerGet: ~ get PoE threshold power for unit 1. (#)"},
    {"rpcclt_openapiLagStaticModeGet", ofOne<swapiLagStaticModeGet>, "10000 77",
     "swapiLagStaticModeGet: ~ the static mode for the LAG interface=1. (#)"},
    {"rpcclt_openapiLagLoadBalanceModeGet", ofOne<swapiLagLoadBalanceModeGet>, "10000 77",
     "swapiLagLoadBalanceModeGet: ~ get the hashmode for the LAG interface=1. (#)"},
    {"rpcclt_openapiLagMaxMemberCountGet", ofAll<lagMaxMemberCountGet>, "10000 0",
     "lagMaxMemberCountGet: ~ get the maximum member count of a LAG. (#)"},
    {"rpcclt_openapiAuthMgrPortControlModeGet", ofOne<swapiDot1xPortControlModeGet>, "-5 77",
     "swapiDot1xPortControlModeGet: ~ get port(1) control mode (#)"},
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
        EXPECT_EQ(logText(), failure.line.empty() ? "" : "(ERROR) " + lineSpelt(failure.line)) << failure.call;
    }
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
    static const uint32_t frames[][3] = {
        {9216, 0, 9198}, {1518, 0, 1500}, {18, 0, 0}, {0, 10000, 9198}, {5, 10000, 9198}};
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
    static const std::pair<char, const char *> rows[] = {{'~', "0 192.168.1.20 02~AB~0C~00~00~FF"},
                                                         {'\0', "0 192.168.1.20 02AB0C0000FF"},
                                                         {'\x7f', "0 192.168.1.20 02AB0C0000FF"}};
    for (const auto &row : rows)
        EXPECT_EQ(addressAndMac(&handle, row.first), row.second);
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
