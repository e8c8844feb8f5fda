#include "collectors/system/device_health.h"

// The two readers of show commands, then the document. "show environment" is one file with three sections, read in
// their order (mode, sensors, fans); "show process cpu all" is one block of lines per unit. Rows go straight to their
// place in a table by unit and number, which are checked first, so an odd text can leave a row out but never write
// beside the table.

#include "runtime/json.h"
#include "runtime/result.h"
#include "switch/cli.h"
#include "switch/columns.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <strings.h>

// Rows of a unit that the document shows.
constexpr size_t SHOWN_FANS = 12;
constexpr size_t SHOWN_SENSORS = 10;

static void fanArrayFill(const FAN_TABLE_T &fans, cJSON *array)
{
    for (const auto &rows : fans.rows) {
        if (rows[0].unit == 0)
            continue;
        cJSON *unit = jsonAppendObject(array);
        jsonAddNumber(unit, "unit", rows[0].unit);
        cJSON *details = jsonAddArray(unit, "details");
        for (size_t i = 0; i < SHOWN_FANS; i++) {
            if (rows[i].id == 0)
                continue;
            char name[16];
            snprintf(name, sizeof(name), "FAN-%u", rows[i].id);

            cJSON *fan = jsonAppendObject(details);
            jsonAddNumber(fan, "id", rows[i].id);
            jsonAddText(fan, "desc", name);
            jsonAddNumber(fan, "speed", rows[i].speed);
            jsonAddNumber(fan, "dutyLevel", rows[i].dutyLevel);
            jsonAddNumber(fan, "state", rows[i].state);
        }
    }
}

static void sensorArrayFill(const SENSOR_TABLE_T &sensors, cJSON *array)
{
    for (const auto &rows : sensors.rows) {
        if (rows[0].unit == 0)
            continue;
        cJSON *unit = jsonAppendObject(array);
        jsonAddNumber(unit, "unit", rows[0].unit);
        cJSON *details = jsonAddArray(unit, "details");
        for (size_t i = 0; i < SHOWN_SENSORS; i++) {
            if (rows[i].id == 0)
                continue;
            cJSON *sensor = jsonAppendObject(details);
            jsonAddNumber(sensor, "id", rows[i].id);
            jsonAddText(sensor, "desc", rows[i].description);
            jsonAddNumber(sensor, "temp", rows[i].temperature);
            jsonAddNumber(sensor, "maxTemp", rows[i].maximum);
            jsonAddNumber(sensor, "state", rows[i].state);
        }
    }
}

static void usageArrayFill(const USAGE_T usages[HEALTH_UNITS], cJSON *array)
{
    for (size_t i = 0; i < HEALTH_UNITS; i++) {
        if (usages[i].unit == 0)
            continue;
        cJSON *usage = jsonAppendObject(array);
        jsonAddNumber(usage, "unit", usages[i].unit);
        jsonAddText(usage, "usage", usages[i].usage);
    }
}

// Fan Control Mode............................... Quiet
static uint32_t fanControlModeRead(SHOW_FILE_T *show)
{
    char line[CLI_LINE_SIZE];

    if (!showFileSkipTo(show, "Fan Control Mode", line, sizeof(line)))
        return 0;
    if (strstr(line, "Cool") != nullptr)
        return 3;
    if (strstr(line, "Quiet") != nullptr)
        return 2;
    return strstr(line, "Off") != nullptr ? 1 : 0;
}

static bool rowInTable(int unit, int id)
{
    return unit >= 1 && unit <= static_cast<int>(HEALTH_UNITS) && id >= 1 && id <= static_cast<int>(HEALTH_ROWS);
}

static uint32_t sensorState(const char *text)
{
    static const char *const states[] = {"NONE",     "LOW",      "NORMAL",     "WARNING",
                                         "CRITICAL", "SHUTDOWN", "NOTPRESENT", "NOTOPERATIONAL"};

    for (uint32_t state = 0; state < std::size(states); state++) {
        if (strncasecmp(text, states[state], strlen(states[state])) == 0)
            return state;
    }
    return 0;
}

