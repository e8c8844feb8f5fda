#include "collectors/port/swcfg_port_model.h"

// The document of a filled port table: units, their slots, and each port in its place, either among the ports of its
// slot or as a sub-port of a front port that is fanned out. What depends on the place (module type and speed class in a
// fan-out card) is printed but not stored. Uses runtime/json.h and the fan-out ranges of switch/models.h.

#include "runtime/json.h"
#include "switch/labels.h"
#include "switch/models.h"

#include <algorithm>
#include <cstring>

constexpr uint32_t PORTS_A_ROOT = 4; // of the card: the first of four is the front port
constexpr uint32_t MODULE_QSFP = 3, MODULE_SUB_PORT = 2;
constexpr uint32_t SPEED_40G = 9, SPEED_10G = 6; // classes

// What a place says of its port.
struct PORT_SHOWN_T {
    const PORT_RECORD_T *record;
    uint32_t moduleType;
    uint32_t portCapability;
};

// A slot while its ports are added.
struct SLOT_SHOWN_T {
    const PORT_UNIT_T *unit;
    bool open;
    uint32_t id;
    bool isFanoutCard;
    const PORT_RECORD_T *previous; // last record of this slot, at the index before; null when there is none
    cJSON *ports;
    cJSON *fanout;
};

static SLOT_SHOWN_T slotAdd(const PORT_TABLE_T *table, const PORT_UNIT_T &unit, const PORT_RECORD_T &record,
                            cJSON *slots)
{
    const char *model = slotModelAt(&table->slots, record.unit, record.slot);
    cJSON *object = jsonAppendObject(slots);
    SLOT_SHOWN_T slot = {};

    jsonAddNumber(object, "id", record.slot);
    jsonAddText(object, "model", model[0] != '\0' ? model : unit.model);
    slot.unit = &unit;
    slot.open = true;
    slot.id = record.slot;
    slot.isFanoutCard = strcmp(model, MODEL_FANOUT_CARD) == 0;
    slot.ports = jsonAddArray(object, "port");
    slot.fanout = jsonAddArray(object, "fanout");
    return slot;
}

static void vlansAdd(const PORT_TABLE_T *table, const PORT_RECORD_T &record, cJSON *object)
{
    cJSON *array = jsonAddArray(object, "vlan");

    if (!record.allVlans) {
        for (uint32_t at = record.vlanFirst; at != 0; at = table->links[at].next)
            jsonAppendNumber(array, table->links[at].vlanId);
        return;
    }
    for (uint32_t i = 0; table->vlans != nullptr && i < std::min(table->vlans->count, PORT_VLANS_MAX); i++)
        jsonAppendNumber(array, table->vlans->ids[i]->vlanId);
}

static void detectAdd(const PORT_TABLE_T *table, const PORT_RECORD_T &record, cJSON *object)
{
    if (record.linkState != OPENCLT_LINK_UP || record.autoTrunk == 1 || table->profiles == nullptr)
        return;
    const char *word = portVendorWordGet(table->clientHandle, record.ifNum,
                                         vlanSlotsFind(table->profiles.get(), record.pvid), &table->fdb);
    if (word != nullptr)
        jsonAddText(object, "detect", word);
}

static void textsAdd(const PORT_TABLE_T *table, const PORT_RECORD_T &record, cJSON *object)
{
    char stackCapable[STACK_CAPABLE_SIZE];
    stackCapableGet(table->clientHandle, record, stackCapable);

    jsonAddText(object, "linkSpeed", record.linkSpeed);
    jsonAddText(object, "stackCapable", stackCapable);
    jsonAddNumber(object, "dot1xStatus",
                  table->dot1xMode == PORT_DOT1X_ON ? record.dot1xStatus : PORT_DOT1X_NOT_APPLICABLE);
    jsonAddBool(object, "shureLearn",
                record.shure && record.ifNum < SHURE_FLAGS_SIZE && table->shureFlags[record.ifNum]);
    detectAdd(table, record, object);
}

