// port_stats.h - the documents "portStats_inbound_ex" and "portStats_outbound_ex": packet counters, bit rate and
// utilisation of every port and of every LAG with members, for one direction. Both are rebuilt in every cycle.
//
// Platform: openapiIfNameGet, openapiIfLinkStateGet, openapiIfSpeedGet, rpcclt_openapiStatGet,
// rpcclt_openapiHashIntfUnitSlotPortGet, rpcclt_openapiLagMaxMemberCountGet, rpcclt_openapiLagMembersGet.
#pragma once

#include "switch/session.h"

enum PIO_DIRECTION : int { PIO_OUTBOUND = 0, PIO_INBOUND = 1 };

// Build the list of one direction. 0 with a newly allocated text, which the caller frees; 10000 with *out null when the
// document cannot be created or printed.
[[nodiscard]] int pioBuildList(CLIENT_HANDLE_T *clientHandle, PIO_DIRECTION direction, char **out);

// Builders of the two documents: as pioBuildList, and 10003 when an argument is missing.
[[nodiscard]] int portStatsInboundGet(CLIENT_HANDLE_T *clientHandle, char **out);
[[nodiscard]] int portStatsOutboundGet(CLIENT_HANDLE_T *clientHandle, char **out);
