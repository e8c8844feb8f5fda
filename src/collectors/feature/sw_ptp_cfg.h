// sw_ptp_cfg.h - the document "sw_ptp_cfg": which PTP clock the switch is.
#pragma once

#include "switch/session.h"

#include <cstdint>

// Builder: mode 2 and "ptpBcAdmin" 1 while a boundary clock is active, else the mode of the transparent clock. 0, also
// when the print fails ("Response error" is logged, *out is null); 10002 without memory for the object.
[[nodiscard]] int switchPtpModeGet(CLIENT_HANDLE_T *clientHandle, char **out);

// Lowest boundary clock domain that serves a VLAN; for VLAN 0, of the first VLAN that has one among (at most 16) VLANs
// whose profile template asks for a boundary clock, in the order of the profile database. 0, else -26 with *domain
// untouched. Domains and templates are read once.
[[nodiscard]] int ptpBoundaryClockDomainGet(CLIENT_HANDLE_T *clientHandle, uint32_t vlanId, uint32_t *domain);
