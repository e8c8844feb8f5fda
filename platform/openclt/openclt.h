/*
 * openclt.h - the client interface of the switch platform, as devmgr uses it.
 *
 * On a switch these calls are answered by the platform's own libopenclt.so; on a workstation by the virtual switch.
 * The daemon is linked against the shared library by name only, so either can take the other's place without a
 * rebuild.
 *
 * What each call gives, what its arguments are and how much room devmgr offers for a text stands in calls.def, which
 * this header is held against. Valid for every call:
 *   - The client handle comes first (except in openapiClientRegister). It is filled once and never read by devmgr.
 *   - The result is 0 (OPENCLT_OK) on success, else a small negative platform code. On failure out-arguments are left
 *     as they were, unless the table says otherwise.
 *   - A text or byte block travels in an openclt_buffer_t owned by the caller: `size` is the capacity in bytes on entry
 *     and the used length on return, `bytes` points to the caller's memory. Texts are returned with their terminator,
 *     which `size` counts. A buffer that is too small is a failure; nothing is written beyond the capacity.
 *   - Enumerations (...NextGet, ...GetNext) take the previous key and give the next one in ascending order, unless the
 *     table says that any order will do; after the last one they fail with OPENCLT_NOT_FOUND.
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

/* Codes of an interface: link state, administrative state, and the switch-port mode of an automatic trunk. */
enum { OPENCLT_LINK_UP = 0, OPENCLT_LINK_DOWN = 1, OPENCLT_LINK_DETACHED = 2 };
enum { OPENCLT_ADMIN_UP = 1, OPENCLT_ADMIN_DOWN = 2 };
enum { OPENCLT_PORT_MODE_AUTO_TRUNK = 3 };

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

int openapiClientRegister(const char *clientName, openclt_handle_t *handle);
int rpcclt_openapiConnectivityCheck(openclt_handle_t *handle);
int rpcclt_openapiNetworkOSVersionGet(openclt_handle_t *handle, openclt_buffer_t *version);
int rpcclt_openapiApiVersionGet(openclt_handle_t *handle, openclt_api_version_t *version);
int rpcclt_openapiSystemNameMaxSizeGet(openclt_handle_t *handle, uint32_t *size);
int rpcclt_openapiSystemNameGet(openclt_handle_t *handle, openclt_buffer_t *name);
int rpcclt_openapiSystemMacAddrGet(openclt_handle_t *handle, openclt_buffer_t *mac);
int rpcclt_openapiSystemRegMachineModelGet(openclt_handle_t *handle, openclt_buffer_t *model);
int rpcclt_openapiSystemLocalUnitGet(openclt_handle_t *handle, uint32_t *unit);
int rpcclt_openapiBootCodeVersion(openclt_handle_t *handle, openclt_buffer_t *version);
int rpcclt_openapiClockGet(openclt_handle_t *handle, openclt_buffer_t *dateTime);
int rpcclt_openapiTimeZoneGet(openclt_handle_t *handle, openclt_buffer_t *zone);
int rpcclt_openapiCliShowExecuteToFile(openclt_handle_t *handle, openclt_buffer_t *command, openclt_buffer_t *file);

/* ---- units, cards and hardware ---- */

int rpcclt_openapiUnitMgrStackMemberGetNext(openclt_handle_t *handle, uint32_t previousUnit, uint32_t *unit);
int rpcclt_openapiUnitMgrNumberGet(openclt_handle_t *handle, uint32_t *unit);
int rpcclt_openapiUnitMgrPreconfigModelIdGet(openclt_handle_t *handle, uint32_t unit, openclt_buffer_t *model);
int rpcclt_openapiCardTypeGet(openclt_handle_t *handle, uint32_t unit, uint32_t slot, uint32_t *cardType);
int rpcclt_openapiCardSupportedCardModelIdGet(openclt_handle_t *handle, uint32_t cardType, openclt_buffer_t *model);
int rpcclt_openapiBoxsSfpTypeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *sfpType);
int rpcclt_openapiBoxsSfpComplianceGet(openclt_handle_t *handle, uint32_t ifNum, openclt_buffer_t *compliance);
int rpcclt_openapiBoxsSfpComplianceSizeGet(openclt_handle_t *handle, uint32_t *size);
int rpcclt_openapiBoxsFanControlModeGet(openclt_handle_t *handle, uint32_t *mode);

