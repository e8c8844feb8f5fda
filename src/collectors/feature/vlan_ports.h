// vlan_ports.h - which ports and LAGs carry each VLAN, read from every interface once.
#pragma once

#include "collectors/feature/vlan_model.h"

// Ports and LAGs of one VLAN: owned JSON arrays of interface numbers and of LAG numbers (the first LAG is 1).
struct VLAN_PORTS_T {
    uint32_t vlanId;
    cJSON *tagPorts, *untagPorts, *tagLags, *untagLags;
    cJSON *shureDevicePorts, *shureLearnPorts; // nothing fills these
};
void vlanEntryRelease(VLAN_PORTS_T *ports);
using VLAN_PORT_LIST_T = VLAN_SLOTS_T<VLAN_PORTS_T>;
using OWNED_VLAN_PORTS = OWNED_VLAN_SLOTS<VLAN_PORTS_T>;

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
