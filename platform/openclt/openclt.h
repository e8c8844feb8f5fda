/*
 * openclt.h - the client interface of the switch platform, as devmgr uses it.
 *
 * On a switch these calls are answered by the platform's own libopenclt.so; on a workstation by the virtual switch.
 * The daemon is linked against the shared library by name only, so either can take the other's place without a
 * rebuild.
 *
 * Conventions, valid for every call:
 *   - The client handle comes first (except in openapiClientRegister). It is filled once and never read by devmgr.
 *   - The result is 0 (OPENCLT_OK) on success, else a small negative platform code. On failure out-arguments are left
 *     as they were, unless the comment says otherwise.
 *   - A text or byte block travels in an openclt_buffer_t owned by the caller: `size` is the capacity in bytes on entry
 *     and the used length on return, `bytes` points to the caller's memory. Texts are returned with their terminator,
 *     which `size` counts. A buffer that is too small is a failure; nothing is written beyond the capacity.
 *   - Enumerations (...NextGet, ...GetNext) take the previous key and give the next one in ascending order; after the
 *     last one they fail with OPENCLT_NOT_FOUND.
 *   - Interface numbers (ifNum) are 1-based and stable while the switch runs. Addresses are IPv4 in host order unless
 *     the comment says otherwise.
 *   - Calls named openapi... and rpcclt_openapi... differ in nothing that matters here.
 */
#ifndef OPENCLT_H
#define OPENCLT_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- results ---- */

enum {
    OPENCLT_OK = 0,
    OPENCLT_FAIL = -1,        /* the platform could not do it */
    OPENCLT_PARAM = -3,       /* an argument is out of range */
    OPENCLT_UNAVAILABLE = -5, /* the feature is not there on this platform */
    OPENCLT_NOT_FOUND = -26,  /* no such object, or no further one */
    OPENCLT_NOT_PRESENT = -29 /* the named object is not configured */
};

/* ---- shared types ---- */

/* One client session. Opaque to its owner. */
typedef struct openclt_handle {
    uint64_t opaque[8];
} openclt_handle_t;

/* Buffer descriptor: capacity in, used length out; the bytes belong to the caller. */
typedef struct openclt_buffer {
    uint32_t size;
    char *bytes;
} openclt_buffer_t;

typedef struct openclt_api_version {
    uint8_t release;
    uint8_t version;
    uint8_t maintenance;
    uint8_t build;
} openclt_api_version_t;

/* Where a physical port sits. */
typedef struct openclt_usp {
    uint8_t unit;
    uint8_t slot;
    uint16_t port;
} openclt_usp_t;

/* Interface types that devmgr asks for. */
enum { OPENCLT_IF_PHYSICAL = 0, OPENCLT_IF_LAG = 2 };

/* A list of VLAN IDs as it lies in a byte block: the count, then that many IDs. */
#define OPENCLT_VLAN_LIST_MAX 4096
typedef struct openclt_vlan_list {
    uint32_t count;
    uint16_t ids[OPENCLT_VLAN_LIST_MAX];
} openclt_vlan_list_t;

/* A list of interface numbers as it lies in a byte block. */
#define OPENCLT_IF_LIST_MAX 1024
typedef struct openclt_if_list {
    uint32_t count;
    uint32_t ifNums[OPENCLT_IF_LIST_MAX];
} openclt_if_list_t;

/* An address of either family, bytes in network order (IPv4 uses the first four). */
enum { OPENCLT_AF_IPV4 = 1, OPENCLT_AF_IPV6 = 2 };
typedef struct openclt_inet_addr {
    uint32_t family;
    uint8_t bytes[16];
} openclt_inet_addr_t;

/* ---- session and system ---- */

/* Register a client under a name of at most 99 characters; fills the caller's handle. Once per process. */
int openapiClientRegister(const char *clientName, openclt_handle_t *handle);

/* End a session. devmgr never ends its own; for tools. */
int openapiClientTearDown(openclt_handle_t *handle);

/* 0 once the platform's server answers; fails while it is still starting. */
int rpcclt_openapiConnectivityCheck(openclt_handle_t *handle);

