#include "collectors/port/swcfg_port.h"

// The build, and the passes that ask the platform call by call, in the order in which the table is filled: units with
// their records, VLANs, states, 802.1X, switch-port modes, PVIDs, VLAN membership, PoE, modules, addresses. Each goes
// once over the records; look-ups from an interface number go through an index. Uses the VLAN model of
// collectors/feature, and the slot models, wrappers and walks of switch/.

#include "collectors/port/swcfg_port_model.h"
#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/paths.h"
#include "runtime/result.h"
#include "switch/columns.h"
#include "switch/models.h"
#include "switch/swapi.h"
#include "switch/walk.h"

#include <algorithm>
#include <cstring>
#include <iterator>

constexpr uint32_t CHASSIS_CARD_RECORDS = 8; // of each card of the card chassis
constexpr uint32_t MODULAR_SLOTS = 2;        // the modular unit's own ports, and its card

constexpr uint32_t IF_MAP_SIZE = 768;      // interface numbers whose VLANs are looked at
constexpr uint32_t INTERFACES_MAX = 65536; // more is taken for a wrong answer and cut to this
constexpr uint32_t MODE_TRUNK = 8;         // of swPortsModeGet
constexpr uint32_t PORT_MODE_TAGGED = 3;
constexpr uint32_t PORT_STATE_FORWARDING = 1;
constexpr uint32_t DEFAULT_VLAN = 1;
constexpr uint32_t MODULE_TYPE_LAST = 3;  // this and all above ...
constexpr uint32_t MODULE_TYPE_OTHER = 4; // ... are one type
constexpr uint32_t POE_VALID = 1;
constexpr uint32_t POE_ENABLED = 2;
constexpr size_t LINKS_FIRST_CAPACITY = 1024;

// Front ports and records of a unit, from its model or those of its cards; a modular unit has one card.
static int unitCount(PORT_TABLE_T *table, uint32_t unitNumber)
{
    PORT_UNIT_T *unit = &table->units[unitNumber - 1];
    const UNIT_PARTS_T parts = unitPartsGet(&table->slots, unitNumber, unit->model);
    const bool chassis = strcmp(unit->model, MODEL_CARD_CHASSIS) == 0;

    for (uint32_t slot = 0; slot < (chassis ? SLOT_COUNT : MODULAR_SLOTS); slot++) {
        uint32_t ports = 0, numbers = 0;
        if (parts.model[slot] == nullptr)
            continue;
        if (modelPhysicalPortCountGet(parts.model[slot], &ports) != RESULT_OK ||
            modelPortCountGet(parts.model[slot], &numbers) != RESULT_OK)
            return RESULT_FAILED;
        unit->portCount += ports;
        unit->recordCount += chassis ? CHASSIS_CARD_RECORDS : numbers;
    }
    return RESULT_OK;
}

// A unit whose model cannot be read is not in the document.
static int unitsRead(PORT_TABLE_T *table)
{
    for (UNIT_WALK_T walk = unitWalkStart(table->clientHandle); walk.valid; unitWalkNext(&walk)) {
        if (walk.unit > PORT_TABLE_UNITS)
            continue;
        PORT_UNIT_T *unit = &table->units[walk.unit - 1];
        if (stackUnitMgrPreconfigModelIdGet(table->clientHandle, walk.unit, unit->model) != RESULT_OK)
            continue;
        int result = unitCount(table, walk.unit);
        if (result != RESULT_OK)
            return result;
        unit->records = ownedArray<PORT_RECORD_T>(size_t{unit->recordCount} + 1);
        if (unit->records == nullptr)
            return RESULT_NO_MEMORY;
    }
    return RESULT_OK;
}

// What cannot be read is empty, and 802.1X off.
static void vlansRead(PORT_TABLE_T *table)
{
    if (vlanListProfileCreateFastEX(table->clientHandle, &table->profiles) != RESULT_OK)
        table->profiles.reset();
    if (vlanListAllInfoGetFastEX(table->clientHandle, &table->vlans) != RESULT_OK)
        table->vlans.reset();
    if (rpcclt_openapiDot1xSystemAuthControlModeGet(table->clientHandle, &table->dot1xMode) != OPENCLT_OK)
        table->dot1xMode = 0;
}

static void statesRead(PORT_TABLE_T *table)
{
    portRecordsVisit(table, [table](PORT_RECORD_T *record) {
        if (openapiIfOprStateGet(table->clientHandle, record->ifNum, &record->portState) != OPENCLT_OK)
            record->portState = 0;
        if (openapiIfAdminStateGet(table->clientHandle, record->ifNum, &record->adminState) != OPENCLT_OK)
            record->adminState = OPENCLT_ADMIN_UP;
    });
}

static void dot1xRead(PORT_TABLE_T *table)
{
    portRecordsVisit(table, [table](PORT_RECORD_T *record) {
        record->dot1xStatus = PORT_DOT1X_NOT_APPLICABLE;
        if (table->dot1xMode != PORT_DOT1X_ON)
            return;
        if (swapiDot1xPortStatusGet(table->clientHandle, record->ifNum, &record->dot1xStatus) != OPENCLT_OK)
            LOG_ERROR_AS("fillPhyInfStatusFastEX", "port:%d - dot1x status err\n", record->ifNum);
    });
}

