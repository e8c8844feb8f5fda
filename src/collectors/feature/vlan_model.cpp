#include "collectors/feature/vlan_model.h"

// The VLAN list, made in two ways that differ in where the VLANs come from, what a VLAN without a profile is called,
// and which failures end them. What a profile row sets, the management VLAN, the clock priorities and the port arrays
// are the same. Uses the stores of the profiles and the readers and walks of switch/.

#include "collectors/feature/vlan_ports.h"
#include "collectors/feature/vlan_show.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "stores/vlan_info.h"
#include "switch/columns.h"
#include "switch/swapi.h"
#include "switch/walk.h"

#include <cstring>

constexpr uint32_t DEFAULT_VLAN = 1;
constexpr size_t PRIORITY_DIGITS = 15;
static const char defaultColor[] = "#000000";
static const char defaultProfile[] = "Default";

// Priorities of the local 802.1AS clock.
struct CLOCK_PRIORITIES_T {
    uint32_t priority1, priority2;
};

// The profile database, read once; row by row when that could not be done.
struct PROFILE_ROWS_T {
    OWNED_VLAN_INFO_LIST list; // sorted; null when it could not be read
    VLAN_INFO_READS_T reads;
};

// The digits that end the line before its trailing white space, 1 to 15 of them and within 32 bits. False, and *number
// untouched, otherwise.
static bool numberAtEnd(const char *line, uint32_t *number)
{
    size_t end = strlen(line);
    while (end > 0 && strchr(" \t\r\n\v\f", line[end - 1]) != nullptr)
        end--;
    size_t begin = end;
    while (begin > 0 && line[begin - 1] >= '0' && line[begin - 1] <= '9')
        begin--;
    if (begin == end || end - begin > PRIORITY_DIGITS)
        return false;

    unsigned long long value = strtoull(line + begin, nullptr, 10);
    if (value > UINT32_MAX)
        return false;
    *number = static_cast<uint32_t>(value);
    return true;
}

// Local Clock Priority1.......................... 246
// Local Clock Priority2.......................... 248
//
// 0 when both were found, else both are 0 or what was found. The output file is not deleted: other programs read it.
static int clockPrioritiesGet(CLIENT_HANDLE_T *clientHandle, CLOCK_PRIORITIES_T *clock)
{
    SHOW_FILE_T show;
    char line[CLI_LINE_SIZE];
    bool found1 = false, found2 = false;

    *clock = {};
    SHOW_REQUEST_T request = {__func__, "show dot1as summary", PATH_SHOW_DOT1AS};
    request.after = SHOW_AFTER_KEEP;
    int result = showFileRun(&show, clientHandle, request);
    if (result != RESULT_OK)
        return result;
    while (showFileLine(&show, line, sizeof(line))) {
        bool first = textBegins(line, "Local Clock Priority1") && numberAtEnd(line, &clock->priority1);
        bool second = textBegins(line, "Local Clock Priority2") && numberAtEnd(line, &clock->priority2);
        if (first || second)
            showRowTaken();
        found1 = found1 || first;
        found2 = found2 || second;
    }
    return found1 && found2 ? RESULT_OK : RESULT_FAILED;
}

static int vlansWalk(CLIENT_HANDLE_T *clientHandle, VLAN_INFOX_LIST_T *list)
{
    for (VLAN_WALK_T vlan = vlanWalkStart(clientHandle); vlan.valid; vlanWalkNext(&vlan)) {
        if (vlan.vlanId >= VLAN_INDEX_SIZE)
            break; // no VLAN ID, and they ascend
        if (vlanSlotsAdd(list, vlan.vlanId) == nullptr) {
            LOG_ERROR_AS("vlanListBaseInfoGetEX", "Failed to allocate VLAN_INFO_T for VLAN %u\n", vlan.vlanId);
            return RESULT_INVALID_POINTER;
        }
    }
    return RESULT_OK;
}

static uint32_t managementVlanRead(CLIENT_HANDLE_T *clientHandle)
{
    int vlan = DEFAULT_VLAN;

    (void)managementVlanGet(clientHandle, &vlan); // has logged; VLAN 1 unless it says otherwise
    return static_cast<uint32_t>(vlan);
}

