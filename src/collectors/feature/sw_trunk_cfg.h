// sw_trunk_cfg.h - the documents "sw_auto_lag_cfg" and "sw_auto_trunk_cfg" (switch-wide modes, each from a show
// command) and "sw_manual_trunk_cfg" (ports that the web interface's configuration side has written into a file). All
// are rebuilt in the cycle.
#pragma once

#include "switch/session.h"

// Builder, from "show port-channel auto all". 0 with a newly allocated text, which the caller frees; a line that is not
// there leaves its member out. 10000 when the command fails or there is no memory, 10016 when its output does not open;
// *out is null then.
[[nodiscard]] int getAutoLagCfg(CLIENT_HANDLE_T *clientHandle, char **out);

// Builder, from "show interfaces switchport trunk"; the output file stays. 0 with a newly allocated text; 10016, also
// with a text ({}), when the output does not open; 10002 or 10000 with *out null when there is no memory.
[[nodiscard]] int switchTrunkModeGet(CLIENT_HANDLE_T *clientHandle, char **out);

// Builder, from the manual trunk file. 0 with a newly allocated text, with empty arrays for what the file lacks; 10002
// or 10000 with *out null when there is no memory.
[[nodiscard]] int manualTrunkGet(CLIENT_HANDLE_T *clientHandle, char **out);