/* Version text of the switch operating system. */
int rpcclt_openapiNetworkOSVersionGet(openclt_handle_t *handle, openclt_buffer_t *version);

int rpcclt_openapiApiVersionGet(openclt_handle_t *handle, openclt_api_version_t *version);

/* Bytes a system name can need, terminator included. */
int rpcclt_openapiSystemNameMaxSizeGet(openclt_handle_t *handle, uint32_t *size);
int rpcclt_openapiSystemNameGet(openclt_handle_t *handle, openclt_buffer_t *name);

/* Base MAC address of the switch: 6 bytes, no terminator. */
int rpcclt_openapiSystemMacAddrGet(openclt_handle_t *handle, openclt_buffer_t *mac);

/* Machine model text of the managing unit, for example "TK830-T16". */
int rpcclt_openapiSystemRegMachineModelGet(openclt_handle_t *handle, openclt_buffer_t *model);

/* Number (1-based) of the unit this process runs on. */
int rpcclt_openapiSystemLocalUnitGet(openclt_handle_t *handle, uint32_t *unit);

/* Boot code version text. */
int rpcclt_openapiBootCodeVersion(openclt_handle_t *handle, openclt_buffer_t *version);

/* Local date and time as the platform writes it, for example "2026:03:01 08:15:02" (at most 19 characters). */
int rpcclt_openapiClockGet(openclt_handle_t *handle, openclt_buffer_t *dateTime);

/* Offset from UTC as the platform writes it, for example "UTC+1:00" (at most 14 characters). */
int rpcclt_openapiTimeZoneGet(openclt_handle_t *handle, openclt_buffer_t *zone);

/* Run a CLI show command and write its complete output to a file. Both descriptors hold a terminated text and its
 * length plus one. On failure the file may be missing, or hold the part written so far. */
int rpcclt_openapiCliShowExecuteToFile(openclt_handle_t *handle, openclt_buffer_t *command, openclt_buffer_t *file);

/* ---- units, cards and hardware ---- */

/* Stack members in ascending unit number; start from 0. */
int rpcclt_openapiUnitMgrStackMemberGetNext(openclt_handle_t *handle, uint32_t previousUnit, uint32_t *unit);

/* Number of the unit that manages the stack. */
int rpcclt_openapiUnitMgrNumberGet(openclt_handle_t *handle, uint32_t *unit);

/* Pre-configured model identifier text of a unit. */
int rpcclt_openapiUnitMgrPreconfigModelIdGet(openclt_handle_t *handle, uint32_t unit, openclt_buffer_t *model);

/* Type code of the card in a slot; 0 when the slot is empty. */
int rpcclt_openapiCardTypeGet(openclt_handle_t *handle, uint32_t unit, uint32_t slot, uint32_t *cardType);

/* Model text that belongs to a card type code. */
int rpcclt_openapiCardSupportedCardModelIdGet(openclt_handle_t *handle, uint32_t cardType, openclt_buffer_t *model);

/* Kind of a port's media: 0 copper or none, 1 SFP, 2 SFP+, 3 and above QSFP kinds. */
int rpcclt_openapiBoxsSfpTypeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *sfpType);

/* Compliance text of the optic in a port, for example "10GBase-SR"; fails when there is none. */
int rpcclt_openapiBoxsSfpComplianceGet(openclt_handle_t *handle, uint32_t ifNum, openclt_buffer_t *compliance);

/* Bytes a compliance text can need, terminator included. */
int rpcclt_openapiBoxsSfpComplianceSizeGet(openclt_handle_t *handle, uint32_t *size);

/* Fan control mode code: 2 cool, 3 off, 4 quiet; others are not used by devmgr. */
int rpcclt_openapiBoxsFanControlModeGet(openclt_handle_t *handle, uint32_t *mode);

/* ---- interfaces ---- */

