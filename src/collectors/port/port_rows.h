// port_rows.h - the rows that the documents "swcfg_ports_status" and "swcfg_ports_settings" have in common: one for
// each port and LAG of the interfaces status table, put together in one place.
//
// The two documents differ in where a row's settings come from: whole tables of show commands, or calls for each
// interface. Each hands in how it reads them (PORT_SOURCE_T); all else happens here.
//
// Commands: "show slot" and those of interfaces_table.h. Platform: rpcclt_openapiUnitMgrStackMemberGetNext and
// rpcclt_openapiUnitMgrPreconfigModelIdGet for each unit; rpcclt_openapiFlowControlIfModeGet, rpcclt_openapiIfNumGet,
// rpcclt_openapiHashIntfUnitSlotPortGet, openapiIfMaxFrameSizeGet and those of ifCapabilitiesGet for each interface;
// rpcclt_openapiBoxsSfpTypeGet in units with expansion modules; rpcclt_openapiLagMaxMemberCountGet,
// rpcclt_openapiLagMembersGet. VLAN profiles come from the VLAN profile database.
#pragma once

#include "collectors/port/interfaces_table.h"
#include "runtime/owned.h"
#include "stores/vlan_info.h"
#include "switch/session.h"
#include "switch/slots.h"
#include "switch/walk.h"

#include <cstdint>

constexpr size_t PORT_DESCRIPTION_SIZE = 128;

// What is configured on an interface, as either document reads it. Texts by pointer are constants.
struct PORT_SETTINGS_T {
    char description[PORT_DESCRIPTION_SIZE];
    uint32_t adminState;
    uint32_t pvid;
    bool stp, stpEdge, stpTcnGuard, stpBpduFilter, stormControl;
    const char *stpFwdState;     // as the documents write it
    const char *autoNegotiation; // likewise
};

// Profile of a VLAN as a row shows it.
struct PORT_PROFILE_T {
    char profileTemplate[sizeof(VLAN_INFO_ENTRY_T::profileType) + 16];
    char profileName[sizeof(VLAN_INFO_ENTRY_T::profileName)];
};

// Profiles of this build. What the cache does not know is asked of the database once for each VLAN; a read that failed
// is no answer, and the next row asks again.
struct PORT_PROFILES_T {
    OWNED_VLAN_INFO_LIST cache;           // sorted; null: every VLAN is asked for
    VLAN_INFO_READS_T reads;              // of the cache and of single rows
    OWNED_ARRAY<PORT_PROFILE_T> known;    // answers so far; null without memory: nothing is remembered
    uint16_t knownAt[VLAN_INFO_CAPACITY]; // by VLAN ID: index into known + 1, 0 for none
    uint16_t knownCount, knownRoom;
};

// A unit of the stack, by its number; zeroed when its model is not known.
struct ROW_UNIT_T {
    char model[256];
    uint32_t physicalPorts; // front ports, modules included
};

// What holds for the whole build.
struct PORT_LIST_T {
    CLIENT_HANDLE_T *clientHandle;
    ROW_UNIT_T units[SLOT_UNITS];
    uint32_t physical; // the first entries of the table are ports ...
    uint32_t entries;  // ... and the further ones, up to this, LAGs
    OWNED_ARRAY<INTERFACE_ENTRY_T> table;
    OWNED_ARRAY<const char *> flowControl; // by index of a port
    LAG_FLAGS_T lagFlags;
    PORT_PROFILES_T profiles;
};

// An interface that gets a row.
struct PORT_ROW_T {
    uint32_t index; // into the table
    const INTERFACE_ENTRY_T *entry;
    bool lag;
    uint32_t ifNum;
    openclt_usp_t usp;
    uint32_t linkState;
};

// How a document reads its settings.
struct PORT_SOURCE_T {
    const char *caller;       // function name in log lines
    bool logs = false;        // progress (debug) and failures of the common steps
    uint32_t furtherRoom = 0; // entries looked for behind the ports; 0: exactly as many as there are LAGs
    uint32_t indexPage = 0;   // goes into the document
    void *context = nullptr;  // handed to the two routines

    // Run when the tables are filled, before the LAG members are read; null: nothing to do. Not 0: ends the build.
    int (*prepare)(PORT_LIST_T *list, void *context) = nullptr;

    void (*settingsRead)(const PORT_LIST_T *list, const PORT_ROW_T *row, void *context,
                         PORT_SETTINGS_T *settings) = nullptr;
};

// Build the document's tree: 0 with it in *document. 10002 when root or rows cannot be created; -7 when a table cannot
// be allocated; 10000 when the LAG size is not known; the model tables' result when they do not know a unit or module,
// or that of prepare.
[[nodiscard]] int portRowsBuild(CLIENT_HANDLE_T *clientHandle, const PORT_SOURCE_T &source, OWNED_JSON *document);

// The same, printed: 0 with a newly allocated text in *out, which the caller frees; 10000 when the print fails.
[[nodiscard]] int portRowsPrint(CLIENT_HANDLE_T *clientHandle, const PORT_SOURCE_T &source, char **out);

// Text of the platform's auto-negotiation mode.
[[nodiscard]] const char *portAutoNegText(uint32_t mode);
