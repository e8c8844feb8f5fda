// sw_portmirroring.h - the document "sw_portmirroring": destination, reflector and sources of a mirroring session.
#pragma once

#include "switch/session.h"

#include <cJSON.h>

// Builder: adds the session's members to the object. Always 0; what cannot be read is 0, or no source at all.
[[nodiscard]] int getPortMirroring(CLIENT_HANDLE_T *clientHandle, int session, cJSON *object);
