#include "collectors/feature/sw_lag_cfg.h"

// Both lists walk the LAG interfaces and read the same values of each. The highest physical interface, which tells real
// members from phantom ones, is looked up once for a document, when the first LAG needs it. Uses the walks, labels and
// wrappers of switch/ and runtime/json.h.

#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/columns.h"
#include "switch/labels.h"
#include "switch/swapi.h"
#include "switch/walk.h"

#include <cstring>

constexpr size_t NAME_READ_SIZE = 256;
constexpr uint32_t MODE_TABLE_MAX = 65536; // a higher count of interfaces is taken for a wrong answer and cut to this
constexpr uint32_t LAG_MODE_TAGGED = 3;
constexpr uint32_t LAG_MODE_UNTAGGED = 1;

// Highest physical interface number, 0 when there is none.
struct HIGHEST_PORT_T {
    bool known;
    uint32_t ifNum;
};

// Switch-port modes by interface number; none when the number of interfaces cannot be read.
struct MODE_TABLE_T {
    OWNED_ARRAY<uint32_t> modes;
    uint32_t count = 0;
};

static uint32_t highestPortGet(CLIENT_HANDLE_T *clientHandle, HIGHEST_PORT_T *highest)
{
    if (!highest->known) {
        for (IF_WALK_T port = ifWalkStart(clientHandle, OPENCLT_IF_PHYSICAL); port.valid; ifWalkNext(&port))
            highest->ifNum = port.ifNum;
        highest->known = true;
    }
    return highest->ifNum;
}

// Members of a LAG without the phantom ones.
static int membersGet(CLIENT_HANDLE_T *clientHandle, uint32_t lagIfNum, HIGHEST_PORT_T *highest, LAG_MEMBERS_T *members)
{
    static const char caller[] = "lagMembersJsonArrayGet";
    uint32_t type = 0, maxMembers = 0, kept = 0;

    if (swapiIfTypeGet(clientHandle, lagIfNum, &type) != RESULT_OK || type != OPENCLT_IF_LAG ||
        lagMaxMemberCountGet(clientHandle, &maxMembers) != RESULT_OK)
        return RESULT_FAILED;
    uint32_t highestPort = highestPortGet(clientHandle, highest);
    int result = lagMembersGet(clientHandle, lagIfNum, maxMembers, members);
    if (members->bytes == nullptr)
        LOG_ERROR_AS(caller, "Failed to allocate memory\n");
    if (result != RESULT_OK)
        return RESULT_FAILED;

    for (uint32_t i = 0; i < members->count; i++) {
        uint32_t ifNum = lagMember(members, i);
        if (highestPort != 0 && ifNum > highestPort) {
            LOG_DEBUG_AS(caller, "Skipping phantom LAG member ifIndex %u (max PHY=%u)\n", ifNum, highestPort);
            continue;
        }
        memcpy(members->bytes.get() + sizeof(ifNum) * kept++, &ifNum, sizeof(ifNum));
    }
    members->count = kept;
    return RESULT_OK;
}

static int membersAppend(CLIENT_HANDLE_T *clientHandle, uint32_t lagIfNum, HIGHEST_PORT_T *highest, cJSON *array)
{
    LAG_MEMBERS_T members;

    if (membersGet(clientHandle, lagIfNum, highest, &members) != RESULT_OK)
        return RESULT_FAILED;
    for (uint32_t i = 0; i < members.count; i++)
        jsonAppendNumber(array, lagMember(&members, i));
    return jsonIncomplete() ? RESULT_FAILED : RESULT_OK;
}

static void membersRead(CLIENT_HANDLE_T *clientHandle, HIGHEST_PORT_T *highest, LAG_INFO_T *lag)
{
    LAG_MEMBERS_T members;

    if (membersGet(clientHandle, lag->ifNum, highest, &members) != RESULT_OK)
        return; // without members
    lag->memberCount = members.count;
    for (uint32_t i = 0; i < members.count && i < LAG_MEMBERS_SHOWN; i++)
        lag->members[i] = lagMember(&members, i);
}

