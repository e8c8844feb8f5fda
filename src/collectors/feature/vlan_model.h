// vlan_model.h - every VLAN of the switch with its profile, its ports and its LAGs, and the profile map of the port
// table.
//
// Built afresh for each document and freed with it. Two sources: the platform's VLAN walk, and the faster "show vlan".
#pragma once

#include "runtime/json.h"
#include "switch/session.h"

#include <cstdint>

constexpr uint32_t VLAN_SLOTS = 4096;
constexpr uint32_t VLAN_INDEX_SIZE = 4097; // VLAN ID 4096 is accepted from "show vlan"

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

// VLANs in the order they were found; `index` gives the slot of a VLAN ID (0 also for unknown ones: look with
// vlanListFind, which checks).
struct VLAN_INFOX_LIST_T {
    VLAN_INFO_T *ids[VLAN_SLOTS];
    uint32_t count;
    uint32_t index[VLAN_INDEX_SIZE];
};

void vlanListFree(VLAN_INFOX_LIST_T *list);
struct VLAN_LIST_DELETER_T {
    void operator()(VLAN_INFOX_LIST_T *list) const
    {
        vlanListFree(list);
    }
};
using OWNED_VLAN_LIST = std::unique_ptr<VLAN_INFOX_LIST_T, VLAN_LIST_DELETER_T>;

[[nodiscard]] VLAN_INFO_T *vlanListFind(const VLAN_INFOX_LIST_T *list, uint32_t vlanId);

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
struct VLAN_PROFILE_LIST_T {
    VLAN_PROFILE_T *ids[VLAN_SLOTS];
    uint32_t count;
    uint32_t index[VLAN_INDEX_SIZE];
};
void vlanProfileListFree(VLAN_PROFILE_LIST_T *list);
struct VLAN_PROFILE_LIST_DELETER_T {
    void operator()(VLAN_PROFILE_LIST_T *list) const
    {
        vlanProfileListFree(list);
    }
};
using OWNED_VLAN_PROFILES = std::unique_ptr<VLAN_PROFILE_LIST_T, VLAN_PROFILE_LIST_DELETER_T>;

[[nodiscard]] const VLAN_PROFILE_T *vlanProfileFind(const VLAN_PROFILE_LIST_T *list, uint32_t vlanId);

// A newly allocated map in *list: 0, or 10000 when "show vlan" or its output fails or there is no memory.
[[nodiscard]] int vlanListProfileCreateFastEX(CLIENT_HANDLE_T *clientHandle, OWNED_VLAN_PROFILES *list);
