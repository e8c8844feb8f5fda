// special_interface_route.h - the document "special_interface_route": how the service port gets its address, and the
// address. Rebuilt once in six cycles.
//
// Platform: rpcclt_openapiServicePortIPv4ProtocolModeGet, ...IPv4AddrGet, ...GatewayIPv4AddrGet.
#pragma once

#include "switch/session.h"

#include <cstddef>

// Builder into a buffer of 1024 bytes. 0 (the buffer stays as it was when the document cannot be printed); 10002 when
// there is no memory for it. "protocolType" is 1 DHCP, 2 none (static), 3 anything else.
[[nodiscard]] int getSpecialInfInfo(CLIENT_HANDLE_T *clientHandle, char *buffer, size_t size);

// Addressing of the service port as dotted texts. 0, or the platform's result (logged): nothing filled when the address
// fails, no gateway when the gateway does.
[[nodiscard]] int servicePortIPv4ParametersGet(CLIENT_HANDLE_T *clientHandle, char ip[16], char mask[16],
                                               char gateway[16]);