// Values of one LAG, 0 where a read fails (its wrapper has logged a line). Without `highest` the members stay unread.
static void lagRead(CLIENT_HANDLE_T *clientHandle, uint32_t lagIfNum, HIGHEST_PORT_T *highest, LAG_INFO_T *lag)
{
    char name[NAME_READ_SIZE] = "";
    uint32_t mode = 0, status = 0;

    *lag = {};
    lag->ifNum = lagIfNum;
    if (swapiLagNameGet(clientHandle, lagIfNum, name, sizeof(name)) == RESULT_OK)
        textCopy(lag->name, sizeof(lag->name), name);
    lag->staticMode = swapiLagStaticModeGet(clientHandle, lagIfNum, &mode) == RESULT_OK && mode == 1;
    if (swapiVlanIfPvidGet(clientHandle, lagIfNum, &lag->pvid) != RESULT_OK)
        lag->pvid = 0;
    lag->autoTrunk = dot1qSwPortAutoTrunkStatusGet(clientHandle, lagIfNum, &status) == RESULT_OK && status == 1;
    if (highest != nullptr)
        membersRead(clientHandle, highest, lag);
    if (swapiLagLoadBalanceModeGet(clientHandle, lagIfNum, &lag->balanceMode) != RESULT_OK)
        lag->balanceMode = 0;
    (void)swapiDot1qSwPortTaggedVlanListGet(clientHandle, lagIfNum, &lag->taggedVlans); // count 0 when it fails
}

static MODE_TABLE_T modeTableGet(CLIENT_HANDLE_T *clientHandle)
{
    MODE_TABLE_T table;
    uint32_t count = 0;

    if (openapiMaxInterfaceCountGet(clientHandle, &count) != OPENCLT_OK)
        return table;
    count = count < MODE_TABLE_MAX ? count : MODE_TABLE_MAX;
    table.modes = ownedArray<uint32_t>(count);
    if (table.modes == nullptr)
        return table;
    table.count = count;
    (void)swPortsModeGet(clientHandle, table.modes.get(), count); // zeroed when it fails
    return table;
}

static void membersAdd(CLIENT_HANDLE_T *clientHandle, const LAG_INFO_T &lag, cJSON *row)
{
    cJSON *numbers = jsonAddArray(row, "members");
    cJSON *names = jsonAddArray(row, "memberName");

    for (uint32_t i = 0; i < lag.memberCount; i++) {
        openclt_usp_t usp;
        char name[PORT_LABEL_SIZE];

        (void)ifUnitSlotPortGet(clientHandle, lag.members[i], &usp); // all 0 when it fails
        portCliName(&usp, name);
        jsonAppendNumber(numbers, lag.members[i]);
        jsonAppendText(names, name);
    }
}

static uint32_t lagMode(const LAG_INFO_T &lag)
{
    return lag.taggedVlans.count > 0 ? LAG_MODE_TAGGED : LAG_MODE_UNTAGGED;
}

// One LAG of the full list; false when a part of it cannot be created.
static bool lagAppend(CLIENT_HANDLE_T *clientHandle, const IF_WALK_T &walk, const MODE_TABLE_T &table,
                      HIGHEST_PORT_T *highest, cJSON *list)
{
    LAG_INFO_T lag;

    cJSON *row = jsonAppendObject(list);
    if (row == nullptr) {
        LOG_ERROR_AS("getLagInfoList", "Failed to create LAG item object\n");
        return false;
    }
    lagRead(clientHandle, walk.ifNum, highest, &lag);
    if (lag.memberCount > LAG_MEMBERS_SHOWN)
        lag.memberCount = LAG_MEMBERS_SHOWN;

    jsonAddText(row, "name", lag.name);
    jsonAddNumber(row, "portNum", lag.ifNum);
    jsonAddNumber(row, "groupId", lagNumber(lag.ifNum, walk.first));
    jsonAddBool(row, "staticMode", lag.staticMode != 0);
    jsonAddNumber(row, "vlanId", lag.pvid);
    jsonAddBool(row, "trunkMode", lag.autoTrunk != 0);
    jsonAddNumber(row, "switchportMode", lag.ifNum < table.count ? table.modes[lag.ifNum] : 0);
    jsonAddBool(row, "autoLag", lag.autoTrunk != 0);
    membersAdd(clientHandle, lag, row);
    jsonAddNumber(row, "balanceMode", lag.balanceMode);
    jsonAddNumber(row, "lagMode", lagMode(lag));
    jsonAddBool(row, "changed", lag.memberCount != 0);
    return !jsonIncomplete();
}

