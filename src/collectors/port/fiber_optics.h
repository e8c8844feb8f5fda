// fiber_optics.h - the document "fiberOptics": live values and identity of every pluggable optic.
#pragma once

#include "switch/session.h"

// Builder, at start and on request: one object for each row of "show fiber-ports optics-info all", with the values of
// "show fiber-ports optics all". 0; 10015 when either output has no table; 10000 when a command fails. The text is the
// array so far, "[]" included; there is none only without memory (10000). Both outputs stay for other programs.
[[nodiscard]] int fiberOpticsGet(CLIENT_HANDLE_T *clientHandle, char **out);
