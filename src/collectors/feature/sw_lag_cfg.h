// sw_lag_cfg.h - the documents "sw_lag_cfg" (every LAG in full, built on request) and "sw_lag_cfg_ex" (LAGs without
// members shortened to their numbers, rebuilt in the cycle). Both come from client calls; the full one also takes the
// switch-port modes from "show interfaces switchport trunk".
#pragma once

#include "switch/session.h"

#include <cJSON.h>
#include <cstddef>
#include <cstdint>

constexpr size_t LAG_NAME_SIZE = 16;
constexpr uint32_t LAG_MEMBERS_SHOWN = 32; // members of one LAG in "sw_lag_cfg"

// One LAG. What cannot be read stays 0.
struct LAG_INFO_T {
    char name[LAG_NAME_SIZE];
    uint32_t ifNum;
    uint8_t staticMode; // 1 static, 0 LACP
    uint32_t pvid;
    uint8_t autoTrunk;                   // 1 when the switch-port mode is auto-trunk
    uint32_t memberCount;                // all of them; may be more than `members` holds
    uint32_t members[LAG_MEMBERS_SHOWN]; // in the platform's order
    uint32_t balanceMode;                // hash mode code
    openclt_vlan_list_t taggedVlans;
};

// Append the interface numbers of a LAG's members. Members above the highest physical interface are ports that the
// platform lists although they do not exist; they are left out. 0; 10000 when the interface is no LAG, its members
// cannot be read, or there is no memory.
[[nodiscard]] int lagMembersJsonArrayGet(CLIENT_HANDLE_T *clientHandle, uint32_t lagIfNum, cJSON *members);

// Fill the record of one LAG.
void getLagInfo(CLIENT_HANDLE_T *clientHandle, uint32_t lagIfNum, LAG_INFO_T *lag);

// Builders. 0 with a newly allocated text, which the caller frees; 10000 with *out null when a part of the document
// cannot be created, and for the full list also when there is no LAG interface (the other one is [] then).
[[nodiscard]] int getLagInfoList(CLIENT_HANDLE_T *clientHandle, char **out);
[[nodiscard]] int getLagInfoListEx(CLIENT_HANDLE_T *clientHandle, char **out);
