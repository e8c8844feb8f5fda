// stacking.h - the document "stacking": one object per stack unit with its role, versions, uptime and stack ports, in
// the order of "show switch". Written in every second cycle by get_stacking_info itself.
//
// Commands: "show switch", "show switch detail", and "show stack-port" once per unit.
#pragma once

#include "switch/session.h"

#include <cJSON.h>
#include <cstddef>
#include <cstdint>

constexpr size_t STACK_UNITS = 8;

// What "show switch detail" says of one unit; empty when the unit number is 0.
struct UNIT_INFO_RECORD_T {
    uint32_t unit;
    uint8_t isManagement;
    uint8_t statusOk;
    char model[256]; // preconfigured model identifier
    char serialNumber[256];
    char upTime[256]; // "0 days, 1 hrs, 2 mins, 3 secs"
    char firmware[17];
};

// Build the list of units, put it under "stacking" and store it. 0, or the builder's result (logged): nothing is stored
// then.
int get_stacking_info(CLIENT_HANDLE_T *clientHandle);

// Builder. 0 with a newly allocated text, which the caller frees; with *out null 10002 when there is no memory, 10016
// when the output of "show switch" does not open.
[[nodiscard]] int getStacking(CLIENT_HANDLE_T *clientHandle, char **out);

// Fill the records of units 1 to 8, which the caller zeroes; they stay empty when the command fails.
void unitInfoGet(CLIENT_HANDLE_T *clientHandle, UNIT_INFO_RECORD_T records[STACK_UNITS]);

// Append the unit's stack ports, as "unit/slot/port", to an array. 0; 10000 when the command fails; 10016 when its
// output does not open.
[[nodiscard]] int getStackPortInfo(CLIENT_HANDLE_T *clientHandle, uint32_t unit, cJSON *array);
