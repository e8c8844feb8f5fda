// port_hardware_info.h - the document "port_hardware_info": module type and stack capability of every physical port.
#pragma once

#include "switch/session.h"

// Builder, at start: {"rows": [...]}, one row a port. 0; 10003 when `out` is missing; -7 without memory.
[[nodiscard]] int portHardwareInfoBuild(CLIENT_HANDLE_T *clientHandle, char **out);

// Fill the process's table of stack capabilities from "show port all"; what is not read stays as it is.
void stackCapableTableFill(CLIENT_HANDLE_T *clientHandle);
