// neighbor_ex.h - the records "neighbor_ex/N": one row per device seen on a port, from LLDP and from learned MAC
// addresses, in chunks (restcache/chunks.h). Rewritten in every second cycle.
//
// Platform: the tables of neighbor_ex_tables.h, rpcclt_openapiLldpMgmtStrLenGet, rpcclt_openapiLldpIntfRemoteDevice...
// (NextGet, ChassisIdGet, PortIdGet, SystemNameGet, MgmtAddressNextGet), the snapshot of switch/fdb.h; vendors from
// stores/oui.h.
#pragma once

#include "switch/session.h"

// Write all chunk records, and delete those that the previous push left beyond them. 0; 10000 when there is no memory
// for the rows, the interface table, the LLDP texts or the LLDP addresses: chunks written so far stay then.
[[nodiscard]] int neighborListExChunkedPush(CLIENT_HANDLE_T *clientHandle);
