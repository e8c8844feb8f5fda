// swcfg_poe.h - the documents "swcfg_poe" (one row per port that can feed power) and "swcfg_poe_info" (power of each
// unit). Both are rebuilt in every cycle from client calls.
#pragma once

#include "switch/session.h"

#include <cstddef>
#include <cstdint>

constexpr size_t POE_SCHEDULE_NAME_SIZE = 32; // a time range's name with its terminator

// One port. Codes and units are the platform's (openclt.h); what cannot be read is 0.
struct POE_PORT_T {
    uint32_t ifNum; // set by the caller
    uint32_t valid; // 1 when the port can feed power
    uint32_t enable;
    uint32_t powerLimitMode;
    uint32_t classification;
    uint32_t currentPower; // milliwatts
    uint32_t powerLimit;   // milliwatts
    uint32_t status;
    uint32_t detectionType;
    uint32_t priority;
    uint32_t powerMode;
    char schedule[POE_SCHEDULE_NAME_SIZE]; // time range that switches the port's power, "None" without one
};

// Builders. 0 with a newly allocated text, which the caller frees; 10000 with *out null when there is no memory.
[[nodiscard]] int getPortsPoeJson(CLIENT_HANDLE_T *clientHandle, char **out);
[[nodiscard]] int gePoeInfoJson(CLIENT_HANDLE_T *clientHandle, char **out);

// Fill a zeroed record of which `ifNum` is set; only `valid` when the port cannot feed power. Always 0.
[[nodiscard]] int getPortPoeInfo(CLIENT_HANDLE_T *clientHandle, POE_PORT_T *port);
