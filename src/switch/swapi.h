// swapi.h - thin, uniform wrappers over the platform calls that collectors share.
//
// Each gives 0 on success; on failure it logs a line that names the object and returns 10000 or the platform's own
// ("raw") result, as said. Outputs are preset to the documented default before the call, so that a failed read leaves
// that; where nothing is said the output is untouched on failure.
#pragma once

#include "switch/session.h"

#include <cstddef>
#include <cstdint>

// ---- interfaces ----

// First interface of a type (0 physical, 2 LAG): logs on failure; raw. The next one: no message; raw.
[[nodiscard]] int swapiIfFirstGet(CLIENT_HANDLE_T *clientHandle, uint32_t type, uint32_t *ifNum);
[[nodiscard]] int swapiIfNextGet(CLIENT_HANDLE_T *clientHandle, uint32_t type, uint32_t ifNum, uint32_t *nextIfNum);

// Number of interfaces of a type; 0 when there is no first one.
uint32_t ifCountGet(CLIENT_HANDLE_T *clientHandle, uint32_t type);

[[nodiscard]] int swapiIfTypeGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *type); // 10000

// "unit/slot/port" of a port, "lag N" (with a blank) of a LAG, into 12 bytes; other types and failures 10000.
[[nodiscard]] int ifDisplayNameGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, char text[12]);

[[nodiscard]] int ifUnitSlotPortGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, openclt_usp_t *usp); // zeroed; 10000
[[nodiscard]] int ifSpeedGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *speed);           // 10000

// Frame size in bytes without the Ethernet header; 9198 when the platform gives none (result 10000 then).
[[nodiscard]] int ifMaxFrameSizeGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *size);

// Interface number of a CLI name; raw, no message.
[[nodiscard]] int ifNumByNameGet(CLIENT_HANDLE_T *clientHandle, const char *name, uint32_t *ifNum);

// CLI name of an interface, cut to size-1; raw and "" on failure, no message.
[[nodiscard]] int ifNameGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, char *name, size_t size);

// ---- system ----

[[nodiscard]] int unitCountGet(CLIENT_HANDLE_T *clientHandle, uint32_t *count); // stack members; always 0
[[nodiscard]] int systemNameGet(CLIENT_HANDLE_T *clientHandle, char text[256]);
[[nodiscard]] int machineModelGet(CLIENT_HANDLE_T *clientHandle, char text[256]);
[[nodiscard]] int bootCodeVersionGet(CLIENT_HANDLE_T *clientHandle, char text[17]);

// Service-port address as dotted text and system MAC as upper-case hex, pairs joined by the separator when it is
// printable.
[[nodiscard]] int servicePortAddressAndMacGet(CLIENT_HANDLE_T *clientHandle, char ip[16], char mac[18], char separator);

// Fan mode: 1 (platform 3), 2 (platform 4), 3 (platform 2), else 0.
[[nodiscard]] int fanModeGet(CLIENT_HANDLE_T *clientHandle, uint32_t *mode);

// The application's version.
void uiVersionGet(char text[20]);

// Pre-configured model of a unit, "" on failure; logs; 10000.
[[nodiscard]] int stackUnitMgrPreconfigModelIdGet(CLIENT_HANDLE_T *clientHandle, uint32_t unit, char model[256]);

// Media type of a port, 0 on failure; logs; 10000.
[[nodiscard]] int boxsSfpTypeGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *sfpType);

// ---- switch-port modes and VLANs ----

// 1 when the switch-port mode is auto-trunk (3), else 0; raw.
[[nodiscard]] int dot1qSwPortAutoTrunkStatusGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *status);

// modes[ifNum] = 8 for ports that "show interfaces switchport trunk" lists as trunk, else 0. 0 also when the command
// fails (all 0 then); 10016 when its output does not open.
[[nodiscard]] int swPortsModeGet(CLIENT_HANDLE_T *clientHandle, uint32_t *modes, uint32_t length);

// Newly allocated name of a VLAN, which the caller frees; null on failure. 10000, 10002 without memory.
[[nodiscard]] int vlanNameGet(CLIENT_HANDLE_T *clientHandle, uint32_t vlanId, char **name);

[[nodiscard]] int swapiVlanIfPvidGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *pvid); // 10000

// VLANs an interface carries tagged; the count is zeroed first and held within the record's room. 10000.
[[nodiscard]] int swapiDot1qSwPortTaggedVlanListGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum,
                                                    openclt_vlan_list_t *list);

// ---- PoE (watts) ----

// 1 as soon as a stack unit supports PoE, else the last unit's answer; always 0.
[[nodiscard]] int poeIsSupported(CLIENT_HANDLE_T *clientHandle, uint32_t *supported);
[[nodiscard]] bool poeIsValidInterface(CLIENT_HANDLE_T *clientHandle, uint32_t unit, uint32_t ifNum);
[[nodiscard]] int poePseMainConsumptionPowerGet(CLIENT_HANDLE_T *clientHandle, uint32_t unit, uint32_t *power);
[[nodiscard]] int poePseTotalAvailablePowerGet(CLIENT_HANDLE_T *clientHandle, uint32_t unit, uint32_t *power);
[[nodiscard]] int poePseThresholdPowerGet(CLIENT_HANDLE_T *clientHandle, uint32_t unit, uint32_t *power); // always 0

// ---- LAG ----

[[nodiscard]] int swapiLagNameGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, char *name, size_t size);
[[nodiscard]] int swapiLagStaticModeGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *mode);
[[nodiscard]] int swapiLagLoadBalanceModeGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *mode);
[[nodiscard]] int lagMaxMemberCountGet(CLIENT_HANDLE_T *clientHandle, uint32_t *count); // 0 on failure; logs; 10000

// ---- 802.1X and spanning tree ----

[[nodiscard]] int swapiDot1xPortControlModeGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *mode); // raw

// 1, 2, or 3 for anything else; raw.
[[nodiscard]] int swapiDot1xPortStatusGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *status);
[[nodiscard]] int swapiDot1SMSTInstancePriorityGet(CLIENT_HANDLE_T *clientHandle, uint32_t instance,
                                                   uint16_t *priority); // raw