/* First and next interface of a type (OPENCLT_IF_...), ascending. */
int openapiIfFirstGet(openclt_handle_t *handle, uint32_t type, uint32_t *ifNum);
int openapiIfNextGet(openclt_handle_t *handle, uint32_t type, uint32_t ifNum, uint32_t *nextIfNum);
int openapiIfTypeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *type);

/* CLI name: "unit/slot/port" for a port, "lag N" for a LAG. */
int openapiIfNameGet(openclt_handle_t *handle, uint32_t ifNum, openclt_buffer_t *name);

/* Speed code: 1 auto, 2 100 half, 3 100 full, 4 10 half, 5 10 full, 6 100 FX, 7 1G, 8 2.5G, 9 5G, 10 10G, 11 20G,
 * 12 25G, 13 40G, 14 50G, 15 100G, 16 155 AAL5, 17 200G, 18 400G, 19 LAG. */
int openapiIfSpeedGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *speed);

/* Link state: 0 up, 1 down, 2 detached. */
int openapiIfLinkStateGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *state);

/* Administrative state: 1 enabled, 2 disabled. */
int openapiIfAdminStateGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *state);

/* Operational state: 1 the port forwards, 2 it does not. */
int openapiIfOprStateGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *state);

/* Auto-negotiation: 0 on, 1 off, others unknown. */
int openapiIfAutoNegGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode);

/* Largest frame in bytes, Ethernet header included; 0 when the platform does not know. */
int openapiIfMaxFrameSizeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *bytes);

/* One more than the highest interface number in use. */
int openapiMaxInterfaceCountGet(openclt_handle_t *handle, uint32_t *count);

/* Interface number of a CLI name ("1/0/5", "lag 2"); `name` holds the terminated text. */
int rpcclt_openapiIfNumGet(openclt_handle_t *handle, openclt_buffer_t *name, uint32_t *ifNum);

/* Description configured on an interface; an empty text when there is none. */
int rpcclt_openapiIfDescrGet(openclt_handle_t *handle, uint32_t ifNum, openclt_buffer_t *description);

/* 1 when the interface is attached, 0 when it is detached (a fan-out sub-port that is not in use). */
int rpcclt_openapiIfStatusGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *status);

/* Bytes of an Ethernet header with tag, as counted in openapiIfMaxFrameSizeGet. */
int rpcclt_openapiIfEthernetHeaderSizeGet(openclt_handle_t *handle, uint32_t *bytes);

/* Unit, slot and port of a physical interface. */
int rpcclt_openapiHashIntfUnitSlotPortGet(openclt_handle_t *handle, uint32_t ifNum, openclt_usp_t *usp);

/* Flow control: 0 off, 1 symmetric, 2 asymmetric. */
int rpcclt_openapiFlowControlIfModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode);

/* Storm control of one kind (1 unicast, 2 broadcast, 3 multicast): 0 off, 1 on. */
int rpcclt_openapiStormControlIntfModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t stormType, uint32_t *mode);

/* One statistics counter of an interface, since start. Counters 58 and 59 are rates in bits per second. */
int rpcclt_openapiStatGet(openclt_handle_t *handle, uint32_t counter, uint32_t ifNum, uint64_t *value);

/* ---- VLANs and routing interfaces ---- */

int openapiVlanIfPvidGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *vlanId);

/* Non-zero when the VLAN is static, 0 when it is dynamic or does not exist. Not a result code. */
int openapiVlanIsStatic(openclt_handle_t *handle, uint32_t vlanId);

/* VLANs in ascending ID; start from 0. */
int openapiVlanNextGet(openclt_handle_t *handle, uint32_t previousVlanId, uint32_t *vlanId);

/* Bytes a VLAN name can need, terminator included. */
int rpcclt_openapiVlanNameLenGet(openclt_handle_t *handle, uint32_t *length);
int rpcclt_openapiVlanNameGet(openclt_handle_t *handle, uint32_t vlanId, openclt_buffer_t *name);

/* Switch-port mode: 0 general, 1 access, 2 trunk, 3 auto-trunk. */
int rpcclt_openapiDot1qSwPortModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode);

