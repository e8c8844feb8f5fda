// swcfg_port_model.h - the table behind the port table document, and the passes that fill and print it.
//
// The passes stand in three files: those that ask the platform call by call (swcfg_port.cpp), those that read show
// commands (swcfg_port_cli.cpp), and the document (swcfg_port_print.cpp).
#pragma once

#include "collectors/feature/vlan_model.h"
#include "collectors/port/port_vendor_words.h"
#include "collectors/port/swcfg_port.h"
#include "runtime/owned.h"
#include "switch/session.h"
#include "switch/slots.h"

#include <cstdint>

constexpr uint32_t PORT_TABLE_UNITS = 8;    // units 1 to 8, at index 0 to 7
constexpr uint32_t PORT_VLANS_MAX = 4096;   // entries of a port's VLAN ID list
constexpr uint32_t SHURE_FLAGS_SIZE = 1000; // by interface number
constexpr size_t PORT_RATE_SIZE = 21;

constexpr uint32_t PORT_DOT1X_ON = 1;
constexpr uint32_t PORT_DOT1X_NOT_APPLICABLE = 3;

// One port, as listed by "show port status all"; empty while ifNum is 0.
struct PORT_RECORD_T {
    uint32_t unit, slot, port;
    uint32_t ifNum;
    uint32_t pvid;
    uint32_t moduleType;
    uint32_t portCapability; // speed class (switch/models.h)
    uint32_t portMode;       // 3: tagged member of some VLAN
    char portType[13];
    uint32_t portState;
    uint32_t adminState;
    uint32_t linkState; // OPENCLT_LINK_...
    uint32_t stpMode;   // 1: blocked by spanning tree
    uint32_t dot1xStatus;
    uint32_t autoTrunk;      // 1: switchportMode is 8
    uint32_t switchportMode; // 8: listed as trunk
    char linkSpeed[PORT_SPEED_SIZE];
    char bandwidthUpload[PORT_RATE_SIZE];
    char bandwidthDownload[PORT_RATE_SIZE];
    uint32_t receivedPercent, transmittedPercent;
    uint64_t trafficUsage; // packets, both directions
    uint32_t poeIsValid;   // 1: can feed power, +2: enabled
    uint32_t powerUsage;   // milliwatts
    bool shure;
    bool allVlans;                // its list is that of all VLANs instead of the one below
    uint32_t vlanCount;           // of its list ...
    uint32_t vlanFirst, vlanLast; // ... which is a chain in the table's links, 0 for none
};

// One unit. Records count from 1, in the order of the unit's lines.
struct PORT_UNIT_T {
    char model[256];
    uint32_t portCount;                 // front ports
    uint32_t recordCount;               // fan-out sub-ports included
    OWNED_ARRAY<PORT_RECORD_T> records; // recordCount + 1; null for a unit that is not there
};

// An entry of some port's VLAN ID list. (A list of its own in each record would take 7 MB for a full stack.)
struct VLAN_LINK_T {
    uint32_t vlanId;
    uint32_t next; // 0: the last
};

struct PORT_TABLE_T {
    CLIENT_HANDLE_T *clientHandle;
    SLOT_MODELS_T slots;
    PORT_UNIT_T units[PORT_TABLE_UNITS];
    OWNED_VLAN_PROFILES profiles; // null when they cannot be read
    OWNED_VLAN_LIST vlans;        // likewise
    uint32_t dot1xMode;
    OWNED_ARRAY<uint32_t> modes; // switch-port modes by interface number; null when unknown
    uint32_t modeCount;
    OWNED_ARRAY<VLAN_LINK_T> links; // the first one stands for none
    size_t linkCapacity, linkCount;
    PORT_FDB_T fdb;
    OWNED_ARRAY<bool> shureFlags; // by interface number
};

// First non-empty record at or after an index of a unit, 0 when there is none.
[[nodiscard]] uint32_t portRecordNext(const PORT_UNIT_T &unit, uint32_t index);

// Call a function with every non-empty record, unit by unit.
template <typename VISIT> void portRecordsVisit(PORT_TABLE_T *table, VISIT visit)
{
    for (PORT_UNIT_T &unit : table->units) {
        for (uint32_t i = portRecordNext(unit, 1); i != 0; i = portRecordNext(unit, i + 1))
            visit(&unit.records[i]);
    }
}

// Records from "show port status all". False, with a line logged, when there is no such table.
[[nodiscard]] bool portStatusRead(PORT_TABLE_T *table);

// Port VLAN IDs from "show vlan port all".
void portVlanIdsRead(PORT_TABLE_T *table);

// Rates from "show interface counters", then load and traffic port by port.
void fillPhyInfCounterEX(PORT_TABLE_T *table);

// Whether a port can carry the stack, up to 3 characters, from "show port NAME"; "" when that cannot be read.
constexpr size_t STACK_CAPABLE_SIZE = 4;
void stackCapableGet(CLIENT_HANDLE_T *clientHandle, const PORT_RECORD_T &record, char text[STACK_CAPABLE_SIZE]);

// The document of a filled table: 0, or 10000 when it cannot be printed.
[[nodiscard]] int portTablePrint(const PORT_TABLE_T *table, char **out);
