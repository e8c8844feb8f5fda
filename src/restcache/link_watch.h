// link_watch.h - which ports came up lately: their addresses are learned late, so the vendors behind them are detected
// in three cycles.
#pragma once

#include "switch/session.h"

// Look at every port's link. True when a port came up since the last look, or before one of the two last ones. At the
// first look every port that is up has come up.
[[nodiscard]] bool linkWatch(CLIENT_HANDLE_T *clientHandle);

// Make the next look the first one.
void linkWatchRestart();
