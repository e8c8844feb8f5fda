// multicast_groups_ex.h - the records "multicast_groups_ex/N": the IGMP snooping table, one row per group and
// subscriber, in chunks (restcache/chunks.h). Rewritten in every second cycle.
//
// Platform: rpcclt_openapiSnoopingGroupNextGet, openapiIfFirstGet, openapiIfNextGet,
// rpcclt_openapiHashIntfUnitSlotPortGet.
#pragma once

#include "restcache/chunks.h"
#include "switch/session.h"

// Write all chunk records, and delete those that an earlier run left beyond them. 0; 10000 (logged) when the row buffer
// cannot be allocated, nothing is written then.
[[nodiscard]] int mgeWriteChunks(CLIENT_HANDLE_T *clientHandle);

// Read the snooping table and add its rows to the sink. Without memory for the table of interfaces there are no rows
// (logged); a row without memory is left out (logged).
void mgeCollectGroups(CLIENT_HANDLE_T *clientHandle, CHUNK_SINK_T *sink);
