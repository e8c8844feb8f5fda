// vlan_ports.h - which ports and LAGs carry each VLAN, read from every interface once.
#pragma once

#include "collectors/feature/vlan_model.h"

// Ports and LAGs of one VLAN: owned JSON arrays of interface numbers and of LAG numbers (the first LAG is 1).
struct VLAN_PORTS_T {
    uint32_t vlanId;
    cJSON *tagPorts, *untagPorts, *tagLags, *untagLags;
    cJSON *shureDevicePorts, *shureLearnPorts; // nothing fills these
};
struct VLAN_PORT_LIST_T {
    VLAN_PORTS_T *ids[VLAN_SLOTS];
    uint32_t count;
    uint32_t index[VLAN_INDEX_SIZE];
};
void vlanPortListFree(VLAN_PORT_LIST_T *list);
struct VLAN_PORT_LIST_DELETER_T {
    void operator()(VLAN_PORT_LIST_T *list) const
    {
        vlanPortListFree(list);
    }
};
using OWNED_VLAN_PORTS = std::unique_ptr<VLAN_PORT_LIST_T, VLAN_PORT_LIST_DELETER_T>;

[[nodiscard]] const VLAN_PORTS_T *vlanPortsFind(const VLAN_PORT_LIST_T *list, uint32_t vlanId);

// The six arrays, as a VLAN and its port entry hold them.
struct VLAN_ARRAY_T {
    const char *name;
    cJSON *VLAN_PORTS_T::*ports;
    cJSON *VLAN_INFO_T::*vlan;
};
extern const VLAN_ARRAY_T vlanArrays[6];

// Fill a zeroed port list: an entry for each VLAN of the VLAN list, then what every port and every LAG with members
// reports. A port or LAG that cannot be read is left out. 0; 10000 when there is no first LAG (nothing is created
// then); 10002 without memory or when the VLAN list has a hole.
[[nodiscard]] int vlanListPortAssGetFromVlanList(CLIENT_HANDLE_T *clientHandle, VLAN_PORT_LIST_T *ports,
                                                 const VLAN_INFOX_LIST_T *vlans);
