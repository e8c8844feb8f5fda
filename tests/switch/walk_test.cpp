// Walks over the virtual switch, and over a platform that does not keep its own rules: calls defined here come before
// the shared library's, and pass on to them unless a test asks for the wrong answer.
#include "switch/walk.h"

#include "fixture.h"
#include "switch/labels.h"
#include "switch/swapi.h"

#include <cstring>
#include <dlfcn.h>

using WALK = SWITCH_TEST;

namespace {
bool repeatKeys = false;     // enumerations give the key they were given
uint32_t wrongCount = 0;     // not 0: lists claim so many entries
uint32_t memberCapacity = 0; // bytes that the last member buffer offered

template <typename CALL> CALL *realCall(const char *name)
{
    return reinterpret_cast<CALL *>(dlsym(RTLD_NEXT, name));
}

struct MISBEHAVIOUR_T {
    ~MISBEHAVIOUR_T()
    {
        repeatKeys = false;
        wrongCount = 0;
    }
};

std::string lagFlagsText(const LAG_FLAGS_T &flags)
{
    std::string text;
    for (uint32_t ifNum = 0; ifNum < LAG_FLAGS_SIZE + 8; ifNum++) {
        if (lagFlagGet(&flags, ifNum))
            text += std::to_string(ifNum) + " ";
    }
    return text;
}
} // namespace

int openapiIfNextGet(openclt_handle_t *handle, uint32_t type, uint32_t ifNum, uint32_t *nextIfNum)
{
    if (repeatKeys) {
        *nextIfNum = ifNum;
        return OPENCLT_OK;
    }
    return realCall<decltype(openapiIfNextGet)>(__func__)(handle, type, ifNum, nextIfNum);
}

int openapiVlanNextGet(openclt_handle_t *handle, uint32_t previousVlanId, uint32_t *vlanId)
{
    if (repeatKeys && previousVlanId != 0) {
        *vlanId = 1;
        return OPENCLT_OK;
    }
    return realCall<decltype(openapiVlanNextGet)>(__func__)(handle, previousVlanId, vlanId);
}

int rpcclt_openapiLagMembersGet(openclt_handle_t *handle, uint32_t lagIfNum, uint32_t *count, openclt_buffer_t *members,
                                uint32_t bufferSize)
{
    memberCapacity = members->size;
    int result =
        realCall<decltype(rpcclt_openapiLagMembersGet)>(__func__)(handle, lagIfNum, count, members, bufferSize);
    if (wrongCount != 0)
        *count = wrongCount;
    return result;
}

int rpcclt_openapiDot1qSwPortTaggedVlanListGet(openclt_handle_t *handle, uint32_t ifNum, openclt_buffer_t *list)
{
    int result = realCall<decltype(rpcclt_openapiDot1qSwPortTaggedVlanListGet)>(__func__)(handle, ifNum, list);
    if (wrongCount != 0)
        memcpy(list->bytes, &wrongCount, sizeof wrongCount);
    return result;
}

TEST_F(WALK, GoesThroughInterfacesUnitsAndVlans)
{
    for (bool repeating : {false, true}) {
        MISBEHAVIOUR_T misbehaviour;
        repeatKeys = repeating;
        std::string seen;
        for (IF_WALK_T lag = ifWalkStart(&handle, OPENCLT_IF_LAG); lag.valid; ifWalkNext(&lag))
            seen += std::to_string(lag.ifNum) + "=lag" + std::to_string(lagNumber(lag.ifNum, lag.first)) + " ";
        for (UNIT_WALK_T walk = unitWalkStart(&handle); walk.valid; unitWalkNext(&walk))
            seen += "unit" + std::to_string(walk.unit) + " ";
        for (VLAN_WALK_T walk = vlanWalkStart(&handle); walk.valid; vlanWalkNext(&walk))
            seen += "vlan" + std::to_string(walk.vlanId) + " ";
        EXPECT_EQ(seen, repeating ? "101=lag1 unit1 unit2 vlan1 " : "101=lag1 102=lag2 unit1 unit2 vlan1 vlan10 ");
    }
    EXPECT_EQ(logText(), "");
}