static void defaultsSet(VLAN_INFO_T *vlan, uint32_t managementVlan, const CLOCK_PRIORITIES_T &clock)
{
    vlan->valid = 1;
    vlan->management = vlan->vlanId == managementVlan;
    vlan->priority1 = clock.priority1;
    vlan->priority2 = clock.priority2;
    vlan->vlanType = 1;
    textCopy(vlan->color, sizeof(vlan->color), defaultColor);
    textCopy(vlan->profileType, sizeof(vlan->profileType), defaultProfile);
}

static bool profileRowGet(PROFILE_ROWS_T *rows, uint32_t vlanId, VLAN_INFO_ENTRY_T *row)
{
    int id = static_cast<int>(vlanId);

    if (rows->list == nullptr)
        return vlanInfoSelectById(id, &row->vlanType, row->profileName, row->profileType, row->color, &rows->reads) ==
               1;
    const VLAN_INFO_ENTRY_T *found = vlanInfoListFindById(rows->list.get(), id);
    if (found != nullptr)
        *row = *found;
    return found != nullptr;
}

// Null stands for no row.
static void profileRowApply(const VLAN_INFO_ENTRY_T *row, VLAN_INFO_T *vlan)
{
    if (row == nullptr)
        return;
    vlan->vlanType = static_cast<uint32_t>(row->vlanType);
    textCopy(vlan->name, sizeof(vlan->name), row->profileName);
    textCopy(vlan->profileType, sizeof(vlan->profileType), row->profileType);
    textCopy(vlan->color, sizeof(vlan->color), row->color);
}

// Whether VLAN 1, which the rows lack, has no row in the database either: one beyond a full list must not be replaced.
static bool defaultMissing(PROFILE_ROWS_T *rows)
{
    if (rows->list == nullptr)
        return false;
    return rows->list->count < rows->list->capacity ||
           (vlanInfoSelectById(DEFAULT_VLAN, nullptr, nullptr, nullptr, nullptr, &rows->reads) == 0 &&
            !rows->reads.failed);
}

// A profile names its VLAN; VLAN 1 without one is given the default profile, but only when it is certain that the
// database has none; any other VLAN goes by the platform's name.
static void vlanNameChoose(CLIENT_HANDLE_T *clientHandle, PROFILE_ROWS_T *rows, VLAN_INFO_T *vlan)
{
    VLAN_INFO_ENTRY_T row = {};

    if (profileRowGet(rows, vlan->vlanId, &row)) {
        profileRowApply(&row, vlan);
    } else if (vlan->vlanId == DEFAULT_VLAN) {
        textCopy(vlan->name, sizeof(vlan->name), defaultProfile);
        if (defaultMissing(rows)) {
            rows->reads.db.reset(); // one connection at a time; a failure is logged, and tried with the next document
            (void)vlanInfoReplace(DEFAULT_VLAN, 1, defaultProfile, defaultProfile, defaultColor);
        }
    } else {
        char *name = nullptr;
        if (vlanNameGet(clientHandle, vlan->vlanId, &name) == RESULT_OK && name != nullptr && name[0] != '\0')
            textCopy(vlan->name, sizeof(vlan->name), name);
        else
            snprintf(vlan->name, sizeof(vlan->name), "VLAN%u", vlan->vlanId);
        free(name);
    }
}

// Base fields of every VLAN that the platform walks. Without clock priorities there is no VLAN, and when memory ends
// during the walk none is marked valid.
static int vlanListBaseInfoGetEX(CLIENT_HANDLE_T *clientHandle, VLAN_INFOX_LIST_T *list)
{
    CLOCK_PRIORITIES_T clock;

    int result = clockPrioritiesGet(clientHandle, &clock);
    if (result != RESULT_OK) {
        LOG_ERROR("Bad return code trying to get clock1 priority (result = %d)\r\n", result);
        return result;
    }
    result = vlansWalk(clientHandle, list);
    if (result != RESULT_OK)
        return result;

    uint32_t managementVlan = managementVlanRead(clientHandle);
    PROFILE_ROWS_T rows = {};
    rows.list = vlanInfoSortedLoad(&rows.reads);
    for (uint32_t i = 0; i < list->count; i++) {
        VLAN_INFO_T *vlan = list->ids[i];
        defaultsSet(vlan, managementVlan, clock);
        vlan->isStatic = openapiVlanIsStatic(clientHandle, vlan->vlanId) != 0;
        vlanNameChoose(clientHandle, &rows, vlan);
    }
    return RESULT_OK;
}

