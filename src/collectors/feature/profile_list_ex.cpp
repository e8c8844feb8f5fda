#include "collectors/feature/profile_list_ex.h"

// Three sources are read once each into tables by VLAN ID: the profile database, the ports and LAGs, the routing
// interfaces. One walk over the VLANs then joins them; the database's rows ascend as the walk does, so a cursor that
// only moves forward finds them. Exported configurations are parsed when a VLAN first needs them and kept to the end of
// the build.

#include "runtime/clock.h"
#include "runtime/database.h"
#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/paths.h"
#include "runtime/result.h"
#include "runtime/sql.h"
#include "stores/profile_template.h"
#include "stores/vlan_info.h"
#include "switch/columns.h"
#include "switch/walk.h"

#include <algorithm>
#include <bitset>
#include <cstring>
#include <new>

constexpr uint32_t VLAN_LAST = 4096;
constexpr size_t ROWS_FIRST = 64;
constexpr int TYPE_DATA = 1; // VLANs of this type have no exported configuration

struct DATABASE_ROWS_T {
    OWNED_ARRAY<VLAN_INFO_ENTRY_T> entries; // ascending ID
    uint32_t count = 0;
    size_t capacity = 0;
    uint32_t cursor = 0;
};

// One build: what is known of each VLAN ID.
struct PROFILE_BUILD_T {
    CLIENT_HANDLE_T *clientHandle = nullptr;
    DATABASE_ROWS_T rows;
    PROFILE_FILES_T exports{PATH_EXPORT_DIR};
    OWNED_JSON tagged[VLAN_LAST + 1], untagged[VLAN_LAST + 1]; // interface numbers; null for none
    char ip[VLAN_LAST + 1][16] = {}, mask[VLAN_LAST + 1][16] = {};
};

// A text column, cut to size-1; NULL is an empty text.
static void columnCopy(const OWNED_STATEMENT &statement, int column, char *out, size_t size)
{
    const char *text = sqlText(statement, column).data();

    textCopy(out, size, text == nullptr ? "" : text);
}

// The first row of each VLAN ID. Without file or table there are no rows, and every VLAN shows its defaults. False when
// the read breaks off (logged): defaults in place of the remaining rows would be wrong.
static bool rowsRead(DATABASE_ROWS_T *rows)
{
    OWNED_DB db;
    OWNED_STATEMENT statement;
    std::bitset<VLAN_LAST + 1> seen;

    // sorted here: SQLite's ORDER BY would hold all rows in memory, however many there are
    if (databaseOpenRead(PathGet(PATH_VLANINFO_DB), &db) != SQLITE_OK ||
        sqlPrepare(db.get(), "SELECT id, vlanType, profileName, profileType, color FROM vlanInfo", &statement) !=
            SQLITE_OK)
        return true;
    rows->entries = ownedArray<VLAN_INFO_ENTRY_T>(ROWS_FIRST);
    if (rows->entries == nullptr)
        return true;
    rows->capacity = ROWS_FIRST;
    int result;
    while ((result = sqlStep(statement)) == SQLITE_ROW) {
        const int id = sqlite3_column_int(statement.get(), 0);
        if (id < 1 || id > static_cast<int>(VLAN_LAST) || seen.test(static_cast<size_t>(id)))
            continue;
        if (rows->count == rows->capacity && !ownedArrayDouble(&rows->entries, &rows->capacity))
            break; // what was read so far
        seen.set(static_cast<size_t>(id));
        VLAN_INFO_ENTRY_T &entry = rows->entries[rows->count++];
        entry.id = id;
        entry.vlanType = sqlite3_column_int(statement.get(), 1);
        columnCopy(statement, 2, entry.profileName, sizeof(entry.profileName));
        columnCopy(statement, 3, entry.profileType, sizeof(entry.profileType));
        columnCopy(statement, 4, entry.color, sizeof(entry.color));
    }
    std::sort(rows->entries.get(), rows->entries.get() + rows->count,
              [](const VLAN_INFO_ENTRY_T &one, const VLAN_INFO_ENTRY_T &other) { return one.id < other.id; });
    if (result == SQLITE_ROW || result == SQLITE_DONE)
        return true;
    LOG_ERROR_AS("profileListExGet", "vlanInfo error: %s\n", sqlite3_errmsg(db.get()));
    return false;
}

static void interfaceAppend(OWNED_JSON *list, uint32_t ifNum)
{
    if (*list == nullptr)
        list->reset(cJSON_CreateArray());
    jsonAppendNumber(list->get(), ifNum);
}