static void detailsAdd(CLIENT_HANDLE_T *clientHandle, uint32_t lagIfNum, cJSON *row)
{
    LAG_INFO_T lag;

    lagRead(clientHandle, lagIfNum, nullptr, &lag);
    jsonAddText(row, "name", lag.name);
    jsonAddBool(row, "staticMode", lag.staticMode != 0);
    jsonAddNumber(row, "vlanId", lag.pvid);
    jsonAddBool(row, "autoLag", lag.autoTrunk != 0);
    jsonAddNumber(row, "balanceMode", lag.balanceMode);
    jsonAddNumber(row, "lagMode", lagMode(lag));
}

// One LAG of the lighter list; false when a part of it cannot be created. A LAG whose members are unknown is shown in
// full, so that a failed read does not make it look unused.
static bool lightLagAppend(CLIENT_HANDLE_T *clientHandle, const IF_WALK_T &walk, HIGHEST_PORT_T *highest, cJSON *list)
{
    OWNED_JSON members(cJSON_CreateArray());
    if (members == nullptr)
        return false;
    int result = membersAppend(clientHandle, walk.ifNum, highest, members.get());
    cJSON *row = jsonAppendObject(list);
    if (jsonIncomplete())
        return false;
    if (result != RESULT_OK)
        LOG_ERROR_AS("getLagInfoListEx",
                     "getLagInfoListEx: lagMembersJsonArrayGet(ifNum=%u) failed; emitting LAG without members\n",
                     walk.ifNum);
    bool detailed = result != RESULT_OK || cJSON_GetArraySize(members.get()) > 0;

    jsonAddNumber(row, "portNum", walk.ifNum);
    jsonAddNumber(row, "groupId", lagNumber(walk.ifNum, walk.first));
    if (detailed)
        detailsAdd(clientHandle, walk.ifNum, row);
    jsonAddItem(row, "members", std::move(members));
    jsonAddBool(row, "changed", detailed);
    return !jsonIncomplete();
}

int lagMembersJsonArrayGet(CLIENT_HANDLE_T *clientHandle, uint32_t lagIfNum, cJSON *members)
{
    HIGHEST_PORT_T highest = {};

    return membersAppend(clientHandle, lagIfNum, &highest, members);
}

void getLagInfo(CLIENT_HANDLE_T *clientHandle, uint32_t lagIfNum, LAG_INFO_T *lag)
{
    HIGHEST_PORT_T highest = {};

    lagRead(clientHandle, lagIfNum, &highest, lag);
}

int getLagInfoList(CLIENT_HANDLE_T *clientHandle, char **out)
{
    HIGHEST_PORT_T highest = {};

    *out = nullptr;
    MODE_TABLE_T table = modeTableGet(clientHandle);
    IF_WALK_T lag = ifWalkStart(clientHandle, OPENCLT_IF_LAG);
    if (lag.firstResult != RESULT_OK) {
        LOG_ERROR("Bad return code trying to get first LAG interface. (result = %d)\n", lag.firstResult);
        return RESULT_FAILED;
    }
    OWNED_JSON list(cJSON_CreateArray());
    if (list == nullptr) {
        LOG_ERROR("Failed to create root array\n");
        return RESULT_FAILED;
    }
    for (; lag.valid; ifWalkNext(&lag)) {
        if (!lagAppend(clientHandle, lag, table, &highest, list.get()))
            return RESULT_FAILED;
    }
    return jsonToStr(list.get(), JSON_COMPACT, out);
}

int getLagInfoListEx(CLIENT_HANDLE_T *clientHandle, char **out)
{
    HIGHEST_PORT_T highest = {};

    *out = nullptr;
    OWNED_JSON list(cJSON_CreateArray());
    if (list == nullptr) {
        LOG_ERROR("getLagInfoListEx: failed to create root array\n");
        return RESULT_FAILED;
    }
    IF_WALK_T lag = ifWalkStart(clientHandle, OPENCLT_IF_LAG);
    if (lag.firstResult != RESULT_OK)
        LOG_INFO("getLagInfoListEx: no LAG interfaces (rc=%d)\n", lag.firstResult);
    for (; lag.valid; ifWalkNext(&lag)) {
        if (!lightLagAppend(clientHandle, lag, &highest, list.get()))
            return RESULT_FAILED;
    }
    *out = jsonPrint(list.get(), JSON_COMPACT);
    if (*out == nullptr) {
        LOG_ERROR("Response error\r\n");
        return RESULT_FAILED;
    }
    return RESULT_OK;
}