/* VLANs an interface carries tagged: an openclt_vlan_list_t in `list`. */
int rpcclt_openapiDot1qSwPortTaggedVlanListGet(openclt_handle_t *handle, uint32_t ifNum, openclt_buffer_t *list);

/* Routing interfaces in ascending interface number; start from 0. */
int rpcclt_openapiRtrIntfNextGet(openclt_handle_t *handle, uint32_t previous, uint32_t *rtrIfNum);
int rpcclt_openapiRtrIntfVlanIdGet(openclt_handle_t *handle, uint32_t rtrIfNum, uint32_t *vlanId);

/* Primary address of a routing interface (family OPENCLT_AF_IPV4): host order, and prefix length 0 to 32. */
int rpcclt_openapiRtrIntfIpAddrGet(openclt_handle_t *handle, uint32_t family, uint32_t rtrIfNum, uint32_t *address,
                                   uint32_t *prefixLength);

/* ---- service port ---- */

int rpcclt_openapiServicePortIPv4AddrGet(openclt_handle_t *handle, uint32_t *address, uint32_t *mask);
int rpcclt_openapiServicePortGatewayIPv4AddrGet(openclt_handle_t *handle, uint32_t *gateway);

/* How the service port gets its address: 1 none (static), 2 BOOTP, 3 DHCP. */
int rpcclt_openapiServicePortIPv4ProtocolModeGet(openclt_handle_t *handle, uint32_t *mode);

/* ---- link aggregation ---- */

int rpcclt_openapiLagNameGet(openclt_handle_t *handle, uint32_t lagIfNum, openclt_buffer_t *name);

/* 1 static, 0 LACP. */
int rpcclt_openapiLagStaticModeGet(openclt_handle_t *handle, uint32_t lagIfNum, uint32_t *mode);

/* Hash mode code, passed through to the documents. */
int rpcclt_openapiLagLoadBalanceModeGet(openclt_handle_t *handle, uint32_t lagIfNum, uint32_t *mode);

/* Members a LAG can have at most. */
int rpcclt_openapiLagMaxMemberCountGet(openclt_handle_t *handle, uint32_t *count);

/* Members of a LAG: `count` is the room (in members) on entry and the number of members on return, `members` receives
 * that many 32-bit interface numbers. */
int rpcclt_openapiLagMembersGet(openclt_handle_t *handle, uint32_t lagIfNum, uint32_t *count, openclt_buffer_t *members,
                                uint32_t bufferSize);

/* ---- spanning tree ---- */

/* Bridge priority of an instance, 0 to 61440. */
int rpcclt_openapiDot1SMSTInstancePriorityGet(openclt_handle_t *handle, uint32_t instance, uint16_t *priority);

/* Spanning tree on an interface: 0 off, 1 on. */
int rpcclt_openapiDot1SIntfModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode);

/* Forwarding state in an instance: 1 discarding, 2 learning, 3 forwarding, 4 disabled, 5 manual forwarding,
 * 6 not participating. */
int rpcclt_openapiDot1SIntfPortFwdStateGet(openclt_handle_t *handle, uint32_t instance, uint32_t ifNum,
                                           uint32_t *state);
int rpcclt_openapiDot1SIntfEdgePortModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode);
int rpcclt_openapiDot1SIntfBPDUFilterModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode);
int rpcclt_openapiDot1SPortRestrictedTcnGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *restricted);

/* ---- 802.1X and RADIUS ---- */

/* System-wide 802.1X: 0 off, 1 on. */
int rpcclt_openapiDot1xSystemAuthControlModeGet(openclt_handle_t *handle, uint32_t *mode);

/* Authentication manager: 0 off, 1 on. */
int rpcclt_openapiAuthMgrAdminModeGet(openclt_handle_t *handle, uint32_t *mode);

/* Port control: 1 force unauthorised, 2 auto, 3 force authorised, 4 MAC based. */
int rpcclt_openapiAuthMgrPortControlModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode);

/* Port status: 1 authorised, 2 unauthorised, others not applicable. */
int rpcclt_openapiAuthMgrPortStatusGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *status);

