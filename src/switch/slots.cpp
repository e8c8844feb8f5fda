#include "switch/slots.h"

// Reads "show slot" into a table of module models, and derives a port's speed class from its unit's or its module's
// model. The platform prints the slot table in one of three layouts, and each line is tried with all of them. Uses the
// tables of models.h, the wrappers of swapi.h and the show files of cli.h.

#include "runtime/log.h"
#include "runtime/process_state.h"
#include "runtime/result.h"
#include "switch/cli.h"
#include "switch/columns.h"
#include "switch/models.h"
#include "switch/swapi.h"

#include <cstring>

namespace {
constexpr size_t MODEL_SIZE = 256;
constexpr char READER[] = "slotModelGet"; // whose name the lines of the row readers carry

// Slot table of modular units, from their first look-up to the end of the process.
struct SLOT_CACHE_T {
    bool valid;
    char model[MODEL_SIZE]; // unit model it was read for
    SLOT_MODELS_T table;
};
SLOT_CACHE_T slotCache;
void slotCacheReset();
const PROCESS_STATE_T slotCacheState(slotCacheReset);

// Row readers: whether the line was of their layout.
bool cardInfoRowRead(const char *line, SLOT_MODELS_T *table);
bool insertedModelRowRead(const char *line, SLOT_MODELS_T *table);
bool simpleRowRead(const char *line, SLOT_MODELS_T *table);
char *entryAt(SLOT_MODELS_T *table, int unit, int slot);

void slotCacheFill(CLIENT_HANDLE_T *clientHandle, const char *model);
bool moduleCapabilityGet(uint32_t ifNum, const openclt_usp_t &usp, uint32_t *capability);
int sfpCapabilityGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *capability);
int unitCapabilityGet(const char *model, uint32_t port, uint32_t ifNum, uint32_t *capability);
} // namespace

const char *slotModelAt(const SLOT_MODELS_T *table, uint32_t unit, uint32_t slot)
{
    return unit < SLOT_UNITS && slot < SLOT_COUNT ? table->model[unit][slot] : "";
}

UNIT_PARTS_T unitPartsGet(SLOT_MODELS_T *table, uint32_t unit, const char *model)
{
    const bool modular = strcmp(model, MODEL_MODULAR) == 0;
    UNIT_PARTS_T parts = {};

    if (!modular && strcmp(model, MODEL_CARD_CHASSIS) != 0) {
        parts.model[0] = model;
        return parts;
    }
    if (modular && table->model[unit][0][0] == '\0')
        textCopy(table->model[unit][0], SLOT_MODEL_SIZE, model);
    for (uint32_t slot = modular ? 0 : 1; slot < SLOT_COUNT; slot++)
        parts.model[slot] = table->model[unit][slot][0] != '\0' ? table->model[unit][slot] : nullptr;
    return parts;
}

int slotModelTableGet(CLIENT_HANDLE_T *clientHandle, SLOT_MODELS_T *table)
{
    const char *path = PathGet(PATH_SHOW_SLOT);
    int result = cliShowExecuteToFile(clientHandle, "show slot", path);
    if (result != RESULT_OK) {
        (void)remove(path); // there may be no part of it
        return result;
    }
    return slotModelGet(table);
}

int slotModelGet(SLOT_MODELS_T *table)
{
    SHOW_FILE_T show;
    int result = showFileOpen(&show, {__func__, "show slot", PATH_SHOW_SLOT});
    if (result != RESULT_OK)
        return result;

    char line[CLI_LINE_SIZE];
    if (!showFileSkipTo(&show, "-----", line, sizeof line))
        return RESULT_OK;
    while (showFileLine(&show, line, sizeof line)) {
        if (!cardInfoRowRead(line, table) && !insertedModelRowRead(line, table) && !simpleRowRead(line, table))
            break;
        showRowTaken();
    }
    return RESULT_OK;
}

int ifCapabilitiesGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *capability)
{
    openclt_usp_t usp = {};
    char model[MODEL_SIZE];
    // A port that cannot be placed is one of unit 0, which has no model.
    (void)rpcclt_openapiHashIntfUnitSlotPortGet(clientHandle, ifNum, &usp);
    int result = stackUnitMgrPreconfigModelIdGet(clientHandle, usp.unit, model);

    if (strcmp(model, MODEL_MODULAR) == 0) {
        slotCacheFill(clientHandle, model);
        if (moduleCapabilityGet(ifNum, usp, capability))
            return RESULT_OK;
    }
    if (strcmp(model, MODEL_CARD_CHASSIS) == 0) { // its ports are classed by what is plugged in
        int sfpResult = sfpCapabilityGet(clientHandle, ifNum, capability);
        return sfpResult != RESULT_OK ? sfpResult : result;
    }
    return unitCapabilityGet(model, usp.port, ifNum, capability);
}

int smpteCapableModelCheck(CLIENT_HANDLE_T *clientHandle)
{
    static const char *const CAPABLE[] = {"TK830-T04", "TK830-T14", "TK830-T06", "TK830-T17",
                                          "TK830-T08", "TK830-T13", "TK830-T03", "TK830-T02"};
    char model[MODEL_SIZE] = "";

    if (machineModelGet(clientHandle, model) != RESULT_OK)
        return 0;
    for (const char *capable : CAPABLE) {
        if (strcmp(model, capable) == 0)
            return 1;
    }
    return 0;
}

