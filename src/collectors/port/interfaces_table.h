// interfaces_table.h - the fixed-column CLI tables of all interfaces: status, FEC and hardware profile, joined by name.
#pragma once

#include "switch/session.h"

#include <cstdint>

// One listed interface, in the order of "show interfaces status all"; zeroed by the owner of the table. Sizes include
// the terminator.
struct INTERFACE_ENTRY_T {
    char name[22]; // at most 9 characters are filled
    char linkState[7];
    char physicalMode[13];
    char physicalStatus[13];
    char mediaType[19];
    char fec[14];
    char fanOutMode[21];
};

// Read "show interfaces status all" from its output file (deleted afterwards) into a table with room for
// physical + further entries; *count is the number filled. 0, or 10016 when the file does not open.
[[nodiscard]] int interfacesStatusFromCliGet(INTERFACE_ENTRY_T *table, uint32_t physical, uint32_t further,
                                             uint32_t *count);

// Add the FEC texts and the fan-out modes to a filled table of `count` entries. Names must follow the table's order;
// one that does not leaves it and all later ones out. 0 or 10016.
[[nodiscard]] int interfacesFecModeFromCliGet(INTERFACE_ENTRY_T *table, uint32_t count);
[[nodiscard]] int interfacesFanOutModeFromCliGet(INTERFACE_ENTRY_T *table, uint32_t count);

// Run the three commands and read each whose command succeeded.
void interfacesTableFill(CLIENT_HANDLE_T *clientHandle, INTERFACE_ENTRY_T *table, uint32_t physical, uint32_t further,
                         uint32_t *count);

// Class of a FEC text: the first of "Disable", "Auto", "CL108", "CL91", "CL74", "RS108" that it contains, else
// "Unknown".
[[nodiscard]] const char *fecClassGet(const char *fec);
