#include "switch/swapi.h"

// Thin wrappers over the platform's calls: result convention, log line on failure, conversion of platform codes. What
// has no failure row of its own goes through the platform call's own result ("raw") or generalResult (10000). Lengths
// and counts that the platform gives are held within the buffer offered.

#include "runtime/log.h"
#include "runtime/owned.h"
#include "runtime/result.h"
#include "switch/cli.h"
#include "switch/columns.h"
#include "switch/walk.h"

#include <cstring>

namespace {
constexpr uint32_t TEXT_SIZE = 256;           // buffer of most texts
constexpr uint32_t PLATFORM_TEXT_MAX = 65536; // more is no length of a name
constexpr uint32_t FRAME_SIZE_DEFAULT = 9198;
constexpr uint32_t PORT_MODE_TRUNK = 8; // the documents'

// The platform's result of a call; a failed one is logged under the wrapper's name by a line that ends in that result.
#define LOGGED(call, ...)                                                                                              \
    failureLogged((call), [&, wrapper = __func__](int failure) { LOG_ERROR_AS(wrapper, __VA_ARGS__, failure); })
template <typename LINE> int failureLogged(int result, LINE line);

int generalResult(int platformResult);
uint32_t lengthHeld(uint32_t length);

// Read a text through a descriptor of `capacity` (at most TEXT_SIZE) bytes into `out`; the platform's result, `out`
// untouched on failure.
template <typename CALL> int textRead(char *out, size_t size, uint32_t capacity, CALL call);

bool trunkRowParse(const char *line, char name[10]);
} // namespace

// ---- interfaces ----

int swapiIfFirstGet(CLIENT_HANDLE_T *clientHandle, uint32_t type, uint32_t *ifNum)
{
    return LOGGED(openapiIfFirstGet(clientHandle, type, ifNum),
                  "Bad return code trying to get first physical interface. result = %d\r\n");
}

int swapiIfNextGet(CLIENT_HANDLE_T *clientHandle, uint32_t type, uint32_t ifNum, uint32_t *nextIfNum)
{
    return openapiIfNextGet(clientHandle, type, ifNum, nextIfNum);
}

uint32_t ifCountGet(CLIENT_HANDLE_T *clientHandle, uint32_t type)
{
    uint32_t count = 0;
    for (IF_WALK_T walk = ifWalkStart(clientHandle, type); walk.valid; ifWalkNext(&walk))
        count++;
    return count;
}

int swapiIfTypeGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *type)
{
    return generalResult(LOGGED(openapiIfTypeGet(clientHandle, ifNum, type),
                                "Bad return code trying to get interface type. interface=%d result = %d\r\n", ifNum));
}

int ifDisplayNameGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, char text[12])
{
    uint32_t type = 0;
    if (openapiIfTypeGet(clientHandle, ifNum, &type) != OPENCLT_OK)
        return RESULT_FAILED;
    if (type == OPENCLT_IF_PHYSICAL) {
        openclt_usp_t usp;
        if (ifUnitSlotPortGet(clientHandle, ifNum, &usp) != RESULT_OK)
            return RESULT_FAILED;
        snprintf(text, 12, "%d/%d/%d", usp.unit, usp.slot, usp.port);
        return RESULT_OK;
    }
    uint32_t first = 0;
    if (type != OPENCLT_IF_LAG || openapiIfFirstGet(clientHandle, OPENCLT_IF_LAG, &first) != OPENCLT_OK)
        return RESULT_FAILED;
    snprintf(text, 12, "lag %u", lagNumber(ifNum, first));
    return RESULT_OK;
}

int ifUnitSlotPortGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, openclt_usp_t *usp)
{
    *usp = {};
    return generalResult(rpcclt_openapiHashIntfUnitSlotPortGet(clientHandle, ifNum, usp));
}

int ifSpeedGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *speed)
{
    return generalResult(LOGGED(openapiIfSpeedGet(clientHandle, ifNum, speed),
                                "Bad return code trying to get speed of physical interface. (result = %d)\n"));
}

int ifMaxFrameSizeGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *size)
{
    uint32_t frame = 0;
    uint32_t header = 0;
    if (LOGGED(openapiIfMaxFrameSizeGet(clientHandle, ifNum, &frame),
               "Bad return code trying to get max frame size of physical interface. (result = %d)\n") != OPENCLT_OK)
        frame = 0;
    int headerResult = LOGGED(rpcclt_openapiIfEthernetHeaderSizeGet(clientHandle, &header),
                              "Bad return code trying to get max frame size of physical interface. (result = %d)\n");
    if (headerResult != OPENCLT_OK)
        header = 0;
    bool obtained = frame != 0 && frame >= header;
    *size = obtained ? frame - header : FRAME_SIZE_DEFAULT;
    return obtained && headerResult == OPENCLT_OK ? RESULT_OK : RESULT_FAILED;
}

