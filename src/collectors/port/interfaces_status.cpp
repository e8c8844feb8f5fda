#include "collectors/port/interfaces_status.h"

// What holds for the whole build (LAG members, 802.1X mode, size of an optic's text) is read once; then one walk over
// the ports, in which a unit and a slot enter the document with their first port, and one over the LAGs. A read that
// fails leaves its default. Uses the walks, wrappers and texts of switch/ and runtime/json.h.

#include "runtime/json.h"
#include "runtime/result.h"
#include "switch/columns.h"
#include "switch/labels.h"
#include "switch/models.h"
#include "switch/swapi.h"
#include "switch/walk.h"

#include <cstdio>
#include <cstring>
#include <iterator>

constexpr uint32_t UNITS = 8;      // units 1 to 8
constexpr uint32_t SLOT_LAST = 12; // slots 0 to 12
constexpr size_t NAME_SIZE = 256;
constexpr size_t MODEL_SIZE = 32;
constexpr size_t COMPLIANCE_SIZE = 64; // largest optic's text that is asked for
constexpr size_t PORT_TYPE_SIZE = 16;

constexpr uint32_t DOT1X_ON = 1;
constexpr uint32_t DOT1X_NOT_APPLICABLE = 3;

// A unit that is in the document: its model, its array of slots, and for each slot its array of ports; null for what
// has had no port yet.
struct UNIT_JSON_T {
    char model[MODEL_SIZE];
    cJSON *slots;
    cJSON *ports[SLOT_LAST + 1];
};

struct STATUS_BUILD_T {
    CLIENT_HANDLE_T *clientHandle;
    LAG_FLAGS_T lagFlags;
    uint32_t dot1xMode;
    uint32_t complianceSize;
    cJSON *units;
    UNIT_JSON_T unit[UNITS + 1]; // by unit number
};

static void lagMembersRead(STATUS_BUILD_T *build)
{
    uint32_t maxMembers = 0;

    // Asked directly: a platform without LAGs is no fault here, so no line is logged for it.
    if (rpcclt_openapiLagMaxMemberCountGet(build->clientHandle, &maxMembers) == OPENCLT_OK && maxMembers != 0)
        lagFlagsFill(build->clientHandle, maxMembers, LAG_FLAGS_STOP, __func__, &build->lagFlags);
}

static void settingsRead(STATUS_BUILD_T *build)
{
    uint32_t size = 0;

    // A read that fails leaves what stands there: 802.1X off, the largest size.
    (void)rpcclt_openapiDot1xSystemAuthControlModeGet(build->clientHandle, &build->dot1xMode);
    (void)rpcclt_openapiBoxsSfpComplianceSizeGet(build->clientHandle, &size);
    build->complianceSize = size >= 1 && size <= COMPLIANCE_SIZE ? size : COMPLIANCE_SIZE;
}

static void interfaceName(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, char name[NAME_SIZE])
{
    if (ifNameGet(clientHandle, ifNum, name, NAME_SIZE) != OPENCLT_OK)
        snprintf(name, NAME_SIZE, "if-%u", ifNum);
}

static uint32_t linkStateGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum)
{
    uint32_t state = OPENCLT_LINK_DOWN;

    if (openapiIfLinkStateGet(clientHandle, ifNum, &state) != OPENCLT_OK)
        return OPENCLT_LINK_DOWN;
    return state;
}

// A port that is not attached counts as detached, whatever its link says.
static uint32_t portLinkState(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum)
{
    uint32_t status = 1;

    if (rpcclt_openapiIfStatusGet(clientHandle, ifNum, &status) == OPENCLT_OK && status == 0)
        return OPENCLT_LINK_DETACHED;
    return linkStateGet(clientHandle, ifNum);
}