static void interfaceRead(PROFILE_BUILD_T *build, uint32_t ifNum)
{
    openclt_vlan_list_t list;
    openclt_buffer_t buffer = {sizeof(list), reinterpret_cast<char *>(&list)};
    uint32_t pvid = 0;

    list.count = 0;
    if (rpcclt_openapiDot1qSwPortTaggedVlanListGet(build->clientHandle, ifNum, &buffer) == OPENCLT_OK) {
        for (uint32_t i = 0; i < list.count && i < OPENCLT_VLAN_LIST_MAX; i++) {
            if (list.ids[i] <= VLAN_LAST)
                interfaceAppend(&build->tagged[list.ids[i]], ifNum);
        }
    }
    if (openapiVlanIfPvidGet(build->clientHandle, ifNum, &pvid) == OPENCLT_OK && pvid <= VLAN_LAST)
        interfaceAppend(&build->untagged[pvid], ifNum);
}

static void interfacesRead(PROFILE_BUILD_T *build)
{
    uint32_t maxMembers = 0;

    for (IF_WALK_T port = ifWalkStart(build->clientHandle, OPENCLT_IF_PHYSICAL); port.valid; ifWalkNext(&port))
        interfaceRead(build, port.ifNum);

    IF_WALK_T lag = ifWalkStart(build->clientHandle, OPENCLT_IF_LAG);
    if (!lag.valid || rpcclt_openapiLagMaxMemberCountGet(build->clientHandle, &maxMembers) != OPENCLT_OK)
        return;
    for (; lag.valid && maxMembers > 0; ifWalkNext(&lag)) {
        LAG_MEMBERS_T members;
        if (lagMembersGet(build->clientHandle, lag.ifNum, maxMembers, &members) == RESULT_OK && members.count > 0)
            interfaceRead(build, lag.ifNum);
    }
}

static void routingFill(PROFILE_BUILD_T *build)
{
    uint32_t rtrIfNum = 0;
    uint32_t next = 0;

    while (rpcclt_openapiRtrIntfNextGet(build->clientHandle, rtrIfNum, &next) == OPENCLT_OK && next > rtrIfNum) {
        uint32_t vlanId = 0, address = 0, prefixLength = 0;
        rtrIfNum = next;
        if (rpcclt_openapiRtrIntfVlanIdGet(build->clientHandle, rtrIfNum, &vlanId) != OPENCLT_OK || vlanId < 1 ||
            vlanId > VLAN_LAST)
            continue;
        if (rpcclt_openapiRtrIntfIpAddrGet(build->clientHandle, OPENCLT_AF_IPV4, rtrIfNum, &address, &prefixLength) !=
                OPENCLT_OK ||
            address == 0)
            continue;
        ipv4Text(address, build->ip[vlanId]);
        prefixLenMaskText(prefixLength, build->mask[vlanId]);
    }
}

// The VLAN's row, to which the cursor moves; the defaults when it has none.
static VLAN_INFO_ENTRY_T profileGet(DATABASE_ROWS_T *rows, uint32_t vlanId)
{
    while (rows->cursor < rows->count && rows->entries[rows->cursor].id < static_cast<int64_t>(vlanId))
        rows->cursor++;
    if (rows->cursor < rows->count && rows->entries[rows->cursor].id == static_cast<int64_t>(vlanId))
        return rows->entries[rows->cursor];

    VLAN_INFO_ENTRY_T profile = {static_cast<int32_t>(vlanId), TYPE_DATA, "", "", "#000000"};
    snprintf(profile.profileName, sizeof(profile.profileName), "VLAN%u", vlanId);
    textCopy(profile.profileType, sizeof(profile.profileType), vlanId == 1 ? "Default" : "Data");
    return profile;
}

static const char *shownType(const VLAN_INFO_ENTRY_T &profile)
{
    return isKramerType(profile.vlanType) ? KRAMER_PROFILE : profile.profileType;
}

// Follows the stored type, not the shown one.
static bool routingAllowed(const char *profileType)
{
    return strcmp(profileType, "Allen & Heath gigaACEGX") != 0 && strcmp(profileType, "Audio Basalte Multiroom") != 0;
}

static OWNED_JSON interfacesOf(OWNED_JSON *lists, uint32_t vlanId)
{
    if (vlanId <= VLAN_LAST && lists[vlanId] != nullptr)
        return std::move(lists[vlanId]);
    return OWNED_JSON(cJSON_CreateArray());
}

