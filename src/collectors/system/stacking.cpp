#include "collectors/system/stacking.h"

// Three show commands make one document: "show switch" gives the units and their order, "show switch detail" the
// versions (a unit without its section lacks those keys), "show stack-port" the stack ports. Writes its record itself,
// through restcache/.

#include "collectors/system/system_info.h"
#include "restcache/envelope.h"
#include "restcache/store.h"
#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/cli.h"
#include "switch/columns.h"

#include <cstdio>
#include <cstring>

// Value of a labelled line of "show switch detail".
constexpr size_t DETAIL_VALUE = 35;

static bool lineHas(const char *line, size_t column, const char *text)
{
    return strlen(line) > column && textBegins(line + column, text);
}

static void unitAdd(CLIENT_HANDLE_T *clientHandle, const char *line, const UNIT_INFO_RECORD_T records[STACK_UNITS],
                    const char *bootVersion, cJSON *units)
{
    int number = columnStrtol(line, 0);
    char model[17];

    if (number < 1 || number > static_cast<int>(STACK_UNITS))
        return;
    showRowTaken();
    const UNIT_INFO_RECORD_T &record = records[number - 1];
    columnText(line, 26, 16, model, sizeof(model));

    cJSON *unit = jsonAppendObject(units);
    jsonAddNumber(unit, "unit", number);
    jsonAddText(unit, "model", model);
    jsonAddBool(unit, "management", lineHas(line, 4, "Mgmt Sw"));
    jsonAddBool(unit, "standby", lineHas(line, 16, "Oper Stby"));
    jsonAddBool(unit, "active", lineHas(line, 60, "OK"));
    if (record.unit != 0) {
        jsonAddText(unit, "fwVer", record.firmware);
        jsonAddText(unit, "bootVer", bootVersion);
        jsonAddText(unit, "sn", record.serialNumber);
        jsonAddText(unit, "upTime", record.upTime);
    }
    cJSON *ports = jsonAddArray(unit, "stackPortList");
    (void)getStackPortInfo(clientHandle, static_cast<uint32_t>(number), ports); // logged; the list stays empty
}

// Null for a unit that no record is kept of: its lines are passed over.
static UNIT_INFO_RECORD_T *unitRecord(UNIT_INFO_RECORD_T records[STACK_UNITS], int unit)
{
    return unit >= 1 && unit <= static_cast<int>(STACK_UNITS) ? &records[unit - 1] : nullptr;
}

// "0 days 1 hrs 2 mins 3 secs" with commas; numbers that are missing are 0.
static void upTimeText(const char *value, char *out, size_t size)
{
    int days = 0, hours = 0, minutes = 0, seconds = 0;

    (void)sscanf(value, "%d%*s%d%*s%d%*s%d%*s", &days, &hours, &minutes, &seconds); // what is read counts
    snprintf(out, size, "%d days, %d hrs, %d mins, %d secs", days, hours, minutes, seconds);
}

static void detailLineParse(const char *line, UNIT_INFO_RECORD_T *record)
{
    char value[CLI_LINE_SIZE];

    columnRest(line, DETAIL_VALUE, value, sizeof(value));
    if (textBegins(line, "Management Status"))
        record->isManagement = strstr(value, "Management Switch") != nullptr;
    else if (textBegins(line, "Preconfigured Model Identifier"))
        textCopy(record->model, sizeof(record->model), value);
    else if (textBegins(line, "Switch Status"))
        record->statusOk = textBegins(value, "OK");
    else if (textBegins(line, "Detected Code in Flash"))
        textCopy(record->firmware, sizeof(record->firmware), value);
    else if (textBegins(line, "Serial Number"))
        textCopy(record->serialNumber, sizeof(record->serialNumber), value);
    else if (textBegins(line, "Up Time"))
        upTimeText(value, record->upTime, sizeof(record->upTime));
}

// "unit/slot/port", or "slot/port" of the unit of the row. False when the row names no port.
static bool stackPortText(const char *line, uint32_t unit, char *out, size_t size)
{
    constexpr size_t PORT_COLUMN = 5;
    int numbers[3];

    if (strlen(line) <= PORT_COLUMN)
        return false;
    switch (sscanf(line + PORT_COLUMN, "%d/%d/%d", &numbers[0], &numbers[1], &numbers[2])) {
    case 3:
        snprintf(out, size, "%d/%d/%d", numbers[0], numbers[1], numbers[2]);
        return true;
    case 2:
        snprintf(out, size, "%u/%d/%d", unit, numbers[0], numbers[1]);
        return true;
    default:
        return false;
    }
}

int get_stacking_info(CLIENT_HANDLE_T *clientHandle)
{
    char *payload = nullptr;

    LOG_DEBUG("Call getStacking.\r\n");
    int result = getStacking(clientHandle, &payload);
    LOG_DEBUG("Call getStacking end.\r\n");
    if (result != RESULT_OK) {
        LOG_ERROR("get_stacking_info: Failed to get stacking info, result=%d\n", result);
        return result;
    }
    // The envelope takes the payload's place; when it cannot be made it has logged its line and the old record stays.
    if (responseJsonRreallocStr(RESULT_OK, "stacking", payload, &payload) == RESULT_OK)
        (void)restapi_db_operation(REST_DB_WRITE, "stacking", payload); // logs; the next cycle tries again
    free(payload);
    return RESULT_OK;
}