int ifNumByNameGet(CLIENT_HANDLE_T *clientHandle, const char *name, uint32_t *ifNum)
{
    char bytes[TEXT_SIZE];
    textCopy(bytes, sizeof bytes, name);
    openclt_buffer_t buffer = {static_cast<uint32_t>(strlen(bytes) + 1), bytes};
    return rpcclt_openapiIfNumGet(clientHandle, &buffer, ifNum);
}

int ifNameGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, char *name, size_t size)
{
    name[0] = '\0';
    return textRead(name, size, TEXT_SIZE,
                    [=](openclt_buffer_t *buffer) { return openapiIfNameGet(clientHandle, ifNum, buffer); });
}

// ---- system ----

int unitCountGet(CLIENT_HANDLE_T *clientHandle, uint32_t *count)
{
    *count = 0;
    for (UNIT_WALK_T walk = unitWalkStart(clientHandle); walk.valid; unitWalkNext(&walk))
        (*count)++;
    return RESULT_OK;
}

int systemNameGet(CLIENT_HANDLE_T *clientHandle, char text[256])
{
    uint32_t size = 0;
    if (rpcclt_openapiSystemNameMaxSizeGet(clientHandle, &size) != OPENCLT_OK)
        return RESULT_FAILED;
    size = lengthHeld(size);
    OWNED_ARRAY<char> bytes = ownedArray<char>(size + 1);
    if (bytes == nullptr)
        return RESULT_FAILED;
    openclt_buffer_t buffer = {size, bytes.get()};
    if (rpcclt_openapiSystemNameGet(clientHandle, &buffer) != OPENCLT_OK)
        return RESULT_FAILED;
    textCopy(text, 256, bytes.get());
    return RESULT_OK;
}

int machineModelGet(CLIENT_HANDLE_T *clientHandle, char text[256])
{
    return generalResult(textRead(text, 256, TEXT_SIZE, [=](openclt_buffer_t *buffer) {
        return rpcclt_openapiSystemRegMachineModelGet(clientHandle, buffer);
    }));
}

int bootCodeVersionGet(CLIENT_HANDLE_T *clientHandle, char text[17])
{
    return generalResult(textRead(
        text, 17, 17, [=](openclt_buffer_t *buffer) { return rpcclt_openapiBootCodeVersion(clientHandle, buffer); }));
}

int servicePortAddressAndMacGet(CLIENT_HANDLE_T *clientHandle, char ip[16], char mac[18], char separator)
{
    uint32_t address = 0;
    uint32_t mask = 0;
    if (rpcclt_openapiServicePortIPv4AddrGet(clientHandle, &address, &mask) != OPENCLT_OK)
        return RESULT_FAILED;
    ipv4Text(address, ip);
    uint8_t bytes[6] = {};
    openclt_buffer_t buffer = {sizeof bytes, reinterpret_cast<char *>(bytes)};
    if (rpcclt_openapiSystemMacAddrGet(clientHandle, &buffer) != OPENCLT_OK)
        return RESULT_FAILED;
    macText(bytes, mac, separator);
    return RESULT_OK;
}

int fanModeGet(CLIENT_HANDLE_T *clientHandle, uint32_t *mode)
{
    static constexpr uint32_t MODES[] = {0, 0, 3, 1, 2}; // by the platform's code
    *mode = 0;
    uint32_t code = 0;
    int result = rpcclt_openapiBoxsFanControlModeGet(clientHandle, &code);
    if (result == OPENCLT_OK && code < sizeof MODES / sizeof MODES[0])
        *mode = MODES[code];
    return generalResult(result);
}

void uiVersionGet(char text[20])
{
    textCopy(text, 20, "2.2.16.19");
}

int stackUnitMgrPreconfigModelIdGet(CLIENT_HANDLE_T *clientHandle, uint32_t unit, char model[256])
{
    model[0] = '\0';
    int result = LOGGED(textRead(model, 256, TEXT_SIZE,
                                 [=](openclt_buffer_t *buffer) {
                                     return rpcclt_openapiUnitMgrPreconfigModelIdGet(clientHandle, unit, buffer);
                                 }),
                        "Bad return code trying to get the unit's pre-configured model identifier. (result = %d)\n");
    LOG_DEBUG("stackUnitMgrPreconfigModelIdGet: result = %d, model = %s\r\n", result, model);
    return generalResult(result);
}

int boxsSfpTypeGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *sfpType)
{
    *sfpType = 0;
    return generalResult(LOGGED(rpcclt_openapiBoxsSfpTypeGet(clientHandle, ifNum, sfpType),
                                "Bad return code trying to get boxs sfp type. interface=%d result = %d\r\n", ifNum));
}

// ---- switch-port modes and VLANs ----

int dot1qSwPortAutoTrunkStatusGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *status)
{
    uint32_t mode = 0;
    int result = LOGGED(rpcclt_openapiDot1qSwPortModeGet(clientHandle, ifNum, &mode),
                        "Could not get DOT1Q Port Mode. Mode = %u, Error = %d\n", mode);
    *status = result == OPENCLT_OK && mode == OPENCLT_PORT_MODE_AUTO_TRUNK ? 1 : 0;
    return result;
}

int swPortsModeGet(CLIENT_HANDLE_T *clientHandle, uint32_t *modes, uint32_t length)
{
    memset(modes, 0, length * sizeof *modes);
    SHOW_FILE_T show;
    SHOW_REQUEST_T request = {__func__, "show interfaces switchport trunk", PATH_SHOW_TRUNK};
    request.name = SHOW_NAME_RANDOM;
    request.openLine = SHOW_OPEN_UPPER;
    int result = showFileRun(&show, clientHandle, request);
    if (result != RESULT_OK)
        return result == RESULT_FAILED ? RESULT_OK : result;

    char line[CLI_LINE_SIZE];
    if (!showFileSkipTo(&show, "---------", line, sizeof line))
        return RESULT_OK;
    while (showFileLine(&show, line, sizeof line)) {
        char name[10];
        uint32_t ifNum = 0;
        if (trunkRowParse(line, name) && ifNumByNameGet(clientHandle, name, &ifNum) == OPENCLT_OK && ifNum < length)
            modes[ifNum] = PORT_MODE_TRUNK;
    }
    return RESULT_OK;
}

int vlanNameGet(CLIENT_HANDLE_T *clientHandle, uint32_t vlanId, char **name)
{
    *name = nullptr;
    uint32_t length = 0;
    if (LOGGED(rpcclt_openapiVlanNameLenGet(clientHandle, &length),
               "Bad return code trying to get VLAN Name Length. (result = %d)\r\n") != OPENCLT_OK)
        return RESULT_FAILED;
    length = lengthHeld(length);
    OWNED_ARRAY<char> bytes = ownedArray<char>(length + 1);
    if (bytes == nullptr) {
        LOG_ERROR("Could not allocate memory.\r\n");
        return RESULT_INVALID_POINTER;
    }
    openclt_buffer_t buffer = {length, bytes.get()};
    if (LOGGED(rpcclt_openapiVlanNameGet(clientHandle, vlanId, &buffer),
               "Bad return code trying to get VLAN %u name. (result = %d)\n", vlanId) != OPENCLT_OK)
        return RESULT_FAILED;
    *name = bytes.release();
    return RESULT_OK;
}

int swapiVlanIfPvidGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *pvid)
{
    return generalResult(
        LOGGED(openapiVlanIfPvidGet(clientHandle, ifNum, pvid), "Bad return code trying to get PVID. (result = %d)\n"));
}

int swapiDot1qSwPortTaggedVlanListGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, openclt_vlan_list_t *list)
{
    list->count = 0;
    openclt_buffer_t buffer = {sizeof *list, reinterpret_cast<char *>(list)};
    int result = LOGGED(rpcclt_openapiDot1qSwPortTaggedVlanListGet(clientHandle, ifNum, &buffer),
                        "Bad return code trying to get rhe tagged vlan list. (result = %d)\n");
    if (result != OPENCLT_OK)
        list->count = 0;
    if (list->count > OPENCLT_VLAN_LIST_MAX)
        list->count = OPENCLT_VLAN_LIST_MAX;
    return generalResult(result);
}

// ---- PoE ----

int poeIsSupported(CLIENT_HANDLE_T *clientHandle, uint32_t *supported)
{
    *supported = 0;
    for (UNIT_WALK_T walk = unitWalkStart(clientHandle); walk.valid && *supported != 1; unitWalkNext(&walk))
        (void)LOGGED(rpcclt_openapiPoeIsSupported(clientHandle, walk.unit, supported),
                     "Bad return code trying to check if PoE is supported on this platform. (result = %d)\n");
    return RESULT_OK;
}

bool poeIsValidInterface(CLIENT_HANDLE_T *clientHandle, uint32_t unit, uint32_t ifNum)
{
    uint32_t valid = 0;
    return rpcclt_openapiPoeIsValidInterface(clientHandle, unit, ifNum, &valid) == OPENCLT_OK;
}

int poePseMainConsumptionPowerGet(CLIENT_HANDLE_T *clientHandle, uint32_t unit, uint32_t *power)
{
    *power = 0;
    return generalResult(LOGGED(rpcclt_openapiPoePseMainConsumptionPowerGet(clientHandle, unit, power),
                                "Bad return code trying to get PoE power consumed for unit %u. (result = %d)\n", unit));
}