// Without memory no port is a trunk.
static void modesRead(PORT_TABLE_T *table)
{
    uint32_t count = 0;

    if (openapiMaxInterfaceCountGet(table->clientHandle, &count) != OPENCLT_OK)
        count = 0;
    table->modeCount = std::min(count, INTERFACES_MAX);
    table->modes = ownedArray<uint32_t>(table->modeCount);
    if (table->modes != nullptr) // a failure is logged, and all are 0
        (void)swPortsModeGet(table->clientHandle, table->modes.get(), table->modeCount);
}

// Ask for the PVIDs that the table of all ports did not give.
static void vlanIdsComplete(PORT_TABLE_T *table)
{
    portRecordsVisit(table, [table](PORT_RECORD_T *record) {
        if (record->pvid == 0 && openapiVlanIfPvidGet(table->clientHandle, record->ifNum, &record->pvid) != OPENCLT_OK)
            record->pvid = DEFAULT_VLAN;
    });
}

static uint32_t modeGet(const PORT_TABLE_T *table, uint32_t ifNum)
{
    return table->modes != nullptr && ifNum < table->modeCount ? table->modes[ifNum] : 0;
}

// A full list stays as it is. False without memory.
static bool vlanAppend(PORT_TABLE_T *table, PORT_RECORD_T *record, uint32_t vlanId)
{
    if (record->vlanCount == PORT_VLANS_MAX)
        return true;
    if (table->linkCount == table->linkCapacity && !ownedArrayDouble(&table->links, &table->linkCapacity))
        return false;
    auto at = static_cast<uint32_t>(table->linkCount++);
    table->links[at] = {vlanId, 0};
    if (record->vlanCount == 0)
        record->vlanFirst = at;
    else
        table->links[record->vlanLast].next = at;
    record->vlanLast = at;
    record->vlanCount++;
    return true;
}

// The VLANs that a port carries tagged, in the order of the VLAN list.
static int taggedAdd(PORT_TABLE_T *table, PORT_RECORD_T *const *byIfNum)
{
    for (uint32_t i = 0; table->vlans != nullptr && i < table->vlans->count; i++) {
        const VLAN_INFO_T *vlan = table->vlans->ids[i];
        const cJSON *element;
        cJSON_ArrayForEach(element, vlan->tagPorts)
        {
            int ifNum = element->valueint;
            if (ifNum < 0 || ifNum >= static_cast<int>(IF_MAP_SIZE) || byIfNum[ifNum] == nullptr)
                continue;
            if (modeGet(table, static_cast<uint32_t>(ifNum)) == MODE_TRUNK)
                continue;
            if (!vlanAppend(table, byIfNum[ifNum], vlan->vlanId))
                return RESULT_NO_MEMORY;
            byIfNum[ifNum]->portMode = PORT_MODE_TAGGED;
        }
    }
    return RESULT_OK;
}

// Ports that forward: a trunk carries every VLAN of the switch, any other port its own one too.
static int accessAdd(PORT_TABLE_T *table)
{
    bool complete = true;

    portRecordsVisit(table, [table, &complete](PORT_RECORD_T *record) {
        if (record->portState != PORT_STATE_FORWARDING)
            return;
        record->switchportMode = modeGet(table, record->ifNum);
        record->autoTrunk = record->switchportMode == MODE_TRUNK ? 1 : 0;
        record->allVlans = record->autoTrunk == 1;
        if (!record->allVlans && !vlanAppend(table, record, record->pvid))
            complete = false;
    });
    return complete ? RESULT_OK : RESULT_NO_MEMORY;
}

static int membershipFill(PORT_TABLE_T *table)
{
    PORT_RECORD_T *byIfNum[IF_MAP_SIZE] = {};

    table->linkCapacity = LINKS_FIRST_CAPACITY;
    table->linkCount = 1;
    table->links = ownedArray<VLAN_LINK_T>(table->linkCapacity);
    if (table->links == nullptr)
        return RESULT_NO_MEMORY;
    portRecordsVisit(table, [&byIfNum](PORT_RECORD_T *record) {
        if (record->ifNum < IF_MAP_SIZE)
            byIfNum[record->ifNum] = record;
    });
    int result = taggedAdd(table, byIfNum);
    return result == RESULT_OK ? accessAdd(table) : result;
}

static void poeRead(PORT_TABLE_T *table)
{
    constexpr uint32_t ANY_UNIT = 1; // the platform knows the port by its interface number

    portRecordsVisit(table, [table](PORT_RECORD_T *record) {
        CLIENT_HANDLE_T *clientHandle = table->clientHandle;
        uint32_t enable = 0;
        uint32_t power = 0, voltage = 0, current = 0, temperature = 0;

        record->shure = false;
        record->poeIsValid = poeIsValidInterface(clientHandle, ANY_UNIT, record->ifNum) ? POE_VALID : 0;
        if (rpcclt_openapiPoePsePortAdminEnableGet(clientHandle, record->ifNum, &enable) == OPENCLT_OK && enable == 1)
            record->poeIsValid += POE_ENABLED;
        int result = rpcclt_openapiPoePsePortSensorsGet(clientHandle, record->unit, record->ifNum, &power, &voltage,
                                                        &current, &temperature);
        record->powerUsage = result == OPENCLT_OK ? power : 0;
    });
}