// What the optic says of itself; a port that is up without an optic is a copper port.
static void portTypeGet(const STATUS_BUILD_T *build, uint32_t ifNum, uint32_t linkState, char type[PORT_TYPE_SIZE])
{
    char text[COMPLIANCE_SIZE + 1] = ""; // terminated whatever the platform writes
    openclt_buffer_t buffer = {build->complianceSize, text};

    type[0] = '\0';
    if (rpcclt_openapiBoxsSfpComplianceGet(build->clientHandle, ifNum, &buffer) == OPENCLT_OK)
        columnText(text, 0, sizeof(text), type, PORT_TYPE_SIZE);
    if (type[0] == '\0' && linkState == OPENCLT_LINK_UP)
        textCopy(type, PORT_TYPE_SIZE, "Copper");
}

static const char *stpText(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t linkState)
{
    uint32_t state = 0;

    if (linkState != OPENCLT_LINK_UP)
        return "Disable";
    if (rpcclt_openapiDot1SIntfPortFwdStateGet(clientHandle, 0, ifNum, &state) != OPENCLT_OK)
        return "Unknown";
    return stpFwdStateText(state);
}

static const char *speedText(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t linkState)
{
    static const char *const texts[] = {
        "",          "Auto",      "100 Half", "100 Full",  "10 Half",   "10 Full",  "100 Full", // 6: fibre
        "1000 Full", "2.5G Full", "5G Full",  "10G Full",  "20G Full",  "25G Full", "40G Full",
        "50G Full",  "100G Full", "155",      "200G Full", "400G Full", "LAG",
    };
    constexpr size_t COUNT = std::size(texts);
    static_assert(COUNT == 20, "speed codes 0 to 19");
    uint32_t speed = 0;

    if (linkState != OPENCLT_LINK_UP || openapiIfSpeedGet(clientHandle, ifNum, &speed) != OPENCLT_OK)
        return "";
    return speed < COUNT ? texts[speed] : "";
}

static uint32_t autoTrunkGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum)
{
    uint32_t status = 0;

    (void)dot1qSwPortAutoTrunkStatusGet(clientHandle, ifNum, &status); // 0 when it fails
    return status;
}

// Ports are asked only while 802.1X is on.
static uint32_t dot1xStatusGet(const STATUS_BUILD_T *build, uint32_t ifNum)
{
    uint32_t status = DOT1X_NOT_APPLICABLE;

    if (build->dot1xMode == DOT1X_ON)
        (void)swapiDot1xPortStatusGet(build->clientHandle, ifNum, &status); // stays 3 when it fails
    return status;
}

static void portAdd(STATUS_BUILD_T *build, uint32_t ifNum, uint32_t port, cJSON *ports)
{
    CLIENT_HANDLE_T *clientHandle = build->clientHandle;
    char name[NAME_SIZE];
    char type[PORT_TYPE_SIZE];

    interfaceName(clientHandle, ifNum, name);
    uint32_t linkState = portLinkState(clientHandle, ifNum);
    portTypeGet(build, ifNum, linkState, type);

    cJSON *row = jsonAppendObject(ports);
    jsonAddNumber(row, "id", port);
    jsonAddNumber(row, "portNum", ifNum);
    jsonAddText(row, "portName", name);
    jsonAddNumber(row, "linkState", linkState);
    jsonAddText(row, "stpFwdState", stpText(clientHandle, ifNum, linkState));
    jsonAddBool(row, "freeze", linkState == OPENCLT_LINK_DETACHED || lagFlagGet(&build->lagFlags, ifNum));
    jsonAddText(row, "linkSpeed", speedText(clientHandle, ifNum, linkState));
    jsonAddNumber(row, "autoTrunk", autoTrunkGet(clientHandle, ifNum));
    jsonAddNumber(row, "dot1xStatus", dot1xStatusGet(build, ifNum));
    jsonAddText(row, "portType", type);
}

static void unitAdd(STATUS_BUILD_T *build, uint32_t unit)
{
    UNIT_JSON_T &row = build->unit[unit];
    openclt_buffer_t buffer = {sizeof(row.model), row.model};
    char model[256] = "";

    if (rpcclt_openapiUnitMgrPreconfigModelIdGet(build->clientHandle, unit, &buffer) != OPENCLT_OK) {
        (void)machineModelGet(build->clientHandle, model); // stays empty when it fails too
        textCopy(row.model, sizeof(row.model), model);
    }
    row.model[sizeof(row.model) - 1] = '\0';

    cJSON *object = jsonAppendObject(build->units);
    jsonAddNumber(object, "id", unit);
    row.slots = jsonAddArray(object, "slot");
}