int poePseTotalAvailablePowerGet(CLIENT_HANDLE_T *clientHandle, uint32_t unit, uint32_t *power)
{
    *power = 0;
    return generalResult(LOGGED(rpcclt_openapiPoePseTotalAvailablePowerGet(clientHandle, unit, power),
                                "Bad return code trying to get PoE total available power for unit %u. (result = %d)\n",
                                unit));
}

int poePseThresholdPowerGet(CLIENT_HANDLE_T *clientHandle, uint32_t unit, uint32_t *power)
{
    (void)LOGGED(rpcclt_openapiPoePseThresholdPowerGet(clientHandle, unit, power),
                 "Bad return code trying to get PoE threshold power for unit %u. (result = %d)\n", unit);
    return RESULT_OK;
}

// ---- LAG ----

int swapiLagNameGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, char *name, size_t size)
{
    uint32_t capacity = size < TEXT_SIZE ? static_cast<uint32_t>(size) : TEXT_SIZE;
    return generalResult(LOGGED(
        textRead(name, size, capacity,
                 [=](openclt_buffer_t *buffer) { return rpcclt_openapiLagNameGet(clientHandle, ifNum, buffer); }),
        "Bad return code trying to get the name for the LAG interface=%d. (result = %d)\n", ifNum));
}

int swapiLagStaticModeGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *mode)
{
    return generalResult(LOGGED(rpcclt_openapiLagStaticModeGet(clientHandle, ifNum, mode),
                                "Bad return code trying to the static mode for the LAG interface=%d. (result = %d)\n",
                                ifNum));
}

int swapiLagLoadBalanceModeGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *mode)
{
    return generalResult(LOGGED(rpcclt_openapiLagLoadBalanceModeGet(clientHandle, ifNum, mode),
                                "Bad return code trying to get the hashmode for the LAG interface=%d. (result = %d)\n",
                                ifNum));
}

int lagMaxMemberCountGet(CLIENT_HANDLE_T *clientHandle, uint32_t *count)
{
    *count = 0;
    return generalResult(LOGGED(rpcclt_openapiLagMaxMemberCountGet(clientHandle, count),
                                "Bad return code trying to get the maximum member count of a LAG. (result = %d)\n"));
}

// ---- 802.1X and spanning tree ----

int swapiDot1xPortControlModeGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *mode)
{
    return LOGGED(rpcclt_openapiAuthMgrPortControlModeGet(clientHandle, ifNum, mode),
                  "Bad return code trying to get port(%d) control mode (result = %d)\n", ifNum);
}

int swapiDot1xPortStatusGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *status)
{
    uint32_t code = 0;
    int result = LOGGED(rpcclt_openapiAuthMgrPortStatusGet(clientHandle, ifNum, &code),
                        "Bad return code trying to get port(%d) dot1x status (result = %d)\n", ifNum);
    if (result == OPENCLT_OK)
        *status = code == 1 || code == 2 ? code : 3;
    return result;
}

int swapiDot1SMSTInstancePriorityGet(CLIENT_HANDLE_T *clientHandle, uint32_t instance, uint16_t *priority)
{
    int result = LOGGED(rpcclt_openapiDot1SMSTInstancePriorityGet(clientHandle, instance, priority),
                        "Bad return code trying to get Spanning Tree Instance Priority. (result = %d)\n");
    if (result == OPENCLT_OK)
        LOG_DEBUG("Spanning Tree Instance Priority for instance %u: %u \n", instance, *priority);
    return result;
}

namespace {
template <typename LINE> int failureLogged(int result, LINE line)
{
    if (result != OPENCLT_OK)
        line(result);
    return result;
}

int generalResult(int platformResult)
{
    return platformResult == OPENCLT_OK ? RESULT_OK : RESULT_FAILED;
}

uint32_t lengthHeld(uint32_t length)
{
    return length < PLATFORM_TEXT_MAX ? length : PLATFORM_TEXT_MAX;
}

template <typename CALL> int textRead(char *out, size_t size, uint32_t capacity, CALL call)
{
    char bytes[TEXT_SIZE + 1] = {}; // terminated whatever the platform writes
    openclt_buffer_t buffer = {capacity, bytes};
    int result = call(&buffer);
    if (result == OPENCLT_OK)
        textCopy(out, size, bytes);
    return result;
}

/*
 *           1         2         3         4
 * 01234567890123456789012345678901234567890123
 * 1/0/1     Auto                          No
 * 1/0/49    Trunk                         Yes          (the word after column 38)
 */
bool trunkRowParse(const char *line, char name[10])
{
    char trunk[CLI_LINE_SIZE];
    const char *cursor = line;
    if (!columnTake(&cursor, 9, name, 10) || !columnTake(&cursor, 29, nullptr, 0) ||
        !columnWord(cursor, 0, trunk, sizeof trunk))
        return false;
    showRowTaken();
    strTrimRight(name);
    return strstr(trunk, "Yes") != nullptr;
}
} // namespace
