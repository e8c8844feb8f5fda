#include "collectors/feature/swcfg_poe.h"

// The readings of a port are rows of a table: which call, into which field, and what is said when it fails. Uses the
// walks, labels and wrappers of switch/ and runtime/json.h.

#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/columns.h"
#include "switch/labels.h"
#include "switch/swapi.h"
#include "switch/walk.h"

constexpr uint32_t FIRST_UNIT = 1;
constexpr uint32_t POE_VALID = 1;
constexpr uint32_t SHOWN_ENABLED = 3;
constexpr uint32_t SHOWN_DISABLED = 1;

static void portRowAppend(CLIENT_HANDLE_T *clientHandle, const POE_PORT_T &port, cJSON *rows)
{
    openclt_usp_t usp;
    char label[PORT_LABEL_SIZE];

    (void)ifUnitSlotPortGet(clientHandle, port.ifNum, &usp); // all 0 when it fails
    portLabel(&usp, label);
    OWNED_JSON owned(cJSON_CreateObject());
    if (owned == nullptr) {
        LOG_ERROR_AS("getPortsPoeJson", "getPortsPoeJson: Failed to create jnode for port %u\n", port.ifNum);
        return;
    }
    cJSON *row = owned.get();
    jsonAppend(rows, std::move(owned));
    jsonAddNumber(row, "unit", usp.unit);
    jsonAddNumber(row, "portNum", port.ifNum);
    jsonAddText(row, "port", label);
    jsonAddBool(row, "enable", port.enable != 0);
    jsonAddNumber(row, "poeIsValid", port.enable != 0 ? SHOWN_ENABLED : SHOWN_DISABLED);
    jsonAddNumber(row, "powerLimitMode", port.powerLimitMode);
    jsonAddNumber(row, "classification", port.classification);
    jsonAddNumber(row, "currentPower", port.currentPower);
    jsonAddNumber(row, "powerLimit", port.powerLimit);
    jsonAddNumber(row, "status", port.status);
    jsonAddNumber(row, "detectionType", port.detectionType);
    jsonAddNumber(row, "priority", port.priority);
    jsonAddNumber(row, "powerMode", port.powerMode);
    jsonAddText(row, "schedule", port.schedule);
}

static void unitRowAppend(CLIENT_HANDLE_T *clientHandle, uint32_t unit, cJSON *rows)
{
    uint32_t consumed = 0, available = 0, threshold = 0;

    // Each is 0 when it fails, and its wrapper has logged a line.
    (void)poePseMainConsumptionPowerGet(clientHandle, unit, &consumed);
    (void)poePseTotalAvailablePowerGet(clientHandle, unit, &available);
    (void)poePseThresholdPowerGet(clientHandle, unit, &threshold);
    OWNED_JSON owned(cJSON_CreateObject());
    if (owned == nullptr) {
        LOG_ERROR_AS("gePoeInfoJson", "gePoeInfoJson: Failed to create jnode for unit %u\n", unit);
        return;
    }
    cJSON *row = owned.get();
    jsonAppend(rows, std::move(owned));
    jsonAddNumber(row, "unit", unit);
    jsonAddNumber(row, "consumedPower", consumed);
    jsonAddNumber(row, "totalPowerAvailable", available);
    jsonAddNumber(row, "thresholdPower", threshold);
}

// Voltage, current and temperature are read with the power, and not shown.
static int powerGet(CLIENT_HANDLE_T *clientHandle, uint32_t unit, uint32_t ifNum, uint32_t *power)
{
    uint32_t voltage = 0, current = 0, temperature = 0;

    return rpcclt_openapiPoePsePortSensorsGet(clientHandle, unit, ifNum, power, &voltage, &current, &temperature);
}

static int enableGet(CLIENT_HANDLE_T *clientHandle, uint32_t, uint32_t ifNum, uint32_t *enable)
{
    return rpcclt_openapiPoePsePortAdminEnableGet(clientHandle, ifNum, enable);
}