/* Authentication UDP port of a server; `address` holds the terminated text, `addressType` is 1 for an IPv4 text and 16
 * for a host name. */
int rpcclt_openapiRadiusAuthServerPortNumGet(openclt_handle_t *handle, openclt_buffer_t *address, uint32_t addressType,
                                             uint32_t *port);

/* ---- neighbours: FDB, ARP, LLDP ---- */

/* Forwarding database in ascending (VLAN, MAC). In and out: the MAC text "AA:BB:CC:DD:EE:FF" (empty to start) and the
 * VLAN ID (0 to start). Out: interface number and entry type (1 learned, others not). */
int rpcclt_openapiFdbEntryNextGet(openclt_handle_t *handle, openclt_buffer_t *mac, uint32_t *vlanId, uint32_t *ifNum,
                                  uint32_t *entryType);

/* One ARP entry, also the cursor of the enumeration: an all-zero entry starts it. */
typedef struct openclt_arp_entry {
    uint32_t ifNum;              /* routing interface the entry belongs to */
    openclt_inet_addr_t address; /* network order */
    uint8_t mac[6];
} openclt_arp_entry_t;
int rpcclt_openapiArpEntryNextGet(openclt_handle_t *handle, openclt_arp_entry_t *entry);

/* Bytes an LLDP text can need, terminator included. */
int rpcclt_openapiLldpMgmtStrLenGet(openclt_handle_t *handle, uint32_t *length);

/* Remote devices of an interface in ascending index; start from 0. */
int rpcclt_openapiLldpIntfRemoteDeviceNextGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t previousIndex,
                                              uint32_t *index);

/* Chassis id as text and its subtype (4: MAC address, upper-case pairs with colons). */
int rpcclt_openapiLldpIntfRemoteDeviceChassisIdGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t index,
                                                   uint32_t *subtype, openclt_buffer_t *chassisId);

/* Port id as text and its subtype (3: MAC address). */
int rpcclt_openapiLldpIntfRemoteDevicePortIdGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t index,
                                                uint32_t *subtype, openclt_buffer_t *portId);
int rpcclt_openapiLldpIntfRemoteDeviceSystemNameGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t index,
                                                    openclt_buffer_t *name);
int rpcclt_openapiLldpIntfRemoteDeviceSystemDescGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t index,
                                                    openclt_buffer_t *description);

/* Management addresses of a remote device, as text. `entry` is the cursor, 0 to start. */
int rpcclt_openapiLldpIntfRemoteDeviceMgmtAddressNextGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t index,
                                                         uint32_t *entry, openclt_buffer_t *address);

/* ---- PoE and time ranges ---- */

/* Whether a unit can feed power: 0 no, 1 yes. */
int rpcclt_openapiPoeIsSupported(openclt_handle_t *handle, uint32_t unit, uint32_t *supported);

/* Whether an interface can feed power: success with `valid` 1. */
int rpcclt_openapiPoeIsValidInterface(openclt_handle_t *handle, uint32_t unit, uint32_t ifNum, uint32_t *valid);

/* Power in watts: consumed, available in total, and the threshold of a unit. */
int rpcclt_openapiPoePseMainConsumptionPowerGet(openclt_handle_t *handle, uint32_t unit, uint32_t *power);
int rpcclt_openapiPoePseTotalAvailablePowerGet(openclt_handle_t *handle, uint32_t unit, uint32_t *power);
int rpcclt_openapiPoePseThresholdPowerGet(openclt_handle_t *handle, uint32_t unit, uint32_t *power);

/* Settings and readings of a PoE port; codes are the platform's and pass through to the documents. */
int rpcclt_openapiPoePsePortAdminEnableGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *enable);
int rpcclt_openapiPoePsePortCurPowerLimitGet(openclt_handle_t *handle, uint32_t unit, uint32_t ifNum,
                                             uint32_t *milliwatts);
int rpcclt_openapiPoePsePortCurPowerPriorityGet(openclt_handle_t *handle, uint32_t unit, uint32_t ifNum,
                                                uint32_t *priority);