static int portArraysAttach(const VLAN_PORT_LIST_T *ports, VLAN_INFO_T *vlan)
{
    const VLAN_PORTS_T *from = vlanSlotsFind(ports, vlan->vlanId);

    for (const VLAN_ARRAY_T &array : vlanArrays) {
        vlan->*array.vlan = from == nullptr ? nullptr : cJSON_Duplicate(from->*array.ports, true);
        if (vlan->*array.vlan == nullptr) {
            LOG_ERROR_AS("vlanListAllInfoGetEX", "Failed to duplicate %s for VLAN %d\n", array.name, vlan->vlanId);
            vlanEntryRelease(vlan);
            return RESULT_FAILED;
        }
    }
    return RESULT_OK;
}

static int vlansShown(CLIENT_HANDLE_T *clientHandle, VLAN_INFOX_LIST_T *list)
{
    SHOW_FILE_T show;
    VLAN_SHOWN_T row;

    if (vlanShowRun(&show, clientHandle, "vlanListAllInfoGetFastEX", PATH_SHOW_VLAN_FAST) != RESULT_OK)
        return RESULT_FAILED;
    while (list->count < VLAN_SLOTS && vlanShowNext(&show, &row)) {
        auto *vlan = vlanSlotsAdd(list, row.vlanId);
        if (vlan == nullptr)
            return RESULT_INVALID_POINTER;
        vlan->isStatic = row.isStatic;
        textCopy(vlan->name, sizeof(vlan->name), row.name);
    }
    return RESULT_OK;
}

void vlanEntryRelease(VLAN_INFO_T *vlan)
{
    for (const VLAN_ARRAY_T &array : vlanArrays) {
        cJSON_Delete(vlan->*array.vlan);
        vlan->*array.vlan = nullptr;
    }
}

int vlanListAllInfoGetEX(CLIENT_HANDLE_T *clientHandle, VLAN_INFOX_LIST_T *list)
{
    (void)vlanListBaseInfoGetEX(clientHandle, list); // logged; the VLANs read so far are shown

    OWNED_VLAN_PORTS ports = vlanSlotsCreate<VLAN_PORTS_T>();
    if (ports == nullptr) {
        LOG_ERROR("Failed to allocate VLAN_PORT_LIST_T\n");
        return RESULT_INVALID_POINTER;
    }
    int result = vlanListPortAssGetFromVlanList(clientHandle, ports.get(), list);
    for (uint32_t i = 0; result == RESULT_OK && i < list->count; i++)
        result = portArraysAttach(ports.get(), list->ids[i]);
    return result;
}

int vlanListAllInfoGetFastEX(CLIENT_HANDLE_T *clientHandle, OWNED_VLAN_LIST *list)
{
    CLOCK_PRIORITIES_T clock;

    OWNED_VLAN_LIST made = vlanSlotsCreate<VLAN_INFO_T>();
    OWNED_VLAN_PORTS ports = vlanSlotsCreate<VLAN_PORTS_T>();
    if (made == nullptr || ports == nullptr)
        return RESULT_INVALID_POINTER;
    int result = vlansShown(clientHandle, made.get());
    if (result != RESULT_OK)
        return result;

    uint32_t managementVlan = managementVlanRead(clientHandle);
    (void)clockPrioritiesGet(clientHandle, &clock); // 0 when they are not there: not every switch has the clock
    PROFILE_ROWS_T rows = {};
    rows.list = vlanInfoSortedLoad(&rows.reads);
    for (uint32_t i = 0; i < made->count; i++) {
        VLAN_INFO_T *vlan = made->ids[i];
        defaultsSet(vlan, managementVlan, clock);
        if (rows.list != nullptr)
            profileRowApply(vlanInfoListFindById(rows.list.get(), static_cast<int>(vlan->vlanId)), vlan);
    }

    result = vlanListPortAssGetFromVlanList(clientHandle, ports.get(), made.get());
    if (result != RESULT_OK)
        return result;
    for (uint32_t i = 0; i < made->count; i++) {
        const VLAN_PORTS_T *from = vlanSlotsFind(ports.get(), made->ids[i]->vlanId);
        for (const VLAN_ARRAY_T &array : vlanArrays)
            made->ids[i]->*array.vlan = from == nullptr ? nullptr : cJSON_Duplicate(from->*array.ports, true);
    }
    *list = std::move(made);
    return RESULT_OK;
}
