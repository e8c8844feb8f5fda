// radius.h - the documents "radius_config" (authentication servers, sixth cycle) and "radius_port_config" (state of
// each port).
#pragma once

#include "switch/session.h"

#include <cstddef>
#include <cstdint>

constexpr int RADIUS_SERVERS = 4;

struct RADIUS_SERVER_T {
    char ipAddress[32];  // IPv4 text or host name, cut
    uint32_t portNumber; // of authentication; 0 when it cannot be read
};

// Builder: {"servers":[...],"status":...,"reauthTime":0}, the server that was read last first; "status" is whether
// 802.1X and the authentication manager are both on. No secret is read. 0; 10016 when the servers cannot be read;
// 10000 without memory or when the text does not fit (the buffer is empty then).
[[nodiscard]] int getRadiusServerJson(CLIENT_HANDLE_T *clientHandle, char *buffer, size_t size);

// Servers from "show radius servers": their number, 0 to 4, or -10016 when the command fails or its output does not
// open (both logged).
[[nodiscard]] int getRadiusServer(CLIENT_HANDLE_T *clientHandle, RADIUS_SERVER_T servers[RADIUS_SERVERS]);

// Builder: {"radiusPortConfig":[...]}, a row for each physical port whose control mode and status can both be read.
// Always 0; *out is null without memory.
[[nodiscard]] int getPortAuthConfigJson(CLIENT_HANDLE_T *clientHandle, char **out);
