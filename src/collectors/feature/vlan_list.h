// vlan_list.h - the document "vlan_list": every VLAN with its profile, its ports and LAGs, and its routing address.
#pragma once

#include "switch/session.h"

#include <cstdint>

enum VLAN_IP_CONFIG : uint32_t { VLAN_IP_NONE = 1, VLAN_IP_DHCP = 2, VLAN_IP_MANUAL = 3 };

// Routing interface of a VLAN; vlanId is 0 when it has none.
struct VLAN_ROUTING_T {
    uint32_t vlanId;
    uint32_t ipConfig; // VLAN_IP_...
    char ipAddr[16];
    char ipMask[16];
};
constexpr uint32_t VLAN_ROUTING_SIZE = 4097; // by VLAN ID

// Builder, made on request only: VLANs from the platform's walk, profiles from the profile database, ports from every
// interface, addresses from "show ip interface brief". 0; 10000 when the document cannot be printed. A VLAN model that
// cannot be made gives an empty list.
[[nodiscard]] int switchConfigVlanList(CLIENT_HANDLE_T *clientHandle, char **out);

// Fill a zeroed table from "show ip interface brief": 0, or 10016 when its output does not open, as after a command
// that fails.
[[nodiscard]] int vlanListRoutingInfoGet(CLIENT_HANDLE_T *clientHandle, VLAN_ROUTING_T table[VLAN_ROUTING_SIZE]);