static void portFill(const PORT_TABLE_T *table, const PORT_SHOWN_T &shown, cJSON *object)
{
    const PORT_RECORD_T &record = *shown.record;
    openclt_usp_t usp = {};
    char name[PORT_LABEL_SIZE];

    if (rpcclt_openapiHashIntfUnitSlotPortGet(table->clientHandle, record.ifNum, &usp) != OPENCLT_OK)
        usp = {};
    portCliName(&usp, name);

    jsonAddNumber(object, "pvid", record.pvid);
    vlansAdd(table, record, object);
    jsonAddNumber(object, "id", record.port);
    jsonAddNumber(object, "portNum", record.ifNum);
    jsonAddText(object, "portName", name);
    jsonAddNumber(object, "moduleType", shown.moduleType);
    jsonAddNumber(object, "portCapability", shown.portCapability);
    jsonAddNumber(object, "portMode", record.portMode);
    jsonAddText(object, "portType", record.portType);
    jsonAddNumber(object, "portState", record.portState);
    jsonAddNumber(object, "stpMode", record.stpMode);
    jsonAddNumber(object, "autoTrunk", record.autoTrunk);
    jsonAddNumber(object, "switchportMode", record.switchportMode);
    jsonAddNumber(object, "powerUsage", record.powerUsage);
    jsonAddNumber(object, "poeIsValid", record.poeIsValid);
    jsonAddNumber(object, "trafficUsage", static_cast<double>(record.trafficUsage));
    jsonAddText(object, "bandwidthUpload", record.bandwidthUpload);
    jsonAddText(object, "bandwidthDownload", record.bandwidthDownload);
    jsonAddNumber(object, "percetUtilizationReceived", record.receivedPercent);
    jsonAddNumber(object, "percetUtilizationTransmitted", record.transmittedPercent);
    jsonAddNumber(object, "adminState", record.adminState);
    jsonAddNumber(object, "linkState", record.linkState);
    textsAdd(table, record, object);
}

static void subPortAdd(const PORT_TABLE_T *table, const PORT_SHOWN_T &shown, uint32_t root, cJSON *fanout)
{
    cJSON *object = jsonAppendObject(fanout);

    // Interface numbers of a slot run with its port numbers.
    jsonAddNumber(object, "rootPortNum", 1.0 * shown.record->ifNum + root - shown.record->port);
    portFill(table, shown, object);
}

// In the card, the first port of four is the front port; with the second one attached it is a sub-port as well.
static void cardRecordPlace(const PORT_TABLE_T *table, const SLOT_SHOWN_T &slot, const PORT_RECORD_T &record)
{
    uint32_t root = 0;

    if (record.port % PORTS_A_ROOT == 1) {
        portFill(table, {&record, MODULE_QSFP, SPEED_40G}, jsonAppendObject(slot.ports));
        return;
    }
    if (record.linkState == OPENCLT_LINK_DETACHED || modelFanoutRootGet(MODEL_FANOUT_CARD, record.port, &root) != 0)
        return;
    if (record.port % PORTS_A_ROOT == 2 && slot.previous != nullptr)
        subPortAdd(table, {slot.previous, MODULE_SUB_PORT, SPEED_10G}, root, slot.fanout);
    subPortAdd(table, {&record, MODULE_SUB_PORT, SPEED_10G}, root, slot.fanout);
}

// A port whose number is above those of the front ports is a sub-port, shown while it is attached.
static void recordPlace(const PORT_TABLE_T *table, const SLOT_SHOWN_T &slot, const PORT_RECORD_T &record)
{
    const PORT_SHOWN_T shown = {&record, record.moduleType, record.portCapability};
    uint32_t root = 0;

    if (slot.isFanoutCard)
        cardRecordPlace(table, slot, record);
    else if (record.port <= slot.unit->portCount)
        portFill(table, shown, jsonAppendObject(slot.ports));
    else if (record.linkState != OPENCLT_LINK_DETACHED && modelFanoutRootGet(slot.unit->model, record.port, &root) == 0)
        subPortAdd(table, shown, root, slot.fanout);
}

static void unitAdd(const PORT_TABLE_T *table, uint32_t index, cJSON *units)
{
    const PORT_UNIT_T &unit = table->units[index];
    cJSON *object = jsonAppendObject(units);
    SLOT_SHOWN_T slot = {};

    jsonAddNumber(object, "id", index + 1);
    cJSON *slots = jsonAddArray(object, "slot");
    for (uint32_t i = portRecordNext(unit, 1); i != 0; i = portRecordNext(unit, i + 1)) {
        const PORT_RECORD_T &record = unit.records[i];
        if (!slot.open || record.slot != slot.id)
            slot = slotAdd(table, unit, record, slots);
        const PORT_RECORD_T &before = unit.records[i - 1];
        slot.previous = before.ifNum != 0 && before.slot == record.slot ? &before : nullptr;
        recordPlace(table, slot, record);
    }
}

int portTablePrint(const PORT_TABLE_T *table, char **out)
{
    OWNED_JSON root(cJSON_CreateObject());
    cJSON *units = jsonAddArray(root.get(), "unit");

    for (uint32_t i = 0; i < PORT_TABLE_UNITS; i++) {
        if (table->units[i].portCount != 0)
            unitAdd(table, i, units);
    }
    return jsonToStr(root.get(), JSON_FORMATTED, out);
}
