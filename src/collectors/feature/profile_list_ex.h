// profile_list_ex.h - the document "profile/list_ex": every VLAN with its profile, its ports and LAGs, its routing
// address and the ports that its profile's exported configuration assigns.
//
// Files: the VLAN profile database (PATH_VLANINFO_DB), read once; exported profiles (PATH_EXPORT_DIR), each read once.
// Platform: openapiVlanNextGet, openapiVlanIsStatic for each VLAN; rpcclt_openapiDot1qSwPortTaggedVlanListGet,
// openapiVlanIfPvidGet for each port and LAG; rpcclt_openapiLagMaxMemberCountGet, rpcclt_openapiLagMembersGet;
// rpcclt_openapiRtrIntfNextGet, rpcclt_openapiRtrIntfVlanIdGet, rpcclt_openapiRtrIntfIpAddrGet.
#pragma once

#include "switch/session.h"

// Builder of the document. 0 with a newly allocated text, which the caller frees; 10002 without a place for it, or when
// the array or the tables cannot be created; 10000 when it cannot be printed. A VLAN for which there is no memory is
// left out.
[[nodiscard]] int profileListExGet(CLIENT_HANDLE_T *clientHandle, char **out);
