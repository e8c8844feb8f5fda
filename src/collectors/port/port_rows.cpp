#include "collectors/port/port_rows.h"

// The steps of a build in their order: units, tables, LAG members, rows. A row's record is put together from the
// status table, the platform and the document's own settings, and shaped by the one routine rowFill. Uses the tables
// of interfaces_table.h, the walks, models and wrappers of switch/, the VLAN profiles of stores/.

#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/columns.h"
#include "switch/labels.h"
#include "switch/models.h"
#include "switch/swapi.h"

#include <cstdio>
#include <cstring>
#include <strings.h>

constexpr uint32_t FRAME_SIZE_DEFAULT = 9198;
constexpr size_t OPTIONS_SIZE = 32; // fan-out modes of a port, 31 characters
constexpr uint32_t SFP_TYPE_QSFP = 3;

// Progress of the document that tells it.
#define TRACE(source, ...)                                                                                             \
    do {                                                                                                               \
        if ((source).logs)                                                                                             \
            LOG_DEBUG_AS((source).caller, __VA_ARGS__);                                                                \
    } while (0)

// Front ports of a unit; *total counts those of all units. Progress is told for a modular unit slot by slot.
static int unitPortsCount(const PORT_SOURCE_T &source, uint32_t unit, SLOT_MODELS_T *slots, ROW_UNIT_T *record,
                          uint32_t *total)
{
    const bool modular = strcmp(record->model, MODEL_MODULAR) == 0;
    const bool slotEmpty = slots->model[unit][0][0] == '\0';

    if (modular)
        TRACE(source, "Processing TK830-T03 model for unit %d\n", static_cast<int>(unit));
    const UNIT_PARTS_T parts = unitPartsGet(slots, unit, record->model);
    if (modular && slotEmpty)
        TRACE(source, "getPhyInfAllStatus: Copied module slot model %s to base slot for unit %u\n", record->model,
              unit);
    for (uint32_t slot = 0; slot < SLOT_COUNT; slot++) {
        const char *model = parts.model[slot];
        uint32_t count = 0;
        if (model == nullptr)
            continue;
        if (modular)
            TRACE(source, "Processing slot %d with model %s\n", static_cast<int>(slot), model);
        int result = modelPhysicalPortCountGet(model, &count);
        if (result != RESULT_OK) {
            if (modular && source.logs)
                LOG_ERROR_AS(source.caller, "Failed to get actual port count for model %s\n", model);
            return result;
        }
        record->physicalPorts += count;
        *total += count;
        if (modular) {
            TRACE(source, "Actual port count for slot %d: %d\n", static_cast<int>(slot), static_cast<int>(count));
            TRACE(source, "Total phyInfSum after slot %d: %d (using actual count)\n", static_cast<int>(slot),
                  static_cast<int>(*total));
        }
    }
    if (!modular && strcmp(record->model, MODEL_CARD_CHASSIS) != 0)
        TRACE(source, "Other model: Unit %d, intfCount=%d, phyInfSum=%d\n", static_cast<int>(unit),
              static_cast<int>(record->physicalPorts), static_cast<int>(*total));
    return RESULT_OK;
}

// A unit whose model cannot be read is passed over.
static int unitsRead(PORT_LIST_T *list, const PORT_SOURCE_T &source)
{
    SLOT_MODELS_T slots = {};
    uint32_t total = 0;

    (void)slotModelTableGet(list->clientHandle, &slots); // all slots count as empty when it fails
    for (UNIT_WALK_T walk = unitWalkStart(list->clientHandle); walk.valid; unitWalkNext(&walk)) {
        if (walk.unit >= SLOT_UNITS)
            break;
        ROW_UNIT_T *unit = &list->units[walk.unit];
        if (stackUnitMgrPreconfigModelIdGet(list->clientHandle, walk.unit, unit->model) != RESULT_OK)
            continue;
        int result = unitPortsCount(source, walk.unit, &slots, unit, &total);
        if (result != RESULT_OK)
            return result;
    }
    return RESULT_OK;
}

static void flowControlFill(PORT_LIST_T *list)
{
    uint32_t index = 0;

    for (uint32_t i = 0; i < list->physical; i++)
        list->flowControl[i] = "Disable";
    for (IF_WALK_T walk = ifWalkStart(list->clientHandle, OPENCLT_IF_PHYSICAL); walk.valid && index < list->physical;
         ifWalkNext(&walk), index++) {
        uint32_t mode = 0;
        if (rpcclt_openapiFlowControlIfModeGet(list->clientHandle, walk.ifNum, &mode) != OPENCLT_OK)
            continue;
        if (mode == 1 || mode == 2)
            list->flowControl[index] = mode == 1 ? "Symmetric" : "Asymmetric";
    }
}

