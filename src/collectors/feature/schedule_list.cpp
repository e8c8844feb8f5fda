#include "collectors/feature/schedule_list.h"

// A time range is read in four passes: its first entry's start, all entries' ends, its status, and the ports that name
// it. Numbers of entries and of time ranges are held within limits, so that a wrong answer cannot keep the daemon busy.
// Uses the walks and wrappers of switch/ and runtime/json.h.

#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/columns.h"
#include "switch/swapi.h"
#include "switch/walk.h"

#include <cstdio>
#include <cstring>

constexpr uint32_t SCHEDULES_MAX = 1024;
constexpr uint32_t ENTRIES_MAX = 1024;
constexpr uint32_t RECURRENCE_UNREAD = 1;
constexpr uint32_t RECURRENCE_WEEKLY = 2;
constexpr size_t DATE_TEXT_SIZE = 32; // longer than any three numbers make

using NAME_T = char[POE_SCHEDULE_NAME_SIZE + 1]; // terminated, whatever the platform writes

static openclt_buffer_t nameBuffer(char *name)
{
    return {POE_SCHEDULE_NAME_SIZE, name};
}

// Day numbers of a mask: 1 Monday to 7 Sunday.
static OWNED_JSON maskDays(uint8_t mask)
{
    static const uint8_t dayBits[] = {2, 3, 4, 5, 6, 7, 1};
    OWNED_JSON days(cJSON_CreateArray());

    for (size_t i = 0; i < sizeof(dayBits); i++) {
        if ((mask >> dayBits[i] & 1) != 0)
            jsonAppendNumber(days.get(), static_cast<double>(i + 1));
    }
    return days;
}

static void scheduleRowAppend(POE_SCHEDULE_T *schedule, cJSON *rows)
{
    OWNED_JSON owned(cJSON_CreateObject());
    if (owned == nullptr) {
        LOG_ERROR_AS("getPoeScheduleAllJson", "getPoeScheduleAllJson: Failed to create jnode\n");
        return;
    }
    cJSON *row = owned.get();
    jsonAppend(rows, std::move(owned));
    jsonAddText(row, "name", schedule->name);
    jsonAddNumber(row, "status", schedule->status);
    jsonAddText(row, "startTime", schedule->startTime);
    jsonAddText(row, "endTime", schedule->endTime);
    jsonAddText(row, "startDate", schedule->startDate);
    jsonAddText(row, "endDate", schedule->endDate);
    jsonAddNumber(row, "recurrence", schedule->recurrence);
    jsonAddItem(row, "recurrenceDays",
                schedule->recurrence == RECURRENCE_WEEKLY ? std::move(schedule->recurrenceDays)
                                                          : maskDays(schedule->recurrenceMask));
    jsonAddItem(row, "portNum", std::move(schedule->ports));
}

static uint32_t entryCountGet(CLIENT_HANDLE_T *clientHandle, openclt_buffer_t name)
{
    uint32_t count = 0;

    int result = rpcclt_openapiTimeRangeNumEntriesGet(clientHandle, &name, &count);
    if (result == OPENCLT_OK)
        return count;
    LOG_ERROR_AS("getPoeSchedule",
                 "Bad return code trying to get number of entries configured for the given time range. (result = %d)\n",
                 result);
    return 0;
}

static void dateTexts(const openclt_time_range_date_t &date, char dateText[11], char timeText[6])
{
    char text[DATE_TEXT_SIZE];

    snprintf(text, sizeof(text), "%04d-%02d-%02d", date.year, date.month, date.day);
    textCopy(dateText, 11, text);
    snprintf(text, sizeof(text), "%02d:%02d", date.hour, date.minute);
    textCopy(timeText, 6, text);
}

static void startRead(CLIENT_HANDLE_T *clientHandle, openclt_buffer_t name, POE_SCHEDULE_T *schedule)
{
    openclt_time_range_date_t date = {};

    int result = rpcclt_openapiTimeRangePeriodicEntryStartDateAndTimeGet(clientHandle, &name, 1, &date);
    if (result != OPENCLT_OK) {
        schedule->recurrence = RECURRENCE_UNREAD;
        LOG_ERROR_AS("getPoeSchedule", "TimeRangePeriodicEntry (%s) get failed. result = %d\n", schedule->name, result);
        return;
    }
    dateTexts(date, schedule->startDate, schedule->startTime);
    schedule->recurrence = date.recurrence;
    schedule->recurrenceMask = date.days;
}

