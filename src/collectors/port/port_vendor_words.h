// port_vendor_words.h - which AV vendor's device the port table shows at a port.
//
// Like the port vendor document (stores/port_vendor.h), but with the port table's own words: an OUI has a word of its
// own ("harman audio"), and an address decides by that word.
#pragma once

#include "collectors/feature/vlan_model.h"
#include "runtime/json.h"
#include "switch/fdb.h"
#include "switch/session.h"

#include <cstdint>

// The learned addresses, ascending by interface number; those of one interface in the order of the snapshot.
struct PORT_FDB_T {
    OWNED_ARRAY<FDB_ENTRY_T> entries;
    uint32_t count;
};
void portFdbRead(CLIENT_HANDLE_T *clientHandle, PORT_FDB_T *fdb);

// Vendor word of a port whose VLAN has this profile (null: none); null when nothing is detected.
[[nodiscard]] const char *portVendorWordGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum,
                                            const VLAN_PROFILE_T *profile, const PORT_FDB_T *fdb);

// Append the chassis id of every LLDP neighbour of a port to an array; one that cannot be read is left out. 0; the
// platform's result when it cannot say how long a text may be; -7 without memory.
[[nodiscard]] int lldpIntfRemoteDevicesChassisIdGet(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, cJSON *array);