static int tablesFill(PORT_LIST_T *list, const PORT_SOURCE_T &source)
{
    uint32_t count = 0;

    list->physical = ifCountGet(list->clientHandle, OPENCLT_IF_PHYSICAL);
    TRACE(source, "PHY interface count: phyInfSum=%d\n", static_cast<int>(list->physical));
    uint32_t further = source.furtherRoom;
    if (further == 0)
        further = ifCountGet(list->clientHandle, OPENCLT_IF_LAG);

    list->flowControl = ownedArray<const char *>(list->physical);
    if (list->flowControl == nullptr) {
        if (source.logs)
            LOG_ERROR_AS(source.caller, "%s: Failed to allocate memory for pf (%u entries)\n", source.caller,
                         list->physical);
        return RESULT_NO_MEMORY;
    }
    list->table = ownedArray<INTERFACE_ENTRY_T>(static_cast<size_t>(list->physical) + further);
    if (list->table == nullptr) {
        if (source.logs)
            LOG_ERROR_AS(source.caller, "%s: Failed to allocate memory for pi (%u entries)\n", source.caller,
                         list->physical + further);
        return RESULT_NO_MEMORY;
    }
    flowControlFill(list);
    interfacesTableFill(list->clientHandle, list->table.get(), list->physical, further, &count);

    // With room for more than there are, the first entry without a name ends the table.
    list->entries = list->physical;
    while (list->entries < list->physical + further &&
           (source.furtherRoom == 0 || list->table[list->entries].name[0] != '\0'))
        list->entries++;
    return RESULT_OK;
}

static int lagMembersRead(PORT_LIST_T *list, const PORT_SOURCE_T &source)
{
    uint32_t maxMembers = 0;

    if (rpcclt_openapiLagMaxMemberCountGet(list->clientHandle, &maxMembers) != OPENCLT_OK)
        return RESULT_FAILED;
    lagFlagsFill(list->clientHandle, maxMembers, LAG_FLAGS_LOG_AND_SKIP, source.caller, &list->lagFlags);

    // Without memory the database is asked for each row.
    constexpr uint32_t ROOM_MAX = UINT16_MAX - 1;
    list->profiles.knownRoom = static_cast<uint16_t>(list->entries < ROOM_MAX ? list->entries : ROOM_MAX);
    list->profiles.known = ownedArray<PORT_PROFILE_T>(list->profiles.knownRoom);
    return RESULT_OK;
}

static uint32_t linkStateOf(const char *text)
{
    if (strcmp(text, "Up") == 0)
        return OPENCLT_LINK_UP;
    return strcmp(text, "Down") == 0 ? OPENCLT_LINK_DOWN : OPENCLT_LINK_DETACHED;
}

// False for an entry that gets no row: one that the platform does not know, and a fan-out sub-port that is not in use.
static bool rowStart(const PORT_LIST_T *list, const PORT_SOURCE_T &source, PORT_ROW_T *row)
{
    int result = ifNumByNameGet(list->clientHandle, row->entry->name, &row->ifNum);
    if (result != OPENCLT_OK) {
        if (source.logs)
            LOG_ERROR_AS(source.caller, "Bad return code trying to get port num by port name. (result = %d)\n", result);
        return false;
    }
    (void)ifUnitSlotPortGet(list->clientHandle, row->ifNum, &row->usp); // zeroes when it fails, as it may for a LAG
    row->linkState = linkStateOf(row->entry->linkState);
    uint32_t front = row->usp.unit < SLOT_UNITS ? list->units[row->usp.unit].physicalPorts : 0;
    return row->usp.port <= front || strcmp(row->entry->linkState, "Detach") != 0;
}

static void profileFrom(int32_t vlanType, const char *type, const char *name, PORT_PROFILE_T *profile)
{
    if (isKramerType(vlanType))
        snprintf(profile->profileTemplate, sizeof(profile->profileTemplate), "%s: %s", KRAMER_PROFILE, type);
    else
        textCopy(profile->profileTemplate, sizeof(profile->profileTemplate), type);
    textCopy(profile->profileName, sizeof(profile->profileName), name);
}

static void profileSelect(uint32_t vlanId, VLAN_INFO_READS_T *reads, PORT_PROFILE_T *profile)
{
    VLAN_INFO_ENTRY_T entry = {};

    if (vlanInfoSelectById(static_cast<int>(vlanId), &entry.vlanType, entry.profileName, entry.profileType, nullptr,
                           reads) == 1) {
        profileFrom(entry.vlanType, entry.profileType, entry.profileName, profile);
    } else {
        textCopy(profile->profileTemplate, sizeof(profile->profileTemplate), "Default");
        textCopy(profile->profileName, sizeof(profile->profileName), "Default");
    }
}

