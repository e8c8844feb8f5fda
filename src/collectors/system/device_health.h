// device_health.h - the document "device_health": fans, temperature sensors, CPU and memory usage per unit. Rebuilt in
// every cycle from two show commands.
#pragma once

#include "switch/session.h"

#include <cstddef>
#include <cstdint>

constexpr size_t HEALTH_UNITS = 8;
constexpr size_t HEALTH_ROWS = 21; // fans or sensors of a unit

// A row is in use when its unit is not 0; row (unit - 1, id - 1) of its table.
struct FAN_ROW_T {
    uint32_t unit;
    uint32_t id;
    char description[21];
    int32_t speed;     // rpm
    int32_t dutyLevel; // percent
    uint32_t state;    // 0 operational, 1 failed, 2 a text beginning with "Not", 3 anything else
};
struct FAN_TABLE_T {
    FAN_ROW_T rows[HEALTH_UNITS][HEALTH_ROWS];
};

struct SENSOR_ROW_T {
    uint32_t unit;
    uint32_t id;
    char description[21];
    int32_t temperature; // degrees Celsius
    uint32_t state;      // 0 none or unknown, 1 low, 2 normal, 3 warning, 4 critical, 5 shutdown, 6 not present,
                         // 7 not operational
    int32_t maximum;     // highest temperature measured
};
struct SENSOR_TABLE_T {
    SENSOR_ROW_T rows[HEALTH_UNITS][HEALTH_ROWS];
};

// Usage of a unit as text, "7.24%"; in use when the unit is not 0.
struct USAGE_T {
    uint32_t unit;
    char usage[16];
};
struct USAGE_TABLE_T {
    USAGE_T cpu[HEALTH_UNITS];    // over the first period that is shown, the shortest
    USAGE_T memory[HEALTH_UNITS]; // allocated part of allocated and free
};

// Builder. 0 with a newly allocated text, which the caller frees; 10002 with *out null when there is no memory. A
// command that fails leaves its arrays empty.
[[nodiscard]] int deviceHealthGet(CLIENT_HANDLE_T *clientHandle, char **out);

// Fans, sensors and fan control mode (3 cool, 2 quiet, 1 off, 0 unknown) from "show environment"; all zeroed first. 0;
// 10000 when the command fails; 10016 when its output does not open.
[[nodiscard]] int environmentGet(CLIENT_HANDLE_T *clientHandle, FAN_TABLE_T *fans, SENSOR_TABLE_T *sensors,
                                 uint32_t *fanControlMode);

// CPU and memory usage from "show process cpu all"; zeroed first. Results as above.
[[nodiscard]] int cpuMemoryUsageGet(CLIENT_HANDLE_T *clientHandle, USAGE_TABLE_T *table);
