// lldp.h - the remote devices that LLDP knows on a port, and a text of each.
#pragma once

#include "switch/session.h"

#include <cstdint>

// Longest text asked for, in bytes; more is no length of a text.
constexpr uint32_t LLDP_TEXT_MAX = 65536;

// Step to the next device of a port; *index is 0 to start. False after the last one, and for an index that does not
// ascend, so that a platform that repeats itself cannot hold the daemon.
[[nodiscard]] bool lldpDeviceNext(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *index);

// A platform call that reads one text of a device: rpcclt_openapiLldpIntfRemoteDeviceSystemDescGet and the like, or
// lldpChassisIdRead for the chassis id whatever its subtype.
using LLDP_READ = int (*)(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t index, openclt_buffer_t *text);
[[nodiscard]] int lldpChassisIdRead(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t index,
                                    openclt_buffer_t *text);

// Called with each text; false ends the walk.
using LLDP_VISIT = bool (*)(void *context, const char *text);

// Read that text of each device of a port in ascending index and hand it over; a device whose text cannot be read is
// passed over. 0; -7 without memory; the platform's result when the length of texts cannot be read.
[[nodiscard]] int lldpTextsVisit(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, LLDP_READ read, LLDP_VISIT visit,
                                 void *context);