/* ---- interfaces ---- */

int openapiIfFirstGet(openclt_handle_t *handle, uint32_t type, uint32_t *ifNum);
int openapiIfNextGet(openclt_handle_t *handle, uint32_t type, uint32_t ifNum, uint32_t *nextIfNum);
int openapiIfTypeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *type);
int openapiIfNameGet(openclt_handle_t *handle, uint32_t ifNum, openclt_buffer_t *name);
int openapiIfSpeedGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *speed);
int openapiIfLinkStateGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *state);
int openapiIfAdminStateGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *state);
int openapiIfOprStateGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *state);
int openapiIfAutoNegGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode);
int openapiIfMaxFrameSizeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *bytes);
int openapiMaxInterfaceCountGet(openclt_handle_t *handle, uint32_t *count);
int rpcclt_openapiIfNumGet(openclt_handle_t *handle, openclt_buffer_t *name, uint32_t *ifNum);
int rpcclt_openapiIfDescrGet(openclt_handle_t *handle, uint32_t ifNum, openclt_buffer_t *description);
int rpcclt_openapiIfStatusGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *status);
int rpcclt_openapiIfEthernetHeaderSizeGet(openclt_handle_t *handle, uint32_t *bytes);
int rpcclt_openapiHashIntfUnitSlotPortGet(openclt_handle_t *handle, uint32_t ifNum, openclt_usp_t *usp);
int rpcclt_openapiFlowControlIfModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode);
int rpcclt_openapiStormControlIntfModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t stormType, uint32_t *mode);
int rpcclt_openapiStatGet(openclt_handle_t *handle, uint32_t counter, uint32_t ifNum, uint64_t *value);

/* ---- VLANs and routing interfaces ---- */

int openapiVlanIfPvidGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *vlanId);
int openapiVlanIsStatic(openclt_handle_t *handle, uint32_t vlanId);
int openapiVlanNextGet(openclt_handle_t *handle, uint32_t previousVlanId, uint32_t *vlanId);
int rpcclt_openapiVlanNameLenGet(openclt_handle_t *handle, uint32_t *length);
int rpcclt_openapiVlanNameGet(openclt_handle_t *handle, uint32_t vlanId, openclt_buffer_t *name);
int rpcclt_openapiDot1qSwPortModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode);
int rpcclt_openapiDot1qSwPortTaggedVlanListGet(openclt_handle_t *handle, uint32_t ifNum, openclt_buffer_t *list);
int rpcclt_openapiRtrIntfNextGet(openclt_handle_t *handle, uint32_t previous, uint32_t *rtrIfNum);
int rpcclt_openapiRtrIntfVlanIdGet(openclt_handle_t *handle, uint32_t rtrIfNum, uint32_t *vlanId);
int rpcclt_openapiRtrIntfIpAddrGet(openclt_handle_t *handle, uint32_t family, uint32_t rtrIfNum, uint32_t *address,
                                   uint32_t *prefixLength);

/* ---- service port ---- */

int rpcclt_openapiServicePortIPv4AddrGet(openclt_handle_t *handle, uint32_t *address, uint32_t *mask);
int rpcclt_openapiServicePortGatewayIPv4AddrGet(openclt_handle_t *handle, uint32_t *gateway);
int rpcclt_openapiServicePortIPv4ProtocolModeGet(openclt_handle_t *handle, uint32_t *mode);

/* ---- link aggregation ---- */