struct POE_VALUE_CALL_T {
    int (*call)(CLIENT_HANDLE_T *clientHandle, uint32_t unit, uint32_t ifNum, uint32_t *value);
    uint32_t POE_PORT_T::*field;
    const char *what; // in the message of a failure
};
static const POE_VALUE_CALL_T reads[] = {
    {rpcclt_openapiPoePsePortPowerClassificationsGet, &POE_PORT_T::classification,
     "interface port terminal classification"},
    {powerGet, &POE_PORT_T::currentPower, "interface port terminal sensors"},
    {rpcclt_openapiPoePsePortCurPowerLimitGet, &POE_PORT_T::powerLimit, "max power limit for interface"},
    {rpcclt_openapiPoePsePortViolationTypeGet, &POE_PORT_T::powerLimitMode, "violation type of a given interface"},
    {rpcclt_openapiPoePsePortDetectionStatusGet, &POE_PORT_T::status, "operational status of the port detection"},
    {enableGet, &POE_PORT_T::enable, "openapiPoePsePortAdminEnableGet"},
    {rpcclt_openapiPoePsePortDetectionModeGet, &POE_PORT_T::detectionType, "mode of port detection"},
    {rpcclt_openapiPoePsePortCurPowerPriorityGet, &POE_PORT_T::priority, "priority"},
    {rpcclt_openapiPoePsePortPowerUpModeGet, &POE_PORT_T::powerMode, "powerMode"},
};

static void scheduleNameGet(CLIENT_HANDLE_T *clientHandle, uint32_t unit, POE_PORT_T *port)
{
    char name[POE_SCHEDULE_NAME_SIZE + 1] = ""; // terminated, whatever the platform writes
    openclt_buffer_t buffer = {POE_SCHEDULE_NAME_SIZE, name};
    int result =
        rpcclt_openapiPoePsePortTimerScheduleNameGet(clientHandle, unit, port->ifNum, &buffer, POE_SCHEDULE_NAME_SIZE);

    textCopy(port->schedule, sizeof(port->schedule), result == OPENCLT_OK && name[0] != '\0' ? name : "None");
}

int getPortsPoeJson(CLIENT_HANDLE_T *clientHandle, char **out)
{
    *out = nullptr;
    OWNED_JSON rows(cJSON_CreateArray());
    if (rows == nullptr) {
        LOG_ERROR("getPortsPoeJson: Failed to create cJSON array\n");
        return RESULT_FAILED;
    }
    for (IF_WALK_T walk = ifWalkStart(clientHandle, OPENCLT_IF_PHYSICAL); walk.valid; ifWalkNext(&walk)) {
        POE_PORT_T port = {};
        port.ifNum = walk.ifNum;
        (void)getPortPoeInfo(clientHandle, &port); // always 0
        if (port.valid == POE_VALID)
            portRowAppend(clientHandle, port, rows.get());
    }
    return jsonToStr(rows.get(), JSON_COMPACT, out);
}

int gePoeInfoJson(CLIENT_HANDLE_T *clientHandle, char **out)
{
    *out = nullptr;
    OWNED_JSON rows(cJSON_CreateArray());
    if (rows == nullptr) {
        LOG_ERROR("gePoeInfoJson: Failed to create cJSON array\n");
        return RESULT_FAILED;
    }
    for (UNIT_WALK_T walk = unitWalkStart(clientHandle); walk.valid; unitWalkNext(&walk))
        unitRowAppend(clientHandle, walk.unit, rows.get());
    return jsonToStr(rows.get(), JSON_COMPACT, out);
}

int getPortPoeInfo(CLIENT_HANDLE_T *clientHandle, POE_PORT_T *port)
{
    uint32_t unit = 0, valid = 0;

    if (rpcclt_openapiSystemLocalUnitGet(clientHandle, &unit) != OPENCLT_OK)
        unit = 0;
    if (rpcclt_openapiPoeIsValidInterface(clientHandle, FIRST_UNIT, port->ifNum, &valid) != OPENCLT_OK ||
        valid != POE_VALID) {
        port->valid = 0;
        return RESULT_OK;
    }
    port->valid = POE_VALID;
    for (const POE_VALUE_CALL_T &read : reads) {
        uint32_t value = 0;
        int result = read.call(clientHandle, unit, port->ifNum, &value);
        if (result != OPENCLT_OK)
            LOG_ERROR("Bad return code trying to get %s. (result = %d)\n", read.what, result);
        port->*read.field = result == OPENCLT_OK ? value : 0;
    }
    scheduleNameGet(clientHandle, unit, port);
    return RESULT_OK;
}
