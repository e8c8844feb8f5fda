#include "collectors/feature/vlan_list.h"

// The document is the VLAN model (vlan_model.h) printed, one object a VLAN, joined with the routing addresses by VLAN
// ID. An object that cannot be completed for want of memory ends the list; a VLAN is never shown without a key.

#include "collectors/feature/vlan_model.h"
#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/cli.h"
#include "switch/columns.h"

#include <cstring>

// Null when it cannot be made.
static OWNED_VLAN_LIST vlanModelGet(CLIENT_HANDLE_T *clientHandle)
{
    OWNED_VLAN_LIST vlans = vlanSlotsCreate<VLAN_INFO_T>();
    if (vlans == nullptr)
        LOG_ERROR_AS("switchConfigVlanList", "Memory error - failed to allocate VLAN_INFOX_LIST_T\r\n");
    if (vlans == nullptr || vlanListAllInfoGetEX(clientHandle, vlans.get()) != RESULT_OK) {
        LOG_ERROR_AS("switchConfigVlanList", "Call vlanListAllInfoCreate return error\r\n");
        return nullptr;
    }
    return vlans;
}

// What can be large, or is made beside the object, is made first, so that a failure leaves nothing half done.
static bool vlanAppend(const VLAN_INFO_T &vlan, const VLAN_ROUTING_T &routing, cJSON *list)
{
    OWNED_JSON row(cJSON_CreateObject());
    if (row == nullptr) {
        LOG_ERROR_AS("switchConfigVlanList", "Failed to create VLAN item object for vlan %d\n", vlan.vlanId);
        return false;
    }
    OWNED_JSON untagPorts(cJSON_Duplicate(vlan.untagPorts, true)), tagPorts(cJSON_Duplicate(vlan.tagPorts, true));
    OWNED_JSON untagLags(cJSON_Duplicate(vlan.untagLags, true)), tagLags(cJSON_Duplicate(vlan.tagLags, true));
    if (untagPorts == nullptr || tagPorts == nullptr || untagLags == nullptr || tagLags == nullptr) {
        LOG_WARN_AS("switchConfigVlanList", "Failed to duplicate port arrays for vlan %d\n", vlan.vlanId);
        return false;
    }
    const int one = 1;
    OWNED_JSON dynamic(cJSON_CreateIntArray(&one, vlan.isStatic != 0 ? 0 : 1));
    OWNED_JSON isStatic(cJSON_CreateBool(vlan.isStatic));
    if (dynamic == nullptr || isStatic == nullptr) {
        LOG_ERROR_AS("switchConfigVlanList", "Failed to create static/dynamic objects for vlan %d\n", vlan.vlanId);
        return false;
    }

    bool routed = routing.vlanId != 0;
    jsonAddNumber(row.get(), "vlanId", vlan.vlanId);
    jsonAddText(row.get(), "name", vlan.name);
    jsonAddText(row.get(), "color", vlan.color);
    jsonAddText(row.get(), "profileType", vlan.profileType);
    jsonAddText(row.get(), "profileName", vlan.name);
    jsonAddNumber(row.get(), "vlanType", vlan.vlanType);
    jsonAddItem(row.get(), "assignedUntagPort", std::move(untagPorts));
    jsonAddItem(row.get(), "assignedtagPort", std::move(tagPorts));
    jsonAddItem(row.get(), "assignedUnTagLag", std::move(untagLags));
    jsonAddItem(row.get(), "assignedTagLag", std::move(tagLags));
    jsonAddBool(row.get(), "management", vlan.management != 0);
    jsonAddItem(row.get(), "dynamicallyPort", std::move(dynamic));
    jsonAddItem(row.get(), "isStatic", std::move(isStatic));
    jsonAddNumber(row.get(), "ipConfig", routed ? routing.ipConfig : VLAN_IP_NONE);
    jsonAddText(row.get(), "ipAddr", routed ? routing.ipAddr : "N/A");
    jsonAddText(row.get(), "ipMask", routed ? routing.ipMask : "N/A");
    jsonAppend(list, std::move(row));
    return true;
}

