#include "collectors/port/swcfg_ports_settings.h"

// Settings are asked of the platform one by one for each interface, unlike those of swcfg_ports_status.cpp: a table of
// calls with their names in the log. Then the edit pass over the rows: out goes the live state, in comes
// the front port of a sub-port. The rows themselves are made in port_rows.cpp.

#include "collectors/port/port_rows.h"
#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/columns.h"
#include "switch/labels.h"
#include "switch/models.h"
#include "switch/swapi.h"

#include <cstdio>
#include <cstring>

constexpr uint32_t STP_INSTANCE = 0;
constexpr uint32_t STORM_BROADCAST = 2;
constexpr int NO_ROOT_PORT = -1;
static const char CALLER[] = "getPortStatusList"; // in the log lines of the reads

// A setting that one call reads of each interface. When it fails, `what` is logged, and `fallback` used.
struct SETTING_CALL_T {
    int (*call)(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *value);
    uint32_t fallback;
    const char *what;
};

struct UNIT_MODELS_T {
    char model[SLOT_UNITS][256]; // by unit number
};

static void descriptionRead(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, char description[PORT_DESCRIPTION_SIZE])
{
    char text[PORT_DESCRIPTION_SIZE + 1] = ""; // terminated whatever the platform writes
    openclt_buffer_t buffer = {PORT_DESCRIPTION_SIZE, text};

    int result = rpcclt_openapiIfDescrGet(clientHandle, ifNum, &buffer);
    if (result != OPENCLT_OK) {
        text[0] = '\0';
        LOG_ERROR_AS(CALLER, "Bad return code trying to get description of  physical interface. (result = %d)\n",
                     result);
    }
    textCopy(description, PORT_DESCRIPTION_SIZE, text);
}

static uint32_t adminStateRead(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum)
{
    uint32_t state = OPENCLT_ADMIN_UP;

    int result = openapiIfAdminStateGet(clientHandle, ifNum, &state);
    if (result == OPENCLT_OK)
        return state;
    LOG_ERROR_AS(CALLER, "port:%d - port admin state error (rc = %d)\n", static_cast<int>(ifNum), result);
    return OPENCLT_ADMIN_UP;
}

// Asked directly: an interface without one is no fault, so no line is logged for it.
static uint32_t pvidRead(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum)
{
    uint32_t pvid = 1;

    return openapiVlanIfPvidGet(clientHandle, ifNum, &pvid) == OPENCLT_OK ? pvid : 1;
}

static uint32_t settingRead(const SETTING_CALL_T &setting, CLIENT_HANDLE_T *clientHandle, uint32_t ifNum)
{
    uint32_t value = setting.fallback;

    int result = setting.call(clientHandle, ifNum, &value);
    if (result == OPENCLT_OK)
        return value;
    LOG_ERROR_AS(CALLER, "Bad return code trying to get %s (port = %d result = %d)\n", setting.what,
                 static_cast<int>(ifNum), result);
    return setting.fallback;
}

static int forwardingStateGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *value)
{
    return rpcclt_openapiDot1SIntfPortFwdStateGet(clientHandle, STP_INSTANCE, ifNum, value);
}

static int stormControlGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *value)
{
    return rpcclt_openapiStormControlIntfModeGet(clientHandle, ifNum, STORM_BROADCAST, value);
}

static const SETTING_CALL_T callStp = {rpcclt_openapiDot1SIntfModeGet, 0, "Spanning Tree Mode"};
static const SETTING_CALL_T callEdge = {rpcclt_openapiDot1SIntfEdgePortModeGet, 0,
                                        "Spanning Tree Interface Edge Port Mode."};
static const SETTING_CALL_T callTcnGuard = {rpcclt_openapiDot1SPortRestrictedTcnGet, 0,
                                            "Spanning Tree Restricted TCN parameterfor an interface."};
static const SETTING_CALL_T callForwarding = {forwardingStateGet, 0, "Spanning Tree Port Forwarding State."};
static const SETTING_CALL_T callBpduFilter = {rpcclt_openapiDot1SIntfBPDUFilterModeGet, 0,
                                              "Spanning Tree Interface BPDU Filter Mode."};
static const SETTING_CALL_T callAutoNeg = {openapiIfAutoNegGet, 1, "auto-negotiation mode of physical interface."};
static const SETTING_CALL_T callStormControl = {stormControlGet, 0, "storm control mode on an interface."};