// Optical cards give 1, all others 0. False for a slot without a model.
static bool slotModuleTypeGet(const PORT_TABLE_T *table, const PORT_RECORD_T *record, uint32_t *type)
{
    const char *model = slotModelAt(&table->slots, record->unit, record->slot);

    if (model[0] == '\0')
        return false;
    *type = modelIsSfpCard(model) ? 1 : 0;
    return true;
}

// In a modular unit the card decides the module type, and in every unit after the first modular one of the stack, even
// if that one lists no port.
static void modulesRead(PORT_TABLE_T *table)
{
    uint32_t firstModularUnit = 1;

    while (firstModularUnit <= PORT_TABLE_UNITS && strcmp(table->units[firstModularUnit - 1].model, MODEL_MODULAR) != 0)
        firstModularUnit++;
    portRecordsVisit(table, [table, firstModularUnit](PORT_RECORD_T *record) {
        (void)boxsSfpTypeGet(table->clientHandle, record->ifNum, &record->moduleType); // 0, logged
        if (ifCapabilitiesGet(table->clientHandle, record->ifNum, &record->portCapability) != RESULT_OK)
            record->portCapability = 0; // logged; what it leaves is no class
        if (record->unit >= firstModularUnit)
            (void)slotModuleTypeGet(table, record, &record->moduleType); // unchanged for an empty slot
        if (record->moduleType >= MODULE_TYPE_LAST)
            record->moduleType = MODULE_TYPE_OTHER;
    });
}

// Ports that another program lists as having a Shure device; and the addresses by which vendors are found.
static int shureRead(PORT_TABLE_T *table)
{
    table->shureFlags = ownedArray<bool>(SHURE_FLAGS_SIZE);
    if (table->shureFlags == nullptr)
        return RESULT_NO_MEMORY;
    portFdbRead(table->clientHandle, &table->fdb);

    OWNED_JSON config = jsonFileLoad(PathGet(PATH_SHURE_CONFIG));
    const cJSON *element;
    cJSON_ArrayForEach(element, cJSON_GetObjectItem(config.get(), "shureDevicePort"))
    {
        if (cJSON_IsNumber(element) && element->valueint >= 0 && element->valueint < static_cast<int>(SHURE_FLAGS_SIZE))
            table->shureFlags[static_cast<size_t>(element->valueint)] = true;
    }
    return RESULT_OK;
}

static int tableFill(PORT_TABLE_T *table)
{
    (void)slotModelTableGet(table->clientHandle, &table->slots); // logged; all slots are empty then
    int result = unitsRead(table);
    if (result != RESULT_OK)
        return result;
    vlansRead(table);
    if (portStatusRead(table)) {
        statesRead(table);
        dot1xRead(table);
    }
    modesRead(table);
    portVlanIdsRead(table);
    vlanIdsComplete(table);
    result = membershipFill(table);
    if (result != RESULT_OK)
        return result;
    fillPhyInfCounterEX(table);
    poeRead(table);
    modulesRead(table);
    return shureRead(table);
}

int fillPhyInfStatusFastEX(CLIENT_HANDLE_T *clientHandle, char **out)
{
    *out = nullptr;
    PORT_TABLE_T table = {};
    table.clientHandle = clientHandle;
    int result = tableFill(&table);
    return result == RESULT_OK ? portTablePrint(&table, out) : result;
}

void getPortLinkSpeed(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, char text[PORT_SPEED_SIZE])
{
    static const char *const texts[] = {
        "",           "autoNeg",     "100TX HALF",  "100TX FULL", "10T HALF",
        "10T HALF", // the web interface knows no other text for it
        "100FX FULL", "1000SX FULL", "2P5FX FULL",  "5FX FULL",   "10GSX FULL",  "20GSX FULL",  "25GSX FULL",
        "40GSX FULL", "50GSX FULL",  "100GSX FULL", "155 AAL5",   "200GSX FULL", "400GSX FULL", "LAG",
    };
    constexpr size_t COUNT = std::size(texts);
    static_assert(COUNT == 20, "speed codes 0 to 19");
    uint32_t speed = 0;

    if (openapiIfSpeedGet(clientHandle, ifNum, &speed) != OPENCLT_OK) {
        LOG_ERROR("Failed to fetch the speed from openAPI");
        textCopy(text, PORT_SPEED_SIZE, "unknown");
        return;
    }
    textCopy(text, PORT_SPEED_SIZE, speed < COUNT ? texts[speed] : "");
}

uint32_t portRecordNext(const PORT_UNIT_T &unit, uint32_t index)
{
    if (unit.records == nullptr)
        return 0;
    while (index <= unit.recordCount && unit.records[index].ifNum == 0)
        index++;
    return index <= unit.recordCount ? index : 0;
}
