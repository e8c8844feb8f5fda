// neighbor_ex_tables.h - look-up tables of one build of the neighbour list: ports, ARP entries, LLDP addresses.
//
// Platform: openapiIfFirstGet, openapiIfNextGet, rpcclt_openapiDot1qSwPortModeGet,
// rpcclt_openapiHashIntfUnitSlotPortGet, openapiIfNameGet, openapiVlanIfPvidGet, openapiIfLinkStateGet,
// rpcclt_openapiArpEntryNextGet.
#pragma once

#include "runtime/owned.h"
#include "switch/fdb.h"
#include "switch/session.h"

#include <cstddef>
#include <cstdint>

constexpr uint32_t NEIGHBOR_IF_COUNT = 896; // interface numbers 0 to 895

// One physical port; all 0 when the platform could not tell where it sits.
struct NEIGHBOR_IF_T {
    bool valid;
    bool linkUp;
    uint32_t switchMode; // code of rpcclt_openapiDot1qSwPortModeGet
    openclt_usp_t usp;
    uint32_t pvid; // 0 when it cannot be read
    char name[60];
};
using NEIGHBOR_IF_TABLE_T = OWNED_ARRAY<NEIGHBOR_IF_T>; // by interface number

// False when there is no memory.
[[nodiscard]] bool interfaceTableRead(CLIENT_HANDLE_T *clientHandle, NEIGHBOR_IF_TABLE_T *table);

struct ARP_ENTRY_T {
    char mac[MAC_TEXT_SIZE];
    char address[24];
    uint32_t order; // in which the platform gave it
};
struct ARP_TABLE_T {
    OWNED_ARRAY<ARP_ENTRY_T> entries; // sorted by MAC ignoring case, then by order
    size_t capacity, count;
};

// False when there is no memory; the table then holds what was read so far.
[[nodiscard]] bool arpTableRead(CLIENT_HANDLE_T *clientHandle, ARP_TABLE_T *table);

// Address of the first entry, in the platform's order, with this MAC (case does not matter); "" when there is none.
[[nodiscard]] const char *arpTableFind(const ARP_TABLE_T *table, const char *mac);

// MAC texts: started, filled, sorted, then searched. Texts are cut to the length of a MAC.
struct MAC_TEXT_T {
    char text[MAC_TEXT_SIZE];
};
struct MAC_LIST_T {
    OWNED_ARRAY<MAC_TEXT_T> macs;
    size_t capacity, count;
};
[[nodiscard]] bool macListStart(MAC_LIST_T *list); // false when there is no memory
[[nodiscard]] bool macListAdd(MAC_LIST_T *list, const char *mac);
void macListSort(MAC_LIST_T *list);
[[nodiscard]] bool macListHas(const MAC_LIST_T *list, const char *mac); // case does not matter