// Days and end of the entries.
static void endsRead(CLIENT_HANDLE_T *clientHandle, openclt_buffer_t name, uint32_t count, POE_SCHEDULE_T *schedule)
{
    uint8_t previousDay = 0;

    for (uint32_t entry = 1; entry <= count && entry <= ENTRIES_MAX; entry++) {
        openclt_time_range_date_t date = {};
        int result = rpcclt_openapiTimeRangePeriodicEntryEndDateAndTimeGet(clientHandle, &name, entry, &date);
        if (result != OPENCLT_OK) {
            LOG_ERROR_AS("getPoeSchedule",
                         "Bad return code trying to get StartDateAndTime of a schedule. (result = %d)\n", result);
            continue;
        }
        dateTexts(date, schedule->endDate, schedule->endTime);
        if (date.days != previousDay)
            jsonAppendNumber(schedule->recurrenceDays.get(), date.days);
        previousDay = date.days;
    }
}

static void statusRead(CLIENT_HANDLE_T *clientHandle, openclt_buffer_t name, POE_SCHEDULE_T *schedule)
{
    uint32_t status = 0;

    if (rpcclt_openapiTimeRangeStatusGet(clientHandle, &name, &status) == OPENCLT_OK)
        schedule->status = status;
    else
        LOG_DEBUG_AS("getPoeSchedule", "Time Range status : %s %u \n", schedule->name, schedule->status);
}

// Each port is asked for the time range it names, into a buffer that only a name of this length or a shorter one fits.
static void portsRead(CLIENT_HANDLE_T *clientHandle, POE_SCHEDULE_T *schedule)
{
    uint32_t size = static_cast<uint32_t>(strlen(schedule->name)) + 1;

    for (IF_WALK_T walk = ifWalkStart(clientHandle, OPENCLT_IF_PHYSICAL); walk.valid; ifWalkNext(&walk)) {
        openclt_usp_t usp;
        NAME_T name = "";
        openclt_buffer_t buffer = {size, name};

        if (ifUnitSlotPortGet(clientHandle, walk.ifNum, &usp) != RESULT_OK)
            return;
        if (rpcclt_openapiPoePsePortTimerScheduleNameGet(clientHandle, usp.unit, usp.port, &buffer, size) ==
                OPENCLT_OK &&
            strcmp(name, schedule->name) == 0)
            jsonAppendNumber(schedule->ports.get(), walk.ifNum);
    }
}

int getPoeScheduleAllJson(CLIENT_HANDLE_T *clientHandle, char **out)
{
    NAME_T name = "", next = "";

    *out = nullptr;
    OWNED_JSON rows(cJSON_CreateArray());
    if (rows == nullptr) {
        LOG_ERROR("getPoeScheduleAllJson: Failed to create cJSON array\n");
        return RESULT_FAILED;
    }
    openclt_buffer_t first = nameBuffer(name);
    int result = rpcclt_openapiTimeRangeNameFirstGet(clientHandle, &first);
    if (result != OPENCLT_OK && result != OPENCLT_NOT_FOUND)
        LOG_ERROR("openapiTimeRangeNameFirstGet get failed. result = %d\n", result);
    for (uint32_t i = 0; result == OPENCLT_OK && i < SCHEDULES_MAX; i++) {
        POE_SCHEDULE_T schedule = {};
        textCopy(schedule.name, sizeof(schedule.name), name);
        (void)getPoeSchedule(clientHandle, &schedule); // always 0
        scheduleRowAppend(&schedule, rows.get());

        openclt_buffer_t current = nameBuffer(name), following = nameBuffer(next);
        result = rpcclt_openapiTimeRangeNameNextGet(clientHandle, &current, &following);
        if (result == OPENCLT_OK && strcmp(name, next) == 0)
            break; // it does not advance
        textCopy(name, sizeof(name), next);
    }
    return jsonToStr(rows.get(), JSON_COMPACT, out);
}

int getPoeSchedule(CLIENT_HANDLE_T *clientHandle, POE_SCHEDULE_T *schedule)
{
    openclt_buffer_t name = nameBuffer(schedule->name);

    uint32_t count = entryCountGet(clientHandle, name);
    startRead(clientHandle, name, schedule);
    schedule->recurrenceDays.reset(cJSON_CreateArray());
    schedule->ports.reset(cJSON_CreateArray());
    endsRead(clientHandle, name, count, schedule);
    statusRead(clientHandle, name, schedule);
    portsRead(clientHandle, schedule);
    return RESULT_OK;
}
