// swcfg_port.h - the front panel of every unit: slots, models, and about thirty values of each port. Document
// "swcfg_port", built on request.
#pragma once

#include "switch/session.h"

#include <cstddef>
#include <cstdint>

// Build the document: 0 with a newly allocated text in *out; 10000 when a model is unknown or the document cannot be
// printed; -7 without memory for the records, their VLAN lists or the Shure flags. *out is null unless 0.
[[nodiscard]] int fillPhyInfStatusFastEX(CLIENT_HANDLE_T *clientHandle, char **out);

// Speed text of a port, "" for an unknown code, "unknown" when it cannot be read.
constexpr size_t PORT_SPEED_SIZE = 12;
void getPortLinkSpeed(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, char text[PORT_SPEED_SIZE]);

// Load of a port, from "show interface NAME": percent of both directions and the two rate texts (Mbit/s, at most 24
// characters). Zeroed first. 0, also for a port without a name; the platform's result when the command fails; 10016
// when its output does not open.
constexpr size_t PORT_RATE_LINE_SIZE = 25;
struct PORT_LOAD_T {
    uint32_t receivedPercent, transmittedPercent;
    char receivedRate[PORT_RATE_LINE_SIZE], transmittedRate[PORT_RATE_LINE_SIZE];
};
[[nodiscard]] int portStatsGetFromCli(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, PORT_LOAD_T *load);