//           1         2         3         4         5         6         7
// 012345678901234567890123456789012345678901234567890123456789012345678901234
// Unit     Sensor  Description       Temp (C)    State           Max_Temp (C)
// ----     ------  ----------------  ----------  --------------  ------------
// 1        1       MAC               45          Normal          52
// 1        2       PHY Row 1         41          Normal          47
//
// The description is the 16 characters after the number, blanks included. False for a line without all six fields.
static bool sensorLineStore(const char *line, SENSOR_TABLE_T *sensors)
{
    int unit, id, temperature, maximum;
    char description[17] = ""; // %16c writes no terminator
    char state[CLI_LINE_SIZE];

    if (sscanf(line, "%d %d %16c %d %1023s %d", &unit, &id, description, &temperature, state, &maximum) != 6)
        return false;
    if (!rowInTable(unit, id))
        return true;

    SENSOR_ROW_T &row = sensors->rows[unit - 1][id - 1];
    row.unit = static_cast<uint32_t>(unit);
    row.id = static_cast<uint32_t>(id);
    textCopy(row.description, sizeof(row.description), strTrimRight(description));
    row.temperature = temperature;
    row.state = sensorState(state);
    row.maximum = maximum;
    return true;
}

// The section ends with its first line that is no row.
static void sensorsRead(SHOW_FILE_T *show, SENSOR_TABLE_T *sensors)
{
    char line[CLI_LINE_SIZE];

    if (!showFileSkipTo(show, "Temperature Sensors:", line, sizeof(line)) ||
        !showFileSkipTo(show, "----", line, sizeof(line)))
        return;
    while (showFileLine(show, line, sizeof(line)) && sensorLineStore(line, sensors))
        showRowTaken();
}

static uint32_t fanState(const char *text)
{
    if (strcmp(text, "Operational") == 0)
        return 0;
    if (strcmp(text, "Failed") == 0)
        return 1;
    return textBegins(text, "Not") ? 2 : 3;
}

//           1         2         3         4         5         6         7
// 01234567890123456789012345678901234567890123456789012345678901234567890123456
// Unit Fan Description          Type      Speed     Duty level  State
// ---- --- -------------------- --------- --------- ----------- ---------------
// 1    1   FAN-1                Fixed     5200      40%         Operational
// 1    2   FAN-2                Fixed     0         0%          Not Present
//
// Words; the type is passed over. False for a line without all of the six fields that are kept.
static bool fanLineStore(const char *line, FAN_TABLE_T *fans)
{
    int unit, id;
    char description[CLI_LINE_SIZE], speed[CLI_LINE_SIZE], dutyLevel[CLI_LINE_SIZE], state[CLI_LINE_SIZE];

    if (sscanf(line, "%d %d %1023s %*s %1023s %1023s %1023s", &unit, &id, description, speed, dutyLevel, state) != 6)
        return false;
    if (!rowInTable(unit, id))
        return true;

    FAN_ROW_T &row = fans->rows[unit - 1][id - 1];
    row.unit = static_cast<uint32_t>(unit);
    row.id = static_cast<uint32_t>(id);
    textCopy(row.description, sizeof(row.description), description);
    row.speed = columnStrtol(speed, 0);
    row.dutyLevel = columnStrtol(dutyLevel, 0);
    row.state = fanState(state);
    return true;
}

// Goes on behind the line that ended the sensors: a blank one, as the platform prints it. A title in its place is not
// seen.
static void fansRead(SHOW_FILE_T *show, FAN_TABLE_T *fans)
{
    char line[CLI_LINE_SIZE];

    if (!showFileSkipTo(show, "Fans:", line, sizeof(line)) || !showFileSkipTo(show, "----", line, sizeof(line)))
        return;
    while (showFileLine(show, line, sizeof(line)) && fanLineStore(line, fans))
        showRowTaken();
}

// Not held within an int: two clamped numbers would show a wrong share.
static int64_t memoryNumber(const char *line)
{
    char word[CLI_LINE_SIZE];

    return columnWord(line, 7, word, sizeof(word)) ? strtoll(word, nullptr, 10) : 0;
}

