// swcfg_ports_status.h - the document "swcfg_ports_status": one row for each port and LAG with its settings and its
// state, as the web interface's port table shows them. On no schedule: built when a writeback of the name is asked for.
//
// Commands, each once a build: "show interfaces description all", "show port all", "show port advertise",
// "show storm-control all", "show vlan port all", "show spanning-tree interface all", "show spanning-tree mst port
// summary 0 all" and those of port_rows.h. Platform: what port_rows.h lists, and for each interface
// rpcclt_openapiDot1SIntfEdgePortModeGet, for a detached port openapiIfAutoNegGet.
#pragma once

#include "switch/session.h"

// Builder of the document. 0 with a newly allocated text, which the caller frees; 10003 without a place for it; else as
// portRowsBuild.
[[nodiscard]] int getPortStatusListFast(CLIENT_HANDLE_T *clientHandle, char **out);