int rpcclt_openapiPoePsePortDetectionModeGet(openclt_handle_t *handle, uint32_t unit, uint32_t ifNum, uint32_t *mode);
int rpcclt_openapiPoePsePortDetectionStatusGet(openclt_handle_t *handle, uint32_t unit, uint32_t ifNum,
                                               uint32_t *status);
int rpcclt_openapiPoePsePortPowerClassificationsGet(openclt_handle_t *handle, uint32_t unit, uint32_t ifNum,
                                                    uint32_t *classification);
int rpcclt_openapiPoePsePortPowerUpModeGet(openclt_handle_t *handle, uint32_t unit, uint32_t ifNum, uint32_t *mode);
int rpcclt_openapiPoePsePortViolationTypeGet(openclt_handle_t *handle, uint32_t unit, uint32_t ifNum, uint32_t *type);

/* Sensors of a PoE port: power in milliwatts, voltage in volts, current in milliamperes, temperature in degrees
 * Celsius. */
int rpcclt_openapiPoePsePortSensorsGet(openclt_handle_t *handle, uint32_t unit, uint32_t ifNum, uint32_t *power,
                                       uint32_t *voltage, uint32_t *current, uint32_t *temperature);

/* Name of the time range that switches a port's power; an empty text when there is none. The port is named by its
 * interface number or by its port number within the unit. `bufferSize` repeats the descriptor's capacity; a name that
 * does not fit fails. */
int rpcclt_openapiPoePsePortTimerScheduleNameGet(openclt_handle_t *handle, uint32_t unit, uint32_t port,
                                                 openclt_buffer_t *name, uint32_t bufferSize);

/* One end of a periodic entry. */
typedef struct openclt_time_range_date {
    uint16_t year;
    uint8_t month;
    uint8_t day;
    uint8_t hour;
    uint8_t minute;
    uint8_t reserved[2];
    uint32_t recurrence; /* 0 once, 1 daily, 2 weekly, 3 monthly */
    uint8_t days;        /* start: mask, bit 1 Sunday to bit 7 Saturday; end: day number */
    uint8_t reserved2[3];
} openclt_time_range_date_t;

/* Time ranges in name order. Names travel in descriptors over 32-byte buffers. No time range at all is
 * OPENCLT_NOT_FOUND. */
int rpcclt_openapiTimeRangeNameFirstGet(openclt_handle_t *handle, openclt_buffer_t *name);
int rpcclt_openapiTimeRangeNameNextGet(openclt_handle_t *handle, openclt_buffer_t *name, openclt_buffer_t *nextName);
int rpcclt_openapiTimeRangeNumEntriesGet(openclt_handle_t *handle, openclt_buffer_t *name, uint32_t *count);

/* 1 active, 2 inactive. */
int rpcclt_openapiTimeRangeStatusGet(openclt_handle_t *handle, openclt_buffer_t *name, uint32_t *status);

/* Ends of periodic entry 1 to count. */
int rpcclt_openapiTimeRangePeriodicEntryStartDateAndTimeGet(openclt_handle_t *handle, openclt_buffer_t *name,
                                                            uint32_t entry, openclt_time_range_date_t *date);
int rpcclt_openapiTimeRangePeriodicEntryEndDateAndTimeGet(openclt_handle_t *handle, openclt_buffer_t *name,
                                                          uint32_t entry, openclt_time_range_date_t *date);

/* ---- multicast, access lists, mirroring, PTP ---- */

#define OPENCLT_SNOOP_SUBSCRIBERS_MAX 32
typedef struct openclt_snoop_subscriber {
    uint32_t address; /* host order */
    uint8_t mac[6];
} openclt_snoop_subscriber_t;

/* One IGMP snooping group, also the cursor of the enumeration: an all-zero entry starts it. */
typedef struct openclt_snoop_group {
    uint16_t ifNum;
    uint16_t vlanId;
    uint32_t groupAddress; /* host order */
    uint8_t groupMac[6];
    openclt_snoop_subscriber_t subscribers[OPENCLT_SNOOP_SUBSCRIBERS_MAX];
    char type[16]; /* IGMP version text, for example "IGMPv2" */
    uint32_t subscriberCount;
    uint32_t timeout; /* seconds */
} openclt_snoop_group_t;