int rpcclt_openapiLagNameGet(openclt_handle_t *handle, uint32_t lagIfNum, openclt_buffer_t *name);
int rpcclt_openapiLagStaticModeGet(openclt_handle_t *handle, uint32_t lagIfNum, uint32_t *mode);
int rpcclt_openapiLagLoadBalanceModeGet(openclt_handle_t *handle, uint32_t lagIfNum, uint32_t *mode);
int rpcclt_openapiLagMaxMemberCountGet(openclt_handle_t *handle, uint32_t *count);
int rpcclt_openapiLagMembersGet(openclt_handle_t *handle, uint32_t lagIfNum, uint32_t *count, openclt_buffer_t *members,
                                uint32_t bufferSize);

/* ---- spanning tree ---- */

int rpcclt_openapiDot1SMSTInstancePriorityGet(openclt_handle_t *handle, uint32_t instance, uint16_t *priority);
int rpcclt_openapiDot1SIntfModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode);
int rpcclt_openapiDot1SIntfPortFwdStateGet(openclt_handle_t *handle, uint32_t instance, uint32_t ifNum,
                                           uint32_t *state);
int rpcclt_openapiDot1SIntfEdgePortModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode);
int rpcclt_openapiDot1SIntfBPDUFilterModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode);
int rpcclt_openapiDot1SPortRestrictedTcnGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *restricted);

/* ---- 802.1X and RADIUS ---- */

int rpcclt_openapiDot1xSystemAuthControlModeGet(openclt_handle_t *handle, uint32_t *mode);
int rpcclt_openapiAuthMgrAdminModeGet(openclt_handle_t *handle, uint32_t *mode);
int rpcclt_openapiAuthMgrPortControlModeGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *mode);
int rpcclt_openapiAuthMgrPortStatusGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t *status);
int rpcclt_openapiRadiusAuthServerPortNumGet(openclt_handle_t *handle, openclt_buffer_t *address, uint32_t addressType,
                                             uint32_t *port);

/* ---- neighbours: FDB, ARP, LLDP ---- */

int rpcclt_openapiFdbEntryNextGet(openclt_handle_t *handle, openclt_buffer_t *mac, uint32_t *vlanId, uint32_t *ifNum,
                                  uint32_t *entryType);

/* One ARP entry, also the cursor of the enumeration: an all-zero entry starts it. */
typedef struct openclt_arp_entry {
    uint32_t ifNum;              /* routing interface the entry belongs to */
    openclt_inet_addr_t address; /* network order */
    uint8_t mac[6];
} openclt_arp_entry_t;
int rpcclt_openapiArpEntryNextGet(openclt_handle_t *handle, openclt_arp_entry_t *entry);
int rpcclt_openapiLldpMgmtStrLenGet(openclt_handle_t *handle, uint32_t *length);
int rpcclt_openapiLldpIntfRemoteDeviceNextGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t previousIndex,
                                              uint32_t *index);
int rpcclt_openapiLldpIntfRemoteDeviceChassisIdGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t index,
                                                   uint32_t *subtype, openclt_buffer_t *chassisId);
int rpcclt_openapiLldpIntfRemoteDevicePortIdGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t index,
                                                uint32_t *subtype, openclt_buffer_t *portId);
int rpcclt_openapiLldpIntfRemoteDeviceSystemNameGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t index,
                                                    openclt_buffer_t *name);
int rpcclt_openapiLldpIntfRemoteDeviceSystemDescGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t index,
                                                    openclt_buffer_t *description);
int rpcclt_openapiLldpIntfRemoteDeviceMgmtAddressNextGet(openclt_handle_t *handle, uint32_t ifNum, uint32_t index,
                                                         uint32_t *entry, openclt_buffer_t *address);

/* ---- PoE and time ranges ---- */

int rpcclt_openapiPoeIsSupported(openclt_handle_t *handle, uint32_t unit, uint32_t *supported);
int rpcclt_openapiPoeIsValidInterface(openclt_handle_t *handle, uint32_t unit, uint32_t ifNum, uint32_t *valid);
int rpcclt_openapiPoePseMainConsumptionPowerGet(openclt_handle_t *handle, uint32_t unit, uint32_t *power);
int rpcclt_openapiPoePseTotalAvailablePowerGet(openclt_handle_t *handle, uint32_t unit, uint32_t *power);
int rpcclt_openapiPoePseThresholdPowerGet(openclt_handle_t *handle, uint32_t unit, uint32_t *power);
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
int rpcclt_openapiPoePsePortSensorsGet(openclt_handle_t *handle, uint32_t unit, uint32_t ifNum, uint32_t *power,
                                       uint32_t *voltage, uint32_t *current, uint32_t *temperature);
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

