#include "collectors/feature/multicast.h"

// Who must not send multicast, and where the multicast routers are. Both documents are about one access list, which
// the web interface applies to the interfaces it blocks; the platform tells where it is applied, and only the CLI tells
// which addresses it denies. Uses the walks and show files of switch/ and runtime/json.h.

#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/cli.h"
#include "switch/columns.h"
#include "switch/swapi.h"
#include "switch/walk.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

constexpr char BLOCK_LIST[] = "NET-BLOCK";
constexpr uint32_t ACL_IPV4 = 1;
constexpr uint32_t DIRECTION_INBOUND = 1;
constexpr uint32_t MROUTER_PORT = 1;
constexpr size_t ADDRESS_SIZE = 21;

// Numbering of ports in the mode document: so many for each unit, and for each slot of a modular one.
constexpr int UNIT_PORTS = 52;
constexpr int SLOT_PORTS = 8;

enum MULTICAST_MODE : int { MULTICAST_MODE_ROUTER = 1, MULTICAST_MODE_BLOCKED = 2 };

static int blockListFind(CLIENT_HANDLE_T *clientHandle, uint32_t *aclId)
{
    char name[32];

    textCopy(name, sizeof(name), BLOCK_LIST);
    openclt_buffer_t buffer = {sizeof(BLOCK_LIST), name};
    return rpcclt_openapiAclGet(clientHandle, ACL_IPV4, &buffer, aclId);
}

static void modeAdd(cJSON *array, double number, MULTICAST_MODE mode)
{
    cJSON *entry = jsonAppendObject(array);

    jsonAddNumber(entry, "portNum", number);
    jsonAddNumber(entry, "multicastMode", mode);
}

static void blockedInterfacesAdd(CLIENT_HANDLE_T *clientHandle, uint32_t firstLag, cJSON *physicalPorts,
                                 cJSON *lagPorts)
{
    openclt_if_list_t list = {};
    uint32_t aclId = 0;

    if (blockListFind(clientHandle, &aclId) != OPENCLT_OK ||
        rpcclt_openapiAclAssignedIntfDirListGet(clientHandle, aclId, DIRECTION_INBOUND, &list) != OPENCLT_OK)
        return;
    uint32_t count = std::min<uint32_t>(list.count, OPENCLT_IF_LIST_MAX);
    for (uint32_t i = 0; i < count; i++) {
        uint32_t ifNum = list.ifNums[i];
        if (ifNum < firstLag)
            modeAdd(physicalPorts, ifNum, MULTICAST_MODE_BLOCKED);
        else
            modeAdd(lagPorts, lagNumber(ifNum, firstLag), MULTICAST_MODE_BLOCKED);
    }
}

static bool isRouterPort(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum)
{
    uint32_t status = 0;

    return rpcclt_openapiSnoopIntfMrouterStatusGet(clientHandle, OPENCLT_AF_IPV4, ifNum, &status) == OPENCLT_OK &&
           status == MROUTER_PORT;
}

static int routerPortNumber(const openclt_usp_t *usp)
{
    int slotPorts = usp->slot == 0 ? 0 : (usp->slot - 1) * SLOT_PORTS;

    return (usp->unit - 1) * UNIT_PORTS + slotPorts + usp->port;
}

//           1         2         3         4         5
// 012345678901234567890123456789012345678901234567890123456789
// Destination IP Address......................... 239.0.0.0
// Destination IP Wildcard Mask................... 0.255.255.255
//
// Only the leading byte of an address counts, so each is shown as the block of its /8.
static void deniedLineAdd(const char *line, cJSON *addresses)
{
    char word[CLI_LINE_SIZE];
    char address[ADDRESS_SIZE];

    if (!textBegins(line, "Destination IP Address") || sscanf(line, "%*s %*s %*s %1023s", word) != 1)
        return;
    showRowTaken();
    snprintf(address, sizeof(address), "%.*s/8", static_cast<int>(sizeof(address) - 1), word);
    jsonAppendText(addresses, address);
}