static void profileGet(PORT_PROFILES_T *profiles, uint32_t vlanId, PORT_PROFILE_T *profile)
{
    const VLAN_INFO_ENTRY_T *entry =
        profiles->cache == nullptr ? nullptr : vlanInfoListFindById(profiles->cache.get(), static_cast<int>(vlanId));

    if (entry != nullptr) {
        profileFrom(entry->vlanType, entry->profileType, entry->profileName, profile);
        return;
    }
    bool inRange = vlanId < VLAN_INFO_CAPACITY;
    if (inRange && profiles->knownAt[vlanId] != 0) {
        *profile = profiles->known[profiles->knownAt[vlanId] - 1];
        return;
    }
    profileSelect(vlanId, &profiles->reads, profile);
    if (!profiles->reads.failed && inRange && profiles->known != nullptr &&
        profiles->knownCount < profiles->knownRoom) {
        profiles->known[profiles->knownCount++] = *profile;
        profiles->knownAt[vlanId] = profiles->knownCount;
    }
}

static uint32_t frameSizeGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum)
{
    uint32_t size = 0;

    return ifMaxFrameSizeGet(clientHandle, ifNum, &size) == RESULT_OK ? size : FRAME_SIZE_DEFAULT;
}

static uint32_t capabilityGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum)
{
    uint32_t capability = 0;

    return ifCapabilitiesGet(clientHandle, ifNum, &capability) == RESULT_OK ? capability : 0;
}

static const char *enableText(bool on)
{
    return on ? "Enable" : "Disable";
}

// What only a port has is empty for a LAG.
static void lagValuesAdd(cJSON *object)
{
    jsonAddText(object, "fecMode", "");
    jsonAddText(object, "broadcastStormControl", "");
    jsonAddText(object, "speed", "");
    jsonAddText(object, "duplexMode", "");
    jsonAddText(object, "flowControl", "");
    jsonAddText(object, "autonegotiation", "");
}

// "1000 Full" is both; a text without a blank says neither.
static void speedAndDuplexAdd(const char *mode, cJSON *object)
{
    char speed[sizeof(INTERFACE_ENTRY_T::physicalMode)];
    const char *blank = strchr(mode, ' ');

    if (strcasecmp(mode, "Auto") == 0) {
        jsonAddText(object, "speed", "Auto");
        jsonAddText(object, "duplexMode", "Auto");
    } else if (blank != nullptr) {
        textCopy(speed, sizeof(speed), mode);
        speed[blank - mode] = '\0';
        jsonAddText(object, "speed", speed);
        jsonAddText(object, "duplexMode", blank + 1);
    }
}

// Modes of the unit's model; in a chassis with expansion modules those of the one module that can be fanned out, for
// ports that carry a QSFP.
static void optionsGet(const PORT_LIST_T *list, const PORT_ROW_T *row, char options[OPTIONS_SIZE])
{
    const char *model = row->usp.unit < SLOT_UNITS ? list->units[row->usp.unit].model : "";
    uint32_t sfpType = 0;

    options[0] = '\0';
    if (strcmp(model, MODEL_CARD_CHASSIS) == 0) {
        if (rpcclt_openapiBoxsSfpTypeGet(list->clientHandle, row->ifNum, &sfpType) != OPENCLT_OK ||
            sfpType != SFP_TYPE_QSFP)
            return;
        model = MODEL_FANOUT_CARD;
    }
    (void)modelFanoutModesGet(model, row->usp.port, options, OPTIONS_SIZE); // none: the text stays empty
}

static void optionsAdd(const PORT_LIST_T *list, const PORT_ROW_T *row, cJSON *object)
{
    char options[OPTIONS_SIZE];
    char *rest = nullptr;

    optionsGet(list, row, options);
    if (options[0] == '\0')
        return;
    cJSON *array = jsonAddArray(object, "expandableOption");
    for (char *option = strtok_r(options, ",", &rest); option != nullptr; option = strtok_r(nullptr, ",", &rest))
        jsonAppendText(array, option);
    jsonAddText(object, "portMode", row->entry->fanOutMode);
}

static void physicalValuesAdd(const PORT_LIST_T *list, const PORT_ROW_T *row, const PORT_SETTINGS_T &settings,
                              cJSON *object)
{
    const char *fec = fecClassGet(row->entry->fec);

    jsonAddText(object, "fecMode", strcmp(fec, "Unknown") == 0 ? "" : fec);
    jsonAddText(object, "broadcastStormControl", enableText(settings.stormControl));
    speedAndDuplexAdd(row->entry->physicalMode, object);
    jsonAddText(object, "flowControl", list->flowControl[row->index]);
    jsonAddText(object, "autonegotiation", settings.autoNegotiation);
    optionsAdd(list, row, object);
}