static uint32_t ipConfigOf(const char *method)
{
    if (strcmp(method, "DHCP") == 0)
        return VLAN_IP_DHCP;
    return strcmp(method, "Manual") == 0 ? VLAN_IP_MANUAL : VLAN_IP_NONE;
}

// 0         1         2         3         4         5         6
// 0123456789012345678901234567890123456789012345678901234567890123
// Interface  State IP Address      IP Mask         TOS      Method
// ---------- ----- --------------- --------------- -------- --------
// vlan 1     Up    192.168.1.20    255.255.255.0   0        DHCP
// vlan 10    Down  10.10.0.1       255.255.255.0   0        Manual
//
// Words; only a line with all of the four that are kept counts.
static void routingLineStore(const char *line, VLAN_ROUTING_T *table)
{
    long vlanId;
    char address[CLI_LINE_SIZE], mask[CLI_LINE_SIZE], method[CLI_LINE_SIZE];

    if (sscanf(line, "%*s %ld %*s %1023s %1023s %*s %1023s", &vlanId, address, mask, method) != 4)
        return;
    if (vlanId < 1 || vlanId >= static_cast<long>(VLAN_ROUTING_SIZE))
        return;
    VLAN_ROUTING_T &record = table[vlanId];
    record.vlanId = static_cast<uint32_t>(vlanId);
    record.ipConfig = ipConfigOf(method);
    textCopy(record.ipAddr, sizeof(record.ipAddr), address);
    textCopy(record.ipMask, sizeof(record.ipMask), mask);
}

int switchConfigVlanList(CLIENT_HANDLE_T *clientHandle, char **out)
{
    *out = nullptr;
    OWNED_JSON list(cJSON_CreateArray());
    OWNED_VLAN_LIST vlans = vlanModelGet(clientHandle);
    if (vlans == nullptr)
        return jsonToStr(list.get(), JSON_COMPACT, out);

    OWNED_ARRAY<VLAN_ROUTING_T> routing = ownedArray<VLAN_ROUTING_T>(VLAN_ROUTING_SIZE);
    if (routing == nullptr) {
        LOG_ERROR("switchConfigVlanList: Failed to allocate memory for vrip\n");
        return jsonToStr(list.get(), JSON_COMPACT, out);
    }
    (void)vlanListRoutingInfoGet(clientHandle, routing.get()); // has logged; no VLAN has an address then
    for (uint32_t i = 0; i < vlans->count; i++) {
        const VLAN_INFO_T &vlan = *vlans->ids[i];
        if (vlan.valid != 0 && !vlanAppend(vlan, routing[vlan.vlanId], list.get()))
            break;
    }
    return jsonToStr(list.get(), JSON_COMPACT, out);
}

int vlanListRoutingInfoGet(CLIENT_HANDLE_T *clientHandle, VLAN_ROUTING_T table[VLAN_ROUTING_SIZE])
{
    SHOW_FILE_T show;
    char line[CLI_LINE_SIZE];

    SHOW_REQUEST_T request = {__func__, "show ip interface brief", PATH_SHOW_IP_INTERFACE};
    request.name = SHOW_NAME_RANDOM;
    request.openLine = SHOW_OPEN_UPPER;
    int result = showFileRun(&show, clientHandle, request);
    if (result == RESULT_FAILED) { // no output is left: a command that failed shows as a file that does not open
        LOG_ERROR("Can not open file:%s\r\n", show.path);
        return RESULT_OPEN_FAILED;
    }
    if (result != RESULT_OK)
        return result;
    while (showFileLine(&show, line, sizeof(line))) {
        if (textBegins(line, "vlan ")) {
            showRowTaken();
            routingLineStore(line, table);
        }
    }
    return RESULT_OK;
}
