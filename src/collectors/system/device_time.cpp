#include "collectors/system/device_time.h"

// Four sources, one line of JSON with a spacing of its own, so it is printed by a format; its texts are escaped. The
// configuration file belongs to the web interface: it is created when it is missing, and never overwritten.

#include "runtime/json.h"
#include "runtime/json_escape.h"
#include "runtime/log.h"
#include "runtime/paths.h"
#include "runtime/result.h"
#include "switch/cli.h"
#include "switch/columns.h"

#include <cstdio>
#include <cstring>
#include <unistd.h>

// Longest payload, terminator included; the texts below fit it even when every character needs the longest escape.
constexpr size_t PAYLOAD_SIZE = 1023;
constexpr size_t ESCAPED = 6;

// Only a file that is not there is made, so one that another program writes at the same moment stays. A part-written
// file is removed: it would never parse again.
static int clockConfigCreate(const char *path)
{
    FILE *stream = fopen(path, "wxe");

    if (stream == nullptr)
        return access(path, F_OK) == 0 ? RESULT_OK : RESULT_ERROR;
    bool written = fputs("{\"switchConfig\":{\"clock\":{\"timezone\":\"\"}}}\n", stream) >= 0;
    if (fclose(stream) != 0 || !written) {
        (void)remove(path); // nothing more can be done
        return RESULT_ERROR;
    }
    return RESULT_OK;
}

int getDeviceTime(CLIENT_HANDLE_T *clientHandle, char *buffer, size_t size)
{
    char dateTime[DATE_TIME_SIZE] = "", offset[TIMEZONE_SIZE] = "", configured[CONFIGURED_TIMEZONE_SIZE] = "";
    char time[DATE_TIME_SIZE * ESCAPED], utc[TIMEZONE_SIZE * ESCAPED], zone[CONFIGURED_TIMEZONE_SIZE * ESCAPED];
    int rule = 0;

    // Whatever fails leaves its text empty, or the rule 0.
    (void)getDateTime(clientHandle, dateTime);
    (void)getTimezone(clientHandle, offset);
    (void)configuredTimezoneGet(configured);
    (void)getSummerTime(clientHandle, &rule);

    jsonEscape(dateTime, JSON_CONTROLS_HEX, time, sizeof(time));
    jsonEscape(configured, JSON_CONTROLS_HEX, zone, sizeof(zone));
    jsonEscape(offset, JSON_CONTROLS_HEX, utc, sizeof(utc));
    snprintf(buffer, size < PAYLOAD_SIZE ? size : PAYLOAD_SIZE,
             "{\"time\": \"%s\",\"timezone\": \"%s\", \"UTC\": \"%s\", \"DST\": {\"rule\":%d}}", time, zone, utc, rule);
    return RESULT_OK;
}

int getDateTime(CLIENT_HANDLE_T *clientHandle, char text[DATE_TIME_SIZE])
{
    char dateTime[DATE_TIME_SIZE + 1] = ""; // one byte more than the platform is offered: always terminated
    openclt_buffer_t buffer = {DATE_TIME_SIZE, dateTime};

    int result = rpcclt_openapiClockGet(clientHandle, &buffer);
    if (result != OPENCLT_OK) {
        LOG_ERROR("Bad return code trying to get datetime. (result = %d)\n", result);
        return result;
    }
    LOG_DEBUG("get date time succ. (result = %d)\n", result);
    LOG_DEBUG("datetime: %s \n", dateTime);
    textCopy(text, DATE_TIME_SIZE, dateTime);
    return result;
}

int getTimezone(CLIENT_HANDLE_T *clientHandle, char text[TIMEZONE_SIZE])
{
    char zone[TIMEZONE_SIZE + 1] = "";
    openclt_buffer_t buffer = {TIMEZONE_SIZE, zone};

    int result = rpcclt_openapiTimeZoneGet(clientHandle, &buffer);
    if (result != OPENCLT_OK) {
        LOG_ERROR("Bad return code trying to get timezone. (result = %d)\n", result);
        return result;
    }
    LOG_DEBUG("get date time succ. (result = %d)\n", result);
    LOG_DEBUG("timezone: %s \n", zone);
    textCopy(text, TIMEZONE_SIZE, zone);
    return result;
}

int configuredTimezoneGet(char text[CONFIGURED_TIMEZONE_SIZE])
{
    const char *path = PathGet(PATH_CLOCK_CONFIG);

    text[0] = '\0';
    if (access(path, F_OK) != 0 && clockConfigCreate(path) != RESULT_OK)
        return RESULT_ERROR;
    OWNED_JSON config = jsonFileLoad(path);
    if (config == nullptr)
        return RESULT_ERROR;

    cJSON *clock = cJSON_GetObjectItem(cJSON_GetObjectItem(config.get(), "switchConfig"), "clock");
    cJSON *zone = cJSON_GetObjectItem(clock, "timezone");
    if (cJSON_IsString(zone))
        textCopy(text, CONFIGURED_TIMEZONE_SIZE, zone->valuestring);
    return RESULT_OK;
}

// "(EU)" or "(USA)" stands in the line of the recurring rule:
//
// Summer Time............................ Recurring (EU)
int getSummerTime(CLIENT_HANDLE_T *clientHandle, int *rule)
{
    SHOW_REQUEST_T request = {__func__, "show clock detail", PATH_SHOW_CLOCK_DETAIL};
    SHOW_FILE_T show;
    char line[CLI_LINE_SIZE];

    request.after = SHOW_AFTER_KEEP;
    *rule = 0;
    int result = showFileRun(&show, clientHandle, request);
    if (result != RESULT_OK)
        return result;
    while (*rule == 0 && showFileLine(&show, line, sizeof(line))) {
        if (strstr(line, "(USA)") != nullptr)
            *rule = 2;
        else if (strstr(line, "(EU)") != nullptr)
            *rule = 1;
        if (*rule != 0)
            showRowTaken();
    }
    return RESULT_OK;
}
