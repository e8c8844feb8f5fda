// port_vendor.h - which AV vendor's equipment is attached to a port whose access VLAN is that vendor's.
//
// A VLAN profile (VLAN profile database) selects a vendor; learned MAC addresses, LLDP chassis ids or LLDP system
// descriptions then show whether one of its devices is there. Document "port_vendor_detect", made anew after a port
// came up.
#pragma once

#include "runtime/owned.h"
#include "switch/fdb.h"
#include "switch/session.h"

#include <cstddef>
#include <cstdint>

// One VLAN's profile.
struct PROFILE_MAP_ROW_T {
    int32_t id;            // VLAN ID
    int32_t vlanType;      // profile type number
    char profileType[256]; // its name
};
struct VLAN_PROFILE_MAP_T {
    OWNED_ARRAY<PROFILE_MAP_ROW_T> rows;
    uint32_t count = 0;
};

// How a vendor's devices are recognised, a bit set.
enum VENDOR_METHOD : unsigned { VENDOR_BY_FDB = 1, VENDOR_BY_CHASSIS = 2, VENDOR_BY_DESCRIPTION = 4 };

// One vendor. Lists end with a null when they are not full.
struct VENDOR_RECORD_T {
    const char *key;             // as documents name it
    const char *profileTypes[4]; // profile types that select it, in any case
    const char *ouis[6];         // of its devices
    const char *keyword;         // of its devices' system descriptions, in any case
    unsigned methods;
};

// Build the document: 0, or 10002 when it cannot be made or printed. *out is freed by the caller.
[[nodiscard]] int portVendorDetectBuild(CLIENT_HANDLE_T *clientHandle, char **out);

// Read the profiles of all VLANs (IDs from 1); an empty map on failure (logged).
void loadVlanProfileMap(VLAN_PROFILE_MAP_T *map);

// Vendor key of a port, "" when nothing is detected; cut to size-1. The addresses must ascend by interface number, so
// that a port's are found without a look at all. 0, or 10002 without handle or buffer.
[[nodiscard]] int portVendorDetect(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, const VLAN_PROFILE_MAP_T *map,
                                   const FDB_ENTRY_T *fdbEntries, uint32_t fdbCount, char *vendorKey, size_t size);

// First vendor that has a MAC's OUI; null when there is none.
[[nodiscard]] const VENDOR_RECORD_T *ouiVendorRecordGet(const char *macText);
