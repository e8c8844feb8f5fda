#include "collectors/feature/vlan_ports.h"

// One walk over the ports and one over the LAGs fill the arrays of all VLANs: each interface says what it carries
// tagged, and its PVID is the one VLAN that it carries untagged. VLANs that an interface names but the VLAN list lacks
// are passed over. Uses the walks of switch/ and the arrays of runtime/json.h.

#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/walk.h"

#include <cstring>

const VLAN_ARRAY_T vlanArrays[6] = {
    {"tagPorts", &VLAN_PORTS_T::tagPorts, &VLAN_INFO_T::tagPorts},
    {"untagPorts", &VLAN_PORTS_T::untagPorts, &VLAN_INFO_T::untagPorts},
    {"tagLags", &VLAN_PORTS_T::tagLags, &VLAN_INFO_T::tagLags},
    {"untagLags", &VLAN_PORTS_T::untagLags, &VLAN_INFO_T::untagLags},
    {"shureDevicePorts", &VLAN_PORTS_T::shureDevicePorts, &VLAN_INFO_T::shureDevicePorts},
    {"shureLearnPorts", &VLAN_PORTS_T::shureLearnPorts, &VLAN_INFO_T::shureLearnPorts},
};

// An array of each VLAN.
using ARRAY_MEMBER = cJSON *VLAN_PORTS_T::*;

static int entriesCreate(VLAN_PORT_LIST_T *ports, const VLAN_INFOX_LIST_T *vlans)
{
    for (uint32_t i = 0; i < vlans->count; i++) {
        if (vlans->ids[i] == nullptr) {
            LOG_ERROR_AS("vlanListPortAssGetFromVlanList", "viList->ids[%u] is NULL - data corruption\n", i);
            return RESULT_INVALID_POINTER;
        }
        auto *entry = vlanSlotsAdd(ports, vlans->ids[i]->vlanId);
        if (entry == nullptr)
            return RESULT_INVALID_POINTER;
        for (const VLAN_ARRAY_T &array : vlanArrays) {
            entry->*array.ports = cJSON_CreateArray();
            if (entry->*array.ports == nullptr)
                return RESULT_INVALID_POINTER;
        }
    }
    return RESULT_OK;
}

// Asked directly: an interface without a list is no fault here, so no line is logged for it.
static bool taggedGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, openclt_vlan_list_t *list)
{
    list->count = 0;
    openclt_buffer_t buffer = {sizeof(*list), reinterpret_cast<char *>(list)};
    if (rpcclt_openapiDot1qSwPortTaggedVlanListGet(clientHandle, ifNum, &buffer) != OPENCLT_OK)
        return false;
    if (list->count > OPENCLT_VLAN_LIST_MAX)
        list->count = OPENCLT_VLAN_LIST_MAX;
    return true;
}

static void numberAdd(VLAN_PORT_LIST_T *ports, uint32_t vlanId, ARRAY_MEMBER array, uint32_t number)
{
    auto *entry = vlanSlotsFind(ports, vlanId);
    if (entry != nullptr)
        jsonAppendNumber(entry->*array, number);
}

static void interfaceAdd(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t number, ARRAY_MEMBER tagged,
                         ARRAY_MEMBER untagged, VLAN_PORT_LIST_T *ports)
{
    openclt_vlan_list_t list;
    uint32_t pvid = 0;

    if (taggedGet(clientHandle, ifNum, &list)) {
        for (uint32_t i = 0; i < list.count; i++)
            numberAdd(ports, list.ids[i], tagged, number);
    }
    if (openapiVlanIfPvidGet(clientHandle, ifNum, &pvid) == OPENCLT_OK)
        numberAdd(ports, pvid, untagged, number);
}

// Only LAGs that have members count.
static void lagsWalk(CLIENT_HANDLE_T *clientHandle, IF_WALK_T lag, VLAN_PORT_LIST_T *ports)
{
    uint32_t maxMembers = 0;

    if (rpcclt_openapiLagMaxMemberCountGet(clientHandle, &maxMembers) != OPENCLT_OK)
        maxMembers = 0;
    for (; lag.valid; ifWalkNext(&lag)) {
        LAG_MEMBERS_T members;
        int result = lagMembersGet(clientHandle, lag.ifNum, maxMembers, &members);
        if (result == RESULT_NO_MEMORY)
            LOG_ERROR_AS("vlanListPortAssGetFromVlanList", "Failed to allocate memory\n");
        if (result != RESULT_OK || members.count == 0)
            continue;
        interfaceAdd(clientHandle, lag.ifNum, lagNumber(lag.ifNum, lag.first), &VLAN_PORTS_T::tagLags,
                     &VLAN_PORTS_T::untagLags, ports);
    }
}

void vlanEntryRelease(VLAN_PORTS_T *ports)
{
    for (const VLAN_ARRAY_T &array : vlanArrays)
        cJSON_Delete(ports->*array.ports);
}

int vlanListPortAssGetFromVlanList(CLIENT_HANDLE_T *clientHandle, VLAN_PORT_LIST_T *ports,
                                   const VLAN_INFOX_LIST_T *vlans)
{
    IF_WALK_T lag = ifWalkStart(clientHandle, OPENCLT_IF_LAG);
    if (lag.firstResult != RESULT_OK)
        return RESULT_FAILED;
    int result = entriesCreate(ports, vlans);
    if (result != RESULT_OK)
        return result;
    for (IF_WALK_T port = ifWalkStart(clientHandle, OPENCLT_IF_PHYSICAL); port.valid; ifWalkNext(&port))
        interfaceAdd(clientHandle, port.ifNum, port.ifNum, &VLAN_PORTS_T::tagPorts, &VLAN_PORTS_T::untagPorts, ports);
    lagsWalk(clientHandle, lag, ports);
    return RESULT_OK;
}