static void callsSettingsRead(const PORT_LIST_T *list, const PORT_ROW_T *row, void *, PORT_SETTINGS_T *settings)
{
    CLIENT_HANDLE_T *clientHandle = list->clientHandle;

    descriptionRead(clientHandle, row->ifNum, settings->description);
    settings->adminState = adminStateRead(clientHandle, row->ifNum);
    settings->pvid = pvidRead(clientHandle, row->ifNum);
    settings->stp = settingRead(callStp, clientHandle, row->ifNum) != 0;
    settings->stpEdge = settingRead(callEdge, clientHandle, row->ifNum) != 0;
    settings->stpTcnGuard = settingRead(callTcnGuard, clientHandle, row->ifNum) != 0;
    settings->stpFwdState = stpFwdStateText(settingRead(callForwarding, clientHandle, row->ifNum));
    settings->stpBpduFilter = settingRead(callBpduFilter, clientHandle, row->ifNum) != 0;
    if (row->lag)
        return;
    settings->autoNegotiation = portAutoNegText(settingRead(callAutoNeg, clientHandle, row->ifNum));
    settings->stormControl = settingRead(callStormControl, clientHandle, row->ifNum) != 0;
}

static PORT_SOURCE_T sourceOfPage(uint32_t pageIndex)
{
    PORT_SOURCE_T source = {CALLER};

    source.logs = true;
    source.indexPage = pageIndex;
    source.settingsRead = callsSettingsRead;
    return source;
}

static void unitModelsRead(CLIENT_HANDLE_T *clientHandle, UNIT_MODELS_T *models)
{
    for (uint32_t unit = 1; unit < SLOT_UNITS; unit++) {
        // A unit that is not there has no model; the text is empty then.
        (void)stackUnitMgrPreconfigModelIdGet(clientHandle, unit, models->model[unit]);
    }
}

// Port number of "unit/slot/port" or "slot/port"; 0 for other names.
static uint32_t portNumberOf(const char *name)
{
    uint32_t first = 0, second = 0, third = 0;

    switch (sscanf(name, "%u/%u/%u", &first, &second, &third)) {
    case 3:
        return third;
    case 2:
        return second;
    default:
        return 0;
    }
}

// Interface number of the front port; -1 for a LAG and for a port that is no sub-port. Sub-ports are numbered as their
// ports are, so the distance between port numbers is that between interface numbers.
static double rootPortOf(const cJSON *row, const UNIT_MODELS_T *models)
{
    const cJSON *name = cJSON_GetObjectItemCaseSensitive(row, "portStr");
    const cJSON *portNum = cJSON_GetObjectItemCaseSensitive(row, "portNum");
    const cJSON *unitItem = cJSON_GetObjectItemCaseSensitive(row, "unit");
    uint32_t root = 0;

    if (!cJSON_IsString(name) || !cJSON_IsNumber(portNum) || !cJSON_IsNumber(unitItem) ||
        textBegins(name->valuestring, "lag"))
        return NO_ROOT_PORT;
    int unit = unitItem->valueint;
    uint32_t port = portNumberOf(name->valuestring);
    if (port == 0 || unit < 1 || unit >= static_cast<int>(SLOT_UNITS) || models->model[unit][0] == '\0')
        return NO_ROOT_PORT;
    if (modelFanoutRootGet(models->model[unit], port, &root) != RESULT_OK || root == 0 || root == port)
        return NO_ROOT_PORT;
    return static_cast<double>(root) - port + portNum->valuedouble;
}

// False without memory.
static bool rowEdit(cJSON *row, const UNIT_MODELS_T *models)
{
    static const char *const live[] = {"linkState",    "stpFwdState",    "freeze",
                                       "physicalMode", "physicalStatus", "mediaType"};

    for (const char *key : live)
        cJSON_DeleteItemFromObjectCaseSensitive(row, key);

    cJSON *profile = cJSON_GetObjectItemCaseSensitive(row, "profileTemplate");
    if (cJSON_IsString(profile) && profile->valuestring[0] == '\0' && cJSON_SetValuestring(profile, "Data") == nullptr)
        return false;
    jsonAddNumber(row, "rootPortNum", rootPortOf(row, models));
    return true;
}

int getPortsSettings(CLIENT_HANDLE_T *clientHandle, char **out)
{
    UNIT_MODELS_T models = {};
    OWNED_JSON document;
    cJSON *row;

    if (out == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *out = nullptr;
    int result = portRowsBuild(clientHandle, sourceOfPage(0), &document);
    if (result != RESULT_OK)
        return result;

    unitModelsRead(clientHandle, &models);
    cJSON_ArrayForEach(row, cJSON_GetObjectItemCaseSensitive(document.get(), "rows"))
    {
        if (!rowEdit(row, &models))
            return RESULT_NO_MEMORY;
    }
    *out = jsonPrint(document.get(), JSON_FORMATTED);
    return *out == nullptr ? RESULT_NO_MEMORY : RESULT_OK;
}

int getPortStatusList(CLIENT_HANDLE_T *clientHandle, uint32_t pageIndex, uint32_t, char **out)
{
    return portRowsPrint(clientHandle, sourceOfPage(pageIndex), out);
}
