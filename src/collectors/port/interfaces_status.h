// interfaces_status.h - the document "interfaces_status": a light picture of the front panel, units with their slots
// and ports, and the LAGs. It is rebuilt in every cycle, and only from client calls.
//
// Platform: rpcclt_openapiHashIntfUnitSlotPortGet, openapiIfNameGet, rpcclt_openapiIfStatusGet, openapiIfLinkStateGet,
// rpcclt_openapiDot1SIntfPortFwdStateGet, openapiIfSpeedGet, rpcclt_openapiDot1qSwPortModeGet,
// rpcclt_openapiAuthMgrPortStatusGet, rpcclt_openapiBoxsSfpComplianceGet for each port;
// rpcclt_openapiUnitMgrPreconfigModelIdGet, rpcclt_openapiSystemRegMachineModelGet for each unit;
// rpcclt_openapiCardTypeGet, rpcclt_openapiCardSupportedCardModelIdGet for each slot of a modular unit;
// rpcclt_openapiLagMaxMemberCountGet, rpcclt_openapiLagMembersGet, rpcclt_openapiDot1xSystemAuthControlModeGet,
// rpcclt_openapiBoxsSfpComplianceSizeGet.
#pragma once

#include "switch/session.h"

// Builder of the document. 0 with a newly allocated text, which the caller frees; 10003 without a place for it; -7 with
// *out null when the document cannot be created or printed.
[[nodiscard]] int interfacesStatusBuild(CLIENT_HANDLE_T *clientHandle, char **out);
