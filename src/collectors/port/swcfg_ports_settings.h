// swcfg_ports_settings.h - the document "swcfg_ports_settings": what is configured on each port and LAG, without the
// live state, and the front port that a fan-out sub-port belongs to. Written once right after start-up.
//
// Platform, for each interface, besides what port_rows.h lists: rpcclt_openapiIfDescrGet, openapiIfAdminStateGet,
// openapiVlanIfPvidGet, rpcclt_openapiDot1SIntfModeGet, rpcclt_openapiDot1SIntfEdgePortModeGet,
// rpcclt_openapiDot1SPortRestrictedTcnGet, rpcclt_openapiDot1SIntfPortFwdStateGet,
// rpcclt_openapiDot1SIntfBPDUFilterModeGet, and for ports openapiIfAutoNegGet, rpcclt_openapiStormControlIntfModeGet;
// rpcclt_openapiUnitMgrPreconfigModelIdGet for units 1 to 8, present or not.
#pragma once

#include "switch/session.h"

#include <cstdint>

// Builder of the document. 0 with a newly allocated text, which the caller frees; 10003 without a place for it; the
// result of portRowsBuild; -7 when the document cannot be printed.
[[nodiscard]] int getPortsSettings(CLIENT_HANDLE_T *clientHandle, char **out);

// All rows with settings and state, read by calls; uncalled. 0 with a newly allocated text, which the caller frees;
// else as portRowsPrint. `pageIndex` only goes into the text, and `pageSize` is not used: there is one page.
[[nodiscard]] int getPortStatusList(CLIENT_HANDLE_T *clientHandle, uint32_t pageIndex, uint32_t pageSize, char **out);
