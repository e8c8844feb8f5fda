// vlan_info.h - the VLAN profile database that the web interface keeps: type, name and colour of each VLAN's profile.
//
// Every operation, or all reads of one build together, open the file, wait up to 3 seconds for another process and
// close it. The file is never created here: its existence is what the monitor waits for.
#pragma once

#include "runtime/owned.h"

#include <cstdint>

struct VLAN_INFO_ENTRY_T {
    int32_t id;       // VLAN ID
    int32_t vlanType; // profile type number
    char profileName[256];
    char profileType[256];
    char color[8]; // "#rrggbb"
};

// Profile types of these numbers are variants of one profile.
inline constexpr char KRAMER_PROFILE[] = "Kramer AV";
[[nodiscard]] constexpr bool isKramerType(int32_t vlanType)
{
    return vlanType >= 6 && vlanType <= 9;
}

constexpr uint32_t VLAN_INFO_CAPACITY = 4096;

// All rows, up to the capacity.
struct VLAN_INFO_LIST_T {
    VLAN_INFO_ENTRY_T *entries;
    uint32_t count;
    uint32_t capacity;
};

void vlanInfoListFree(VLAN_INFO_LIST_T *list);
struct VLAN_INFO_LIST_DELETER_T {
    void operator()(VLAN_INFO_LIST_T *list) const
    {
        vlanInfoListFree(list);
    }
};
using OWNED_VLAN_INFO_LIST = std::unique_ptr<VLAN_INFO_LIST_T, VLAN_INFO_LIST_DELETER_T>;

// Insert or replace one row: 0 or SQLite's code (logged).
[[nodiscard]] int vlanInfoReplace(int id, int vlanType, const char *profileName, const char *profileType,
                                  const char *color);

// What the reads of one build share: where one has waited in vain, the further ones do not wait.
struct VLAN_INFO_READS_T {
    OWNED_DB db; // stays open to the build's end
    bool failed; // the last read
    bool gaveUp; // a read has waited for another process in vain
};

// Read one row; out places that are null are passed over. 1 when found; 0 when there is none and on any error (logged),
// the out places untouched. Texts are cut to their field sizes (256, 256, 8). `reads` of null: a read by itself.
[[nodiscard]] int vlanInfoSelectById(int id, int32_t *vlanType, char *profileName, char *profileType, char *color,
                                     VLAN_INFO_READS_T *reads = nullptr);

// An empty list; null without memory.
[[nodiscard]] VLAN_INFO_LIST_T *vlanInfoListCreate();

// Load all rows: their number, or -1 (logged). At most VLAN_INFO_CAPACITY. `reads` as above.
[[nodiscard]] int vlanInfoSelectAll(VLAN_INFO_LIST_T *list, VLAN_INFO_READS_T *reads = nullptr);

// The same with ID and profile type alone: the other fields stay empty.
[[nodiscard]] int vlanInfoSelectTypes(VLAN_INFO_LIST_T *list);

void vlanInfoListSortById(VLAN_INFO_LIST_T *list);

// All rows, sorted: null when they cannot be read (logged) and without memory.
[[nodiscard]] OWNED_VLAN_INFO_LIST vlanInfoSortedLoad(VLAN_INFO_READS_T *reads = nullptr);

// Entry of an ID in a sorted list; null when there is none.
[[nodiscard]] const VLAN_INFO_ENTRY_T *vlanInfoListFindById(const VLAN_INFO_LIST_T *list, int id);
