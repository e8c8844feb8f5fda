// schedule_list.h - the document "scheduleList": every time range of the switch, when it is active, and which ports
// have their power switched by it. From client calls, every sixth cycle.
#pragma once

#include "collectors/feature/swcfg_poe.h"
#include "runtime/owned.h"

// One time range. What cannot be read is 0 or "", but for the recurrence.
struct POE_SCHEDULE_T {
    char name[POE_SCHEDULE_NAME_SIZE]; // set by the caller
    char startTime[6];                 // "08:00", as the next four of the first periodic entry
    char endTime[6];                   // of the last periodic entry, like endDate
    uint32_t recurrence;               // platform code; 1 when the first entry cannot be read
    uint8_t recurrenceMask;            // bit 1 Sunday to bit 7 Saturday
    char startDate[11];                // "2026-03-01"
    char endDate[11];
    uint32_t status;
    OWNED_JSON recurrenceDays; // day numbers of the entries' ends, each followed by a different one
    OWNED_JSON ports;          // interface numbers
};

// Builder. 0 with a newly allocated text, which the caller frees, also when there is no time range; 10000 with *out
// null when there is no memory.
[[nodiscard]] int getPoeScheduleAllJson(CLIENT_HANDLE_T *clientHandle, char **out);

// Fill a zeroed record of which `name` is set. Always 0.
[[nodiscard]] int getPoeSchedule(CLIENT_HANDLE_T *clientHandle, POE_SCHEDULE_T *schedule);