namespace {
void slotCacheReset()
{
    slotCache = {};
}

/*
 *           1         2         3         4         5
 * 0123456789012345678901234567890123456789012345678901234567890
 *        Admin   Power
 * Slot   Status  State   State   Card               Plug  Down
 * ------ ------- ------- ------- ------------------ ----- -----
 * 1/0    Full    Enable  Enable  48xG/QMD-K6        No    No
 * 1/1    Empty   Disable Disable -                  Yes   No
 *
 * Eight fields. A row of nine begins like one of eight, so nothing may follow.
 */
bool cardInfoRowRead(const char *line, SLOT_MODELS_T *table)
{
    int unit, slot, end = 0;
    char status[16], admin[16], power[16], card[64], plug[16], down[16];

    if (sscanf(line, "%d/%d %15s %15s %15s %63s %15s %15s %n", &unit, &slot, status, admin, power, card, plug, down,
               &end) != 8 ||
        line[end] != '\0')
        return false;
    LOG_DEBUG_AS(READER, "slotModelGet: status: %s, Slot %d/%d cardInfo raw: '%s'\n", status, unit, slot, card);
    char *entry = entryAt(table, unit, slot);
    if (entry == nullptr)
        return true;

    entry[0] = '\0';
    if (strcmp(status, "Empty") == 0) {
        LOG_DEBUG_AS(READER, "Slot %d/%d model (empty) parsed as empty\n", unit, slot);
        return true;
    }
    const char *slash = strchr(card, '/');
    textCopy(entry, SLOT_MODEL_SIZE, slash != nullptr ? slash + 1 : card);
    LOG_DEBUG_AS(READER, "Slot %d/%d model (cardInfo) parsed as: '%s'\n", unit, slot, entry);
    return true;
}

/*
 *           1         2         3         4         5         6         7         8
 * 012345678901234567890123456789012345678901234567890123456789012345678901234567890123456789012
 *                Admin   Power   Configured Card      Inserted Card
 * Slot   Status  State   State   Model ID             Model ID             Pluggable Power Down
 * ------ ------- ------- ------- -------------------- -------------------- --------- ----------
 * 1/0    Full    Enable  Enable  TK830-T03            TK830-T03            No        No
 * 1/1    Full    Enable  Enable  QMD-K5               QMD-K5/8xSFP         Yes       Yes
 */
bool insertedModelRowRead(const char *line, SLOT_MODELS_T *table)
{
    int unit, slot;
    char status[16], admin[16], power[16], configured[32], inserted[32], pluggable[16], down[16];

    int fields = sscanf(line, "%d/%d %15s %15s %15s %31s %31s %15s %15s", &unit, &slot, status, admin, power,
                        configured, inserted, pluggable, down);
    LOG_DEBUG_AS(READER, "slotModelGet: c: %d\n", fields);
    if (fields != 9)
        return false;
    char *entry = entryAt(table, unit, slot);
    if (entry == nullptr)
        return true;

    inserted[strcspn(inserted, "/")] = '\0';
    textCopy(entry, SLOT_MODEL_SIZE, inserted);
    LOG_DEBUG_AS(READER, "Slot %d/%d model parsed as: '%s' (status=%s admin=%s power=%s cfg=%s pluggable=%s down=%s)\n",
                 unit, slot, entry, status, admin, power, configured, pluggable, down);
    return true;
}

// Any other row that begins with "unit/slot": "MODEL/..." in the 20 characters from column 31, else no module.
bool simpleRowRead(const char *line, SLOT_MODELS_T *table)
{
    constexpr size_t CARD_COLUMN = 31;
    constexpr size_t CARD_LENGTH = 20;
    int unit, slot;

    if (sscanf(line, "%d/%d", &unit, &slot) != 2)
        return false;
    char *entry = entryAt(table, unit, slot);
    if (entry == nullptr)
        return true;

    char card[CARD_LENGTH + 1] = "";
    const char *cursor = line;
    if (!columnTake(&cursor, CARD_COLUMN, nullptr, 0) || !columnTake(&cursor, CARD_LENGTH, card, sizeof card))
        card[0] = '\0'; // the line ends before the column
    char *slash = strchr(card, '/');
    *(slash != nullptr ? slash : card) = '\0';
    textCopy(entry, SLOT_MODEL_SIZE, card);
    LOG_DEBUG_AS(READER, "Slot %d/%d model parsed from simple format: '%s'\n", unit, slot, entry);
    return true;
}

char *entryAt(SLOT_MODELS_T *table, int unit, int slot)
{
    if (unit < 0 || unit >= static_cast<int>(SLOT_UNITS) || slot < 0 || slot >= static_cast<int>(SLOT_COUNT))
        return nullptr;
    return table->model[unit][slot];
}

// Never refreshed, also not after a failed command: a module change shows after a restart.
void slotCacheFill(CLIENT_HANDLE_T *clientHandle, const char *model)
{
    if (slotCache.valid && strcmp(slotCache.model, model) == 0)
        return;
    slotCache.table = {};
    (void)slotModelTableGet(clientHandle, &slotCache.table); // has logged its failure; the table is empty then
    textCopy(slotCache.model, sizeof slotCache.model, model);
    slotCache.valid = true;
    LOG_DEBUG_AS("ifCapabilitiesGet", "ifCapabilitiesGet: Cached slot model info for %s\n", model);
}

bool moduleCapabilityGet(uint32_t ifNum, const openclt_usp_t &usp, uint32_t *capability)
{
    const char *module = slotModelAt(&slotCache.table, usp.unit, usp.slot);
    if (module[0] == '\0')
        return false;
    LOG_DEBUG_AS("ifCapabilitiesGet",
                 "ifCapabilitiesGet: Using slot model '%s' for port %d (unit=%d, slot=%d, port=%d)\n", module, ifNum,
                 usp.unit, usp.slot, usp.port);
    uint32_t found;
    if (modelPortCapabilityGet(module, usp.port, &found) != RESULT_OK)
        return false;
    *capability = found;
    LOG_DEBUG_AS("ifCapabilitiesGet", "ifCapabilitiesGet: portCapability: %d (from slot model %s)\n", *capability,
                 module);
    return true;
}

int sfpCapabilityGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *capability)
{
    static const uint32_t OF_SFP[] = {6, 3, 6, 9};
    uint32_t sfpType = 0;

    if (rpcclt_openapiBoxsSfpTypeGet(clientHandle, ifNum, &sfpType) != OPENCLT_OK)
        return RESULT_FAILED;
    if (sfpType < sizeof OF_SFP / sizeof OF_SFP[0])
        *capability = OF_SFP[sfpType];
    return RESULT_OK;
}

int unitCapabilityGet(const char *model, uint32_t port, uint32_t ifNum, uint32_t *capability)
{
    uint32_t found;
    if (modelPortCapabilityGet(model, port, &found) != RESULT_OK) {
        LOG_ERROR_AS("ifCapabilitiesGet", "Bad return code trying to get boxs sfp type. interface=%d result = %d\r\n",
                     ifNum, RESULT_FAILED);
        return RESULT_FAILED;
    }
    *capability = found;
    LOG_DEBUG_AS("ifCapabilitiesGet", "model:%s port:%d speedType:%d portCapability:%d\n", model, port, *capability,
                 *capability);
    return RESULT_OK;
}
} // namespace