//           1         2         3         4         5         6
// 01234567890123456789012345678901234567890123456789012345678901234567890
//     Management  Standby   Preconfig        Plugged-in       Switch
// SW  Switch      Status    Model ID         Model ID         Status
// --- ----------- --------- ---------------- ---------------- -----------
// 1   Mgmt Sw               TK830-T16        TK830-T16        OK
// 2   Stack Mbr   Oper Stby TK830-T16        TK830-T16        OK
int getStacking(CLIENT_HANDLE_T *clientHandle, char **out)
{
    UNIT_INFO_RECORD_T records[STACK_UNITS] = {};
    SYSTEM_INFO_RECORD_T systemInfo;
    SHOW_REQUEST_T request = {__func__, "show switch", PATH_SHOW_SWITCH};
    SHOW_FILE_T show;
    char line[CLI_LINE_SIZE];

    *out = nullptr;
    OWNED_JSON units(cJSON_CreateArray());
    if (units == nullptr)
        return RESULT_INVALID_POINTER;
    unitInfoGet(clientHandle, records);
    systemInfoRecordGet(clientHandle, &systemInfo, 0);

    // A command that failed has logged its line; its output is missing then, which is what counts.
    (void)cliShowExecuteToFile(clientHandle, request.command, PathGet(request.file));
    int result = showFileOpen(&show, request);
    if (result != RESULT_OK)
        return result;
    if (showFileSkipTo(&show, "---", line, sizeof(line))) {
        while (showFileLine(&show, line, sizeof(line)))
            unitAdd(clientHandle, line, records, systemInfo.bootVersion, units.get());
    }
    *out = jsonPrint(units.get(), JSON_FORMATTED);
    return *out == nullptr ? RESULT_INVALID_POINTER : RESULT_OK;
}

//           1         2         3         4
// 0123456789012345678901234567890123456789012345678901234567890
// Switch............................ 1
// Management Status................. Management Switch
// Preconfigured Model Identifier.... TK830-T16
// Switch Status..................... OK
// Detected Code in Flash............ 8.4.3.50
// Serial Number..................... 5B31A57L00042
// Up Time........................... 0 days 1 hrs 2 mins 3 secs
void unitInfoGet(CLIENT_HANDLE_T *clientHandle, UNIT_INFO_RECORD_T records[STACK_UNITS])
{
    SHOW_REQUEST_T request = {__func__, "show switch detail", PATH_SHOW_SWITCH_DETAIL};
    SHOW_FILE_T show;
    char line[CLI_LINE_SIZE];
    UNIT_INFO_RECORD_T *record = &records[0];

    request.name = SHOW_NAME_RANDOM;
    if (showFileRun(&show, clientHandle, request) != RESULT_OK)
        return;
    while (showFileLine(&show, line, sizeof(line))) {
        line[strcspn(line, "\r\n")] = '\0';
        // The label padded with its dots: "Switch Status" is another one.
        if (textBegins(line, "Switch............................")) {
            int unit = columnStrtol(line, DETAIL_VALUE);
            record = unitRecord(records, unit);
            if (record != nullptr) {
                showRowTaken();
                record->unit = static_cast<uint32_t>(unit);
            }
        } else if (record != nullptr) {
            detailLineParse(line, record);
        }
    }
}

//           1         2         3
// 012345678901234567890123456789012345678
// Unit Interface   Configured  Running
// ---- ----------  ----------  ----------
// 1    1/0/15      Stack       Stack
// 2    0/15        Stack       Stack
//
// or, without a table, "No stack ports are configured."
int getStackPortInfo(CLIENT_HANDLE_T *clientHandle, uint32_t unit, cJSON *array)
{
    SHOW_REQUEST_T request = {__func__, "show stack-port", PATH_SHOW_STACK_PORT};
    SHOW_FILE_T show;
    char line[CLI_LINE_SIZE];

    int result = showFileRun(&show, clientHandle, request);
    if (result == RESULT_FAILED)
        LOG_ERROR("Failed to get stack port CLI output\n");
    if (result != RESULT_OK)
        return result;

    if (!showFileSkipTo(&show, "----", line, sizeof(line))) {
        if (textBegins(line, "No"))
            LOG_INFO("No stack ports are configured\n");
        return RESULT_OK;
    }
    while (showFileLine(&show, line, sizeof(line))) {
        char port[10];
        if (!stackPortText(line, unit, port, sizeof(port)))
            continue;
        showRowTaken();
        if (columnStrtol(line, 0) == static_cast<int>(unit))
            jsonAppendText(array, port);
    }
    return RESULT_OK;
}