// The line of totals ends a unit's block. A unit that lacks one of its memory lines gives no usage at all.
static void usageStore(const char *line, int unit, int64_t allocated, int64_t free, USAGE_TABLE_T *table)
{
    char usage[sizeof(USAGE_T::usage)];

    if (!columnWord(line, 32, usage, sizeof(usage)))
        return;
    if (unit < 1 || unit > static_cast<int>(HEALTH_UNITS) || allocated <= 0 || free <= 0)
        return;

    USAGE_T &cpu = table->cpu[unit - 1];
    cpu.unit = static_cast<uint32_t>(unit);
    textCopy(cpu.usage, sizeof(cpu.usage), usage);

    USAGE_T &memory = table->memory[unit - 1];
    memory.unit = static_cast<uint32_t>(unit);
    auto part = static_cast<double>(allocated);
    snprintf(memory.usage, sizeof(memory.usage), "%.2f%%", part / (part + static_cast<double>(free)) * 100);
}

int deviceHealthGet(CLIENT_HANDLE_T *clientHandle, char **out)
{
    FAN_TABLE_T fans;
    SENSOR_TABLE_T sensors;
    USAGE_TABLE_T usage;
    uint32_t fanControlMode;

    *out = nullptr;
    // A command that failed has logged its line and left its tables empty; the document is made all the same.
    (void)environmentGet(clientHandle, &fans, &sensors, &fanControlMode);
    (void)cpuMemoryUsageGet(clientHandle, &usage);

    OWNED_JSON health(cJSON_CreateObject());
    fanArrayFill(fans, jsonAddArray(health.get(), "fan"));
    sensorArrayFill(sensors, jsonAddArray(health.get(), "sensor"));
    usageArrayFill(usage.cpu, jsonAddArray(health.get(), "cpu"));
    usageArrayFill(usage.memory, jsonAddArray(health.get(), "memory"));

    // An object or array that could not be created makes the document incomplete, and it is not printed.
    *out = jsonPrint(health.get(), JSON_FORMATTED);
    return *out == nullptr ? RESULT_INVALID_POINTER : RESULT_OK;
}

int environmentGet(CLIENT_HANDLE_T *clientHandle, FAN_TABLE_T *fans, SENSOR_TABLE_T *sensors, uint32_t *fanControlMode)
{
    SHOW_REQUEST_T request = {__func__, "show environment", PATH_SHOW_ENVIRONMENT};
    SHOW_FILE_T show;

    request.name = SHOW_NAME_RANDOM;
    *fans = {};
    *sensors = {};
    *fanControlMode = 0;
    int result = showFileRun(&show, clientHandle, request);
    if (result != RESULT_OK)
        return result;

    *fanControlMode = fanControlModeRead(&show);
    showFileRewind(&show);
    sensorsRead(&show, sensors);
    fansRead(&show, fans);
    return RESULT_OK;
}

// Lines of one unit:
//
//           1         2         3         4
// 012345678901234567890123456789012345678901234567890123456789
// Memory and Process CPU Utilization Info of Unit:1
// free      1183360
// alloc     862848
// Total CPU Utilization           7.24%    6.91%    7.03%
int cpuMemoryUsageGet(CLIENT_HANDLE_T *clientHandle, USAGE_TABLE_T *table)
{
    SHOW_REQUEST_T request = {__func__, "show process cpu all", PATH_SHOW_PROCESS_CPU};
    SHOW_FILE_T show;
    char line[CLI_LINE_SIZE];
    int unit = 0;
    int64_t allocated = 0, free = 0;

    request.name = SHOW_NAME_RANDOM;
    *table = {};
    int result = showFileRun(&show, clientHandle, request);
    if (result != RESULT_OK)
        return result;

    while (showFileLine(&show, line, sizeof(line))) {
        if (textBegins(line, "Memory and Process CPU Utilization Info of Unit:")) {
            unit = columnStrtol(line, 48);
            allocated = 0; // a unit without its own lines must not show its predecessor's
            free = 0;
        } else if (textBegins(line, "free")) {
            free = memoryNumber(line);
        } else if (textBegins(line, "alloc")) {
            allocated = memoryNumber(line);
        } else if (textBegins(line, "Total CPU Utilization")) {
            showRowTaken();
            usageStore(line, unit, allocated, free, table);
        }
    }
    return RESULT_OK;
}