// profileConfig.vlans[first of this VLAN].ports.assignedPort; null when a member is missing.
static const cJSON *assignedFind(const cJSON *document, uint32_t vlanId)
{
    const cJSON *vlans = cJSON_GetObjectItem(cJSON_GetObjectItem(document, "profileConfig"), "vlans");
    const cJSON *vlan;

    if (!cJSON_IsArray(vlans))
        return nullptr;
    cJSON_ArrayForEach(vlan, vlans)
    {
        const cJSON *id = cJSON_GetObjectItem(vlan, "vlanId");
        if (cJSON_IsNumber(id) && id->valuedouble == static_cast<double>(vlanId))
            return cJSON_GetObjectItem(cJSON_GetObjectItem(vlan, "ports"), "assignedPort");
    }
    return nullptr;
}

static OWNED_JSON assignedPorts(PROFILE_FILES_T *exports, const VLAN_INFO_ENTRY_T &profile, uint32_t vlanId)
{
    const char *type = profile.profileType;
    const cJSON *assigned = nullptr;

    if (profile.vlanType != TYPE_DATA && type[0] != '\0' && strcmp(type, "Default") != 0)
        assigned = assignedFind(profileFileGet(exports, type), vlanId);
    return OWNED_JSON(cJSON_IsArray(assigned) ? cJSON_Duplicate(assigned, 1) : cJSON_CreateArray());
}

static OWNED_JSON vlanObject(PROFILE_BUILD_T *build, uint32_t vlanId)
{
    const VLAN_INFO_ENTRY_T profile = profileGet(&build->rows, vlanId);
    OWNED_JSON object(cJSON_CreateObject());

    jsonAddNumber(object.get(), "vlanId", vlanId);
    jsonAddNumber(object.get(), "vlanType", profile.vlanType);
    jsonAddBool(object.get(), "static", openapiVlanIsStatic(build->clientHandle, vlanId) != 0);
    jsonAddText(object.get(), "name", profile.profileName);
    jsonAddText(object.get(), "profileType", shownType(profile));
    jsonAddText(object.get(), "color", profile.color);
    jsonAddText(object.get(), "ip", vlanId <= VLAN_LAST ? build->ip[vlanId] : "");
    jsonAddText(object.get(), "ipMask", vlanId <= VLAN_LAST ? build->mask[vlanId] : "");
    jsonAddBool(object.get(), "routing", routingAllowed(profile.profileType));
    jsonAddItem(object.get(), "tagged", interfacesOf(build->tagged, vlanId));
    jsonAddItem(object.get(), "untagged", interfacesOf(build->untagged, vlanId));
    jsonAddItem(object.get(), "assignedPort", assignedPorts(&build->exports, profile, vlanId));
    return object;
}

static void vlansAdd(PROFILE_BUILD_T *build, cJSON *array)
{
    for (VLAN_WALK_T walk = vlanWalkStart(build->clientHandle); walk.valid; vlanWalkNext(&walk)) {
        jsonBuildBegin(); // each VLAN is whole or left out
        OWNED_JSON object = vlanObject(build, walk.vlanId);
        if (!jsonIncomplete())
            jsonAppend(array, std::move(object));
    }
    jsonBuildBegin();
}

static long milliseconds(int64_t from, int64_t to)
{
    return static_cast<long>((to - from) / 1000);
}

int profileListExGet(CLIENT_HANDLE_T *clientHandle, char **out)
{
    const int64_t start = ClockMicroseconds();

    if (out == nullptr)
        return RESULT_INVALID_POINTER;
    *out = nullptr;
    OWNED_JSON array(cJSON_CreateArray());
    std::unique_ptr<PROFILE_BUILD_T> build(new (std::nothrow) PROFILE_BUILD_T);
    if (array == nullptr || build == nullptr)
        return RESULT_INVALID_POINTER;

    build->clientHandle = clientHandle;
    if (!rowsRead(&build->rows))
        return RESULT_FAILED;
    const int64_t rowsDone = ClockMicroseconds();
    interfacesRead(build.get());
    routingFill(build.get());
    const int64_t tablesDone = ClockMicroseconds();
    // Without memory for a port the document fails; a VLAN without memory is left out.
    const bool portsMissing = jsonIncomplete();
    vlansAdd(build.get(), array.get());
    const int64_t end = ClockMicroseconds();
    build.reset();
    LOG_DEBUG("profileListExGet: vlanInfo=%ld ms, portBuckets=%ld ms, vlanWalk=%ld ms, total=%ld ms\n",
              milliseconds(start, rowsDone), milliseconds(rowsDone, tablesDone), milliseconds(tablesDone, end),
              milliseconds(start, end));

    if (!portsMissing)
        *out = jsonPrint(array.get(), JSON_COMPACT);
    return *out == nullptr ? RESULT_FAILED : RESULT_OK;
}
