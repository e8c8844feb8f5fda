// vlan_show.h - the rows of "show vlan", which lists every VLAN with one command.
#pragma once

#include "switch/cli.h"

#include <cstdint>

struct VLAN_SHOWN_T {
    uint32_t vlanId; // 1 to 4096
    bool isStatic;
    char name[64]; // "" when the row has none
};

// Run the command into a file, for vlanShowNext. 0; 10000 when the command fails or its output does not open.
[[nodiscard]] int vlanShowRun(SHOW_FILE_T *show, CLIENT_HANDLE_T *clientHandle, const char *caller, PATH_ID file);

// Next VLAN; lines that are none are passed over. False at the end.
[[nodiscard]] bool vlanShowNext(SHOW_FILE_T *show, VLAN_SHOWN_T *vlan);
