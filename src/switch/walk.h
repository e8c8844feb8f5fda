// walk.h - one idiom for going through interfaces, LAGs with their members, stack units and VLANs.
//
//     for (IF_WALK_T port = ifWalkStart(clientHandle, OPENCLT_IF_PHYSICAL); port.valid; ifWalkNext(&port)) ...
//
// These keys ascend; an enumeration whose next key does not advance ends, so that a platform that repeats itself cannot
// hold the daemon.
#pragma once

#include "runtime/owned.h"
#include "switch/session.h"

#include <cstdint>

// Interfaces of one type. `firstResult` is the result of the first look-up (its failure is logged by swapiIfFirstGet),
// `first` the first interface number.
struct IF_WALK_T {
    CLIENT_HANDLE_T *clientHandle;
    uint32_t type;
    uint32_t ifNum;
    uint32_t first;
    int firstResult;
    bool valid;
};
[[nodiscard]] IF_WALK_T ifWalkStart(CLIENT_HANDLE_T *clientHandle, uint32_t type);
void ifWalkNext(IF_WALK_T *walk);

// Units of the stack, from unit 1 up.
struct UNIT_WALK_T {
    CLIENT_HANDLE_T *clientHandle;
    uint32_t unit;
    bool valid;
};
[[nodiscard]] UNIT_WALK_T unitWalkStart(CLIENT_HANDLE_T *clientHandle);
void unitWalkNext(UNIT_WALK_T *walk);

// VLANs, from the lowest ID up.
struct VLAN_WALK_T {
    CLIENT_HANDLE_T *clientHandle;
    uint32_t vlanId;
    bool valid;
};
[[nodiscard]] VLAN_WALK_T vlanWalkStart(CLIENT_HANDLE_T *clientHandle);
void vlanWalkNext(VLAN_WALK_T *walk);

// Enumerations whose order only the platform knows: keys may come in any order, but one that came before means that the
// platform goes in a circle. Each key is compared with one kept from a growing distance behind, so that a circle of any
// length is seen soon and one key is all that is stored. An all-zero key is where every enumeration starts.
template <typename KEY> struct KEY_CIRCLE_T {
    KEY mark = {};
    uint32_t steps = 0, distance = 1;
};
template <typename KEY> [[nodiscard]] bool keyRecurs(KEY_CIRCLE_T<KEY> *circle, const KEY &key)
{
    if (key == circle->mark)
        return true;
    if (++circle->steps == circle->distance) {
        circle->mark = key;
        circle->steps = 0;
        circle->distance *= 2;
    }
    return false;
}

// Members of a LAG, in the platform's order.
struct LAG_MEMBERS_T {
    OWNED_ARRAY<char> bytes; // the platform's buffer, 16 bytes for each possible member and one more
    uint32_t count = 0;
};

// Read the members of one LAG of at most maxMembers. 0; -7 when the buffer cannot be allocated; else the platform's
// result. The count the platform gives is held within the buffer.
[[nodiscard]] int lagMembersGet(CLIENT_HANDLE_T *clientHandle, uint32_t lagIfNum, uint32_t maxMembers,
                                LAG_MEMBERS_T *members);
[[nodiscard]] uint32_t lagMember(const LAG_MEMBERS_T *members, uint32_t index);

// Which interfaces (numbers below 768) are members of some LAG.
constexpr uint32_t LAG_FLAGS_SIZE = 768;
struct LAG_FLAGS_T {
    uint8_t member[LAG_FLAGS_SIZE];
};
[[nodiscard]] bool lagFlagGet(const LAG_FLAGS_T *flags, uint32_t ifNum);

// Flag the members of every LAG (type 2 walk). What a buffer that cannot be allocated does is the caller's choice: end
// the walk in silence, or log "Failed to allocate memory\n" under the caller's name and go on with the next LAG.
enum LAG_FLAGS_NO_MEMORY : int { LAG_FLAGS_STOP, LAG_FLAGS_LOG_AND_SKIP };
void lagFlagsFill(CLIENT_HANDLE_T *clientHandle, uint32_t maxMembers, LAG_FLAGS_NO_MEMORY noMemory, const char *caller,
                  LAG_FLAGS_T *flags);

// LAG number shown to users: the first LAG interface is LAG 1.
[[nodiscard]] uint32_t lagNumber(uint32_t lagIfNum, uint32_t firstLagIfNum);
