// vlan_model.h - every VLAN of the switch with its profile, its ports and its LAGs, and the profile map of the port
// table.
//
// Built afresh for each document and freed with it. Two sources: the platform's VLAN walk, and the faster "show vlan".
#pragma once

#include "collectors/feature/vlan_slots.h"
#include "runtime/json.h"
#include "switch/session.h"

#include <cstdint>

struct VLAN_INFO_T {
    uint32_t vlanId;
    uint8_t valid;
    char name[256];
    char color[8];
    uint8_t management;
    uint8_t isStatic;
    uint32_t priority1, priority2; // local 802.1AS clock
    uint32_t vlanType;
    char profileType[256];
    cJSON *tagPorts, *untagPorts, *tagLags, *untagLags; // owned arrays of numbers
    cJSON *shureDevicePorts, *shureLearnPorts;          // nothing fills these
};

void vlanEntryRelease(VLAN_INFO_T *vlan);
using VLAN_INFOX_LIST_T = VLAN_SLOTS_T<VLAN_INFO_T>;
using OWNED_VLAN_LIST = OWNED_VLAN_SLOTS<VLAN_INFO_T>;

// Fill a zeroed list from the platform's VLAN walk and attach the port arrays. 0; 10002 when the port assignment list
// cannot be allocated; 10000 when an array copy fails; else the result of the port assignment.
[[nodiscard]] int vlanListAllInfoGetEX(CLIENT_HANDLE_T *clientHandle, VLAN_INFOX_LIST_T *list);

// The faster form from "show vlan": a newly allocated list in *list. 0, 10000 when the command or its output fails,
// 10002 without memory, else the result of the port assignment.
[[nodiscard]] int vlanListAllInfoGetFastEX(CLIENT_HANDLE_T *clientHandle, OWNED_VLAN_LIST *list);

// Profile of each VLAN, with the flags of its template.
struct VLAN_PROFILE_T {
    uint32_t vlanId;
    uint32_t vlanType; // 0 until the profile database says otherwise
    uint32_t profileFlags;
    uint32_t profileFlagMask;
    uint32_t profileVariant;
    char profileType[256];
    char templatePath[512];
};
inline void vlanEntryRelease(VLAN_PROFILE_T *)
{
}
using VLAN_PROFILE_LIST_T = VLAN_SLOTS_T<VLAN_PROFILE_T>;
using OWNED_VLAN_PROFILES = OWNED_VLAN_SLOTS<VLAN_PROFILE_T>;

// A newly allocated map in *list: 0, or 10000 when "show vlan" or its output fails or there is no memory.
[[nodiscard]] int vlanListProfileCreateFastEX(CLIENT_HANDLE_T *clientHandle, OWNED_VLAN_PROFILES *list);