int rpcclt_openapiTimeRangeNameFirstGet(openclt_handle_t *handle, openclt_buffer_t *name);
int rpcclt_openapiTimeRangeNameNextGet(openclt_handle_t *handle, openclt_buffer_t *name, openclt_buffer_t *nextName);
int rpcclt_openapiTimeRangeNumEntriesGet(openclt_handle_t *handle, openclt_buffer_t *name, uint32_t *count);
int rpcclt_openapiTimeRangeStatusGet(openclt_handle_t *handle, openclt_buffer_t *name, uint32_t *status);
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
    char type[16];            /* IGMP version, for example "IGMPv2"; unterminated when it fills the field */
    uint32_t subscriberCount; /* may exceed the room: further subscribers are not shown */
    uint32_t timeout;         /* seconds */
} openclt_snoop_group_t;

int rpcclt_openapiSnoopingGroupNextGet(openclt_handle_t *handle, uint32_t family, uint32_t flags,
                                       openclt_snoop_group_t *group);
int rpcclt_openapiSnoopIntfMrouterStatusGet(openclt_handle_t *handle, uint32_t family, uint32_t ifNum,
                                            uint32_t *status);
int rpcclt_openapiAclGet(openclt_handle_t *handle, uint32_t aclType, openclt_buffer_t *name, uint32_t *aclId);
int rpcclt_openapiAclAssignedIntfDirListGet(openclt_handle_t *handle, uint32_t aclId, uint32_t direction,
                                            openclt_if_list_t *list);
int rpcclt_openapiSwPortMonitorModeGet(openclt_handle_t *handle, uint32_t session, uint32_t *mode);
int rpcclt_openapiSwPortMonitorDestPortGet(openclt_handle_t *handle, uint32_t session, uint32_t *ifNum);
int rpcclt_openapiSwPortMonitorSourcePortsListGet(openclt_handle_t *handle, uint32_t session, openclt_buffer_t *list);
int rpcclt_openapiMirrorSourcePortDirectionGet(openclt_handle_t *handle, uint32_t session, uint32_t ifNum,
                                               uint32_t *direction);
int rpcclt_openapiSwMonitorReflectorPortGet(openclt_handle_t *handle, uint32_t session, uint32_t *ifNum);
int rpcclt_openapiPtpTcAdminModeGet(openclt_handle_t *handle, uint32_t *mode);
int rpcclt_openapiLinuxptpIsDomainExists(openclt_handle_t *handle, uint32_t domain, uint32_t *exists);
int rpcclt_openapiLinuxptpDomainVlanGet(openclt_handle_t *handle, uint32_t domain, uint32_t *vlanId);

/* ---- images and logging ---- */

int rpcclt_openapiImageFileNameMaxLengthGet(openclt_handle_t *handle, uint32_t *length);
int rpcclt_openapiImageNamesGet(openclt_handle_t *handle, uint32_t unit, openclt_buffer_t *active,
                                openclt_buffer_t *backup, openclt_buffer_t *activated);
int rpcclt_openapiImageLabelsGet(openclt_handle_t *handle, openclt_buffer_t *active, openclt_buffer_t *backup);
int rpcclt_openapiBufferedLogEntryNextGet(openclt_handle_t *handle, uint32_t *index, openclt_buffer_t *entry);
int rpcclt_openapiCliCmdLoggingModeGet(openclt_handle_t *handle, uint32_t *mode);
int rpcclt_openapiConsoleLoggingModeGet(openclt_handle_t *handle, uint32_t *mode);
int rpcclt_openapiConsoleLoggingSeverityGet(openclt_handle_t *handle, uint32_t *severity);

#ifdef __cplusplus
}
#endif

#endif
