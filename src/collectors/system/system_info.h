// system_info.h - the document "system_info": name, MAC, application version, PoE support, spanning-tree priority, fan
// mode and management VLAN of the switch. Rebuilt once in 60 cycles. The record is shared with the stacking document.
#pragma once

#include "switch/session.h"

#include <cstdint>

// What several documents say of the switch as a whole; zero and empty where a source failed.
struct SYSTEM_INFO_RECORD_T {
    char mac[18]; // "AA:BB:CC:00:11:22"
    char ip[16];  // service port
    char name[256];
    char version[20]; // of the application
    char bootVersion[17];
    uint16_t stpPriority; // bridge priority of instance 0
    uint32_t fanMode;     // of fanModeGet
};

// Builder. 0 with a newly allocated text, which the caller frees; 10002 with *out null when there is no memory.
[[nodiscard]] int systemInfoGet(CLIENT_HANDLE_T *clientHandle, char **out);

// Zero and fill a record; the fan mode is read only when skipFanMode is 0.
void systemInfoRecordGet(CLIENT_HANDLE_T *clientHandle, SYSTEM_INFO_RECORD_T *record, int skipFanMode);