/* Groups in ascending (VLAN, group address, interface); `flags` is 0. */
int rpcclt_openapiSnoopingGroupNextGet(openclt_handle_t *handle, uint32_t family, uint32_t flags,
                                       openclt_snoop_group_t *group);

/* Multicast router port: 1 yes, 0 no. */
int rpcclt_openapiSnoopIntfMrouterStatusGet(openclt_handle_t *handle, uint32_t family, uint32_t ifNum,
                                            uint32_t *status);

/* Identifier of a named access list (`aclType` 1: IPv4); OPENCLT_NOT_PRESENT when there is none of that name. */
int rpcclt_openapiAclGet(openclt_handle_t *handle, uint32_t aclType, openclt_buffer_t *name, uint32_t *aclId);

/* Interfaces an access list is applied to in a direction (1: inbound). */
int rpcclt_openapiAclAssignedIntfDirListGet(openclt_handle_t *handle, uint32_t aclId, uint32_t direction,
                                            openclt_if_list_t *list);

/* Port mirroring of a session (1-based); OPENCLT_NOT_FOUND when nothing is configured. */
int rpcclt_openapiSwPortMonitorModeGet(openclt_handle_t *handle, uint32_t session, uint32_t *mode);
int rpcclt_openapiSwPortMonitorDestPortGet(openclt_handle_t *handle, uint32_t session, uint32_t *ifNum);

/* Interface numbers as text, separated by commas. */
int rpcclt_openapiSwPortMonitorSourcePortsListGet(openclt_handle_t *handle, uint32_t session, openclt_buffer_t *list);
int rpcclt_openapiMirrorSourcePortDirectionGet(openclt_handle_t *handle, uint32_t session, uint32_t ifNum,
                                               uint32_t *direction);
int rpcclt_openapiSwMonitorReflectorPortGet(openclt_handle_t *handle, uint32_t session, uint32_t *ifNum);

/* Transparent clock: 0 off, 1 on. */
int rpcclt_openapiPtpTcAdminModeGet(openclt_handle_t *handle, uint32_t *mode);

/* Boundary clock domains 0 to 127: whether one exists, and the VLAN it serves. */
int rpcclt_openapiLinuxptpIsDomainExists(openclt_handle_t *handle, uint32_t domain, uint32_t *exists);
int rpcclt_openapiLinuxptpDomainVlanGet(openclt_handle_t *handle, uint32_t domain, uint32_t *vlanId);

/* ---- images and logging ---- */

/* Bytes an image file name can need, terminator included. */
int rpcclt_openapiImageFileNameMaxLengthGet(openclt_handle_t *handle, uint32_t *length);
int rpcclt_openapiImageNamesGet(openclt_handle_t *handle, uint32_t unit, openclt_buffer_t *active,
                                openclt_buffer_t *backup, openclt_buffer_t *activated);
int rpcclt_openapiImageLabelsGet(openclt_handle_t *handle, openclt_buffer_t *active, openclt_buffer_t *backup);

/* Entries of the buffered log, oldest first. `index` is the cursor, 0 to start, and need not rise; behind the last
 * entry the call fails. `entry` receives the text of at most 591 characters, which may end with a line feed. */
int rpcclt_openapiBufferedLogEntryNextGet(openclt_handle_t *handle, uint32_t *index, openclt_buffer_t *entry);

/* Logging modes: 0 off, 1 on; severity 0 (emergency) to 7 (debug). */
int rpcclt_openapiCliCmdLoggingModeGet(openclt_handle_t *handle, uint32_t *mode);
int rpcclt_openapiConsoleLoggingModeGet(openclt_handle_t *handle, uint32_t *mode);
int rpcclt_openapiConsoleLoggingSeverityGet(openclt_handle_t *handle, uint32_t *severity);

#ifdef __cplusplus
}
#endif

#endif