static void deniedAddressesAdd(CLIENT_HANDLE_T *clientHandle, cJSON *addresses)
{
    SHOW_REQUEST_T request = {"getDenyList", "show ip access-list NET-BLOCK", PATH_SHOW_ACL};
    SHOW_FILE_T show;
    char line[CLI_LINE_SIZE];

    request.name = SHOW_NAME_RANDOM;
    request.openLine = SHOW_OPEN_UPPER;
    if (showFileRun(&show, clientHandle, request) != RESULT_OK)
        return; // its line is logged
    LOG_DEBUG_AS("getDenyList", "Analysis cli output\r\n");
    while (showFileLine(&show, line, sizeof(line)))
        deniedLineAdd(line, addresses);
    LOG_DEBUG_AS("getDenyList", "Analysis cli output finish\r\n");
}

int getMulticastModeEx(CLIENT_HANDLE_T *clientHandle, char **out)
{
    return buildMulticastModeJson(clientHandle, out);
}

int buildMulticastModeJson(CLIENT_HANDLE_T *clientHandle, char **out)
{
    uint32_t firstLag = 0;

    *out = nullptr;
    LOG_DEBUG("Call getMulticastMode\r\n");
    OWNED_JSON root(cJSON_CreateObject());
    cJSON *physicalPorts = jsonAddArray(root.get(), "physicalPort");
    cJSON *lagPorts = jsonAddArray(root.get(), "lagPort");
    if (physicalPorts == nullptr || lagPorts == nullptr)
        return RESULT_INVALID_POINTER;

    int result = openapiIfFirstGet(clientHandle, OPENCLT_IF_LAG, &firstLag);
    if (result != OPENCLT_OK) {
        LOG_ERROR("Bad return code trying to get first LAG interface. (result = %d)\n", result);
        return RESULT_FAILED;
    }
    blockedInterfacesAdd(clientHandle, firstLag, physicalPorts, lagPorts);
    LOG_DEBUG("Call multicastIntIfRouterGet finish\r\n");
    multicastIntIfRouterGet(clientHandle, physicalPorts, lagPorts);
    LOG_DEBUG("Call multicastIntIfRouterGet finish\r\n");

    *out = jsonPrint(root.get(), JSON_COMPACT);
    if (*out == nullptr)
        LOG_ERROR("getMulticastMode response str error\r\n");
    LOG_DEBUG("Call getMulticastMode finish\r\n");
    return RESULT_OK;
}

void multicastIntIfRouterGet(CLIENT_HANDLE_T *clientHandle, cJSON *physicalPorts, cJSON *lagPorts)
{
    openclt_usp_t usp;

    for (IF_WALK_T port = ifWalkStart(clientHandle, OPENCLT_IF_PHYSICAL); port.valid; ifWalkNext(&port)) {
        if (isRouterPort(clientHandle, port.ifNum) && ifUnitSlotPortGet(clientHandle, port.ifNum, &usp) == RESULT_OK)
            modeAdd(physicalPorts, routerPortNumber(&usp), MULTICAST_MODE_ROUTER);
    }
    for (IF_WALK_T lag = ifWalkStart(clientHandle, OPENCLT_IF_LAG); lag.valid; ifWalkNext(&lag)) {
        if (isRouterPort(clientHandle, lag.ifNum))
            modeAdd(lagPorts, lagNumber(lag.ifNum, lag.first), MULTICAST_MODE_ROUTER);
    }
}

int getDenyList(CLIENT_HANDLE_T *clientHandle, char **out)
{
    uint32_t aclId = 0;

    *out = nullptr;
    LOG_DEBUG("Call getDenyList\r\n");
    OWNED_JSON addresses(cJSON_CreateArray());
    if (addresses == nullptr)
        return RESULT_INVALID_POINTER;

    // Whatever else is wrong with the list, its command is tried.
    if (blockListFind(clientHandle, &aclId) == OPENCLT_NOT_PRESENT)
        LOG_DEBUG("No ACL rule NET-BLOCK present\r\n");
    else
        deniedAddressesAdd(clientHandle, addresses.get());

    *out = jsonPrint(addresses.get(), JSON_COMPACT);
    if (*out == nullptr)
        LOG_ERROR("getDenyList response str error\r\n");
    LOG_DEBUG("Call getDenyList finish\r\n");
    return RESULT_OK;
}
