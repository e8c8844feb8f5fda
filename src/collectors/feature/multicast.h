// multicast.h - the documents "multicast_mode_ex" (ports and LAGs on which multicast is blocked, and router ports) and
// "multicast_block_address" (destinations that the access list "NET-BLOCK" denies). Both are rebuilt every sixth cycle.
//
// Platform: rpcclt_openapiAclGet, rpcclt_openapiAclAssignedIntfDirListGet, rpcclt_openapiSnoopIntfMrouterStatusGet,
// openapiIfFirstGet, openapiIfNextGet, rpcclt_openapiHashIntfUnitSlotPortGet; "show ip access-list NET-BLOCK".
#pragma once

#include "switch/session.h"

#include <cJSON.h>

// Builder of "multicast_mode_ex". 0 with a newly allocated text, which the caller frees; 0 with *out null when it
// cannot be printed; 10002 when root or arrays cannot be created, 10000 when there is no first LAG interface, with *out
// null.
[[nodiscard]] int getMulticastModeEx(CLIENT_HANDLE_T *clientHandle, char **out);
[[nodiscard]] int buildMulticastModeJson(CLIENT_HANDLE_T *clientHandle, char **out);

// Append the multicast router ports and LAGs to the two arrays.
void multicastIntIfRouterGet(CLIENT_HANDLE_T *clientHandle, cJSON *physicalPorts, cJSON *lagPorts);

// Builder of "multicast_block_address". 0 with a newly allocated text, [] when there is no such list or its command or
// file fails; 0 with *out null when it cannot be printed; 10002 when the array cannot be created.
[[nodiscard]] int getDenyList(CLIENT_HANDLE_T *clientHandle, char **out);