TEST_F(WALK, CountsOfThePlatformAreHeldWithinTheBuffers)
{
    MISBEHAVIOUR_T misbehaviour;
    LAG_MEMBERS_T members;
    EXPECT_EQ(lagMembersGet(&handle, 101, 8, &members), 0);
    EXPECT_EQ(members.count, 2U);
    EXPECT_EQ(lagMember(&members, 1), 3U);
    EXPECT_EQ(lagMember(&members, 2), 0U);
    EXPECT_EQ(memberCapacity, 129U);
    wrongCount = UINT32_MAX;
    EXPECT_EQ(lagMembersGet(&handle, 101, 8, &members), 0);
    EXPECT_EQ(members.count, 32U); // what 129 bytes hold
    openclt_vlan_list_t list;
    EXPECT_EQ(swapiDot1qSwPortTaggedVlanListGet(&handle, 1, &list), 0);
    EXPECT_EQ(list.count, static_cast<uint32_t>(OPENCLT_VLAN_LIST_MAX));
    LAG_FLAGS_T flags;
    lagFlagsFill(&handle, UINT32_MAX, LAG_FLAGS_STOP, "reader", &flags); // an absurd maximum asks for no gigabytes
    EXPECT_EQ(memberCapacity, 16U * 65536 + 1);
}

TEST_F(WALK, MembersOfEveryLagAreFlagged)
{
    VS_STATE_T &state = vsState();
    state.lags[1].members = {2};
    state.lags[1].phantoms = {767, 768, 900};
    LAG_FLAGS_T flags;
    lagFlagsFill(&handle, 8, LAG_FLAGS_STOP, "reader", &flags);
    EXPECT_EQ(lagFlagsText(flags), "1 2 3 767 ");
    VS_FAULT_T fault;
    fault.name = "rpcclt_openapiLagMembersGet";
    fault.key = "101";
    vsFaultAdd(fault);
    lagFlagsFill(&handle, 8, LAG_FLAGS_STOP, "reader", &flags);
    EXPECT_EQ(lagFlagsText(flags), "2 767 ");
    EXPECT_EQ(logText(), "");
}

TEST(KeyCircle, EndsCirclesAndNothingElse)
{
    // First key of the circle (0: there is none), its length, the keys taken from an enumeration of at most 5000.
    struct ROW_T {
        uint32_t first, length, most;
    };
    static const ROW_T rows[] = {{0, 0, 5000}, {1, 1, 2}, {1, 2, 4}, {300, 1, 1024}, {2, 700, 3 * 702}};
    for (const ROW_T &row : rows) {
        KEY_CIRCLE_T<uint32_t> circle;
        uint32_t taken = 0;
        for (uint32_t key = 5000; taken < 5000; taken++) { // in descending order
            if (keyRecurs(&circle, key))
                break;
            bool atEnd = row.length != 0 && 5000 - key + 1 == row.first + row.length - 1;
            key = atEnd ? 5000 - row.first + 1 : key - 1;
        }
        bool isCircle = row.length != 0;
        EXPECT_GE(taken, isCircle ? row.first + row.length - 1 : row.most) << row.first << ' ' << row.length;
        EXPECT_LE(taken, row.most) << row.first << ' ' << row.length;
    }
}

TEST(Labels, StatesBeyondTheKnownAreUnknown)
{
    std::string states;
    for (uint32_t state = 0; state <= 7; state++)
        states += std::string(stpFwdStateText(state)) + ",";
    EXPECT_EQ(states, "Unknown,Discarding,Learning,Forwding,Disable,Manual forwding,Not Participating,Unknown,");
    EXPECT_STREQ(stpFwdStateText(UINT32_MAX), "Unknown");
}