static void rowFill(PORT_LIST_T *list, const PORT_ROW_T *row, const PORT_SETTINGS_T &settings, uint32_t firstLag,
                    cJSON *object)
{
    char port[PORT_LABEL_SIZE];
    PORT_PROFILE_T profile;

    if (row->lag)
        lagLabel(lagNumber(row->ifNum, firstLag), port);
    else
        portLabel(&row->usp, port);
    profileGet(&list->profiles, settings.pvid, &profile);

    jsonAddText(object, "port", port);
    jsonAddNumber(object, "portNum", row->ifNum);
    jsonAddText(object, "portStr", row->entry->name);
    jsonAddNumber(object, "unit", row->usp.unit);
    jsonAddNumber(object, "adminState", settings.adminState);
    jsonAddNumber(object, "frameSize", frameSizeGet(list->clientHandle, row->ifNum));
    jsonAddText(object, "description", settings.description);
    jsonAddText(object, "profileTemplate", profile.profileTemplate);
    jsonAddText(object, "profileName", profile.profileName);
    jsonAddNumber(object, "linkState", row->linkState);
    jsonAddText(object, "physicalMode", row->entry->physicalMode);
    jsonAddText(object, "physicalStatus", row->entry->physicalStatus);
    jsonAddNumber(object, "portCapability", row->lag ? 0 : capabilityGet(list->clientHandle, row->ifNum));
    jsonAddText(object, "mediaType", row->entry->mediaType);
    jsonAddText(object, "stpMode", enableText(settings.stp));
    jsonAddText(object, "stpEdgeMode", enableText(settings.stpEdge));
    jsonAddText(object, "stpTcnGuard", enableText(settings.stpTcnGuard));
    jsonAddText(object, "stpFwdState", settings.stpFwdState);
    jsonAddText(object, "stpBPDUFilterMode", enableText(settings.stpBpduFilter));
    jsonAddBool(object, "freeze", row->linkState == OPENCLT_LINK_DETACHED || lagFlagGet(&list->lagFlags, row->ifNum));
    if (row->lag)
        lagValuesAdd(object);
    else
        physicalValuesAdd(list, row, settings, object);
}

// The pass over the ports, or the one over the LAGs.
static void rowsAdd(PORT_LIST_T *list, const PORT_SOURCE_T &source, bool lag, cJSON *rows)
{
    uint32_t first = 0;
    PORT_ROW_T row = {};

    row.index = lag ? list->physical : 0;
    uint32_t end = lag ? list->entries : list->physical;
    if (lag && row.index < end)
        (void)swapiIfFirstGet(list->clientHandle, OPENCLT_IF_LAG, &first); // logs; numbers then count from 0
    for (row.lag = lag; row.index < end; row.index++) {
        PORT_SETTINGS_T settings = {};
        row.entry = &list->table[row.index];
        if (!rowStart(list, source, &row))
            continue;
        source.settingsRead(list, &row, source.context, &settings);
        rowFill(list, &row, settings, first, jsonAppendObject(rows));
    }
}

int portRowsBuild(CLIENT_HANDLE_T *clientHandle, const PORT_SOURCE_T &source, OWNED_JSON *document)
{
    PORT_LIST_T list = {};

    list.clientHandle = clientHandle;
    OWNED_JSON root(cJSON_CreateObject());
    cJSON *rows = jsonAddArray(root.get(), "rows");
    if (rows == nullptr)
        return RESULT_INVALID_POINTER;

    int result = unitsRead(&list, source);
    if (result == RESULT_OK)
        result = tablesFill(&list, source);
    if (result == RESULT_OK && source.prepare != nullptr)
        result = source.prepare(&list, source.context);
    if (result == RESULT_OK)
        result = lagMembersRead(&list, source);
    if (result != RESULT_OK)
        return result;
    rowsAdd(&list, source, false, rows);
    rowsAdd(&list, source, true, rows);

    int count = cJSON_GetArraySize(rows);
    jsonAddNumber(root.get(), "indexPage", source.indexPage);
    jsonAddNumber(root.get(), "pageSize", count);
    jsonAddNumber(root.get(), "total", count);
    *document = std::move(root);
    return RESULT_OK;
}

int portRowsPrint(CLIENT_HANDLE_T *clientHandle, const PORT_SOURCE_T &source, char **out)
{
    OWNED_JSON document;

    *out = nullptr;
    int result = portRowsBuild(clientHandle, source, &document);
    return result == RESULT_OK ? jsonToStr(document.get(), JSON_FORMATTED, out) : result;
}

const char *portAutoNegText(uint32_t mode)
{
    return mode == 0 ? "Enable" : mode == 1 ? "Disable" : "Unknow";
}