// The unit's model; in the modular chassis that of the card, when there is one.
static void slotModelGet(STATUS_BUILD_T *build, uint32_t unit, uint32_t slot, char model[MODEL_SIZE])
{
    uint32_t cardType = 0;
    char card[257] = ""; // terminated whatever the platform writes
    openclt_buffer_t buffer = {sizeof(card) - 1, card};

    textCopy(model, MODEL_SIZE, build->unit[unit].model);
    if (strcmp(model, MODEL_MODULAR) != 0)
        return;
    if (rpcclt_openapiCardTypeGet(build->clientHandle, unit, slot, &cardType) != OPENCLT_OK || cardType == 0)
        return;
    if (rpcclt_openapiCardSupportedCardModelIdGet(build->clientHandle, cardType, &buffer) == OPENCLT_OK &&
        card[0] != '\0')
        textCopy(model, MODEL_SIZE, card);
}

static void slotAdd(STATUS_BUILD_T *build, uint32_t unit, uint32_t slot)
{
    char model[MODEL_SIZE];
    slotModelGet(build, unit, slot, model);

    cJSON *object = jsonAppendObject(build->unit[unit].slots);
    jsonAddNumber(object, "id", slot);
    jsonAddText(object, "model", model);
    build->unit[unit].ports[slot] = jsonAddArray(object, "port");
}

// Array of the slot's ports; unit and slot are added when this is their first port.
static cJSON *portArrayGet(STATUS_BUILD_T *build, uint32_t unit, uint32_t slot)
{
    if (build->unit[unit].slots == nullptr)
        unitAdd(build, unit);
    if (build->unit[unit].ports[slot] == nullptr)
        slotAdd(build, unit, slot);
    return build->unit[unit].ports[slot];
}

static void portsAdd(STATUS_BUILD_T *build)
{
    for (IF_WALK_T walk = ifWalkStart(build->clientHandle, OPENCLT_IF_PHYSICAL); walk.valid; ifWalkNext(&walk)) {
        openclt_usp_t usp;
        if (ifUnitSlotPortGet(build->clientHandle, walk.ifNum, &usp) != RESULT_OK)
            continue;
        if (usp.unit < 1 || usp.unit > UNITS || usp.slot > SLOT_LAST)
            continue;
        portAdd(build, walk.ifNum, usp.port, portArrayGet(build, usp.unit, usp.slot));
    }
}

static void lagsAdd(CLIENT_HANDLE_T *clientHandle, cJSON *lags)
{
    for (IF_WALK_T walk = ifWalkStart(clientHandle, OPENCLT_IF_LAG); walk.valid; ifWalkNext(&walk)) {
        char name[NAME_SIZE];
        interfaceName(clientHandle, walk.ifNum, name);
        uint32_t linkState = linkStateGet(clientHandle, walk.ifNum);

        cJSON *lag = jsonAppendObject(lags);
        jsonAddText(lag, "name", name);
        jsonAddNumber(lag, "linkState", linkState);
        jsonAddText(lag, "stpFwdState", stpText(clientHandle, walk.ifNum, linkState));
        jsonAddBool(lag, "freeze", false); // also while detached
    }
}

int interfacesStatusBuild(CLIENT_HANDLE_T *clientHandle, char **out)
{
    if (out == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *out = nullptr;

    STATUS_BUILD_T build = {};
    build.clientHandle = clientHandle;
    OWNED_JSON root(cJSON_CreateObject());
    build.units = jsonAddArray(root.get(), "unit");
    cJSON *lags = jsonAddArray(root.get(), "lag");
    if (build.units == nullptr || lags == nullptr)
        return RESULT_NO_MEMORY;

    lagMembersRead(&build);
    settingsRead(&build);
    portsAdd(&build);
    lagsAdd(clientHandle, lags);

    *out = jsonPrint(root.get(), JSON_COMPACT);
    return *out == nullptr ? RESULT_NO_MEMORY : RESULT_OK;
}
