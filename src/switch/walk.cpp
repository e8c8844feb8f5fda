#include "switch/walk.h"

// One idiom for going through interfaces, LAG members, stack units and VLANs. Every step checks that the platform's
// next key is above the last one, so that an enumeration that repeats itself ends.

#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/swapi.h"

#include <cstring>

namespace {
constexpr uint32_t MEMBER_ROOM = 16;        // bytes of the platform's buffer for each possible member
constexpr uint32_t LAG_MEMBERS_MAX = 65536; // more is taken for a wrong answer and cut to this
} // namespace

IF_WALK_T ifWalkStart(CLIENT_HANDLE_T *clientHandle, uint32_t type)
{
    IF_WALK_T walk = {clientHandle, type, 0, 0, RESULT_OK, false};
    walk.firstResult = swapiIfFirstGet(clientHandle, type, &walk.ifNum);
    walk.valid = walk.firstResult == RESULT_OK;
    walk.first = walk.ifNum;
    return walk;
}

void ifWalkNext(IF_WALK_T *walk)
{
    uint32_t next = 0;
    walk->valid = swapiIfNextGet(walk->clientHandle, walk->type, walk->ifNum, &next) == RESULT_OK && next > walk->ifNum;
    if (walk->valid)
        walk->ifNum = next;
}

UNIT_WALK_T unitWalkStart(CLIENT_HANDLE_T *clientHandle)
{
    UNIT_WALK_T walk = {clientHandle, 0, false};
    unitWalkNext(&walk);
    return walk;
}

void unitWalkNext(UNIT_WALK_T *walk)
{
    uint32_t next = 0;
    walk->valid = rpcclt_openapiUnitMgrStackMemberGetNext(walk->clientHandle, walk->unit, &next) == OPENCLT_OK &&
                  next > walk->unit;
    if (walk->valid)
        walk->unit = next;
}

VLAN_WALK_T vlanWalkStart(CLIENT_HANDLE_T *clientHandle)
{
    VLAN_WALK_T walk = {clientHandle, 0, false};
    vlanWalkNext(&walk);
    return walk;
}

void vlanWalkNext(VLAN_WALK_T *walk)
{
    uint32_t next = 0;
    walk->valid = openapiVlanNextGet(walk->clientHandle, walk->vlanId, &next) == OPENCLT_OK && next > walk->vlanId;
    if (walk->valid)
        walk->vlanId = next;
}

int lagMembersGet(CLIENT_HANDLE_T *clientHandle, uint32_t lagIfNum, uint32_t maxMembers, LAG_MEMBERS_T *members)
{
    uint32_t room = maxMembers < LAG_MEMBERS_MAX ? maxMembers : LAG_MEMBERS_MAX;
    uint32_t size = MEMBER_ROOM * room + 1;
    members->count = 0;
    members->bytes = ownedArray<char>(size);
    if (members->bytes == nullptr)
        return RESULT_NO_MEMORY;

    uint32_t count = room;
    openclt_buffer_t buffer = {size, members->bytes.get()};
    int result = rpcclt_openapiLagMembersGet(clientHandle, lagIfNum, &count, &buffer, size);
    if (result != OPENCLT_OK)
        return result;
    uint32_t held = size / static_cast<uint32_t>(sizeof(uint32_t));
    members->count = count < held ? count : held;
    return RESULT_OK;
}

uint32_t lagMember(const LAG_MEMBERS_T *members, uint32_t index)
{
    if (index >= members->count)
        return 0;
    uint32_t ifNum;
    memcpy(&ifNum, members->bytes.get() + index * sizeof ifNum, sizeof ifNum);
    return ifNum;
}

bool lagFlagGet(const LAG_FLAGS_T *flags, uint32_t ifNum)
{
    return ifNum < LAG_FLAGS_SIZE && flags->member[ifNum] != 0;
}

void lagFlagsFill(CLIENT_HANDLE_T *clientHandle, uint32_t maxMembers, LAG_FLAGS_NO_MEMORY noMemory, const char *caller,
                  LAG_FLAGS_T *flags)
{
    *flags = {};
    // From 0, not from the first LAG: a switch without LAGs is no failure to be logged here.
    IF_WALK_T lag = {clientHandle, OPENCLT_IF_LAG, 0, 0, RESULT_OK, false};
    for (ifWalkNext(&lag); lag.valid; ifWalkNext(&lag)) {
        LAG_MEMBERS_T members;
        if (lagMembersGet(clientHandle, lag.ifNum, maxMembers, &members) == RESULT_NO_MEMORY) {
            if (noMemory == LAG_FLAGS_STOP)
                return;
            LOG_ERROR_AS(caller, "Failed to allocate memory\n");
        }
        for (uint32_t i = 0; i < members.count; i++) {
            uint32_t ifNum = lagMember(&members, i);
            if (ifNum < LAG_FLAGS_SIZE)
                flags->member[ifNum] = 1;
        }
    }
}

uint32_t lagNumber(uint32_t lagIfNum, uint32_t firstLagIfNum)
{
    return lagIfNum + 1 - firstLagIfNum;
}
